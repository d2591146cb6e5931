// What normal lists ask of the store and what they know without it.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "fault/world.h"

namespace {

using namespace zxtest;

class ListStoreCalls : public testing::Test {
protected:
    void SetUp() override { resetFaultStore(); }
    void TearDown() override {
        world.close();
        EXPECT_EQ(std::vector<std::string>(), storeViolations());
        EXPECT_EQ(std::vector<std::string>(), openStoreKeys());
        resetFaultStore();
    }

    // Whether `use` makes a store call of this kind, which then fails.
    template <class Use>
    static bool calls(StoreOp op, Use use) {
        failStoreCall(1, ZXREG_E_IO, op);
        use();
        const bool failed = storeCallFailed();
        failNoStoreCall();
        return failed;
    }

    int open(const char* name) const {
        int error = ZXPOL_S_OK;
        _ZxPolComHandle* list = lib(zxpol_openAddrList, world.listHive, name, &error);
        int closed = ZXPOL_S_OK;
        if (list != nullptr) zxpol_closeAddrList(list, &closed);
        return error;
    }

    World world{Start::lists};
};

TEST_F(ListStoreCalls, TheFirstObjectReadsTheListAndTheNextDoesNot) {
    EXPECT_TRUE(calls(StoreOp::enumValue, [&] { EXPECT_EQ(ZXREG_E_IO, open("Shut")); }));
    EXPECT_TRUE(calls(StoreOp::enumValue, [&] { EXPECT_EQ(ZXREG_E_IO, open("Shut")); }));
    EXPECT_EQ(ZXPOL_S_OK, open("Shut"));
    EXPECT_FALSE(calls(StoreOp::enumValue, [&] { EXPECT_EQ(ZXPOL_S_OK, open("Shut")); }));
}

TEST_F(ListStoreCalls, EnumeratingReadsNothing) {
    EXPECT_FALSE(calls(StoreOp::any, [&] {
        char buffer[ZXPOL_ADDRESS_SIZE];
        uint32_t size = sizeof buffer;
        int error = ZXPOL_S_OK;
        lib(zxpol_enumAddress, world.list, 3u, buffer, &size, &error);
        EXPECT_EQ(ZXPOL_S_OK, error);
        EXPECT_EQ(addressOf("a4", 500), buffer);
    }));
}

TEST_F(ListStoreCalls, AnAddressThatIsThereOrInvalidWritesNothing) {
    EXPECT_FALSE(calls(StoreOp::setValue, [&] {
        const std::string present = addressOf("A1", 500);
        const char* addresses[] = {present.c_str(), "invalid", nullptr};
        const char** const first = addresses;
        int error = ZXPOL_S_OK;
        lib(zxpol_insertAddress, world.list, first, &error);
        EXPECT_EQ(ZXPOL_E_INVALID_FORMAT, error);
    }));
}

TEST_F(ListStoreCalls, AnAbsentAddressWritesNothing) {
    EXPECT_FALSE(calls(StoreOp::setValue, [&] {
        const char* addresses[] = {"nobody@x.y", nullptr};
        const char** const first = addresses;
        int error = ZXPOL_S_OK;
        lib(zxpol_removeAddress, world.list, first, &error);
        EXPECT_EQ(ZXPOL_E_NOT_FOUND, error);
    }));
}

TEST_F(ListStoreCalls, DeletingAListDropsWhatIsKnownUnderItsNameAlsoWhenItIsNotThere) {
    World other(Start::emptyStore);
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* hive = zxpol_openAddrListHive(other.store, &error);
    ASSERT_NE(nullptr, hive);
    EXPECT_FALSE(calls(StoreOp::enumValue, [&] { EXPECT_EQ(ZXPOL_S_OK, open("Open")); }));
    zxpol_deleteAddrList(hive, "Open", &error);
    EXPECT_EQ(ZXREG_E_NOT_FOUND, error);
    EXPECT_TRUE(calls(StoreOp::enumValue, [&] { EXPECT_EQ(ZXREG_E_IO, open("Open")); }));
    EXPECT_EQ(ZXPOL_S_OK, open("Open"));
    EXPECT_EQ("", world.listTrouble());
    zxpol_closeAddrListHive(hive, &error);
}

TEST_F(ListStoreCalls, AnImportThatCannotDeleteTheOldAddressesStopsThere) {
    const std::string path = testing::TempDir() + "zxpolicy-import-" + std::to_string(getpid());
    std::ofstream(path) << "new@x.y\n";
    const std::string before = world.listAddresses();
    EXPECT_TRUE(calls(StoreOp::deleteValue, [&] {
        int error = ZXPOL_S_OK;
        lib(zxpol_importAddress, world.list, 0u, 1u, path.c_str(), &error);
        EXPECT_EQ(ZXREG_E_IO, error);
    }));
    std::remove(path.c_str());
    EXPECT_EQ(before, world.listAddresses());
    EXPECT_EQ("", world.listTrouble());
}

TEST_F(ListStoreCalls, AnUpdateThatIsNotKeptLeavesNoAddress) {
    const std::string before = world.listAddresses();
    EXPECT_TRUE(calls(StoreOp::endUpdate, [&] {
        const char* addresses[] = {"new@x.y", nullptr};
        const char** const first = addresses;
        int error = ZXPOL_S_OK;
        lib(zxpol_insertAddress, world.list, first, &error);
        EXPECT_EQ(ZXREG_E_IO, error);
    }));
    EXPECT_EQ(before, world.listAddresses());
    EXPECT_EQ("", world.listTrouble());
}

}  // namespace
