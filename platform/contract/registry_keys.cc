// Keys: opening, creating, deleting, closing.
#include "registry_support.h"

using namespace registry_test;

class Keys : public StoreTest {};
ON_EVERY_STORE(Keys);

TEST_P(Keys, OpeningWhatDoesNotExistIsNotFound) {
    EXPECT_REASON(openCode(top, "missing"), notFound);
    EXPECT_REASON(openCode(top, "missing\\deeper"), notFound);
    createKey(top, "there");
    EXPECT_REASON(openCode(top, "there\\missing"), notFound);
}

TEST_P(Keys, CreatingOpensWhatExists) {
    const Key made = createKey(top, "A");
    EXPECT_GE(setText(made, "v", "kept"), 0);
    const Key again = createKey(top, "A");
    EXPECT_EQ(text(again, "v"), "kept");
    EXPECT_EQ(subkeys(top), std::vector<std::string>{"A"});
}

TEST_P(Keys, TheEmptyNameIsTheKeyItself) {
    for (const char* name : {"", "\\"}) {
        const Key self = createKey(top, name);
        const Key opened = openKey(top, name);
        EXPECT_GE(setText(self, "v", "seen"), 0);
        EXPECT_EQ(text(top, "v"), "seen");
        EXPECT_EQ(text(opened, "v"), "seen");
        EXPECT_GE(unset(top, "v"), 0);
    }
    EXPECT_TRUE(subkeys(top).empty());
}

TEST_P(Keys, ATrailingBackslashMakesNoDifference) {
    const Key made = createKey(top, "actions\\");
    EXPECT_EQ(subkeys(top), std::vector<std::string>{"actions"});
    EXPECT_GE(setText(made, "v", "same"), 0);
    EXPECT_EQ(text(openKey(top, "actions"), "v"), "same");
    EXPECT_EQ(text(openKey(top, "actions\\"), "v"), "same");
    createKey(top, "actions\\one\\");
    EXPECT_EQ(subkeys(made), std::vector<std::string>{"one"});
    EXPECT_GE(deleteKey(top, "actions\\one\\"), 0);
    EXPECT_TRUE(subkeys(made).empty());
}

TEST_P(Keys, PathsReachThroughSeveralLevels) {
    createKey(top, "a");
    createKey(top, "a\\b");
    EXPECT_GE(setText(createKey(top, "a\\b\\c"), "v", "deep"), 0);
    EXPECT_EQ(text(openKey(openKey(top, "a\\b"), "c"), "v"), "deep");
    EXPECT_EQ(text(openKey(top, "a\\b\\c\\"), "v"), "deep");
}

TEST_P(Keys, ClosingAKeyLeavesThoseBelowOpen) {
    Key above = createKey(top, "above");
    const Key below = createKey(above, "below");
    above.close();
    EXPECT_GE(setText(below, "v", "still open"), 0);
    EXPECT_EQ(text(below, "v"), "still open");
}

TEST_P(Keys, DeletingTakesTheValuesAlong) {
    EXPECT_GE(setText(createKey(top, "A"), "v", "gone"), 0);
    EXPECT_GE(deleteKey(top, "A"), 0);
    EXPECT_REASON(openCode(top, "A"), notFound);
    EXPECT_TRUE(values(createKey(top, "A")).empty());
}

TEST_P(Keys, DeletingWhatDoesNotExistIsNotFound) {
    EXPECT_REASON(deleteKey(top, "missing"), notFound);
    EXPECT_REASON(deleteKey(top, "missing\\deeper"), notFound);
}

TEST_P(Keys, DeletingByPathLeavesTheRest) {
    createKey(top, "a");
    createKey(top, "a\\b");
    createKey(top, "a\\c");
    EXPECT_GE(deleteKey(top, "a\\b"), 0);
    EXPECT_EQ(subkeys(openKey(top, "a")), std::vector<std::string>{"c"});
}

TEST_P(Keys, ManySubkeysAreFoundByName) {
    for (int i = 0; i < 100; ++i) {
        createKey(top, "k" + std::to_string(i));
    }
    for (int i = 0; i < 100; i += 3) {
        EXPECT_GE(deleteKey(top, "k" + std::to_string(i)), 0);
    }
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(openCode(top, "k" + std::to_string(i)) < 0, i % 3 == 0) << i;
    }
    EXPECT_EQ(subkeys(top).size(), 66u);
}
