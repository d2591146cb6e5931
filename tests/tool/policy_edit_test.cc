// What changes of a part of a policy promise, whatever they change: all or nothing, and nothing else.
#include <gmock/gmock.h>
#include <unistd.h>

#include <sstream>

#include "change/apply.h"
#include "change/classification_commands.h"
#include "change/rule_commands.h"
#include "edit_fixture.h"
#include "policy/policy_reader.h"
#include "stored/dump_command.h"
#include "stored/raw_key.h"
#include "support/experiment.h"
#include "support/fault_store.h"

namespace tool {

namespace {

using testing::HasSubstr;

using PolicyEditTest = EditTest;

constexpr const char* kMemory = "memory:edited";

std::string dumpOf(const std::string& location) {
    std::ostringstream out;
    runDump({location, true}, out);
    return out.str();
}

// A change, with the store's location in its options.
struct Edit {
    const char* name;
    std::function<void(const std::string& store, bool isDryRun)> make;
};

void PrintTo(const Edit& edit, std::ostream* out) {
    *out << edit.name;
}

template <class Options, class Run>
std::function<void(const std::string&, bool)> edit(Run run, Options options) {
    return [=](const std::string& store, bool isDryRun) {
        Options asked = options;
        asked.store = store;
        asked.isDryRun = isDryRun;
        std::ostringstream out;
        std::ostringstream err;
        run(asked, out, err);
    };
}

std::vector<Edit> edits() {
    RuleEditOptions rule;
    rule.path = "\\Sales\\North";
    rule.position = 2;
    rule.conditions = {"a@b,n@sales.example", "(Partners),n@sales.example"};
    RuleEditOptions added = rule;
    added.path = "\\Sales\\Added";
    added.inactivated = {"\\spam"};
    RuleEditOptions set = rule;
    set.removedConditions = {"*,n@sales.example"};
    set.activated = {"\\Sales\\footer"};
    set.texts.comment = "changed";
    TaskEditOptions task;
    task.path = "\\scan";
    task.position = 2;
    task.enable = false;
    task.outcomes = {"infected=Odd", "new=Odd"};
    task.settings.removed = {"sub"};
    task.settings.set = {"level=[a, b]"};
    TaskEditOptions footer = task;
    footer.path = "\\Sales\\footer";
    TaskEditOptions other = task;
    other.path = "\\other";
    other.settings.removed = {};
    ClassificationEditOptions action;
    action.name = "Infected\\report";
    action.position = 1;
    action.settings.set = {"k=1"};
    ClassificationEditOptions odd;
    odd.name = "Odd";
    return {{"RuleAdd", edit(runRuleAdd, added)},
            {"RuleSet", edit(runRuleSet, set)},
            {"RuleMove", edit(runRuleMove, rule)},
            {"RuleRemove", edit(runRuleRemove, rule)},
            {"TaskAdd", edit(runTaskAdd, other)},
            {"TaskSet", edit(runTaskSet, task)},
            {"TaskMove", edit(runTaskMove, task)},
            {"TaskRemove", edit(runTaskRemove, footer)},
            {"ActionSet", edit(runClassificationSet, action)},
            {"ActionMove", edit(runClassificationMove, action)},
            {"ClassificationRemove", edit(runClassificationRemove, odd)}};
}

// Makes each change on a store of each engine.
class EachEdit : public EditTest, public testing::WithParamInterface<Edit> {
protected:
    EachEdit() : _memory(kMemory, Store::Missing::Create) {
        applyPolicy(_memory, "p", readPolicy("p", policy()), false);
    }
    ~EachEdit() override { zxtest::failNoStoreCall(); }

    const Store& memory() const { return _memory; }

    // Makes the change in the store in memory, with its calls counted; says whether that went well.
    static bool isDoneWithoutError() {
        try {
            const zxtest::CountedCalls counted;
            GetParam().make(kMemory, false);
            return true;
        } catch (const ToolError& error) {
            EXPECT_EQ(error.status(), kFailed);
            return false;
        }
    }

private:
    Store _memory;
};

// Makes some of them, which write all that there is to write, with one call of the store failing.
class FailingEdit : public EachEdit {};

}  // namespace

TEST_P(EachEdit, IsTheSameOnEveryEngineAndChangesNothingWhenDry) {
    const std::string before = dumpOf(kMemory);
    for (const std::string& store : {std::string(kMemory), location()}) {
        GetParam().make(store, true);
        EXPECT_EQ(dumpOf(store), before);
        GetParam().make(store, false);
        EXPECT_NE(dumpOf(store), before);
    }
    EXPECT_EQ(dumpOf(location()), dumpOf(kMemory));
}

TEST_P(FailingEdit, IsDoneOrNotDoneWhicheverCallOfTheStoreFails) {
    const std::string before = dumpOf(kMemory);
    GetParam().make(kMemory, false);
    const std::string after = dumpOf(kMemory);
    bool isDone = true;
    bool hasFailed = true;
    uint64_t call = 1;
    for (; hasFailed; call += zxtest::kStride) {
        if (isDone) applyPolicy(memory(), "p", readPolicy("p", policy()), false);
        zxtest::failStoreCall(call, ZXREG_E_IO);
        isDone = isDoneWithoutError();
        hasFailed = zxtest::storeCallFailed();
        zxtest::failNoStoreCall();
        EXPECT_EQ(dumpOf(kMemory), isDone ? after : before) << call << ": " << zxtest::failedStoreCall();
    }
    EXPECT_TRUE(isDone);
    EXPECT_GT(call, 100U);
}

const auto kEditName = [](const auto& test) { return std::string(test.param.name); };

INSTANTIATE_TEST_SUITE_P(All, EachEdit, testing::ValuesIn(edits()), kEditName);
INSTANTIATE_TEST_SUITE_P(Some, FailingEdit, testing::Values(edits()[1], edits()[5], edits()[8]), kEditName);

TEST_F(PolicyEditTest, PasswordsAreNeitherNeededNorLost) {
    const std::string before = run({"dump", "--with-secrets"}).out;
    ASSERT_THAT(before, HasSubstr("password: \"secret\""));
    const std::string key = path("policy.db.key");
    ASSERT_EQ(rename(key.c_str(), path("key").c_str()), 0);
    EXPECT_EQ(run({"rule", "set", "\\Labs", "--comment", "d"}).status, 0);
    EXPECT_EQ(run({"tree"}).status, 0);
    ASSERT_EQ(rename(path("key").c_str(), key.c_str()), 0);
    EXPECT_EQ(run({"rule", "set", "\\Labs", "--comment", "c"}).status, 0);
    EXPECT_EQ(run({"dump", "--with-secrets"}).out, before);
}

TEST_F(PolicyEditTest, TheContentsOfListsAreNotReadHoweverManyAddressesThereAre) {
    const Store store(kMemory, Store::Missing::Create);
    const auto callsWith = [&](size_t addresses) {
        Policy wanted = readPolicy("p", policy());
        std::vector<std::string> many;
        for (size_t i = 0; i < addresses; ++i)
            many.push_back("a" + std::to_string(i) + "@partner.example");
        std::get<NormalList>(wanted.lists.at("Partners")).addresses = many;
        applyPolicy(store, "p", wanted, false);
        zxtest::failNoStoreCall();
        const zxtest::CountedCalls counted;
        edits()[1].make(kMemory, false);
        return zxtest::countedStoreCalls();
    };
    const uint64_t calls = callsWith(1);
    EXPECT_GT(calls, 100U);
    EXPECT_EQ(callsWith(20000), calls);
}

TEST_F(PolicyEditTest, AChangeOfNothingWritesNothing) {
    const Store store(location(), Store::Missing::Refuse);
    const uint64_t before = store.stamp();
    for (const std::vector<std::string>& command : {std::vector<std::string>{"rule", "set", "\\Labs", "--comment", "c"},
                                                    {"rule", "set", "\\Labs", "--comment", "d", "--dry-run"},
                                                    {"task", "move", "\\scan", "--position", "1"},
                                                    {"tree"},
                                                    {"classification", "show"}})
        EXPECT_EQ(run(command).status, 0);
    EXPECT_EQ(store.stamp(), before);
    EXPECT_EQ(run({"rule", "set", "\\Labs", "--comment", "d"}).status, 0);
    EXPECT_NE(store.stamp(), before);
}

TEST_F(PolicyEditTest, AStoreThatNoPolicyFileCouldSayIsLeftAlone) {
    const Store store(location(), Store::Missing::Refuse);
    int result = ZXPOL_S_OK;
    const KeyHandle rule = openRawKey(store.key(), "Rule\\Mail\\rules\\Labs");
    zxreg_setValue(rule.get(), "foreign", ZXREG_STRING, "x", 2, &result);
    ASSERT_TRUE(ZX_SUCCESS(result));
    const uint64_t before = store.stamp();
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"rule", "set", "\\Sales", "--comment", "d"}, {"tree"}}) {
        const Outcome outcome = run(command);
        EXPECT_EQ(outcome.status, 3);
        EXPECT_THAT(outcome.err, HasSubstr("rule \\Labs has a value \"foreign\" that is no part of a policy"));
    }
    EXPECT_EQ(store.stamp(), before);
}

TEST_F(PolicyEditTest, AStoreThatIsNotThereIsNotMade) {
    for (const std::vector<std::string>& command : {std::vector<std::string>{"rule", "add", "\\A"},
                                                    {"task", "add", "\\t"},
                                                    {"classification", "add", "C"},
                                                    {"tree"},
                                                    {"diff", "sqlite:" + path("no.db"), "sqlite:" + path("no.db")}}) {
        std::vector<std::string> arguments{"--store", "sqlite:" + path("no.db")};
        arguments.insert(arguments.end(), command.begin(), command.end());
        const Outcome outcome = runPlain(arguments);
        EXPECT_EQ(outcome.status, 3);
        EXPECT_THAT(outcome.err, HasSubstr("there is no store at "));
        EXPECT_NE(access(path("no.db").c_str(), F_OK), 0) << "the store was made";
    }
    EXPECT_THAT(runPlain({"--store", "memory:", "rule", "add", "\\A"}).err, HasSubstr("holds no policy"));
}

TEST_F(PolicyEditTest, AReportThatCannotBeWrittenIsAFailure) {
    const Outcome outcome = runShell("$zxpolicy rule set '\\Labs' --comment d >/dev/full");
    EXPECT_EQ(outcome.status, 3);
    EXPECT_THAT(outcome.err,
                HasSubstr("was changed, but the report could not be written to standard output: No space"));
    EXPECT_THAT(dump(), HasSubstr("comment: d"));
}

}  // namespace tool
