// What a match finds at the moment when another thread's change of a list has just ended, well or not.
#include <gtest/gtest.h>

#include "addrlist/normal_addr_list.h"
#include "fault/world.h"

namespace {

using namespace zxtest;

class UpdateEnd : public testing::Test {
protected:
    void SetUp() override { resetFaultStore(); }
    void TearDown() override {
        watchUpdateEnds(nullptr);
        world.close();
        EXPECT_EQ(std::vector<std::string>(), storeViolations());
        EXPECT_EQ(std::vector<std::string>(), openStoreKeys());
        resetFaultStore();
    }

    // Inserts an address into the list of the rule \R.
    int insert(const char* address) const {
        int error = ZXPOL_S_OK;
        _ZxPolComHandle* list = lib(zxpol_openAddrList, world.listHive, "Shut", &error);
        const char* array[] = {address, nullptr};
        const char** const first = array;
        lib(zxpol_insertAddress, list, first, &error);
        int closed = ZXPOL_S_OK;
        zxpol_closeAddrList(list, &closed);
        return error;
    }

    // Whether the rule takes mail from the sender.
    bool isTaken(const char* sender) const {
        const char* receivers[] = {"r@r.example", nullptr};
        _ZxPolMatchPair* pairs = nullptr;
        uint32_t count = 0;
        int error = ZXPOL_S_OK;
        zxpol_matchRuleByMailInfo(world.ruleHive, world.listHive, sender, receivers, &pairs, &count, &error);
        EXPECT_GE(error, 0);
        const bool isTaken = count == 1 && std::string(pairs[0].rulePath) == "\\R";
        zxpol_freeMatchPair(pairs, count, &error);
        return isTaken;
    }

    // Has the list hold this address alone, as another process might.
    void replaceByOthers(const std::string& address) const {
        int error = ZXREG_S_OK;
        _ZxPolComHandle* key = zxreg_openKey(world.store, "AddressList\\Shut", &error);
        for (int number = 2; number <= 9; ++number) {
            int missing = ZXREG_S_OK;
            zxreg_deleteValue(key, ("address" + std::to_string(number)).c_str(), &missing);
        }
        const std::string image = address + '\0' + '\0';
        zxreg_setValue(key, "address1", ZXREG_MULTI_STRING, image.data(), static_cast<uint32_t>(image.size()), &error);
        EXPECT_GE(error, 0);
        zxreg_closeKey(key, &error);
    }

    World world{Start::lists};
};

TEST_F(UpdateEnd, AMatchSeesWhatOthersWroteSince) {
    ASSERT_EQ(ZXPOL_S_OK, insert("a@x.example"));
    ASSERT_TRUE(isTaken("a@x.example"));
    int ends = 0;
    watchUpdateEnds([&] {
        if (++ends != 1) return;
        replaceByOthers("c@x.example");
        EXPECT_FALSE(isTaken("a@x.example"));
        EXPECT_FALSE(isTaken("b@x.example"));
        EXPECT_TRUE(isTaken("c@x.example"));
    });
    EXPECT_EQ(ZXPOL_S_OK, insert("b@x.example"));
    EXPECT_GE(ends, 1);
    EXPECT_FALSE(isTaken("a@x.example"));
    EXPECT_TRUE(isTaken("c@x.example"));
}

TEST_F(UpdateEnd, AMatchSeesNothingOfAChangeThatWasNotKept) {
    ASSERT_EQ(ZXPOL_S_OK, insert("a@x.example"));
    int ends = 0;
    watchUpdateEnds([&] {
        if (++ends != 1) return;
        EXPECT_TRUE(isTaken("a@x.example"));
        EXPECT_FALSE(isTaken("b@x.example"));
    });
    failStoreCall(1, ZXREG_E_IO, StoreOp::endUpdate);
    EXPECT_EQ(ZXREG_E_IO, insert("b@x.example"));
    failNoStoreCall();
    EXPECT_GE(ends, 1);
    EXPECT_FALSE(isTaken("b@x.example"));
}

// What opening a list ends with while somebody else changes it without end: no reason to pass over the rule, as any
// other failure is.
TEST_F(UpdateEnd, AMatchThatCannotHaveAListFails) {
    // The result of a match of which the `call`-th reading of values fails; a success when there are not so many.
    const auto match = [&](uint64_t call, int code) {
        const char* receivers[] = {"r@r.example", nullptr};
        const char** list = receivers;
        _ZxPolMatchPair* pairs = nullptr;
        uint32_t count = 0;
        int error = ZXPOL_S_OK;
        ZxPolNormalAddrList::clearAddrCacheByName("Shut", &error);
        failStoreCall(call, code, StoreOp::enumValue);
        lib(zxpol_matchRuleByMailInfo, world.ruleHive, world.listHive, "a@x.example", list, &pairs, &count, &error);
        const bool isPlanned = storeCallFailed();
        failNoStoreCall();
        int freed = ZXPOL_S_OK;
        zxpol_freeMatchPair(pairs, count, &freed);
        return std::make_pair(isPlanned, error);
    };
    int failures = 0;
    for (uint64_t call = 1;; ++call) {
        const auto [isPlanned, error] = match(call, ZXREG_E_BUSY);
        if (!isPlanned) break;
        if (error == ZXPOL_S_OK) continue;
        ++failures;
        EXPECT_EQ(ZXREG_E_BUSY, error);
        EXPECT_EQ(ZXPOL_S_OK, match(call, ZXREG_E_IO).second);
    }
    EXPECT_GT(failures, 0);
}

}  // namespace
