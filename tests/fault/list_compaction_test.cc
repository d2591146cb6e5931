// What a list holds when the store fails while addresses are moved forward.
#include <gtest/gtest.h>

#include <set>

#include "fault/world.h"

namespace {

using namespace zxtest;

class ListCompaction : public testing::Test {
protected:
    void SetUp() override { resetFaultStore(); }
    void TearDown() override {
        EXPECT_EQ(std::vector<std::string>(), storeViolations());
        EXPECT_EQ(std::vector<std::string>(), openStoreKeys());
        resetFaultStore();
    }

    // Removes three of the four addresses in the first value of the list Open, so that others move forward.
    static int removeFirst(const World& world) {
        const std::string addresses[] = {addressOf("a1", 500), addressOf("a2", 500), addressOf("a3", 500)};
        const char* array[] = {addresses[0].c_str(), addresses[1].c_str(), addresses[2].c_str(), nullptr};
        int error = ZXPOL_S_OK;
        const char** const first = array;
        lib(zxpol_removeAddress, world.list, first, &error);
        return error;
    }

    // The stored addresses after a removal in which nothing fails.
    static std::string addressesWithoutFailure() {
        World world(Start::lists);
        EXPECT_EQ(ZXPOL_S_OK, removeFirst(world));
        std::string addresses = world.listAddresses();
        world.close();
        return addresses;
    }

    // The names of the values that hold the list Open's addresses.
    static std::set<std::string> valueNames(const World& world) {
        std::set<std::string> names;
        int error = ZXREG_S_OK;
        _ZxPolComHandle* key = zxreg_openKey(world.store, "AddressList\\Open", &error);
        for (uint32_t index = 0; error >= 0; ++index) {
            char name[256];
            uint32_t size = sizeof name;
            zxreg_enumValue(key, index, name, &size, nullptr, nullptr, nullptr, &error);
            if (error >= 0 && std::string(name).rfind("address", 0) == 0) names.insert(name);
        }
        zxreg_closeKey(key, &error);
        return names;
    }
};

// A failure must not be taken for the end of the list: then values would be deleted whose addresses are nowhere else.
TEST_F(ListCompaction, LosesNoAddressWhenAWriteFailsAsIfNothingWereLeft) {
    const std::string expected = addressesWithoutFailure();
    int failures = 0;
    // The first three writes are those of the removals themselves.
    for (uint64_t write = 4;; ++write) {
        SCOPED_TRACE(write);
        World world(Start::lists);
        failStoreCall(write, ZXREG_E_NO_MORE_ITEMS, StoreOp::setValue);
        EXPECT_EQ(ZXPOL_S_OK, removeFirst(world));
        const bool failed = storeCallFailed();
        failNoStoreCall();
        EXPECT_EQ(expected, world.listAddresses());
        EXPECT_EQ("", world.listTrouble());
        world.close();
        if (!failed) break;
        ++failures;
    }
    EXPECT_GE(failures, 2);
}

TEST_F(ListCompaction, LeavesNoGapWhenAnEmptiedValueCannotBeDeleted) {
    World world(Start::lists);
    // Seven addresses in four values' worth of room: one more removal empties the last value.
    EXPECT_EQ(ZXPOL_S_OK, removeFirst(world));
    const std::string more[] = {addressOf("a4", 500)};
    const char* array[] = {more[0].c_str(), nullptr};
    const size_t before = valueNames(world).size();
    failStoreCall(1, ZXREG_E_IO, StoreOp::deleteValue);
    int error = ZXPOL_S_OK;
    const char** const first = array;
    lib(zxpol_removeAddress, world.list, first, &error);
    failNoStoreCall();
    EXPECT_EQ(ZXPOL_S_OK, error);
    std::set<std::string> dense;
    for (size_t number = 1; number <= valueNames(world).size(); ++number)
        dense.insert("address" + std::to_string(number));
    EXPECT_EQ(dense, valueNames(world));
    EXPECT_LE(valueNames(world).size(), before);
    EXPECT_EQ("", world.listTrouble());
    const std::string afterRemoval = world.listAddresses();
    const std::string fresh = addressOf("n1", 500);
    const char* added[] = {fresh.c_str(), nullptr};
    const char** const begin = added;
    for (int attempt = 0; attempt < 2; ++attempt) {
        error = ZXPOL_S_OK;
        lib(zxpol_insertAddress, world.list, begin, &error);
        EXPECT_EQ(ZXPOL_S_OK, error);
    }
    EXPECT_EQ("", world.listTrouble());
    EXPECT_NE(afterRemoval, world.listAddresses());
    world.close();
}

}  // namespace
