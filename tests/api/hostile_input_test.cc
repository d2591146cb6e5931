// Arguments that no well-meaning caller would pass: missing, endless, odd. Nothing is written, nothing overruns.
#include <functional>
#include <memory>

#include "support/policy_fixture.h"
#include "support/store_dump.h"

using namespace zxtest;

namespace {

class HostileInput : public PolicyTest {
protected:
    void SetUp() override {
        PolicyTest::SetUp();
        if (HasFatalFailure()) return;
        addRule("\\", "A", "*@a.example");
        addTask("\\A", "t", {26, 1, 1, 0});
        addDirectoryList("Dir");
        int error = ZXPOL_S_OK;
        const _ZxPolCommAttrib attr{};
        _ZxPolActionAttr actionAttr{};
        _classHive.reset(zxpol_openClassificationHive(store(), &error));
        _classification.reset(zxpol_createClassification(classHive(), "Class", &attr, &error));
        _action.reset(zxpol_createAction(classification(), "act", &actionAttr, &error));
        ASSERT_GE(error, 0) << codeText(error);
    }
    void TearDown() override {
        _action.reset();
        _classification.reset();
        _classHive.reset();
        PolicyTest::TearDown();
    }
    _ZxPolComHandle* classHive() const { return _classHive.get(); }
    _ZxPolComHandle* classification() const { return _classification.get(); }
    _ZxPolComHandle* action() const { return _action.get(); }

    std::string content() const { return describe(readStore(store())); }

    Handle task() const {
        int error = ZXPOL_S_OK;
        return Handle(zxpol_openTask(rule("\\A").get(), "t", &error));
    }
    Handle list() const {
        int error = ZXPOL_S_OK;
        return Handle(zxpol_openAddrList(listHive(), "Dir", &error));
    }

    // Runs `call` and expects the code, with the store as it was.
    void expectRefused(int code, const std::string& what, const std::function<void(int*)>& call) const {
        const std::string before = content();
        int error = ZXPOL_S_OK;
        call(&error);
        EXPECT_CODE(code, error) << what;
        EXPECT_EQ(before, content()) << what;
    }

    // A record on the heap, where a read past its end is seen, whose field at `field` has no NUL.
    template <class Record, size_t N>
    static std::unique_ptr<Record> unterminated(char (Record::*field)[N]) {
        auto record = std::make_unique<Record>();
        std::memset(record.get(), 0, sizeof(Record));
        std::memset((*record).*field, 'x', N);
        return record;
    }

    template <size_t N>
    void refuseRule(char (_ZxPolRuleAttr::*field)[N], const char* name) const {
        const auto record = unterminated(field);
        const Conditions any{{"*", "*"}};
        const Handle root = rule();
        expectRefused(ZXPOL_E_INVALID_ARG, std::string("creating a rule, ") + name, [&](int* error) {
            EXPECT_EQ(nullptr, zxpol_createRule(root.get(), "new", record.get(), any.list(), error));
        });
        expectRefused(ZXPOL_E_INVALID_ARG, std::string("changing a rule, ") + name,
                      [&](int* error) { zxpol_setRuleAttrib(root.get(), record.get(), error); });
    }

    template <size_t N>
    void refuseTask(char (_ZxPolTaskAttr::*field)[N], const char* name) const {
        const auto record = unterminated(field);
        const Handle root = rule();
        const Handle target = task();
        expectRefused(ZXPOL_E_INVALID_ARG, std::string("creating a task, ") + name, [&](int* error) {
            EXPECT_EQ(nullptr, zxpol_createTask(root.get(), "new", record.get(), error));
        });
        expectRefused(ZXPOL_E_INVALID_ARG, std::string("changing a task, ") + name,
                      [&](int* error) { zxpol_setTaskAttrib(target.get(), record.get(), error); });
    }

    template <size_t N>
    void refuseList(char (_ZxPolAddrListAttr::*field)[N], const char* name) const {
        const auto record = unterminated(field);
        record->type = ZXPOL_ADDRLIST_DIRECTORY;
        const Handle target = list();
        expectRefused(ZXPOL_E_INVALID_ARG, std::string("creating a list, ") + name, [&](int* error) {
            EXPECT_EQ(nullptr, zxpol_createAddrList(listHive(), "new", record.get(), error));
        });
        expectRefused(ZXPOL_E_INVALID_ARG, std::string("changing a list, ") + name,
                      [&](int* error) { zxpol_setAddrListAttrib(target.get(), record.get(), error); });
    }

    template <size_t N>
    void refuseClassification(char (_ZxPolCommAttrib::*field)[N], const char* name) const {
        const auto record = unterminated(field);
        expectRefused(ZXPOL_E_INVALID_ARG, std::string("creating an existing classification, ") + name,
                      [&](int* error) {
                          EXPECT_EQ(nullptr, zxpol_createClassification(classHive(), "Class", record.get(), error));
                      });
        expectRefused(ZXPOL_E_INVALID_ARG, std::string("changing a classification, ") + name,
                      [&](int* error) { zxpol_setClassificationAttrib(classification(), record.get(), error); });
    }

    template <size_t N>
    void refuseAction(char (_ZxPolActionAttr::*field)[N], const char* name) const {
        const auto record = unterminated(field);
        expectRefused(ZXPOL_E_INVALID_ARG, std::string("creating an existing action, ") + name, [&](int* error) {
            EXPECT_EQ(nullptr, zxpol_createAction(classification(), "act", record.get(), error));
        });
        expectRefused(ZXPOL_E_INVALID_ARG, std::string("changing an action, ") + name,
                      [&](int* error) { zxpol_setActionAttrib(action(), record.get(), error); });
    }

private:
    Handle _classHive, _classification, _action;
};

// ---- texts without an end ---------------------------------------------------------------------------------

TEST_P(HostileInput, RuleRecordsWithoutNul) {
    refuseRule(&_ZxPolRuleAttr::displayName, "displayName");
    refuseRule(&_ZxPolRuleAttr::comment, "comment");
}

TEST_P(HostileInput, TaskRecordsWithoutNul) {
    refuseTask(&_ZxPolTaskAttr::displayName, "displayName");
    refuseTask(&_ZxPolTaskAttr::comment, "comment");
}

TEST_P(HostileInput, ListRecordsWithoutNul) {
    refuseList(&_ZxPolAddrListAttr::displayName, "displayName");
    refuseList(&_ZxPolAddrListAttr::comment, "comment");
    refuseList(&_ZxPolAddrListAttr::server, "server");
    refuseList(&_ZxPolAddrListAttr::searchroot, "searchroot");
    refuseList(&_ZxPolAddrListAttr::username, "username");
    refuseList(&_ZxPolAddrListAttr::password, "password");
    refuseList(&_ZxPolAddrListAttr::filter, "filter");
}

TEST_P(HostileInput, ClassificationAndActionRecordsWithoutNul) {
    refuseClassification(&_ZxPolCommAttrib::displayName, "displayName");
    refuseClassification(&_ZxPolCommAttrib::comment, "comment");
    refuseAction(&_ZxPolActionAttr::displayName, "displayName");
    refuseAction(&_ZxPolActionAttr::comment, "comment");
}

TEST_P(HostileInput, ConditionsWithoutNulAreMalformed) {
    const Handle a = rule("\\A");
    for (char(_ZxPolAddrPairCond::*side)[ZXPOL_ADDRESS_SIZE] :
         {&_ZxPolAddrPairCond::sender, &_ZxPolAddrPairCond::receiver}) {
        auto pair = unterminated(side);
        char(&other)[ZXPOL_ADDRESS_SIZE] = pair->sender[0] == 'x' ? pair->receiver : pair->sender;
        setField(other, "*");
        const unsigned char* bad[] = {asCondition(*pair), nullptr};
        const uint32_t indices[] = {0};
        expectRefused(ZXPOL_E_INVALID_FORMAT, "adding",
                      [&](int* error) { zxpol_addCondition(a.get(), asCondition(*pair), error); });
        expectRefused(ZXPOL_E_INVALID_FORMAT, "adding a list",
                      [&](int* error) { zxpol_addConditionEx(a.get(), bad, ZXPOL_COND_CHECK_NONE, nullptr, error); });
        expectRefused(ZXPOL_E_INVALID_FORMAT, "updating", [&](int* error) {
            zxpol_updateConditionEx(a.get(), indices, bad, ZXPOL_COND_CHECK_NONE, nullptr, error);
        });
        expectRefused(ZXPOL_E_NOT_FOUND, "removing",
                      [&](int* error) { zxpol_removeCondition(a.get(), asCondition(*pair), error); });
    }
}

TEST_P(HostileInput, UncoveredConditionWithoutNulIsRefusedByTheCheckToo) {
    const Handle a = rule("\\A");
    const auto pair = unterminated(&_ZxPolAddrPairCond::receiver);
    const unsigned char* bad[] = {asCondition(*pair), nullptr};
    const std::string before = content();
    _ZxPolErrorCond** errorConds = nullptr;
    int error = ZXPOL_S_OK;
    zxpol_addConditionEx(a.get(), bad, ZXPOL_COND_CHECK_HIERARCHY, &errorConds, &error);
    EXPECT_TRUE(ZX_FAILURE(error)) << codeText(error);
    EXPECT_EQ(before, content());
    if (errorConds != nullptr) zxpol_freeErrorConds(errorConds, &error);
}

// ---- missing arguments ------------------------------------------------------------------------------------

TEST_P(HostileInput, NullAndEmptyNames) {
    const Handle root = rule();
    const Handle t = task();
    _ZxPolRuleAttr ruleRecord{};
    _ZxPolTaskAttr taskRecord{};
    _ZxPolAddrListAttr listRecord{};
    listRecord.type = ZXPOL_ADDRLIST_DIRECTORY;
    const _ZxPolCommAttrib classRecord{};
    _ZxPolActionAttr actionRecord{};
    const Conditions any{{"*", "*"}};
    char buffer[64];
    uint32_t size = sizeof buffer;
    using Use = std::function<void(const char*, int*)>;
    const std::vector<std::pair<const char*, Use>> uses = {
        {"openRuleByFullName",
         [&](const char* n, int* e) { EXPECT_EQ(nullptr, zxpol_openRuleByFullName(ruleHive(), n, e)); }},
        {"createRule",
         [&](const char* n, int* e) {
             EXPECT_EQ(nullptr, zxpol_createRule(root.get(), n, &ruleRecord, any.list(), e));
         }},
        {"openRule", [&](const char* n, int* e) { EXPECT_EQ(nullptr, zxpol_openRule(root.get(), n, e)); }},
        {"deleteRule", [&](const char* n, int* e) { zxpol_deleteRule(root.get(), n, e); }},
        {"setRuleOrder", [&](const char* n, int* e) { zxpol_setRuleOrder(root.get(), n, 1, e); }},
        {"createTask",
         [&](const char* n, int* e) { EXPECT_EQ(nullptr, zxpol_createTask(root.get(), n, &taskRecord, e)); }},
        {"openTask", [&](const char* n, int* e) { EXPECT_EQ(nullptr, zxpol_openTask(root.get(), n, e)); }},
        {"deleteTask", [&](const char* n, int* e) { zxpol_deleteTask(root.get(), n, e); }},
        {"setTaskOrder", [&](const char* n, int* e) { zxpol_setTaskOrder(root.get(), n, 1, e); }},
        {"inactivateTask", [&](const char* n, int* e) { zxpol_inactivateTask(root.get(), n, 0, e); }},
        {"isTaskActive", [&](const char* n, int* e) { EXPECT_EQ(0, zxpol_isTaskActive(root.get(), n, e)); }},
        {"getOutcome", [&](const char* n, int* e) { zxpol_getOutcome(t.get(), n, buffer, &size, e); }},
        {"addOutcome", [&](const char* n, int* e) { zxpol_addOutcome(t.get(), n, "value", e); }},
        {"addOutcome, value", [&](const char* n, int* e) { zxpol_addOutcome(t.get(), "name", n, e); }},
        {"deleteOutcome", [&](const char* n, int* e) { zxpol_deleteOutcome(t.get(), n, e); }},
        {"createAddrList",
         [&](const char* n, int* e) { EXPECT_EQ(nullptr, zxpol_createAddrList(listHive(), n, &listRecord, e)); }},
        {"openAddrList", [&](const char* n, int* e) { EXPECT_EQ(nullptr, zxpol_openAddrList(listHive(), n, e)); }},
        {"deleteAddrList", [&](const char* n, int* e) { zxpol_deleteAddrList(listHive(), n, e); }},
        {"createClassification",
         [&](const char* n, int* e) {
             EXPECT_EQ(nullptr, zxpol_createClassification(classHive(), n, &classRecord, e));
         }},
        {"openClassification",
         [&](const char* n, int* e) { EXPECT_EQ(nullptr, zxpol_openClassification(classHive(), n, e)); }},
        {"deleteClassification", [&](const char* n, int* e) { zxpol_deleteClassification(classHive(), n, e); }},
        {"createAction",
         [&](const char* n, int* e) { EXPECT_EQ(nullptr, zxpol_createAction(classification(), n, &actionRecord, e)); }},
        {"openAction", [&](const char* n, int* e) { EXPECT_EQ(nullptr, zxpol_openAction(classification(), n, e)); }},
        {"deleteAction", [&](const char* n, int* e) { zxpol_deleteAction(classification(), n, e); }},
        {"setActionOrder",
         [&](const char* n, int* e) { EXPECT_EQ(0u, zxpol_setActionOrder(classification(), n, 1, e)); }},
    };
    for (const auto& [what, use] : uses) {
        const Use& call = use;
        expectRefused(ZXPOL_E_INVALID_ARG, what + std::string(", null"), [&](int* e) { call(nullptr, e); });
        expectRefused(ZXPOL_E_INVALID_ARG, what + std::string(", empty"), [&](int* e) { call("", e); });
    }
}

TEST_P(HostileInput, NullRecordsAndLists) {
    const Handle root = rule();
    const Handle t = task();
    const Handle dir = list();
    _ZxPolRuleAttr ruleRecord{};
    const Conditions any{{"*", "*"}};
    uint32_t number = 0;
    ZxPolFilterPriorityType type = ZXPOL_FILTER_ASC_EXCLUSIVE;
    const char* receivers[] = {"r@x.example", nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    _ZxPolComHandle* rules = ruleHive();
    _ZxPolComHandle* lists = listHive();
    const std::vector<std::pair<const char*, std::function<void(int*)>>> uses = {
        {"createRule, record", [&](int* e) { zxpol_createRule(root.get(), "n", nullptr, any.list(), e); }},
        {"createRule, conditions", [&](int* e) { zxpol_createRule(root.get(), "n", &ruleRecord, nullptr, e); }},
        {"getRuleAttrib", [&](int* e) { zxpol_getRuleAttrib(root.get(), nullptr, e); }},
        {"setRuleAttrib", [&](int* e) { zxpol_setRuleAttrib(root.get(), nullptr, e); }},
        {"addCondition", [&](int* e) { zxpol_addCondition(root.get(), nullptr, e); }},
        {"removeCondition", [&](int* e) { zxpol_removeCondition(root.get(), nullptr, e); }},
        {"addConditionEx",
         [&](int* e) { zxpol_addConditionEx(root.get(), nullptr, ZXPOL_COND_CHECK_NONE, nullptr, e); }},
        {"removeConditionEx",
         [&](int* e) { zxpol_removeConditionEx(root.get(), nullptr, ZXPOL_COND_CHECK_NONE, nullptr, e); }},
        {"updateConditionEx",
         [&](int* e) { zxpol_updateConditionEx(root.get(), nullptr, nullptr, ZXPOL_COND_CHECK_NONE, nullptr, e); }},
        {"createTask", [&](int* e) { zxpol_createTask(root.get(), "n", nullptr, e); }},
        {"getTaskAttrib", [&](int* e) { zxpol_getTaskAttrib(t.get(), nullptr, e); }},
        {"setTaskAttrib", [&](int* e) { zxpol_setTaskAttrib(t.get(), nullptr, e); }},
        {"createAddrList", [&](int* e) { zxpol_createAddrList(lists, "n", nullptr, e); }},
        {"getAddrListAttrib", [&](int* e) { zxpol_getAddrListAttrib(dir.get(), nullptr, e); }},
        {"setAddrListAttrib", [&](int* e) { zxpol_setAddrListAttrib(dir.get(), nullptr, e); }},
        {"createAction", [&](int* e) { zxpol_createAction(classification(), "n", nullptr, e); }},
        {"createClassification", [&](int* e) { zxpol_createClassification(classHive(), "Class", nullptr, e); }},
        {"getClassificationAttrib", [&](int* e) { zxpol_getClassificationAttrib(classification(), nullptr, e); }},
        {"setClassificationAttrib", [&](int* e) { zxpol_setClassificationAttrib(classification(), nullptr, e); }},
        {"getActionAttrib", [&](int* e) { zxpol_getActionAttrib(action(), nullptr, e); }},
        {"setActionAttrib", [&](int* e) { zxpol_setActionAttrib(action(), nullptr, e); }},
        {"enumExclusiveFilterType, filter",
         [&](int* e) { zxpol_enumExclusiveFilterType(rules, 0, nullptr, &type, e); }},
        {"enumExclusiveFilterType, type",
         [&](int* e) { zxpol_enumExclusiveFilterType(rules, 0, &number, nullptr, e); }},
        {"setMatchOption", [&](int* e) { zxpol_setMatchOption(nullptr, e); }},
        {"match, sender",
         [&](int* e) { zxpol_matchRuleByMailInfo(rules, lists, nullptr, receivers, &pairs, &number, e); }},
        {"match, receivers", [&](int* e) { zxpol_matchRuleByMailInfo(rules, lists, "", nullptr, &pairs, &number, e); }},
        {"match, pairs", [&](int* e) { zxpol_matchRuleByMailInfo(rules, lists, "", receivers, nullptr, &number, e); }},
        {"match, count", [&](int* e) { zxpol_matchRuleByMailInfo(rules, lists, "", receivers, &pairs, nullptr, e); }},
    };
    for (const auto& [what, use] : uses)
        expectRefused(ZXPOL_E_INVALID_ARG, what, use);
}

TEST_P(HostileInput, NumbersOutOfRange) {
    const Handle root = rule();
    const Handle t = task();
    const Conditions any{{"*", "*"}};
    _ZxPolRuleAttr negativeType{};
    negativeType.matchType = -1;
    _ZxPolRuleAttr negativeOrder{};
    negativeOrder.order = 0x80000000u;
    _ZxPolTaskAttr enable2{};
    enable2.enable = 2;
    _ZxPolTaskAttr overridable2{};
    overridable2.overridable = -1;
    _ZxPolTaskAttr taskOrder{};
    taskOrder.order = 0xffffffffu;
    _ZxPolAddrListAttr type2{};
    type2.type = 2;
    _ZxPolActionAttr actionOrder{};
    actionOrder.order = 0x80000000u;
    const std::vector<std::pair<const char*, std::function<void(int*)>>> uses = {
        {"rule, type", [&](int* e) { zxpol_createRule(root.get(), "n", &negativeType, any.list(), e); }},
        {"rule, type changed", [&](int* e) { zxpol_setRuleAttrib(root.get(), &negativeType, e); }},
        {"rule, order", [&](int* e) { zxpol_createRule(root.get(), "n", &negativeOrder, any.list(), e); }},
        {"task, enable", [&](int* e) { zxpol_createTask(root.get(), "n", &enable2, e); }},
        {"task, enable changed", [&](int* e) { zxpol_setTaskAttrib(t.get(), &enable2, e); }},
        {"task, overridable", [&](int* e) { zxpol_createTask(root.get(), "n", &overridable2, e); }},
        {"task, overridable changed", [&](int* e) { zxpol_setTaskAttrib(t.get(), &overridable2, e); }},
        {"task, order", [&](int* e) { zxpol_createTask(root.get(), "n", &taskOrder, e); }},
        {"list, type", [&](int* e) { zxpol_createAddrList(listHive(), "n", &type2, e); }},
        {"action, order", [&](int* e) { zxpol_createAction(classification(), "n", &actionOrder, e); }},
        {"action, position 0", [&](int* e) { zxpol_setActionOrder(classification(), "act", 0, e); }},
        {"action, position -1", [&](int* e) { zxpol_setActionOrder(classification(), "act", 0xffffffffu, e); }},
        {"position 0", [&](int* e) { zxpol_setRuleOrder(root.get(), "A", 0, e); }},
        {"position -1", [&](int* e) { zxpol_setRuleOrder(root.get(), "A", 0xffffffffu, e); }},
        {"exclusive 2",
         [&](int* e) { zxpol_setExclusiveFilterType(ruleHive(), 1, static_cast<ZxPolFilterPriorityType>(2), e); }},
    };
    for (const auto& [what, use] : uses)
        expectRefused(ZXPOL_E_INVALID_ARG, what, use);
}

// ---- names at and past their limits, and of odd characters -----------------------------------------------------

// A task's full name, which marks are made of, has at most 255 characters: on the root a name of 254.
TEST_P(HostileInput, LongestNames) {
    const std::string longest(255, 'n');
    const std::string taskName(254, 't');
    addRule("\\", longest);
    addTask("\\", taskName);
    addDirectoryList(longest);
    EXPECT_EQ("A " + longest, names(zxpol_enumRule, rule().get()));
    EXPECT_EQ(taskName, names(zxpol_enumTask, rule().get()));
    EXPECT_EQ("Dir " + longest, names(zxpol_enumAddrList, listHive()));
    EXPECT_NE(nullptr, rule("\\" + longest));
    EXPECT_EQ(std::vector<std::string>{"\\" + longest + ": r@x.example | " + taskName}, matched("", {"r@x.example"}));
}

TEST_P(HostileInput, NamesThatAreTooLong) {
    const Handle root = rule();
    const Conditions any{{"*", "*"}};
    for (const size_t length : {256u, 512u, 1024u, 70000u}) {
        const std::string name(length, 'n');
        _ZxPolRuleAttr ruleRecord{};
        _ZxPolTaskAttr taskRecord{};
        _ZxPolAddrListAttr listRecord{};
        listRecord.type = ZXPOL_ADDRLIST_DIRECTORY;
        const std::string before = content();
        int error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, zxpol_createRule(root.get(), name.c_str(), &ruleRecord, any.list(), &error));
        EXPECT_TRUE(ZX_FAILURE(error)) << length;
        error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, zxpol_createTask(root.get(), name.c_str(), &taskRecord, &error));
        EXPECT_TRUE(ZX_FAILURE(error)) << length;
        error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, zxpol_createAddrList(listHive(), name.c_str(), &listRecord, &error));
        EXPECT_TRUE(ZX_FAILURE(error)) << length;
        error = ZXPOL_S_OK;
        zxpol_addOutcome(task().get(), name.c_str(), "value", &error);
        EXPECT_TRUE(ZX_FAILURE(error)) << length;
        const _ZxPolCommAttrib classRecord{};
        _ZxPolActionAttr actionRecord{};
        error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, zxpol_createClassification(classHive(), name.c_str(), &classRecord, &error));
        EXPECT_TRUE(ZX_FAILURE(error)) << length;
        error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, zxpol_createAction(classification(), name.c_str(), &actionRecord, &error));
        EXPECT_TRUE(ZX_FAILURE(error)) << length;
        EXPECT_EQ(before, content()) << length;
        expectRefused(ZXPOL_E_INVALID_ARG, "mark",
                      [&](int* e) { zxpol_inactivateTask(root.get(), name.c_str(), 0, e); });
        expectRefused(ZXPOL_E_INVALID_ARG, "activity",
                      [&](int* e) { EXPECT_EQ(0, zxpol_isTaskActive(root.get(), name.c_str(), e)); });
    }
}

TEST_P(HostileInput, LongestNamesOfClassificationsAndActions) {
    const std::string longest(255, 'n');
    const _ZxPolCommAttrib classRecord{};
    _ZxPolActionAttr actionRecord{};
    int error = ZXPOL_S_OK;
    const Handle made(zxpol_createClassification(classHive(), longest.c_str(), &classRecord, &error));
    const Handle act(zxpol_createAction(made.get(), longest.c_str(), &actionRecord, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ("Class " + longest, names(zxpol_enumClassification, classHive()));
    EXPECT_EQ(longest, names(zxpol_enumAction, made.get()));
    EXPECT_EQ(1u, zxpol_setActionOrder(made.get(), longest.c_str(), 1, &error));
    zxpol_deleteAction(made.get(), longest.c_str(), &error);
    zxpol_deleteClassification(classHive(), longest.c_str(), &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
}

TEST_P(HostileInput, OddNamesOfClassificationsAndActions) {
    for (const char* name : {"\x01\n\t\x7f", "\xc3\xa9\xff\x80", " ", "%s%n%x", "a/b", "..", "(x)"}) {
        SCOPED_TRACE(name);
        const _ZxPolCommAttrib classRecord{};
        _ZxPolActionAttr actionRecord{};
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createClassification(classHive(), name, &classRecord, &error));
        const Handle act(zxpol_createAction(made.get(), name, &actionRecord, &error));
        EXPECT_CODE(ZXPOL_S_OK, error);
        EXPECT_EQ(std::string("Class ") + name, names(zxpol_enumClassification, classHive()));
        EXPECT_EQ(name, names(zxpol_enumAction, made.get()));
        zxpol_deleteClassification(classHive(), name, &error);
        EXPECT_CODE(ZXPOL_S_OK, error);
    }
}

TEST_P(HostileInput, OddNamesAreReferredToByNothing) {
    addRule("\\A", "bait", "(Dir)");
    const std::string endless(100000, '(');
    for (const std::string& name : {std::string(), std::string("("), std::string(")"), std::string("()"), endless,
                                    std::string("%s%n"), std::string("\xff\xfe"), std::string("Dir)"),
                                    std::string("(Dir"), std::string("(Dir)"), std::string("Dir ")}) {
        for (const uint32_t entity : {0u, 1u, 2u, 0xffffffffu}) {
            char path[8] = "as is";
            uint32_t size = sizeof path;
            int error = ZXPOL_S_OK;
            EXPECT_EQ(0, zxpol_checkReferInRule(store(), static_cast<ZxPolRefEntity>(entity), name.c_str(), path, &size,
                                                &error));
            EXPECT_CODE(ZXPOL_S_OK, error);
            EXPECT_STREQ("as is", path);
            EXPECT_EQ(8u, size);
        }
    }
}

TEST_P(HostileInput, LongestTexts) {
    _ZxPolRuleAttr attr{};
    setField(attr.displayName, std::string(255, 'd'));
    setField(attr.comment, std::string(511, 'c'));
    int error = ZXPOL_S_OK;
    const Handle a = rule("\\A");
    zxpol_setRuleAttrib(a.get(), &attr, &error);
    _ZxPolRuleAttr read{};
    zxpol_getRuleAttrib(a.get(), &read, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ(attr.displayName, read.displayName);
    EXPECT_STREQ(attr.comment, read.comment);

    const std::string sender = "(" + std::string(509, 's') + ")";
    const std::string receiver = "(" + std::string(509, 'r') + ")";
    EXPECT_CODE(ZXPOL_S_OK, addCondition("\\A", sender, receiver));
    EXPECT_EQ(sender + " -> " + receiver, conditionsOf("\\A").back());

    _ZxPolAddrListAttr listRecord{};
    listRecord.type = ZXPOL_ADDRLIST_DIRECTORY;
    setField(listRecord.filter, std::string(1023, 'f'));
    setField(listRecord.password, std::string(39, 'p'));
    zxpol_setAddrListAttrib(list().get(), &listRecord, &error);
    _ZxPolAddrListAttr listRead{};
    zxpol_getAddrListAttrib(list().get(), &listRead, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ(listRecord.filter, listRead.filter);
    EXPECT_STREQ("secret", listRead.password);
}

TEST_P(HostileInput, LongestMark) {
    const std::string name = "\\" + std::string(254, 't');
    const Handle a = rule("\\A");
    int error = ZXPOL_S_OK;
    zxpol_inactivateTask(a.get(), name.c_str(), 0, &error);
    EXPECT_EQ(0, zxpol_isTaskActive(a.get(), name.c_str(), &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    const std::string other = "\\" + std::string(253, 't') + "\\";
    EXPECT_EQ(1, zxpol_isTaskActive(a.get(), other.c_str(), &error));
    zxpol_inactivateTask(a.get(), name.c_str(), 1, &error);
    EXPECT_EQ(1, zxpol_isTaskActive(a.get(), name.c_str(), &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
}

TEST_P(HostileInput, OddCharactersComeBackAsTheyAre) {
    for (const char* name :
         {"\x01\n\t\x7f", "\xc3\xa9\xff\x80", " ", "%s%n%x", "a/b", "..", "'\"; DROP TABLE keys;--"}) {
        SCOPED_TRACE(name);
        addRule("\\A", name, "*@a.example");
        addTask("\\A", name);
        EXPECT_EQ(name, names(zxpol_enumRule, rule("\\A").get()));
        const Handle opened = rule(std::string("\\A\\") + name);
        ASSERT_NE(nullptr, opened);
        _ZxPolRuleAttr attr{};
        int error = ZXPOL_S_OK;
        zxpol_getRuleAttrib(opened.get(), &attr, &error);
        EXPECT_STREQ(name, attr.displayName);
        EXPECT_EQ(std::vector<std::string>{std::string("\\A\\") + name + ": r@x.example | t " + name},
                  matched("s@a.example", {"r@x.example"}));
        zxpol_deleteRule(rule("\\A").get(), name, &error);
        zxpol_deleteTask(rule("\\A").get(), name, &error);
        EXPECT_CODE(ZXPOL_S_OK, error);
    }
}

// A lone backslash designates the container of the children, as the empty name does: never a child.
TEST_P(HostileInput, LoneBackslashIsNoChild) {
    const Handle root = rule();
    _ZxPolRuleAttr ruleRecord{};
    _ZxPolTaskAttr taskRecord{};
    _ZxPolAddrListAttr listRecord{};
    listRecord.type = ZXPOL_ADDRLIST_DIRECTORY;
    const _ZxPolCommAttrib classRecord{};
    _ZxPolActionAttr actionRecord{};
    const Conditions any{{"*", "*"}};
    const std::vector<std::pair<const char*, std::function<void(int*)>>> uses = {
        {"createRule", [&](int* e) { Handle(zxpol_createRule(root.get(), "\\", &ruleRecord, any.list(), e)); }},
        {"openRule", [&](int* e) { Handle(zxpol_openRule(root.get(), "\\", e)); }},
        {"deleteRule", [&](int* e) { zxpol_deleteRule(root.get(), "\\", e); }},
        {"setRuleOrder", [&](int* e) { zxpol_setRuleOrder(root.get(), "\\", 1, e); }},
        {"createTask", [&](int* e) { Handle(zxpol_createTask(root.get(), "\\", &taskRecord, e)); }},
        {"deleteTask", [&](int* e) { zxpol_deleteTask(root.get(), "\\", e); }},
        {"createAddrList", [&](int* e) { Handle(zxpol_createAddrList(listHive(), "\\", &listRecord, e)); }},
        {"deleteAddrList", [&](int* e) { zxpol_deleteAddrList(listHive(), "\\", e); }},
        {"createClassification",
         [&](int* e) { Handle(zxpol_createClassification(classHive(), "\\", &classRecord, e)); }},
        {"deleteClassification", [&](int* e) { zxpol_deleteClassification(classHive(), "\\", e); }},
        {"createAction", [&](int* e) { Handle(zxpol_createAction(classification(), "\\", &actionRecord, e)); }},
        {"deleteAction", [&](int* e) { zxpol_deleteAction(classification(), "\\", e); }},
        {"setActionOrder", [&](int* e) { zxpol_setActionOrder(classification(), "\\", 1, e); }},
    };
    for (const auto& [what, use] : uses)
        expectRefused(ZXPOL_E_INVALID_ARG, what, use);
}

TEST_P(HostileInput, PathsThatLeadNowhere) {
    const Handle root = rule();
    _ZxPolRuleAttr ruleRecord{};
    const Conditions any{{"*", "*"}};
    for (const char* name : {"nowhere\\x", "\\x", "x\\\\y", "\\\\"}) {
        const std::string before = content();
        int error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, zxpol_createRule(root.get(), name, &ruleRecord, any.list(), &error)) << name;
        EXPECT_TRUE(ZX_FAILURE(error)) << name;
        error = ZXPOL_S_OK;
        zxpol_deleteRule(root.get(), name, &error);
        EXPECT_TRUE(ZX_FAILURE(error)) << name;
        EXPECT_EQ(before, content()) << name;
    }
    for (const char* path : {"\\\\", "\\A\\\\", "\\A\\\\B", "\\nobody", "\\A\\B\\C\\D\\E"}) {
        int error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, zxpol_openRuleByFullName(ruleHive(), path, &error)) << path;
        EXPECT_TRUE(ZX_FAILURE(error)) << path;
    }
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openRuleByFullName(ruleHive(), "A", &error));
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, error);
}

// ---- mails ---------------------------------------------------------------------------------------------------

TEST_P(HostileInput, OddAddresses) {
    const std::string endless(100000, 'a');
    const std::vector<std::string> odd = {"",          "@",         "@@",    ":",          "a:b:c@d",
                                          "\"",        "\"@\"",     "[",     "a@[",        "a@[1.2.3",
                                          "\xff@\xfe", "\n",        "a@b@c", "(",          ")",
                                          "(Dir)",     "*",         "*@*",   endless,      endless + "@a.example",
                                          "%s",        "a@b.c.d.e", " a@b ", "a@b\r\nRCPT"};
    for (const std::string& sender : odd) {
        for (const std::string& receiver : odd) {
            for (const uint32_t mode : {0u, 1u, 0xffffffffu}) {
                const MatchResult result = match(sender, {receiver.c_str()}, mode);
                EXPECT_CODE(ZXPOL_S_OK, result.code) << sender.substr(0, 50) << " " << receiver.substr(0, 50);
                // The root matches everybody; nobody gets nothing.
                ASSERT_EQ(1u, result.lines.size());
            }
        }
    }
}

TEST_P(HostileInput, NoReceiversAndManyReceivers) {
    EXPECT_EQ(std::vector<std::string>(), matched("s@a.example", {}));
    const std::vector<std::string> same(3, "r@x.example");
    EXPECT_EQ(std::vector<std::string>{"\\A: r@x.example r@x.example r@x.example | t"},
              matched("s@a.example", {"r@x.example", "r@x.example", "r@x.example"}));
}

TEST_P(HostileInput, UnknownMatchOptionsActAsTheFirst) {
    const _ZxPolMatchOption odd = {0, 99, 0xffffffffu, 7, 8};
    int error = ZXPOL_S_OK;
    zxpol_setMatchOption(&odd, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(std::vector<std::string>{"\\A: r@x.example | t"}, matched("s@a.example", {"r@x.example"}, 1));
}

ZXTEST_ON_BOTH_ENGINES(HostileInput);

}  // namespace
