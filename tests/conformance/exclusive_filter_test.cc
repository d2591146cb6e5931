// The hive's table of exclusive filter types.
#include "support/policy_fixture.h"

namespace {

class ExclusiveFilters : public zxtest::PolicyTest {
protected:
    int set(uint32_t filter, uint32_t type) {
        int error = ZXPOL_S_OK;
        zxpol_setExclusiveFilterType(ruleHive(), filter, static_cast<ZxPolFilterPriorityType>(type), &error);
        return error;
    }
    // All exclusive filter types, "id:type", as enumerated.
    std::string enumerated() {
        std::vector<std::string> found;
        for (uint32_t index = 0;; ++index) {
            uint32_t filter = 4711;
            ZxPolFilterPriorityType type = static_cast<ZxPolFilterPriorityType>(99);
            int error = ZXPOL_S_OK;
            zxpol_enumExclusiveFilterType(ruleHive(), index, &filter, &type, &error);
            if (error < 0) {
                EXPECT_CODE(ZXREG_E_NO_MORE_ITEMS, error);
                EXPECT_EQ(4711u, filter);
                EXPECT_EQ(99u, static_cast<uint32_t>(type));
                return zxtest::joined(found);
            }
            found.push_back(std::to_string(filter) + ":" + std::to_string(static_cast<uint32_t>(type)));
        }
    }
};
ZXTEST_ON_BOTH_ENGINES(ExclusiveFilters);

TEST_P(ExclusiveFilters, AreValuesOfTheHiveNamedByEightLowerCaseDigits) {
    EXPECT_CODE(ZXPOL_S_OK, set(26, ZXPOL_FILTER_DESC_EXCLUSIVE));
    EXPECT_CODE(ZXPOL_S_OK, set(4294967295u, ZXPOL_FILTER_ASC_EXCLUSIVE));
    EXPECT_EQ((std::vector<std::string>{"ExcluId0000001a", "ExcluIdffffffff"}), raw("Rule").valueNames());
    EXPECT_EQ(1u, raw("Rule").number("ExcluId0000001a"));
    EXPECT_EQ(0u, raw("Rule").number("ExcluIdffffffff"));
    EXPECT_EQ("26:1 4294967295:0", enumerated());
}

TEST_P(ExclusiveFilters, OtherTypesAreRefusedAndNothingIsWritten) {
    for (const uint32_t type : {2u, 3u, 0xffffffffu})
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, set(1, type));
    EXPECT_TRUE(raw("Rule").valueNames().empty());
}

TEST_P(ExclusiveFilters, SettingAgainReplaces) {
    set(26, 0);
    EXPECT_CODE(ZXPOL_S_OK, set(26, 1));
    EXPECT_EQ("26:1", enumerated());
}

TEST_P(ExclusiveFilters, RemovingOneThatIsNotThereIsTheStoresFailure) {
    set(26, 0);
    int error = ZXPOL_S_OK;
    zxpol_removeExclusiveFilterType(ruleHive(), 27, &error);
    EXPECT_CODE(ZXREG_E_NOT_FOUND, error);
    error = ZXPOL_S_OK;
    zxpol_removeExclusiveFilterType(ruleHive(), 26, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ("", enumerated());
}

TEST_P(ExclusiveFilters, PrefixAndDigitsAreCaseBlind) {
    raw("Rule").setNumber("ExcluID0000000A", 1);
    EXPECT_EQ("10:1", enumerated());
}

TEST_P(ExclusiveFilters, OnlyExactlyEightDigitsCount) {
    for (const char* name : {"ExcluId1234567", "ExcluId123456789", "ExcluId0000000g", "ExcluId", "ExcluIdea",
                             "xExcluId00000001", "ExcluId 0000001", "ExcluId0x000001", "ExcluId-0000001"})
        raw("Rule").setNumber(name, 0);
    EXPECT_EQ("", enumerated());
}

TEST_P(ExclusiveFilters, OtherValuesNeverShiftTheIndices) {
    raw("Rule").setNumber("a", 5);
    set(1, 0);
    raw("Rule").setText("b", "text");
    set(2, 1);
    raw("Rule").setText("ExcluId", "text");
    set(3, 0);
    EXPECT_EQ("1:0 2:1 3:0", enumerated());
}

TEST_P(ExclusiveFilters, NullOutputsAreRefused) {
    set(1, 0);
    uint32_t filter = 0;
    ZxPolFilterPriorityType type = ZXPOL_FILTER_ASC_EXCLUSIVE;
    int error = ZXPOL_S_OK;
    zxpol_enumExclusiveFilterType(ruleHive(), 0, nullptr, &type, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    zxpol_enumExclusiveFilterType(ruleHive(), 0, &filter, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
}

}  // namespace
