#include <gmock/gmock.h>

#include <functional>

#include "stored/handles.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using testing::HasSubstr;

// Something that another program wrote, and what the tool must say about it.
struct Foreign {
    const char* name;
    const char* key;  // where it is written, from the store's key
    std::function<void(_ZxPolComHandle*, int*)> write;
    const char* says;
};

void PrintTo(const Foreign& foreign, std::ostream* out) {
    *out << foreign.name;
}

std::function<void(_ZxPolComHandle*, int*)> number(const char* name, uint32_t value) {
    return [=](_ZxPolComHandle* key, int* result) {
        zxreg_setValue(key, name, ZXREG_NUMBER, &value, sizeof value, result);
    };
}

std::function<void(_ZxPolComHandle*, int*)> text(const char* name, const std::string& value,
                                                 uint32_t type = ZXREG_STRING) {
    return [=](_ZxPolComHandle* key, int* result) {
        zxreg_setValue(key, name, type, value.c_str(), static_cast<uint32_t>(value.size()) + 1, result);
    };
}

std::function<void(_ZxPolComHandle*, int*)> subkey(const char* name) {
    return [=](_ZxPolComHandle* key, int* result) { KeyHandle(zxreg_createKey(key, name, result)); };
}

std::function<void(_ZxPolComHandle*, int*)> withoutValue(const char* name) {
    return [=](_ZxPolComHandle* key, int* result) { zxreg_deleteValue(key, name, result); };
}

std::function<void(_ZxPolComHandle*, int*)> withoutKey(const char* name) {
    return [=](_ZxPolComHandle* key, int* result) { zxreg_deleteKey(key, name, result); };
}

const char* const kA = "Rule\\Mail\\rules\\A";
const char* const kTask = "Rule\\Mail\\tasks\\t";
const char* const kList = "AddressList\\L";
const char* const kClass = "Classification\\C";
const char* const kAction = "Classification\\C\\actions\\a";
const char* const kNormal = "AddressList\\N";

// Texts as a store has them, but for the last NUL.
std::string manyAddresses(int count) {
    std::string texts;
    for (int i = 0; i < count; ++i)
        texts.append("a" + std::to_string(i) + "@b").append(1, '\0');
    return texts;
}

const std::vector<Foreign>& foreigners() {
    static const std::vector<Foreign> kAll{
        {"ListOfUnknownType", kList, number("type", 2), "address list \"L\" is of type 2"},
        {"ListWithoutType", kList, withoutValue("type"), "address list \"L\" lacks its value \"type\""},
        {"ListWithPortAsText", kList, text("port", "389"), "a value \"port\" that is of the wrong type"},
        {"ListWithMore", kList, text("extra", "x"), "a value \"extra\" that is no part of a policy"},
        {"ListWithKey", kList, subkey("extra"), "a key \"extra\" that is no part of a policy"},
        {"EmptyListKey", "AddressList", subkey("M"), "address list \"M\" lacks its value"},
        {"NormalListWithMore", kNormal, text("extra", "x"), "a value \"extra\" that is no part of a policy"},
        {"NormalListWithoutComment", kNormal, withoutValue("comment"),
         "address list \"N\" lacks its value \"comment\""},
        {"NormalListWithKey", kNormal, subkey("extra"), "address list \"N\" has a key \"extra\""},
        {"AddressesAsText", kNormal, text("address1", "a@b"), "a value \"address1\" that is of the wrong type"},
        {"AddressesUnended", kNormal, text("address1", "a@b", ZXREG_MULTI_STRING),
         "\"address1\" that is no list of texts"},
        {"AddressesBehindTheEnd", kNormal, text("address1", std::string("a@b\0\0c@d\0", 9), ZXREG_MULTI_STRING),
         "\"address1\" that is no list of texts"},
        {"AddressesTooLong", kNormal, text("address1", manyAddresses(400), ZXREG_MULTI_STRING),
         "longer than 2048 bytes"},
        {"AddressInvalid", kNormal, text("address1", std::string("jo*@b\0", 6), ZXREG_MULTI_STRING),
         "address list \"N\" holds \"jo*@b\", which is no address"},
        {"AddressSteersTerminal", kNormal, text("address1", std::string("\x1b[2J\0", 5), ZXREG_MULTI_STRING),
         "holds \"\\x1B[2J\", which is no address"},
        {"AddressTwice", kNormal, text("address2", std::string("\"A\"@B\0", 6), ZXREG_MULTI_STRING),
         "holds \"\\\"A\\\"@B\", which stands twice"},
        {"ListInOtherCase", "",
         [](_ZxPolComHandle* key, int* result) {
             const ListHiveHandle hive(zxpol_openAddrListHive(key, result));
             _ZxPolAddrListAttr attr{};
             attr.type = ZXPOL_ADDRLIST_DIRECTORY;
             const ListHandle list(zxpol_createAddrList(hive.get(), "l", &attr, result));
         },
         "address list \"l\" differs from \"L\" only in letter case"},
        {"EmptyClassificationKey", "Classification", subkey("Infected"),
         "classification \"Infected\" lacks its value \"displayName\""},
        {"ValueAmongClassifications", "Classification", number("x", 1), "the classifications' key has a value \"x\""},
        {"ClassificationWithoutComment", kClass, withoutValue("comment"),
         "classification \"C\" lacks its value \"comment\""},
        {"ClassificationWithMore", kClass, number("actionType", 1), "\"actionType\" that is no part of a policy"},
        {"ClassificationLongName", kClass, text("displayName", std::string(256, 'n')), "longer than 255 bytes"},
        {"ClassificationInOtherCase", "",
         [](_ZxPolComHandle* key, int* result) {
             const ClassificationHiveHandle hive(zxpol_openClassificationHive(key, result));
             const _ZxPolCommAttrib attr{};
             const ClassificationHandle made(zxpol_createClassification(hive.get(), "c", &attr, result));
         },
         "classification \"c\" differs from \"C\" only in letter case"},
        {"ClassificationWithKey", kClass, subkey("extra"), "classification \"C\" has a key \"extra\""},
        {"EmptyActionKey", "Classification\\C\\actions", subkey("b"),
         "action \"b\" of classification \"C\" lacks its value"},
        {"ValueAmongActions", "Classification\\C\\actions", number("x", 1), "the actions key of classification \"C\""},
        {"ActionWithoutOrder", kAction, withoutValue("order"), "lacks its value \"order\""},
        {"ActionOrderTooGreat", kAction, number("order", 0x80000000),
         "cannot read all of the actions of classification \"C\": \"a\" is stored"},
        {"ActionWithoutSetting", kAction, withoutKey("setting"),
         "action \"a\" of classification \"C\" lacks its key \"setting\""},
        {"ActionTypeAsText", kAction, text("actionType", "1"), "\"actionType\" that is of the wrong type"},
        {"ActionWithMore", kAction, number("filter", 1), "\"filter\" that is no part of a policy"},
        {"ActionSettingWithBackslash", "Classification\\C\\actions\\a\\setting", text("b\\c", "x"), "backslash"},
        {"ProtectedActionSetting", "Classification\\C\\actions\\a\\setting", text("s", "x", ZXREG_PROTECTED_STRING),
         "is protected"},
        {"ExclusiveFilterType", "Rule", number("ExcluId00000007", 2), "neither 0 nor 1"},
        {"ExclusiveFilterName", "Rule", number("ExcluID00000007", 1), "no part of a policy"},
        {"OtherHiveKey", "Rule", subkey("News"), "the rules' key has a key \"News\""},
        {"RuleWithMore", kA, text("color", "red"), "rule \\A has a value \"color\" that is no part of a policy"},
        {"RuleWithKey", kA, subkey("color"), "rule \\A has a key \"color\""},
        {"RuleWithoutOrder", kA, withoutValue("order"), "rule \\A lacks its value \"order\""},
        {"RuleOrderTooGreat", kA, number("order", 0x80000000),
         "cannot read all of the rules below rule \\: \"A\" is stored"},
        {"RuleWithoutComment", kA, withoutValue("comment"), "rule \\A lacks its value \"comment\""},
        {"RuleWithoutMarks", kA, withoutKey("inactive"), "rule \\A lacks its key \"inactive\""},
        {"RuleWithoutTasks", kA, withoutKey("tasks"), "rule \\A lacks its key \"tasks\""},
        {"RuleWithoutRules", kA, withoutKey("rules"), "rule \\A lacks its key \"rules\""},
        {"RuleWithConditionsOfOtherType", kA, number("matchType", 1), "has conditions although its matchType is not 0"},
        {"ConditionAsNumber", kA, number("condition2", 1), "\"condition2\" that is of the wrong type"},
        {"ConditionWithoutComma", kA, text("condition2", "a"), "rule \\A: the sender \"\" of a condition is empty"},
        {"LongCondition", kA, text("condition2", std::string(600, 'a') + ",b"), "is empty"},
        {"LongComment", kA, text("comment", std::string(512, 'c')), "\"comment\" that is longer than 511 bytes"},
        {"CommentWithNul", kA, text("comment", std::string("a\0b", 3)), "\"comment\" that is no text"},
        {"MarkTwice", "Rule\\Mail\\rules\\A\\inactive", text("inactive2", "\\T\\"), "stands twice"},
        {"EmptyMark", "Rule\\Mail\\rules\\A\\inactive", text("inactive2", ""), "is empty"},
        {"LongMark", "Rule\\Mail\\rules\\A\\inactive", text("inactive2", std::string(256, 'm')), "longer than 255"},
        {"OtherValueAmongMarks", "Rule\\Mail\\rules\\A\\inactive", text("active1", "x"), "no part of a policy"},
        {"RuleInOtherCase", "Rule\\Mail\\rules",
         [](_ZxPolComHandle* key, int* result) {
             const KeyHandle rule(zxreg_createKey(key, "a", result));
             for (const char* name : {"rules", "tasks", "inactive"})
                 KeyHandle(zxreg_createKey(rule.get(), name, result));
             number("order", 2)(rule.get(), result);
             number("matchType", 0)(rule.get(), result);
             text("comment", "")(rule.get(), result);
             text("displayName", "")(rule.get(), result);
         },
         "rule \\a differs from \"A\" only in letter case"},
        {"EnableOfTwo", kTask, number("enable", 2), "task \\t has a value \"enable\" that is neither 0 nor 1"},
        {"TaskWithMore", kTask, number("weight", 2), "task \\t has a value \"weight\" that is no part of a policy"},
        {"TaskOrderTooGreat", kTask, number("order", 0x80000000),
         "cannot read all of the tasks of rule \\: \"t\" is stored"},
        {"TaskWithoutFilter", kTask, withoutValue("filter"), "task \\t lacks its value \"filter\""},
        {"TaskWithoutSetting", kTask, withoutKey("setting"), "task \\t lacks its key \"setting\""},
        {"EmptyOutcome", "Rule\\Mail\\tasks\\t\\Classification", text("o", ""), "outcome \"o\" is empty"},
        {"OutcomeAsNumber", "Rule\\Mail\\tasks\\t\\Classification", number("o", 1),
         "the outcomes' key of task \\t has a value \"o\" that is of the wrong type; correct it with the program"},
        {"OutcomeWithBackslash", "Rule\\Mail\\tasks\\t\\Classification", text("o\\p", "x"), "backslash"},
        {"ProtectedSetting", "Rule\\Mail\\tasks\\t\\setting", text("s", "x", ZXREG_PROTECTED_STRING), "is protected"},
        {"BrokenTexts", "Rule\\Mail\\tasks\\t\\setting", text("s", "x", ZXREG_MULTI_STRING), "no list of texts"},
        {"SettingWithNul", "Rule\\Mail\\tasks\\t\\setting", text("s", std::string("a\0b", 3)), "is no text"},
        {"SettingsInOtherCase", "Rule\\Mail\\tasks\\t\\setting", text("LEVEL", "x"), "only in letter case"},
        {"SettingWithBackslash", "Rule\\Mail\\tasks\\t\\setting", text("s\\p", "x"), "contains a backslash"},
        {"SettingAndKey", "Rule\\Mail\\tasks\\t\\setting", subkey("level"), "both a value and a key"},
    };
    return kAll;
}

class ForeignStore : public ToolTest, public testing::WithParamInterface<Foreign> {};

}  // namespace

TEST_P(ForeignStore, IsNamedAndNeitherDumpedInPartNorChanged) {
    apply(
        "zxpolicy: 1\nlists: [{name: L, type: directory}, {name: N, addresses: [a@b]}]\n"
        "classifications: [{name: C, actions: [{name: a}]}]\n" +
        policyWithRoot("  tasks: [{name: t, setting: {level: 1}}]\n"
                       "  rules: [{name: A, inactive: ['\\t'], conditions: [{sender: a@b.c, receiver: \"*\"}]}]\n")
            .substr(12));
    {
        int result = ZXREG_S_OK;
        const KeyHandle store(zxreg_openStore(location().c_str(), &result));
        const KeyHandle key(zxreg_createKey(store.get(), GetParam().key, &result));
        GetParam().write(key.get(), &result);
        ASSERT_TRUE(ZX_SUCCESS(result)) << std::hex << result;
    }
    const std::string before = read(path("policy.db-wal"));
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"dump"}, {"dump", "--with-secrets"}, {"apply", "-"}}) {
        const Outcome outcome = run(command, policyWithRoot(""));
        EXPECT_EQ(outcome.status, 3);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, HasSubstr(GetParam().says));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1);
    }
    EXPECT_EQ(read(path("policy.db-wal")), before);
}

INSTANTIATE_TEST_SUITE_P(All, ForeignStore, testing::ValuesIn(foreigners()),
                         [](const auto& test) { return std::string(test.param.name); });

using ForeignStoreTest = ToolTest;

TEST_F(ForeignStoreTest, WhatStandsBesideThePolicyIsLeftAlone) {
    apply(policyWithRoot(""));
    {
        int result = ZXREG_S_OK;
        const KeyHandle store(zxreg_openStore(location().c_str(), &result));
        const KeyHandle other(zxreg_createKey(store.get(), "Other", &result));
        number("x", 1)(other.get(), &result);
        ASSERT_TRUE(ZX_SUCCESS(result));
    }
    EXPECT_EQ(apply(dump()), "nothing to change\n");
}

TEST_F(ForeignStoreTest, AStoreOfALaterVersionIsRefused) {
    apply(policyWithRoot(""));
    {
        int result = ZXREG_S_OK;
        const KeyHandle store(zxreg_openStore(location().c_str(), &result));
        number("version", 0x02000000)(store.get(), &result);
        ASSERT_TRUE(ZX_SUCCESS(result));
    }
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"dump"}, {"apply", "-"}, {"match", "--sender", "a@b", "--receiver", "c@d"}}) {
        const Outcome outcome = run(command, policyWithRoot(""));
        EXPECT_EQ(outcome.status, 3);
        EXPECT_THAT(outcome.err, HasSubstr("ZXPOL_E_VERSION (0x81021807)"));
    }
}

TEST_F(ToolTest, AStoreOfVeryManyLevelsIsRefused) {
    apply(policyWithRoot(""));
    {
        int result = ZXREG_S_OK;
        const KeyHandle store(zxreg_openStore(location().c_str(), &result));
        zxreg_beginUpdate(store.get(), &result);
        KeyHandle rule(zxreg_openKey(store.get(), "Rule\\Mail", &result));
        for (int level = 0; level < 9000 && result >= 0; ++level) {
            KeyHandle child(zxreg_createKey(rule.get(), "rules", &result));
            child = KeyHandle(zxreg_createKey(child.get(), "A", &result));
            rule = std::move(child);
        }
        ASSERT_GE(result, 0);
        zxreg_endUpdate(store.get(), &result);
        ASSERT_GE(result, 0);
    }
    const Outcome outcome = run({"dump"});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(outcome.out, "");
    EXPECT_NE(outcome.err.find("cannot dump the store"), std::string::npos) << outcome.err;
}

}  // namespace tool
