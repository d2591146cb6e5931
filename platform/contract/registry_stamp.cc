// Stamps: numbers that tell whether anything at or below a key has changed.
#include <functional>

#include "registry_support.h"

using namespace registry_test;

class Stamps : public StoreTest {
protected:
    void SetUp() override {
        StoreTest::SetUp();
        list = createKey(top, "list");
        below = createKey(list, "below");
        beside = createKey(top, "beside");
        EXPECT_GE(setText(below, "v", "old"), 0);
    }
    void TearDown() override {
        list.close();
        below.close();
        beside.close();
        StoreTest::TearDown();
    }
    // Whether the work gives the list and what is above it another stamp, and what is beside it none.
    void expectChange(const char* what, const std::function<int()>& work) {
        const uint64_t listBefore = stamp(list);
        const uint64_t rootBefore = stamp(root);
        const uint64_t besideBefore = stamp(beside);
        EXPECT_GE(work(), 0) << what;
        EXPECT_NE(stamp(list), listBefore) << what;
        EXPECT_NE(stamp(root), rootBefore) << what;
        EXPECT_EQ(stamp(beside), besideBefore) << what;
    }

    Key list;
    Key below;
    Key beside;
};
ON_EVERY_STORE(Stamps);

TEST_P(Stamps, EveryChangeBelowCounts) {
    expectChange("new value", [&] { return setText(below, "w", "x"); });
    expectChange("replaced value", [&] { return setText(below, "v", "new"); });
    expectChange("deleted value", [&] { return unset(below, "w"); });
    expectChange("new key", [&] { return createCode(below, "k"); });
    expectChange("deleted key", [&] { return deleteKey(below, "k"); });
    expectChange("value of its own", [&] { return setText(list, "v", "x"); });
}

TEST_P(Stamps, EveryWriteOfOneValueInAnUpdateCounts) {
    EXPECT_GE(begin(top), 0);
    for (int i = 0; i < 3; ++i) {
        expectChange("written again", [&] { return setText(below, "v", std::to_string(i)); });
    }
    EXPECT_GE(end(top), 0);
}

TEST_P(Stamps, ReadingDoesNot) {
    const uint64_t before = stamp(root);
    dump(root);
    createKey(top, "list");
    openCode(top, "missing");
    EXPECT_LT(unset(list, "missing"), 0);
    EXPECT_LT(deleteKey(top, "list"), 0);
    EXPECT_EQ(stamp(root), before);
}

TEST_P(Stamps, TakingBackCounts) {
    EXPECT_GE(begin(top), 0);
    const uint64_t before = stamp(list);
    EXPECT_GE(setText(below, "v", "new"), 0);
    const uint64_t between = stamp(list);
    EXPECT_NE(between, before);
    EXPECT_GE(cancel(top), 0);
    EXPECT_NE(stamp(list), between);
    EXPECT_NE(stamp(list), before);
}

TEST_P(Stamps, AKeyMadeAgainIsAnother) {
    const uint64_t before = stamp(beside);
    EXPECT_GE(deleteKey(top, "beside"), 0);
    int error = 0;
    EXPECT_EQ(zxreg_stamp(beside.get(), &error), 0u);
    EXPECT_EQ(error, ZXREG_E_DELETED);
    EXPECT_NE(stamp(createKey(top, "beside")), before);
}

TEST_P(Stamps, TwoStoresNeverShareOne) {
    const Key other = openStore("memory:");
    const Key third = openStore("memory:");
    EXPECT_NE(stamp(other), stamp(third));
    EXPECT_NE(stamp(other), stamp(root));
}
