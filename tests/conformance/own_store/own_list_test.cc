// Normal lists in a store that the program brings along, which tells neither its keys apart nor when they change:
// nothing is taken from one list to another, and the store is what counts.
#include <gtest/gtest.h>

#include "map_store.h"
#include "support/raw_store.h"

namespace {

using zxtest::Handle;
using zxtest::ownStore;
using Lines = std::vector<std::string>;

class HostLists : public ::testing::Test {
protected:
    // A store with its hive.
    struct Store {
        Store() : root(zxtest::newOwnStore()) {
            int error = ZXPOL_S_OK;
            hive.reset(zxpol_openAddrListHive(root.get(), &error));
        }
        Handle root, hive;
    };
    void SetUp() override { ownStore() = zxtest::OwnStore(); }

    static Handle create(const Store& store, const char* name) {
        const _ZxPolAddrListAttr attr = {};
        int error = ZXPOL_S_OK;
        Handle made(zxpol_createAddrList(store.hive.get(), name, &attr, &error));
        EXPECT_TRUE(made != nullptr) << zxtest::codeText(error);
        return made;
    }
    static int insert(const Handle& list, const char* address) {
        const char* array[] = {address, nullptr};
        int error = ZXPOL_S_OK;
        zxpol_insertAddress(list.get(), array, &error);
        return error;
    }
    static int remove(const Handle& list, const char* address) {
        const char* array[] = {address, nullptr};
        int error = ZXPOL_S_OK;
        zxpol_removeAddress(list.get(), array, &error);
        return error;
    }
    static Lines addresses(const Handle& list) {
        Lines found;
        for (uint32_t index = 0;; ++index) {
            char buffer[ZXPOL_ADDRESS_SIZE];
            uint32_t size = sizeof buffer;
            int error = ZXPOL_S_OK;
            zxpol_enumAddress(list.get(), index, buffer, &size, &error);
            if (error < 0) return found;
            found.emplace_back(buffer);
        }
    }
    static Lines reopened(const Store& store, const char* name) {
        int error = ZXPOL_S_OK;
        const Handle list(zxpol_openAddrList(store.hive.get(), name, &error));
        return list == nullptr ? Lines{zxtest::codeText(error)} : addresses(list);
    }
};

TEST_F(HostLists, KeepWhatIsInsertedAndRemoved) {
    const Store store;
    const Handle list = create(store, "Kept");
    for (const char* address : {"a@b.c", "*@d.e", "f@g.h"})
        EXPECT_CODE(ZXPOL_S_OK, insert(list, address));
    EXPECT_CODE(ZXPOL_S_OK, remove(list, "A@b.c"));
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, remove(list, "a@b.c"));
    EXPECT_EQ((Lines{"*@d.e", "f@g.h"}), addresses(list));
    EXPECT_EQ((Lines{"*@d.e", "f@g.h"}), reopened(store, "Kept"));
    EXPECT_EQ((Lines{"type", "displayName", "comment", "address1"}),
              zxtest::ownValues(store.root.get(), "AddressList\\Kept"));
}

TEST_F(HostLists, AreFreshWhenTheyAreCreatedAgain) {
    const Store store;
    EXPECT_CODE(ZXPOL_S_OK, insert(create(store, "Fresh"), "a@b.c"));
    int error = ZXPOL_S_OK;
    zxpol_deleteAddrList(store.hive.get(), "Fresh", &error);
    EXPECT_GE(error, 0);
    EXPECT_EQ(Lines{zxtest::codeText(zxtest::kOwnMissing)}, reopened(store, "Fresh"));
    EXPECT_EQ(Lines{}, addresses(create(store, "Fresh")));
}

TEST_F(HostLists, ReportTheStoresCodesAndKeepWhatTheyHad) {
    const Store store;
    const Handle list = create(store, "Failing");
    EXPECT_CODE(ZXPOL_S_OK, insert(list, "a@b.c"));
    const int code = static_cast<int>(0x87774711u);
    ownStore().failingWrites["address1"] = code;
    EXPECT_CODE(code, insert(list, "d@e.f"));
    EXPECT_CODE(code, remove(list, "a@b.c"));
    ownStore().failingWrites.clear();
    EXPECT_EQ(Lines{"a@b.c"}, reopened(store, "Failing"));
    EXPECT_CODE(ZXPOL_S_OK, insert(list, "d@e.f"));
    EXPECT_EQ((Lines{"a@b.c", "d@e.f"}), reopened(store, "Failing"));
    EXPECT_EQ(reopened(store, "Failing"), addresses(list));
}

}  // namespace
