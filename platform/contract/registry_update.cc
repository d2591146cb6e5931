// Updates: several writes that count together.
#include <atomic>
#include <chrono>
#include <thread>

#include "registry_support.h"

using namespace registry_test;

class Updates : public StoreTest {};
ON_EVERY_STORE(Updates);

TEST_P(Updates, TheThreadOfTheUpdateSeesItsWrites) {
    EXPECT_EQ(begin(top), ZXREG_S_OK);
    EXPECT_GE(setText(createKey(top, "A"), "v", "x"), 0);
    EXPECT_EQ(text(openKey(top, "A"), "v"), "x");
    EXPECT_EQ(end(top), ZXREG_S_OK);
    EXPECT_EQ(text(openKey(top, "A"), "v"), "x");
}

TEST_P(Updates, CancellingTakesEverythingBack) {
    const Key kept = createKey(top, "kept");
    EXPECT_GE(setText(kept, "replaced", "old"), 0);
    EXPECT_GE(setText(kept, "deleted", "old"), 0);
    EXPECT_GE(setText(kept, "after", "old"), 0);
    EXPECT_GE(setText(createKey(top, "dropped"), "v", "old"), 0);
    createKey(top, "last");
    const std::string before = dump(top);

    EXPECT_GE(begin(top), 0);
    EXPECT_GE(set(kept, "replaced", ZXREG_NUMBER, "1234"), 0);
    EXPECT_GE(set(kept, "replaced", ZXREG_PROTECTED_STRING, "secret"), 0);
    EXPECT_GE(unset(kept, "deleted"), 0);
    EXPECT_GE(setText(kept, "new", "x"), 0);
    EXPECT_GE(deleteKey(top, "dropped"), 0);
    EXPECT_GE(setText(createKey(top, "dropped"), "other", "x"), 0);
    EXPECT_GE(setText(createKey(createKey(top, "new"), "deeper"), "v", "x"), 0);
    EXPECT_GE(setText(kept, "deleted", "made again"), 0);
    EXPECT_NE(dump(top), before);
    EXPECT_EQ(cancel(top), ZXREG_S_OK);
    EXPECT_EQ(dump(top), before);
}

TEST_P(Updates, HandlesSurviveWhatIsTakenBack) {
    const Key dropped = createKey(top, "dropped");
    EXPECT_GE(setText(dropped, "v", "old"), 0);
    EXPECT_GE(begin(top), 0);
    EXPECT_GE(deleteKey(top, "dropped"), 0);
    EXPECT_EQ(readCode(dropped, "v"), ZXREG_E_DELETED);
    const Key made = createKey(top, "made");
    EXPECT_GE(cancel(top), 0);
    EXPECT_EQ(text(dropped, "v"), "old");
    EXPECT_EQ(readCode(made, "v"), ZXREG_E_DELETED);
}

TEST_P(Updates, InnerOnesNest) {
    EXPECT_GE(begin(top), 0);
    EXPECT_GE(setText(top, "outer", "1"), 0);
    EXPECT_GE(begin(top), 0);
    EXPECT_GE(setText(top, "inner", "2"), 0);
    EXPECT_EQ(end(top), ZXREG_S_OK);
    EXPECT_GE(begin(top), 0);
    EXPECT_GE(setText(top, "outer", "changed"), 0);
    EXPECT_GE(setText(top, "taken back", "3"), 0);
    createKey(top, "x");
    EXPECT_EQ(cancel(top), ZXREG_S_OK);
    EXPECT_EQ(text(top, "outer"), "1");
    EXPECT_EQ(end(top), ZXREG_S_OK);
    EXPECT_EQ(text(top, "outer"), "1");
    EXPECT_EQ(text(top, "inner"), "2");
    EXPECT_EQ(values(top).size(), 2u);
    EXPECT_TRUE(subkeys(top).empty());
}

TEST_P(Updates, CancellingTheOuterOneTakesTheInnerBackToo) {
    const std::string before = dump(top);
    EXPECT_GE(begin(top), 0);
    EXPECT_GE(begin(top), 0);
    EXPECT_GE(setText(top, "inner", "2"), 0);
    EXPECT_GE(end(top), 0);
    EXPECT_GE(cancel(top), 0);
    EXPECT_EQ(dump(top), before);
}

TEST_P(Updates, AFailingWriteInsideLeavesTheRest) {
    EXPECT_GE(begin(top), 0);
    EXPECT_GE(setText(top, "v", "1"), 0);
    EXPECT_LT(unset(top, "missing"), 0);
    EXPECT_LT(deleteKey(top, "missing"), 0);
    EXPECT_LT(createCode(top, "missing\\deeper"), 0);
    EXPECT_EQ(end(top), ZXREG_S_OK);
    EXPECT_EQ(text(top, "v"), "1");
}

TEST_P(Updates, EndingWithoutBeginningIsRefused) {
    EXPECT_EQ(end(top), ZXREG_E_NO_UPDATE);
    EXPECT_EQ(cancel(top), ZXREG_E_NO_UPDATE);
    EXPECT_GE(begin(top), 0);
    EXPECT_GE(end(top), 0);
    EXPECT_EQ(end(top), ZXREG_E_NO_UPDATE);
}

TEST_P(Updates, AnUpdateBelongsToItsThread) {
    EXPECT_GE(begin(top), 0);
    std::thread([&] {
        EXPECT_EQ(end(top), ZXREG_E_NO_UPDATE);
        EXPECT_EQ(cancel(top), ZXREG_E_NO_UPDATE);
    }).join();
    EXPECT_GE(end(top), 0);
}

TEST_P(Updates, ReadersDoNotWaitAndWritersDo) {
    EXPECT_GE(setText(top, "v", "old"), 0);
    const Key readerKey = openKey(top, "");
    const Key writerKey = openKey(top, "");
    EXPECT_GE(begin(top), 0);
    EXPECT_GE(setText(top, "mine", "1"), 0);
    std::thread([&] { EXPECT_EQ(text(readerKey, "v"), "old"); }).join();
    std::atomic<bool> hasWritten{false};
    std::thread writer([&] {
        EXPECT_GE(setText(writerKey, "v", "new"), 0);
        hasWritten = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(hasWritten);
    EXPECT_GE(end(top), 0);
    writer.join();
    EXPECT_EQ(text(top, "v"), "new");
}

TEST_P(Updates, AnUpdateCanEndOnADeletedKey) {
    const Key gone = createKey(top, "gone");
    EXPECT_GE(begin(gone), 0);
    EXPECT_GE(deleteKey(top, "gone"), 0);
    EXPECT_EQ(end(gone), ZXREG_S_OK);
    EXPECT_EQ(begin(gone), ZXREG_E_DELETED);
    EXPECT_EQ(end(top), ZXREG_E_NO_UPDATE);
}

TEST_P(Updates, TakingBackKeepsTheOrderOfManyItems) {
    for (int i = 0; i < 60; ++i) {
        createKey(top, "k" + std::to_string(i));
        EXPECT_GE(setText(top, "v" + std::to_string(i), "x"), 0);
    }
    const std::string before = dump(top);
    EXPECT_GE(begin(top), 0);
    for (int i = 0; i < 60; i += 2) {
        EXPECT_GE(deleteKey(top, "k" + std::to_string(i)), 0);
        EXPECT_GE(unset(top, "v" + std::to_string(i)), 0);
        createKey(top, "n" + std::to_string(i));
        EXPECT_GE(setText(top, "w" + std::to_string(i), "x"), 0);
    }
    EXPECT_GE(begin(top), 0);
    for (int i = 1; i < 60; i += 2) {
        EXPECT_GE(deleteKey(top, "k" + std::to_string(i)), 0);
        EXPECT_GE(unset(top, "v" + std::to_string(i)), 0);
    }
    EXPECT_GE(cancel(top), 0);
    EXPECT_GE(cancel(top), 0);
    EXPECT_EQ(dump(top), before);
    for (int i = 0; i < 60; ++i) {
        EXPECT_GE(openCode(top, "k" + std::to_string(i)), 0) << i;
        EXPECT_EQ(text(top, "v" + std::to_string(i)), "x") << i;
    }
}
