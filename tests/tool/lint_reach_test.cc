// lint: what is said of rules that no mail gets to, and what to do about them.
#include <gmock/gmock.h>

#include <algorithm>

#include "analysis/lint.h"
#include "change/apply.h"
#include "policy/policy_reader.h"
#include "stored/raw_key.h"

namespace tool {

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

// What is in a policy, of which the lists and rules are given.
LintResult lintOf(const std::string& lists, const std::string& rules) {
    const Store store("memory:", Store::Missing::Create);
    applyPolicy(store, "p",
                readPolicy("p", "zxpolicy: 1\nlists: [" + lists +
                                    "]\nroot:\n  conditions: [{sender: \"*\", receiver: \"*\"}]\n" + rules),
                false);
    return lintPolicy(store, {});
}

using Found = std::vector<std::pair<std::string, std::string>>;

// The places and remedies of the findings of one kind, in order, and the places and texts.
Found remediesOf(const LintResult& result, const std::string& id) {
    Found found;
    for (const Finding& finding : result.findings)
        if (finding.id == id) found.emplace_back(finding.place, finding.remedy);
    return found;
}
Found textsOf(const LintResult& result, const std::string& id) {
    Found found;
    for (const Finding& finding : result.findings)
        if (finding.id == id) found.emplace_back(finding.place, finding.text);
    return found;
}

const char* const kShadowed = R"(  rules:
    - {name: A, conditions: [{sender: "*", receiver: "*@a.example"}]}
    - name: B
      conditions: [{sender: "*", receiver: "*@a.example"}]
      rules: [{name: C, conditions: [{sender: "*", receiver: "*@)";

}  // namespace

TEST(LintReach, DoesNotAdviseDeletingARuleWithRulesBelowThatMailsGetTo) {
    // First match gives mails to the rule below, whatever is above.
    EXPECT_THAT(
        remediesOf(lintOf("", std::string(kShadowed) + "c.example\"}]}]\n"), "unreachable-first"),
        ElementsAre(Pair("rule \\B", "move or narrow what takes its mails, or keep it for the rules below it")));
    const LintResult result = lintOf("", std::string(kShadowed) + "a.example\"}]}]\n");
    EXPECT_THAT(remediesOf(result, "unreachable-first"),
                ElementsAre(Pair("rule \\B", "move or narrow what takes its mails, or delete it"),
                            Pair("rule \\B\\C", "move or narrow what takes its mails, or delete it")));
}

TEST(LintReach, DoesNotAdviseDeletingARuleWithoutConditionsWithRulesBelowThatMailsGetTo) {
    EXPECT_THAT(remediesOf(lintOf("", R"(  rules:
    - {name: A, conditions: [], rules: [{name: B, conditions: [{sender: "*", receiver: "*@b.example"}]}]}
    - {name: C, conditions: [], rules: [{name: D, conditions: []}]}
    - {name: E, matchType: 3, rules: [{name: F, conditions: [{sender: "*", receiver: "*@f.example"}]}]}
)"),
                           "no-conditions"),
                ElementsAre(Pair("rule \\A", "add conditions"), Pair("rule \\C", "add conditions, or delete the rule"),
                            Pair("rule \\C\\D", "add conditions, or delete the rule"),
                            Pair("rule \\E", "set its matchType to 0 and add conditions")));
}

TEST(LintReach, NeverAdvisesDeletingTheRoot) {
    const Store store("memory:", Store::Missing::Create);
    const auto expectNoDeletion = [&](const std::string& id) {
        const Found remedies = remediesOf(lintPolicy(store, {}), id);
        EXPECT_THAT(remedies, ElementsAre(Pair("rule \\", Not(HasSubstr("delete"))))) << id;
    };
    applyPolicy(store, "p", readPolicy("p", R"(zxpolicy: 1
lists: [{name: None, addresses: []}]
root: {conditions: [{sender: (None), receiver: "*"}]}
)"),
                false);
    expectNoDeletion("unreachable-first");
    expectNoDeletion("unreachable-best");
    int result = ZXPOL_S_OK;
    const uint32_t otherType = 3;
    zxreg_setValue(openRawKey(store.key(), kRootRuleKey).get(), "matchType", ZXREG_NUMBER, &otherType, sizeof otherType,
                   &result);
    ASSERT_EQ(result, ZXPOL_S_OK);
    expectNoDeletion("no-conditions");
}

TEST(LintReach, SaysWhenOnlyOneModeLeavesARuleWithoutMails) {
    const LintResult result = lintOf("", R"(  rules:
    - name: A
      conditions: [{sender: "*", receiver: "*@a.example"}]
      rules: [{name: B, conditions: [{sender: "*", receiver: "*@b.example"}]}]
    - {name: C, conditions: [{sender: "*", receiver: x@a.example}]}
)");
    EXPECT_THAT(
        remediesOf(result, "unreachable-best"),
        ElementsAre(
            Pair("rule \\A\\B", "widen the conditions above it, or correct its own, unless only first match is used")));
    EXPECT_THAT(remediesOf(result, "unreachable-first"),
                ElementsAre(Pair("rule \\C", "move or narrow what takes its mails, unless only best match is used")));
}

// In best match a later condition that fails takes the rule out of the way, although an earlier one matches.
TEST(LintReach, NamesTheRuleThatCannotBeCheckedInBestMatch) {
    const LintResult result = lintOf("", R"(  rules:
    - name: A
      conditions: [{sender: "*", receiver: "*@x.example"}, {sender: "*", receiver: (Nosuch)}]
    - name: P
      conditions: [{sender: "*", receiver: "*@y.example"}, {sender: (Nosuch), receiver: "*@y.example"}]
      rules: [{name: C, conditions: [{sender: "*", receiver: "*@y.example"}]}]
)");
    EXPECT_THAT(textsOf(result, "unreachable-best"),
                ElementsAre(Pair("rule \\A", HasSubstr(" or on which these fail, rule \\A cannot be checked for any")),
                            Pair("rule \\P", HasSubstr(" or on which these fail, rule \\P cannot be checked for any")),
                            Pair("rule \\P\\C", HasSubstr("match its conditions rule \\P cannot be checked for any"))));
    EXPECT_THAT(remediesOf(result, "unreachable-best"),
                ElementsAre(Pair("rule \\A", "first mend the lists that the conditions of rule \\A name"),
                            Pair("rule \\P", "first mend the lists that the conditions of rule \\P name"),
                            Pair("rule \\P\\C", "first mend the lists that the conditions of rule \\P name")));
}

TEST(LintReach, TellsConditionsThatFailFromConditionsThatMatchNothing) {
    const LintResult result = lintOf("{name: E, addresses: []}, {name: L, addresses: [\"*@a.example\"]}", R"(  rules:
    - name: P
      conditions: [{sender: "*", receiver: (Nosuch)}, {sender: "*", receiver: "*@a.example"}]
      rules: [{name: C, conditions: [{sender: "*", receiver: (L)}]}]
    - {name: Q, conditions: [{sender: (E), receiver: "*@b.example"}]}
)");
    EXPECT_THAT(textsOf(result, "unreachable-first"),
                ElementsAre(Pair("rule \\P", HasSubstr("rule \\P cannot be checked for 2, rule \\P\\C takes 1")),
                            Pair("rule \\Q", HasSubstr("match: none matches its conditions"))));
    EXPECT_THAT(textsOf(result, "unreachable-best"),
                ElementsAre(Pair("rule \\P", HasSubstr("rule \\P cannot be checked for any")),
                            Pair("rule \\P\\C", HasSubstr("rule \\P cannot be checked for any")),
                            Pair("rule \\Q", HasSubstr("match: none matches its conditions"))));
}

TEST(LintReach, TellsThatTheRootCannotBeChecked) {
    const Store store("memory:", Store::Missing::Create);
    applyPolicy(store, "p", readPolicy("p", R"(zxpolicy: 1
lists: [{name: D, type: directory, server: a}]
root: {conditions: [{sender: (D), receiver: "*"}]}
)"),
                false);
    for (const char* id : {"unreachable-first", "unreachable-best"})
        EXPECT_THAT(textsOf(lintPolicy(store, {}), id),
                    ElementsAre(Pair("rule \\", HasSubstr("rule \\ cannot be checked for any"))));
}

// First match asks no rule that comes behind one that takes the mail.
TEST(LintReach, DoesNotBlameAFailureThatNoMailGetsTo) {
    EXPECT_THAT(textsOf(lintOf("", R"(  rules:
    - {name: A, conditions: [{sender: "*", receiver: "*"}]}
    - {name: B, conditions: [{sender: "*", receiver: (Nosuch)}]}
)"),
                        "unreachable-first"),
                ElementsAre(Pair("rule \\", HasSubstr("rule \\A takes all")),
                            Pair("rule \\B", HasSubstr("or on which these fail, rule \\A takes all"))));
}

TEST(LintReach, NamesEachConditionWithAnEmptyList) {
    EXPECT_THAT(textsOf(lintOf("{name: E, addresses: []}", R"(  rules:
    - {name: A, conditions: [{sender: (E), receiver: "*"}, {sender: "*", receiver: (E)}]}
    - {name: B, conditions: [{sender: (E), receiver: "*"}]}
)"),
                        "empty-list"),
                ElementsAre(Pair("rule \\A, condition 1", HasSubstr("the sender")),
                            Pair("rule \\A, condition 2", HasSubstr("the receiver")),
                            Pair("rule \\B, condition 1", HasSubstr("the sender"))));
}

TEST(LintReach, DecidesAddressesWithAnEscapedQuote) {
    const LintResult result = lintOf(R"({name: L, addresses: ['"a\"b".c.d.e.f.g.h@x.example']})", R"(  rules:
    - {name: A, conditions: [{sender: (L), receiver: "*"}]}
    - {name: B, conditions: [{sender: (L), receiver: "*@b.example"}]}
)");
    EXPECT_EQ(result.reaches.size(), 3U);
    EXPECT_THAT(textsOf(result, "unreachable-first"), ElementsAre(Pair("rule \\B", HasSubstr("rule \\A takes all"))));
}

TEST(LintReach, NamesWhatLeavesItUndecidedAndFails) {
    const std::string entry = R"("a\".b".c."d\".e".f."g\".h".i."j\".k"@x.example)";
    const LintResult result =
        lintOf("{name: L, addresses: [x@y.example, '" + entry + "']}",
               "  rules: [{name: A, conditions: [{sender: (L), receiver: \"*\"}]}, {name: B, conditions: []}, "
               "{name: C, conditions: [], rules: [{name: D, conditions: [{sender: a@b.c, receiver: \"*\"}]}]}]\n");
    EXPECT_THAT(result.reaches, IsEmpty());
    EXPECT_THAT(textsOf(result, "undecided"),
                ElementsAre(Pair(AllOf(HasSubstr("list \"L\", entry"), HasSubstr("i.\\\"j\\\\\\\".k\\\"@x.example")),
                                 HasSubstr("the quotes in the local part"))));
    EXPECT_TRUE(std::any_of(result.findings.begin(), result.findings.end(), [](const Finding& finding) {
        return finding.id == std::string("undecided") && finding.severity == Severity::Error;
    }));
    // What mails may get to is kept.
    EXPECT_THAT(remediesOf(result, "no-conditions"), ElementsAre(Pair("rule \\B", "add conditions, or delete the rule"),
                                                                 Pair("rule \\C", "add conditions")));
}

TEST(LintReach, NamesTheConditionThatLeavesItUndecided) {
    StoredRules stored;
    stored.rules.push_back({"\\", kRootRuleKey, 0, {}, {{"*", "*"}, {"b@c.d", "\"A\".x*@e.f"}}});
    EXPECT_EQ(undecidedRules(stored, AnalysisLimit("too much", "a.X*")).place, "rule \\, condition 2");
    EXPECT_EQ(undecidedRules(stored, AnalysisLimit("too much", "a.X")).place, "the rules");
    EXPECT_EQ(undecidedRules(stored, AnalysisLimit("too much")).place, "the rules");
}

}  // namespace tool
