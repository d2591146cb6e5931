// lint: each finding, on a policy that has it and on one that has not.
#include "analysis/lint.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <set>

#include "stored/raw_key.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class LintTest : public ToolTest {
protected:
    LintResult lint() const { return lintPolicy(Store(location(), Store::Missing::Refuse), {}); }

    // The places of the findings of one kind, in order.
    std::vector<std::string> placesOf(const std::string& id) const {
        std::vector<std::string> places;
        for (const Finding& finding : lint().findings)
            if (finding.id == id) places.push_back(finding.place);
        return places;
    }

    std::vector<std::string> textsOf(const std::string& id) const {
        std::vector<std::string> texts;
        for (const Finding& finding : lint().findings)
            if (finding.id == id) texts.push_back(finding.text);
        return texts;
    }

    // Writes a value behind the library's back.
    void write(const std::string& key, const std::string& name, uint32_t type, const std::string& data) const {
        const Store store(location(), Store::Missing::Refuse);
        int result = ZXPOL_S_OK;
        zxreg_setValue(openRawKey(store.key(), key).get(), name.c_str(), type, data.data(),
                       static_cast<uint32_t>(data.size()), &result);
        ASSERT_TRUE(ZX_SUCCESS(result));
    }
    void writeText(const std::string& key, const std::string& name, const std::string& text) const {
        write(key, name, ZXREG_STRING, text + '\0');
    }
    void writeNumber(const std::string& key, const std::string& name, uint32_t number) const {
        write(key, name, ZXREG_NUMBER, std::string(reinterpret_cast<const char*>(&number), sizeof number));
    }
    // Makes a task, however long its full name is.
    void addTask(const std::string& rulePath, const std::string& name) const {
        const Store store(location(), Store::Missing::Refuse);
        int result = ZXPOL_S_OK;
        const RuleHiveHandle hive(zxpol_openRuleHive(store.key(), 0, &result));
        const RuleHandle rule(zxpol_openRuleByFullName(hive.get(), rulePath.c_str(), &result));
        _ZxPolTaskAttr attr{};
        attr.enable = 1;
        const TaskHandle task(zxpol_createTask(rule.get(), name.c_str(), &attr, &result));
        ASSERT_TRUE(ZX_SUCCESS(result));
    }
    void erase(const std::string& key, const std::string& name) const {
        const Store store(location(), Store::Missing::Refuse);
        int result = ZXPOL_S_OK;
        zxreg_deleteValue(openRawKey(store.key(), key).get(), name.c_str(), &result);
        ASSERT_TRUE(ZX_SUCCESS(result));
    }
};

using Texts = std::vector<std::string>;

const std::string kTwoRules = policyWithRoot(R"(  rules:
    - {name: A, conditions: [{sender: "*", receiver: "*@a.example"}, {sender: "*", receiver: "*@c.example"}]}
    - {name: B, conditions: [{sender: "*", receiver: "*@b.example"}]}
    - {name: C, conditions: [{sender: "*", receiver: "*@d.example"}]}
)");

const char* const kRules = "Rule\\Mail\\rules";
const char* const kRuleA = "Rule\\Mail\\rules\\A";

}  // namespace

TEST_F(LintTest, FindsNothingInAPolicyThatIsAllRight) {
    apply(kTwoRules);
    const Outcome outcome = run({"lint"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "0 errors, 0 warnings, 0 notes\n");
}

TEST_F(LintTest, FindsInTheExampleOneOfEachThatAFileCanSay) {
    const Outcome outcome = runPlain({"lint", std::string(ZX_EXAMPLES) + "/lint.yaml"});
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    for (const char* line :
         {"error missing-list: rule \\Guests, condition 2\n", "error directory-list: rule \\Guests, condition 3\n",
          "warning empty-list: rule \\Guests, condition 1\n", "warning no-conditions: rule \\Draft\n",
          "note covered-condition: rule \\Sales, condition 2\n", "warning outside-parent: rule \\Abroad, condition 1\n",
          "warning unreachable-first: rule \\Support\n", "warning unreachable-best: rule \\Everybody\n",
          "warning missing-classification: task \\scan\n", "warning dead-mark: rule \\Sales\n",
          "note idle-mark: rule \\Sales\n", "warning idle-mark: rule \\Sales\n",
          "warning dropped-task: task \\Sales\\scan\n", "note never-active: task \\count\n",
          "note unused-filter: exclusive filter 40\n"})
        EXPECT_THAT(outcome.out, HasSubstr(line));
}

TEST_F(LintTest, TellsWhoTakesTheMailsOfARuleThatNoneGetsTo) {
    apply(policyWithRoot(R"(  rules:
    - {name: A, conditions: [{sender: "*", receiver: "*@a.example"}]}
    - {name: B, conditions: [{sender: "*", receiver: "*@b.example"}]}
    - {name: C, conditions: [{sender: "*", receiver: x@a.example}, {sender: "*", receiver: x@b.example}]}
)"));
    EXPECT_EQ(placesOf("unreachable-first"), Texts{"rule \\C"});
    EXPECT_THAT(textsOf("unreachable-first").front(),
                AllOf(HasSubstr("rule \\A takes 1"), HasSubstr("rule \\B takes 1")));
    EXPECT_EQ(placesOf("unreachable-best"), Texts{});
}

TEST_F(LintTest, TellsAMailForEachRuleThatOneGetsTo) {
    apply(kTwoRules);
    const LintResult result = lint();
    ASSERT_EQ(result.reaches.size(), 4U);
    for (const RuleReach& reach : result.reaches) {
        ASSERT_TRUE(reach.first && reach.best) << reach.rule;
        const Outcome outcome =
            run({"match", "--json", "--sender", reach.first->sender, "--receiver", reach.first->receiver});
        std::string escaped = reach.rule;
        escaped.insert(0, 1, '\\');
        EXPECT_THAT(outcome.out, HasSubstr("\"rule\":\"" + escaped + "\""));
    }
}

TEST_F(LintTest, TakesTheRulesThatAFailingConditionTakesOutOfTheWayIntoAccount) {
    const Outcome outcome = run({"apply", "--allow-dangling", "-"}, policyWithRoot(R"(  rules:
    - {name: A, conditions: [{sender: (Nowhere), receiver: "*"}, {sender: "*", receiver: "*"}]}
    - {name: B, conditions: [{sender: "*", receiver: "*"}]}
)"));
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(placesOf("missing-list"), Texts{"rule \\A, condition 1"});
    // The list is asked for before the second condition is.
    EXPECT_EQ(placesOf("unreachable-first"), (Texts{"rule \\", "rule \\A"}));
}

TEST_F(LintTest, TellsAConditionThatOnlyAddsWeightFromOneThatAddsNothing) {
    apply(policyWithRoot(R"(  rules:
    - {name: A, conditions: [{sender: "*", receiver: "*@a.example"}, {sender: "*", receiver: x@a.example}]}
    - {name: B, conditions: [{sender: "*", receiver: "*@b.example"}, {sender: "*@*", receiver: "*@b.example"}]}
)"));
    const LintResult result = lint();
    std::vector<std::pair<Severity, std::string>> covered;
    for (const Finding& finding : result.findings)
        if (std::string(finding.id) == "covered-condition") covered.emplace_back(finding.severity, finding.place);
    EXPECT_EQ(covered, (std::vector<std::pair<Severity, std::string>>{{Severity::Note, "rule \\A, condition 2"},
                                                                      {Severity::Warning, "rule \\B, condition 2"}}));
}

TEST_F(LintTest, FindsPositionsThatAreMissingDoubledOrLeaveAGap) {
    apply(kTwoRules);
    writeNumber(std::string(kRules) + "\\B", "order", 1);
    EXPECT_EQ(placesOf("doubled-position"), Texts{"the rules below rule \\"});
    EXPECT_EQ(placesOf("position-gap"), Texts{"the rules below rule \\"});
    EXPECT_EQ(placesOf("missing-position"), Texts{});
    erase(std::string(kRules) + "\\B", "order");
    EXPECT_EQ(placesOf("missing-position"), Texts{"the rules below rule \\"});
    EXPECT_EQ(textsOf("missing-position"), Texts{"\"B\" has no position: nothing sees it"});
    EXPECT_EQ(placesOf("doubled-position"), Texts{});
}

TEST_F(LintTest, FindsNumbersThatAreDoubledBadOrLeaveAGap) {
    apply(kTwoRules);
    writeText(kRuleA, "condition4", "*,*@e.example");
    EXPECT_EQ(placesOf("number-gap"), Texts{"the conditions of rule \\A"});
    EXPECT_EQ(textsOf("number-gap"), Texts{"number 3 is missing"});
    writeText(kRuleA, "Condition2", "*,*@f.example");
    EXPECT_EQ(placesOf("doubled-number"), Texts{"the conditions of rule \\A"});
    writeText(kRuleA, "condition", "*,*@g.example");
    EXPECT_EQ(placesOf("bad-number"), Texts{"the conditions of rule \\A"});
}

TEST_F(LintTest, FindsConditionsThatAreNone) {
    apply(kTwoRules);
    writeText(kRuleA, "condition3", std::string(600, 'a') + ",*");
    EXPECT_EQ(placesOf("unreadable-condition"), Texts{"rule \\A, condition 3"});
    writeText(kRuleA, "condition3", "jo*@example.com,(Partners");
    EXPECT_EQ(placesOf("unreadable-condition"), Texts{});
    EXPECT_EQ(placesOf("invalid-pattern"), (Texts{"rule \\A, condition 3", "rule \\A, condition 3"}));
    EXPECT_EQ(placesOf("missing-list"), Texts{"rule \\A, condition 3"});
}

TEST_F(LintTest, OnlyNotesARuleThatHoldsOthersTogether) {
    apply(policyWithRoot(R"(  rules:
    - name: A
      conditions: [{sender: "*", receiver: "*@a.example"}]
      rules: [{name: B, conditions: [{sender: "*@*", receiver: "*@a.example"}]}]
)"));
    const LintResult result = lint();
    const auto isOfA = [](const Finding& finding) { return finding.place == "rule \\A"; };
    const auto found = std::find_if(result.findings.begin(), result.findings.end(), isOfA);
    ASSERT_NE(found, result.findings.end());
    EXPECT_STREQ(found->id, "unreachable-first");
    EXPECT_EQ(found->severity, Severity::Note);
    EXPECT_EQ(found->rules, (Texts{"\\A", "\\A\\B"}));
}

TEST_F(LintTest, FindsValuesThatNoPolicyHas) {
    apply(kTwoRules);
    writeText(kRuleA, "matchType", "0");
    EXPECT_EQ(placesOf("stored-form"), Texts{"the store"});
    EXPECT_THAT(textsOf("stored-form").front(),
                HasSubstr("rule \\A has a value \"matchType\" that is of the wrong type"));
}

TEST_F(LintTest, FindsRulesWhoseMailsCannotBeMatched) {
    apply(kTwoRules);
    erase(kRuleA, "comment");
    EXPECT_EQ(placesOf("failing-match"), Texts{"rule \\A"});
}

TEST_F(LintTest, TellsThatAMailOutsideTheParentMayStillGetToARuleByFirstMatch) {
    run({"apply", "-"}, policyWithRoot(R"(  rules:
    - name: A
      conditions: [{sender: "*", receiver: "*@a.example"}]
      rules: [{name: B, conditions: [{sender: "*", receiver: "*@b.example"}]}]
)"));
    EXPECT_THAT(textsOf("outside-parent"),
                testing::ElementsAre(HasSubstr("first match may give them to this rule, best match never does")));
    EXPECT_EQ(placesOf("unreachable-best"), Texts{"rule \\A\\B"});
    EXPECT_EQ(placesOf("unreachable-first"), Texts{});
}

// First match gets to the later condition only where none between the two fails.
TEST_F(LintTest, CallsAConditionCoveredOnlyWhereTheRuleMatchesTheSameWithoutIt) {
    const auto withBetween = [](const std::string& between) {
        return policyWithRoot(R"(  rules:
    - name: A
      conditions: [{sender: "*", receiver: x@a.example}, )" +
                              between + R"(, {sender: "*", receiver: "*@a.example"}]
)");
    };
    const std::vector<std::pair<std::string, Texts>> cases{
        {R"({sender: "*", receiver: (Nowhere)})", {}},
        {R"({sender: (Nowhere), receiver: "*@a.example"})", {}},
        {R"({sender: (Nowhere), receiver: "*@b.example"})", {"rule \\A, condition 1"}},
        {R"({sender: "*", receiver: "*@b.example"})", {"rule \\A, condition 1"}},
    };
    for (const auto& [between, places] : cases) {
        run({"apply", "--allow-dangling", "-"}, withBetween(between));
        EXPECT_EQ(placesOf("covered-condition"), places) << between;
    }
}

TEST_F(LintTest, PrefersTheConditionBesideWhichAnotherAddsNothing) {
    apply(policyWithRoot(R"(  rules:
    - name: A
      conditions: [{sender: "*", receiver: "*@*.a.example"}, {sender: "*@*", receiver: x@b.a.example},
                   {sender: "*", receiver: x@b.a.example}]
)"));
    EXPECT_THAT(textsOf("covered-condition"),
                testing::ElementsAre(HasSubstr("condition 1"), StartsWith("condition 2 of the rule matches")));
}

TEST_F(LintTest, TellsNumbersAndPositionsBelowOneFromGaps) {
    apply(kTwoRules);
    writeText(kRuleA, "condition0", "*,*@f.example");
    EXPECT_EQ(placesOf("number-gap"), Texts{});
    EXPECT_EQ(textsOf("bad-number"), Texts{"the value \"condition0\" has no usable number: numbers begin with 1"});
    writeNumber(std::string(kRules) + "\\A", "order", 0);
    EXPECT_EQ(textsOf("bad-position"), Texts{"\"A\" has position 0: it comes first, and positions begin with 1"});
    EXPECT_EQ(textsOf("position-gap"), Texts{"none has position 1"});
    writeNumber(std::string(kRules) + "\\B", "order", 1);
    writeNumber(std::string(kRules) + "\\C", "order", 2);
    EXPECT_EQ(textsOf("position-gap"), Texts{});
    writeNumber(std::string(kRules) + "\\C", "order", 0x80000000);
    EXPECT_EQ(textsOf("missing-position"), Texts{"\"C\" has no position: nothing sees it"});
    EXPECT_EQ(lint().reaches.size(), 3U);
}

TEST_F(LintTest, TellsATextThatIsNoConditionFromOneOfEmptySides) {
    apply(kTwoRules);
    writeText(kRuleA, "condition3", ",");
    EXPECT_EQ(textsOf("unreadable-condition"),
              Texts{"both sides are empty, or too long, and it matches empty addresses alone"});
    writeText(kRuleA, "condition3", "no comma");
    EXPECT_EQ(textsOf("unreadable-condition"),
              Texts{"what is stored cannot be read, and counts as condition 2 once more"});
    writeText(kRuleA, "condition1", "no comma");
    EXPECT_EQ(textsOf("unreadable-condition").front(), "what is stored cannot be read, and counts as two empty sides");
    // Without condition 1 what cannot be read behind it would count as two empty sides.
    writeText(kRuleA, "condition1", "a@a.example,*@e.example");
    writeText(kRuleA, "condition2", "no comma");
    writeText(kRuleA, "condition3", "*,*");
    EXPECT_EQ(placesOf("covered-condition"), Texts{"rule \\A, condition 2"});
}

TEST_F(LintTest, TellsOnceThatTheMailsOfARuleCannotBeMatched) {
    apply(policyWithRoot(R"(  rules:
    - {name: A, conditions: [{sender: "*", receiver: "*@a.example"}]}
    - {name: B, conditions: [{sender: "*", receiver: "*@b.example"}]}
)"));
    erase(std::string(kRules) + "\\A", "comment");
    erase(std::string(kRules) + "\\B", "comment");
    EXPECT_EQ(placesOf("failing-match"), (Texts{"rule \\A", "rule \\B"}));
}

// Matching takes a task that does not say of which filter type it is for one that no other keeps out.
TEST_F(LintTest, DoesNotTakeATaskWithoutAFilterTypeForOneOfTypeZero) {
    apply("exclusiveFilters: [{filter: 0, priority: asc}]\n" + policyWithRoot("  tasks: [{name: T, filter: 0}]\n"));
    EXPECT_EQ(placesOf("unused-filter"), Texts{});
    erase("Rule\\Mail\\tasks\\T", "filter");
    EXPECT_EQ(placesOf("unused-filter"), Texts{"exclusive filter 0"});
}

TEST_F(LintTest, TellsThatATaskIsSwitchedOffForTheLengthOfItsName) {
    const std::string rule(150, 'r');
    apply(policyWithRoot("  rules:\n    - name: " + rule + "\n      conditions: [{sender: \"*\", receiver: \"*\"}]\n"));
    addTask("\\" + rule, std::string(103, 't'));
    EXPECT_EQ(textsOf("never-active"), Texts{});
    addTask("\\" + rule, std::string(104, 't'));
    EXPECT_EQ(textsOf("never-active"),
              Texts{"its full name is 256 bytes long, and one of more than 255 switches a task off for every mail"});
}

TEST_F(LintTest, SaysWhenThereAreTooManyWaysToMatch) {
    apply(kTwoRules);
    for (char c = 'a'; c <= 'z'; ++c)
        writeText(kRuleA, "condition" + std::to_string(3 + c - 'a'), std::string("*") + c + "*@*,*");
    EXPECT_EQ(placesOf("undecided"), Texts{"the rules"});
    // Whether there is an error is what is asked.
    EXPECT_EQ(run({"lint"}).status, 1);
}

TEST_F(LintTest, CountsWarningsAsErrorsWhenStrict) {
    apply(policyWithRoot("  rules: [{name: A}]\n"));
    EXPECT_EQ(run({"lint"}).status, 0);
    EXPECT_EQ(run({"lint", "--strict"}).status, 1);
}

// A list finds an address whose quotes go around the "@" as well, and the pattern for the domain does not.
TEST_F(LintTest, FindsRulesThatNoWellFormedAddressGetsTo) {
    const auto policy = [](const std::string& addresses) {
        return "zxpolicy: 1\nlists: [{name: K, addresses: [" + addresses + "]}]\n" +
               policyWithRoot(R"(  rules:
    - {name: Corp, conditions: [{sender: "*@corp.example", receiver: "*"}]}
    - {name: Ann, conditions: [{sender: (K), receiver: "*"}]}
)")
                   .substr(12);
    };
    apply(policy("ann@corp.example"));
    EXPECT_EQ(textsOf("unreachable-first"),
              Texts{"no mail with well-formed addresses gets to it in first match: of the 1 kind of such mails that "
                    "match its conditions rule \\Corp takes all"});
    const LintResult result = lint();
    ASSERT_TRUE(result.reaches.back().first);
    EXPECT_EQ(result.reaches.back().first->sender, "\"ann@corp.example\"");
    EXPECT_TRUE(result.findings.front().isOfWellFormed);
    EXPECT_EQ(placesOf("unreachable-best"), Texts{});
    apply(policy("ann@corp.example, bob@other.example"));
    EXPECT_EQ(placesOf("unreachable-first"), Texts{});
    EXPECT_EQ(lint().reaches.back().first->sender, "bob@other.example");
}

TEST_F(LintTest, ComparesConditionsOnWellFormedAddresses) {
    apply("zxpolicy: 1\nlists: [{name: K, addresses: [ann@corp.example]}, {name: L, addresses: [bob@b.example]}]\n" +
          policyWithRoot(R"(  rules:
    - name: Corp
      conditions: [{sender: "*@corp.example", receiver: "*"}, {sender: (K), receiver: "*"}]
      rules: [{name: Ann, conditions: [{sender: (K), receiver: "*"}]},
              {name: Bob, conditions: [{sender: (L), receiver: "*"}]}]
)")
              .substr(12));
    EXPECT_EQ(textsOf("covered-condition"),
              Texts{"condition 1 of the rule matches every mail with well-formed addresses that it matches; in best "
                    "match it may make the rule weigh more"});
    EXPECT_EQ(placesOf("outside-parent"), Texts{"rule \\Corp\\Bob, condition 1"});
    apply("zxpolicy: 1\nlists: [{name: K, addresses: [ann@corp.example]}]\n" + policyWithRoot(R"(  rules:
    - name: Corp
      conditions: [{sender: "*@corp.example", receiver: "*"}]
      rules: [{name: Ann, conditions: [{sender: (K), receiver: "*"
    }]
    }]
)")
                                                                                   .substr(12));
    EXPECT_EQ(placesOf("outside-parent"), Texts{});
}

// Nothing takes what a rule never gets to see.
TEST_F(LintTest, TellsRulesThatTheConditionsAboveKeepMailsFrom) {
    run({"apply", "-"}, policyWithRoot(R"(  rules:
    - name: A
      conditions: [{sender: "*", receiver: "*@a.example"}]
      rules: [{name: B, conditions: [{sender: "*", receiver: "*@b.example"}]}]
)"));
    const LintResult result = lint();
    const auto isBest = [](const Finding& finding) { return finding.id == std::string("unreachable-best"); };
    const auto found = std::find_if(result.findings.begin(), result.findings.end(), isBest);
    ASSERT_NE(found, result.findings.end());
    EXPECT_EQ(found->text,
              "no mail gets to it in best match: of the 1 kind of mails that match its conditions none matches the "
              "conditions above it");
    EXPECT_EQ(found->remedy, "widen the conditions above it, or correct its own, unless only first match is used");
}

TEST_F(LintTest, TellsThatTheRootCannotBeCheckedForTheMailsOfARule) {
    run({"apply", "--allow-dangling", "-"}, R"(zxpolicy: 1
root:
  conditions: [{sender: (Nowhere), receiver: "*"}]
  rules: [{name: A, conditions: [{sender: "*", receiver: "*@a.example"}]}]
)");
    EXPECT_THAT(textsOf("unreachable-best"),
                testing::Contains(HasSubstr("that match its conditions rule \\ cannot be checked for any")));
}

TEST_F(LintTest, ReportsAsJson) {
    apply(policyWithRoot("  rules: [{name: A}]\n"));
    const Outcome outcome = run({"lint", "--json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(
        outcome.out,
        "{\"version\":1,\"errors\":0,\"warnings\":1,\"notes\":0,\"findings\":[{\"id\":\"no-conditions\","
        "\"severity\":\"warning\",\"place\":\"rule \\\\A\",\"text\":\"it has no condition: no mail matches it\","
        "\"remedy\":\"add conditions, or delete the "
        "rule\",\"rules\":[\"\\\\A\"],\"mail\":null,\"wellFormedOnly\":false}],"
        "\"rules\":[{\"rule\":\"\\\\\",\"first\":{\"sender\":\"anyone@anywhere.example\",\"receiver\":\"anyone@"
        "anywhere.example\",\"wellFormed\":true},"
        "\"best\":{\"sender\":\"anyone@anywhere.example\",\"receiver\":\"anyone@anywhere.example\",\"wellFormed\":"
        "true}},"
        "{\"rule\":\"\\\\A\",\"first\":null,\"best\":null}]}\n");
}

TEST_F(LintTest, FoldsLinesToANarrowTerminal) {
    apply(policyWithRoot("  rules: [{name: A}]\n"));
    const Outcome outcome = runPlain({"--store", location(), "lint"}, {"COLUMNS=40"});
    EXPECT_EQ(outcome.out,
              "warning no-conditions: rule \\A\n"
              "    it has no condition: no mail matches\n"
              "      it\n"
              "    To do: add conditions, or delete the\n"
              "      rule.\n"
              "0 errors, 1 warning, 0 notes\n");
}

TEST_F(LintTest, LeavesTheStoreAsItIs) {
    apply(kTwoRules);
    const std::string before = dump();
    run({"lint"});
    EXPECT_EQ(dump(), before);
}

TEST_F(LintTest, SaysWhereAPolicyFileIsMalformed) {
    const Outcome outcome = runPlain({"lint", ToolTest::write("bad.yaml", "zxpolicy: 1\nroot: {conditons: []}\n")});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_THAT(outcome.err, HasSubstr("bad.yaml:2:8"));
}

TEST_F(LintTest, AMarkForATaskThatAFilterLeavesOutAnywayIsIdle) {
    const auto policyWith = [](const std::string& filterOfScan) {
        return "zxpolicy: 1\nexclusiveFilters: [{filter: 26, priority: asc}]\n" +
               policyWithRoot("  tasks: [{name: scan, filter: " + filterOfScan +
                              "}, {name: light, filter: 26, overridable: true}]\n  rules:\n"
                              "    - {name: S, conditions: [{sender: \"*\", receiver: \"*@s.c\"}], inactive: "
                              "['\\light']}\n")
                   .substr(12);
    };
    apply(policyWith("26"));
    EXPECT_EQ(placesOf("idle-mark"), std::vector<std::string>{"rule \\S"});
    EXPECT_THAT(textsOf("idle-mark"), testing::ElementsAre(HasSubstr("an exclusive filter leaves the task out")));
    apply(policyWith("3"));
    EXPECT_EQ(placesOf("idle-mark"), std::vector<std::string>{});
}

}  // namespace tool
