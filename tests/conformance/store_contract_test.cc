// What the library demands of the store beneath it.
#include "support/store_fixture.h"

namespace {

using zxtest::Handle;
using zxtest::RawKey;

class StoreContract : public zxtest::StoreTest {};
ZXTEST_ON_BOTH_ENGINES(StoreContract);

TEST_P(StoreContract, CreatingAnExistingKeyOpensIt) {
    raw().makeKey("a").setNumber("n", 5);
    int error = ZXREG_S_OK;
    const Handle again(zxreg_createKey(store(), "a", &error));
    EXPECT_GE(error, 0);
    ASSERT_NE(nullptr, again);
    EXPECT_EQ(5u, RawKey(again.get()).number("n"));
    EXPECT_EQ(std::vector<std::string>{"a"}, raw().subkeys());
}

TEST_P(StoreContract, TheEmptyNameDesignatesTheKeyItself) {
    raw().makeKey("a").setNumber("n", 5);
    const RawKey a = raw("a");
    int error = ZXREG_S_OK;
    const Handle same(zxreg_createKey(a.handle(), "", &error));
    ASSERT_NE(nullptr, same);
    EXPECT_EQ(5u, RawKey(same.get()).number("n"));
    EXPECT_TRUE(a.subkeys().empty());
}

TEST_P(StoreContract, ATrailingBackslashMeansNothing) {
    int error = ZXREG_S_OK;
    Handle(zxreg_createKey(store(), "actions\\", &error)).reset();
    EXPECT_GE(error, 0);
    EXPECT_EQ(std::vector<std::string>{"actions"}, raw().subkeys());
    EXPECT_TRUE(raw().hasKey("actions"));
    EXPECT_TRUE(raw().hasKey("actions\\"));
    Handle(zxreg_createKey(store(), "actions", &error)).reset();
    EXPECT_EQ(1u, raw().subkeys().size());
}

TEST_P(StoreContract, EnumeratingNothingEndsAtOnce) {
    char name[8];
    uint32_t size = sizeof name;
    int error = ZXREG_S_OK;
    zxreg_enumSubkey(store(), 0, name, &size, &error);
    EXPECT_LT(error, 0);
    EXPECT_EQ(12u, zxtest::reasonOf(error));
    zxreg_enumValue(store(), 0, name, &size, nullptr, nullptr, nullptr, &error);
    EXPECT_LT(error, 0);
    EXPECT_EQ(12u, zxtest::reasonOf(error));
}

TEST_P(StoreContract, NamesOfValuesComeWithoutTheirDataOnRequest) {
    raw().setText("first", "1");
    raw().setNumber("second", 2);
    EXPECT_EQ((std::vector<std::string>{"first", "second"}), raw().valueNames());
}

TEST_P(StoreContract, ATooSmallNameBufferIsToldTheLength) {
    raw().setText("first", "1");
    char name[8] = "kept";
    uint32_t size = 3;
    int error = ZXREG_S_OK;
    zxreg_enumValue(store(), 0, name, &size, nullptr, nullptr, nullptr, &error);
    EXPECT_EQ(6u, zxtest::reasonOf(error));
    EXPECT_EQ(5u, size);
    size = 6;
    zxreg_enumValue(store(), 0, name, &size, nullptr, nullptr, nullptr, &error);
    EXPECT_GE(error, 0);
    EXPECT_STREQ("first", name);
}

TEST_P(StoreContract, ATooSmallValueBufferIsToldTheSize) {
    raw().setText("t", "four");
    char data[4] = {};
    uint32_t type = 0, size = sizeof data;
    int error = ZXREG_S_OK;
    zxreg_queryValue(store(), "t", &type, data, &size, &error);
    EXPECT_LT(error, 0);
    EXPECT_EQ(6u, zxtest::reasonOf(error));
    EXPECT_EQ(5u, size);
}

TEST_P(StoreContract, AMissingValueHasItsOwnReason) {
    int error = ZXREG_S_OK;
    zxreg_deleteValue(store(), "none", &error);
    EXPECT_LT(error, 0);
    EXPECT_EQ(0x1804u, zxtest::reasonOf(error));
}

}  // namespace
