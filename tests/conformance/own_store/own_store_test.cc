// The library over a store that the program brings along: its codes pass through, and what our own store
// cannot be made to do.
#include <gtest/gtest.h>

#include <cstring>

#include "map_store.h"
#include "support/raw_store.h"

namespace {

using zxtest::Handle;
using zxtest::ownStore;
using zxtest::ownSubkeys;
using zxtest::ownValues;
using Lines = std::vector<std::string>;

class HostStore : public ::testing::Test {
protected:
    void SetUp() override {
        ownStore() = zxtest::OwnStore();
        _root.reset(zxtest::newOwnStore());
        openHives();
    }
    void TearDown() override {
        closeAll();
        EXPECT_EQ(0, ownStore().openKeys);
        EXPECT_EQ(0, ownStore().openUpdates);
    }
    void openHives() {
        int error = ZXPOL_S_OK;
        _rules.reset(zxpol_openRuleHive(root(), 0, &error));
        _lists.reset(zxpol_openAddrListHive(root(), &error));
        ASSERT_GE(error, 0) << zxtest::codeText(error);
    }
    void closeAll() {
        _rules.reset();
        _lists.reset();
        _root.reset();
    }
    // A store without anything in it.
    void startAfresh() {
        closeAll();
        _root.reset(zxtest::newOwnStore());
    }
    _ZxPolComHandle* root() const { return _root.get(); }
    _ZxPolComHandle* rules() const { return _rules.get(); }
    _ZxPolComHandle* lists() const { return _lists.get(); }

    Handle rootRule() {
        int error = ZXPOL_S_OK;
        return Handle(zxpol_openRootRule(rules(), &error));
    }
    int createList(const char* name) {
        _ZxPolAddrListAttr attr = {};
        attr.type = ZXPOL_ADDRLIST_DIRECTORY;
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createAddrList(lists(), name, &attr, &error));
        EXPECT_EQ(error >= 0, made != nullptr);
        return error;
    }
    int createTask(const char* name) {
        _ZxPolTaskAttr attr = {};
        attr.enable = 1;
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createTask(rootRule().get(), name, &attr, &error));
        EXPECT_EQ(error >= 0, made != nullptr);
        return error;
    }
    int createRule(const char* name) {
        _ZxPolRuleAttr attr = {};
        _ZxPolAddrPairCond pair = {"*", "*"};
        const unsigned char* conditions[] = {reinterpret_cast<const unsigned char*>(&pair), nullptr};
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createRule(rootRule().get(), name, &attr, conditions, &error));
        EXPECT_EQ(error >= 0, made != nullptr);
        return error;
    }
    int refresh() {
        int error = ZXPOL_S_OK;
        zxpol_refreshLdapCache(lists(), &error);
        return error;
    }

private:
    Handle _root, _rules, _lists;
};

TEST_F(HostStore, ItsCodesPassThroughUnchanged) {
    char name[8];
    uint32_t size = sizeof name;
    int error = ZXPOL_S_OK;
    zxpol_enumRule(rootRule().get(), 0, name, &size, &error);
    EXPECT_CODE(zxtest::kOwnEnd, error);
    error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openRuleByFullName(rules(), "\\A", &error));
    EXPECT_CODE(zxtest::kOwnMissing, error);
    error = ZXPOL_S_OK;
    zxpol_removeExclusiveFilterType(rules(), 1, &error);
    EXPECT_CODE(zxtest::kOwnMissing, error);
    EXPECT_CODE(zxtest::kOwnEnd, refresh());
}

TEST_F(HostStore, ItsReasonsAreUnderstoodByTheirLow16Bits) {
    EXPECT_GE(createTask("b"), 0);
    EXPECT_GE(createTask("a"), 0);
    EXPECT_GE(createRule("A"), 0);
    EXPECT_EQ((Lines{"b", "a"}), ownSubkeys(root(), "Rule\\Mail\\tasks"));
    int error = ZXPOL_S_OK;
    EXPECT_EQ(1, zxpol_isTaskActive(rootRule().get(), "\\a", &error));
    EXPECT_GE(error, 0);
    _ZxPolAddrPairCond pair = {"a@b.c", "*"};
    const unsigned char* conditions[] = {reinterpret_cast<const unsigned char*>(&pair), nullptr};
    zxpol_updateConditionEx(rootRule().get(), nullptr, conditions, ZXPOL_COND_CHECK_HIERARCHY, nullptr, &error);
    EXPECT_GE(error, 0) << zxtest::codeText(error);
    const char* receivers[] = {"x@y.z", nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    zxpol_matchRuleByMailInfo(rules(), lists(), "a@b.c", receivers, &pairs, &count, &error);
    EXPECT_GE(error, 0) << zxtest::codeText(error);
    ASSERT_EQ(1u, count);
    EXPECT_STREQ("\\", pairs[0].rulePath);
    EXPECT_EQ(2u, pairs[0].taskCount);
    zxpol_freeMatchPair(pairs, count, &error);
}

TEST_F(HostStore, AListNameOf256BytesIsTooLongToBeRefreshed) {
    int error = 0;
    Handle(zxreg_createKey(root(), ("AddressList\\" + std::string(256, 'l')).c_str(), &error)).reset();
    EXPECT_CODE(zxtest::kOwnTooSmall, refresh());
    zxreg_deleteKey(Handle(zxreg_openKey(root(), "AddressList", &error)).get(), std::string(256, 'l').c_str(), &error);
    EXPECT_GE(createList(std::string(255, 'l').c_str()), 0);
    EXPECT_GE(refresh(), 0);
}

TEST_F(HostStore, AFailedCreationLeavesTheKeyOfTheList) {
    const int code = static_cast<int>(0x87774711u);
    ownStore().failingWrites["server"] = code;
    EXPECT_CODE(code, createList("L"));
    EXPECT_EQ(Lines{"L"}, ownSubkeys(root(), "AddressList"));
    EXPECT_EQ((Lines{"displayName", "comment", "type"}), ownValues(root(), "AddressList\\L"));
}

TEST_F(HostStore, AFailureOfTheCommonAttributesIsNotNoticed) {
    ownStore().failingWrites["displayName"] = static_cast<int>(0x87774711u);
    EXPECT_GE(createList("L"), 0);
    EXPECT_EQ((Lines{"type", "server", "port", "schematype", "searchroot", "authentication", "username", "password",
                     "filter"}),
              ownValues(root(), "AddressList\\L"));
}

TEST_F(HostStore, AListWhoseSettingsAreNotSupportedIsCreated) {
    ownStore().failingWrites["filter"] = ZXPOL_E_NOT_SUPPORTED;
    EXPECT_CODE(ZXPOL_S_OK, createList("L"));
}

TEST_F(HostStore, ATaskWhoseAttributesAreNotSupportedIsCreatedWithoutItsSetting) {
    ownStore().failingWrites["overridable"] = ZXPOL_E_NOT_SUPPORTED;
    EXPECT_CODE(ZXPOL_S_OK, createTask("t"));
    EXPECT_EQ(Lines{"Classification"}, ownSubkeys(root(), "Rule\\Mail\\tasks\\t"));
    ownStore().failingWrites["overridable"] = static_cast<int>(0x87774711u);
    EXPECT_CODE(static_cast<int>(0x87774711u), createTask("u"));
    EXPECT_EQ((Lines{"t", "u"}), ownSubkeys(root(), "Rule\\Mail\\tasks"));
}

TEST_F(HostStore, ARuleWhoseAttributesAreNotSupportedHasNoSubkeys) {
    ownStore().failingWrites["matchType"] = ZXPOL_E_NOT_SUPPORTED;
    EXPECT_CODE(zxtest::kOwnMissing, createRule("A"));  // its conditions ask for the match type
    EXPECT_EQ(Lines{}, ownSubkeys(root(), "Rule\\Mail\\rules\\A"));
}

TEST_F(HostStore, ARootWhoseAttributesAreNotSupportedStaysAsItIs) {
    startAfresh();
    ownStore().failingWrites["matchType"] = ZXPOL_E_NOT_SUPPORTED;
    openHives();
    EXPECT_EQ(Lines{}, ownSubkeys(root(), "Rule\\Mail"));
    for (const std::string& name : ownValues(root(), "Rule\\Mail")) {
        EXPECT_NE("order", name);
        EXPECT_NE("condition1", name);
    }
}

TEST_F(HostStore, ARootThatCannotBeMadeFailsTheOpeningOfTheHive) {
    const int code = static_cast<int>(0x87774711u);
    for (const char* failing : {"matchType", "order", "condition1"}) {
        startAfresh();
        ownStore().failingWrites = {{failing, code}};
        int error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, zxpol_openRuleHive(root(), 0, &error));
        EXPECT_CODE(code, error) << failing;
        EXPECT_EQ(1, ownStore().openKeys);
    }
}

TEST_F(HostStore, AVersionThatCannotBeStampedIsNoFailure) {
    startAfresh();
    ownStore().failingWrites["version"] = static_cast<int>(0x87774711u);
    int error = ZXPOL_S_OK;
    EXPECT_EQ(0x01000000u, zxpol_getVersion(root(), &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    openHives();
    EXPECT_EQ(Lines{}, ownValues(root(), ""));
}

TEST_F(HostStore, AFailingShiftStopsTheInsertion) {
    EXPECT_GE(createTask("a"), 0);
    const int code = static_cast<int>(0x87774711u);
    ownStore().failingWrites["order"] = code;
    _ZxPolTaskAttr attr = {};
    attr.order = 1;
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_createTask(rootRule().get(), "b", &attr, &error));
    EXPECT_CODE(code, error);
    EXPECT_EQ((Lines{"a", "b"}), ownSubkeys(root(), "Rule\\Mail\\tasks"));
}

TEST_F(HostStore, AFailingWriteEndsTheAddingOfConditionsAndKeepsThoseBefore) {
    const int code = static_cast<int>(0x87774711u);
    ownStore().failingWrites["condition3"] = code;
    _ZxPolAddrPairCond pairs[] = {{"a@b.c", "*"}, {"bad", "*"}, {"d@e.f", "*"}, {"g@h.i", "*"}};
    const unsigned char* conditions[5] = {};
    for (size_t at = 0; at < 4; ++at)
        conditions[at] = reinterpret_cast<const unsigned char*>(&pairs[at]);
    int error = ZXPOL_S_OK;
    zxpol_addConditionEx(rootRule().get(), conditions, ZXPOL_COND_CHECK_NONE, nullptr, &error);
    EXPECT_CODE(code, error);
    const Lines values = ownValues(root(), "Rule\\Mail");
    EXPECT_EQ((Lines{"condition1", "condition2"}), Lines(values.end() - 2, values.end()));
}

}  // namespace
