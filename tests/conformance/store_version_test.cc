// The version of the policy in a store, and the gate that it is for the hives.
#include "support/policy_fixture.h"

namespace {

using zxtest::Handle;

class StoreVersion : public zxtest::StoreTest {
protected:
    // Opens both hives one after the other; returns the codes as text.
    std::string openBoth() {
        int rules = ZXPOL_S_OK, lists = ZXPOL_S_OK;
        const Handle ruleHive(zxpol_openRuleHive(store(), 0, &rules));
        const Handle listHive(zxpol_openAddrListHive(store(), &lists));
        EXPECT_EQ(rules >= 0, ruleHive != nullptr);
        EXPECT_EQ(lists >= 0, listHive != nullptr);
        return zxtest::codeText(rules) + " " + zxtest::codeText(lists);
    }
};
ZXTEST_ON_BOTH_ENGINES(StoreVersion);

TEST_P(StoreVersion, AFreshStoreIsStampedWhenAHiveIsOpened) {
    EXPECT_EQ(std::nullopt, raw().number("version"));
    int error = ZXPOL_S_OK;
    const Handle hive(zxpol_openAddrListHive(store(), &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    ASSERT_NE(nullptr, hive);
    EXPECT_EQ(0x01000000u, hive->kind == ZXPOL_HANDLE_ADDRLIST_HIVE ? raw().number("version") : std::nullopt);
    EXPECT_TRUE(raw().hasKey("AddressList"));
    EXPECT_FALSE(raw().hasKey("Rule"));
}

TEST_P(StoreVersion, TheLower24BitsMayHoldAnything) {
    raw().setNumber("version", 0x01FFFFFF);
    EXPECT_EQ("0x01020000 0x01020000", openBoth());
    EXPECT_EQ(0x01FFFFFFu, raw().number("version"));
}

TEST_P(StoreVersion, AnOlderMajorVersionIsAccepted) {
    raw().setNumber("version", 0x00000001);
    EXPECT_EQ("0x01020000 0x01020000", openBoth());
    EXPECT_EQ(1u, raw().number("version"));
}

TEST_P(StoreVersion, ALaterMajorVersionIsRefusedAndNothingIsMade) {
    for (const uint32_t version : {0x02000000u, 0xff000000u}) {
        raw().setNumber("version", version);
        EXPECT_EQ("0x81021807 0x81021807", openBoth());
        EXPECT_TRUE(raw().subkeys().empty());
        EXPECT_EQ(version, raw().number("version"));
    }
}

TEST_P(StoreVersion, TheGateStandsBeforeTheHiveType) {
    raw().setNumber("version", 0x02000000);
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openRuleHive(store(), 1, &error));
    EXPECT_CODE(ZXPOL_E_VERSION, error);
}

TEST_P(StoreVersion, AnUnreadableVersionIsReplaced) {
    raw().setText("version", "a text that does not fit four bytes");
    EXPECT_EQ("0x01020000 0x01020000", openBoth());
    EXPECT_EQ(0x01000000u, raw().number("version"));
}

TEST_P(StoreVersion, IsToldEvenWhenItIsNotSupported) {
    raw().setNumber("version", 0x02000000);
    int error = ZXPOL_S_OK;
    EXPECT_EQ(0x02000000u, zxpol_getVersion(store(), &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
}

TEST_P(StoreVersion, AskingStampsAFreshStore) {
    int error = ZXPOL_S_OK;
    EXPECT_EQ(0x01000000u, zxpol_getVersion(store(), &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(0x01000000u, raw().number("version"));
}

TEST_P(StoreVersion, TheCheckLeavesTheResultArgumentAlone) {
    raw().setNumber("version", 0x02000000);
    int error = ZXPOL_E_PARSE;
    uint32_t version = 0;
    EXPECT_FALSE(checkVersion(store(), &error, &version));
    EXPECT_EQ(0x02000000u, version);
    EXPECT_CODE(ZXPOL_E_PARSE, error);
    EXPECT_FALSE(checkVersion(store(), &error, nullptr));
    raw().removeValue("version");
    EXPECT_TRUE(checkVersion(store(), &error, &version));
    EXPECT_EQ(0x01000000u, version);
    EXPECT_CODE(ZXPOL_E_PARSE, error);
}

}  // namespace
