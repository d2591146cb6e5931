// Enumerating ordered children: sizes, ends, and the cache behind it.
#include "support/policy_fixture.h"

namespace {

using zxtest::Handle;

class OrderedEnumeration : public zxtest::PolicyTest {
protected:
    struct Item {
        int code = ZXPOL_S_OK;
        uint32_t size = 0;
        std::string name;
    };
    static Item itemOf(_ZxPolComHandle* rule, uint32_t index, uint32_t size = ZXPOL_NAME_SIZE) {
        char name[ZXPOL_NAME_SIZE] = "untouched";
        Item item;
        item.size = size;
        zxpol_enumTask(rule, index, name, &item.size, &item.code);
        item.name = name;
        return item;
    }
};
ZXTEST_ON_BOTH_ENGINES(OrderedEnumeration);

TEST_P(OrderedEnumeration, NothingToEnumerateIsTheStoresEndAtIndexZero) {
    EXPECT_CODE(ZXREG_E_NO_MORE_ITEMS, itemOf(rule().get(), 0).code);
}

TEST_P(OrderedEnumeration, PastTheEndThereAreNoMoreItems) {
    addTasks("\\", {"a", "b", "c"});
    const Handle root = rule();
    EXPECT_EQ("a", itemOf(root.get(), 0).name);
    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, itemOf(root.get(), 3).code);
    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, itemOf(root.get(), 5).code);
    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, itemOf(root.get(), 0xffffffffu).code);
    EXPECT_EQ("untouched", itemOf(root.get(), 5).name);
}

TEST_P(OrderedEnumeration, TheSizeNeededCountsTheNul) {
    addTasks("\\", {"abc", "de"});
    const Handle root = rule();
    Item item = itemOf(root.get(), 0, 3);
    EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, item.code);
    EXPECT_EQ(4u, item.size);
    EXPECT_EQ("untouched", item.name);
    item = itemOf(root.get(), 0, 4);
    EXPECT_CODE(ZXPOL_S_OK, item.code);
    EXPECT_EQ(4u, item.size);
    EXPECT_EQ("abc", item.name);
    item = itemOf(root.get(), 1, 0);
    EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, item.code);
    EXPECT_EQ(3u, item.size);
    item = itemOf(root.get(), 1, 100);
    EXPECT_EQ(3u, item.size);
    EXPECT_EQ("de", item.name);
}

TEST_P(OrderedEnumeration, ANewHandleKnowsNothingBeforeIndexZero) {
    addTasks("\\", {"a", "b"});
    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, itemOf(rule().get(), 1).code);
}

TEST_P(OrderedEnumeration, OnlyIndexZeroReadsTheStore) {
    addTasks("\\", {"a", "b"});
    const Handle root = rule();
    EXPECT_EQ("a", itemOf(root.get(), 0).name);
    int error = ZXPOL_S_OK;
    zxpol_setTaskOrder(rule().get(), "b", 1, &error);
    addTask("\\", "c");
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ("b", itemOf(root.get(), 1).name);
    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, itemOf(root.get(), 2).code);
    EXPECT_EQ("b", itemOf(root.get(), 0).name);
    EXPECT_EQ("a", itemOf(root.get(), 1).name);
    EXPECT_EQ("c", itemOf(root.get(), 2).name);
}

TEST_P(OrderedEnumeration, NullArgumentsAreRefused) {
    addTasks("\\", {"a"});
    const Handle root = rule();
    char name[8];
    uint32_t size = sizeof name;
    int error = ZXPOL_S_OK;
    zxpol_enumTask(root.get(), 0, nullptr, &size, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    zxpol_enumTask(root.get(), 0, name, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    zxpol_enumRule(root.get(), 0, nullptr, &size, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    zxpol_enumRule(root.get(), 0, name, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
}

TEST_P(OrderedEnumeration, WithoutTheContainerIsTheStoresFailure) {
    rawRule().removeKey("tasks");
    EXPECT_CODE(ZXREG_E_NOT_FOUND, itemOf(rule().get(), 0).code);
}

}  // namespace
