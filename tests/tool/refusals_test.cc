#include <gmock/gmock.h>

#include "policy/policy_reader.h"
#include "tool_error.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

// A policy file that must be refused: what is wrong, the file, where the error points, and what it must say.
struct Refusal {
    const char* name;
    std::string text;
    const char* place;
    const char* says;
};

void PrintTo(const Refusal& refusal, std::ostream* out) {
    *out << refusal.name;
}

std::string root(const std::string& rest) {
    return policyWithRoot(rest);
}
std::string task(const std::string& rest) {
    return root("  tasks:\n    - name: scan\n" + rest);
}
std::string list(const std::string& rest) {
    return "zxpolicy: 1\nlists:\n  - " + rest + "\nroot: {}\n";
}
std::string classification(const std::string& rest) {
    return "zxpolicy: 1\nclassifications:\n  - " + rest + "\nroot: {}\n";
}
std::string action(const std::string& rest) {
    return classification("{name: A, actions: [" + rest + "]}");
}
std::string nested(size_t depth) {
    std::string text = "{}";
    for (; depth > 0; --depth)
        text = "{a: " + text + "}";
    return text;
}
std::string many(size_t count) {
    return std::string(count, 'x');
}

const std::vector<Refusal>& refusals() {
    static const std::vector<Refusal> kAll{
        {"Empty", "", "p:1:1", "empty"},
        {"NoYaml", "zxpolicy: [1", "p:1:", "not valid YAML"},
        {"NotAMap", "[1]", "p:1:1", "must be a map"},
        {"NotUtf8", "zxpolicy: 1\nroot: \xFF", "p:2:7", "UTF-8"},
        {"Nul", std::string("zxpolicy: 1\n\0", 13), "p:2:1", "NUL"},
        {"TwoDocuments", "zxpolicy: 1\n---\nzxpolicy: 1\n", "p:2:1", "second document"},
        {"Alias", "zxpolicy: 1\nroot: *x\n", "p:2:7", ""},
        {"UnquotedStar", "zxpolicy: 1\nroot: {conditions: [{sender: *, receiver: b}]}\n", "p:2:", ""},
        {"Anchor", "zxpolicy: 1\nroot: &x {}\n", "p:2:7", "anchors"},
        {"NoFormat", "root: {}\n", "p:1:1", "\"zxpolicy\" is missing"},
        {"LaterFormat", "zxpolicy: 2\nroot: {}\n", "p:1:11", "not known"},
        {"FormatAsText", "zxpolicy: \"1\"\nroot: {}\n", "p:1:11", "must be a number"},
        {"NoRoot", "zxpolicy: 1\n", "p:1:1", "\"root\" is missing"},
        {"UnknownTopKey", "zxpolicy: 1\nrules: []\n", "p:2:1", "unknown key \"rules\""},
        {"KeyTwice", "zxpolicy: 1\nzxpolicy: 1\n", "p:2:1", "stands twice"},
        {"ClassificationsAsMap", "zxpolicy: 1\nclassifications: {}\nroot: {}\n", "p:2:18", "must be a sequence"},
        {"ClassificationsNull", "zxpolicy: 1\nclassifications:\nroot: {}\n", "p:2:1",
         "must be a sequence, not nothing"},
        {"ClassificationUnclosed", "zxpolicy: 1\nclassifications: [{name: A\nroot: {}\n", "p:3:", "not valid YAML"},
        {"ClassificationAsText", classification("A"), "p:3:5", "a classification must be a map, not a text"},
        {"ClassificationWithoutName", classification("{comment: x}"), "p:3:5", "\"name\" is missing"},
        {"ClassificationWithEmptyName", classification("{name: ''}"), "p:3:12", "empty"},
        {"ClassificationWithBackslash", classification("{name: 'a\\b'}"), "p:3:12", "backslash"},
        {"ClassificationLongName", classification("{name: " + many(256) + "}"), "p:3:12", "longer than 255"},
        {"ClassificationNumberAsName", classification("{name: 7}"), "p:3:12", "must be a text, not a number"},
        {"ClassificationNameWithNul", classification("{name: !!binary \"QQBC\"}"), "p:3:12", "NUL"},
        {"ClassificationTwice", classification("{name: A}\n  - {name: A}"), "p:4:12", "stands twice"},
        {"ClassificationInOtherCase", classification("{name: A}\n  - {name: a}"), "p:4:12",
         "classification \"a\" differs from \"A\" only in letter case"},
        {"ClassificationLongComment", classification("{name: A, comment: " + many(512) + "}"), "p:3:24",
         "longer than 511"},
        {"ClassificationUnknownKey", classification("{name: A, action: []}"), "p:3:15", "unknown key \"action\""},
        {"ActionsAsMap", classification("{name: A, actions: {}}"), "p:3:24", "must be a sequence, not a map"},
        {"ActionAsNull", classification("{name: A, actions: [null]}"), "p:3:25", "an action must be a map"},
        {"ActionWithoutName", action("{actionType: 1}"), "p:3:25", "\"name\" is missing in an action"},
        {"ActionLongName", action("{name: " + many(256) + "}"), "p:3:32", "longer than 255"},
        {"ActionWithBackslash", action("{name: 'a\\b'}"), "p:3:32", "backslash"},
        {"ActionTwice", action("{name: a}, {name: a}"), "p:3:43", "action \"a\" stands twice"},
        {"ActionInOtherCase", action("{name: a}, {name: A}"), "p:3:43", "only in letter case"},
        {"ActionUnknownKey", action("{name: a, order: 1}"), "p:3:35", "unknown key \"order\" in an action"},
        {"ActionLongDisplayName", action("{name: a, displayName: " + many(256) + "}"), "p:3:48", "longer than 255"},
        {"ActionTypeAsText", action("{name: a, actionType: x}"), "p:3:47", "must be a number"},
        {"ActionTypeNegative", action("{name: a, actionType: -1}"), "p:3:47", "whole number from 0"},
        {"ActionTypeTooLarge", action("{name: a, actionType: 4294967296}"), "p:3:47", "4294967295"},
        {"ActionSettingAsText", action("{name: a, setting: x}"), "p:3:44", "\"setting\" of an action must be a map"},
        {"ActionSettingInOtherCase", action("{name: a, setting: {b: 1, B: 2}}"), "p:3:51", "only in letter case"},
        {"ActionSettingTooDeep", action("{name: a, setting: " + nested(17) + "}"),
         "p:3:", "settings nest deeper than 16"},
        {"RootWithName", root("  name: x\n"), "p:4:3", "unknown key \"name\""},
        {"RootWithoutConditions", "zxpolicy: 1\nroot: {comment: x}\n", "p:2:7", "no conditions"},
        {"RootWithEmptyConditions", "zxpolicy: 1\nroot: {conditions: []}\n", "p:2:20", "no conditions"},
        {"DirectoryListWithAddresses", list("{name: A, type: directory, addresses: []}"), "p:3:43", "in the directory"},
        {"NormalListWithServer", list("{name: A, server: x}"), "p:3:23",
         "\"server\" belongs to a list of type directory"},
        {"NormalListWithPort", list("{name: A, type: normal, port: 389}"), "p:3:35",
         "belongs to a list of type directory"},
        {"NormalListWithPassword", list("{name: A, password: x}"), "p:3:25", "belongs to a list of type directory"},
        {"ListOfUnknownType", list("{name: A, type: odd}"), "p:3:21", "must be normal or directory, not \"odd\""},
        {"AddressesAsText", list("{name: A, addresses: a@b}"), "p:3:26", "must be a sequence, not a text"},
        {"AddressesNull", list("{name: A, addresses: }"), "p:3:15", "must be a sequence, not nothing"},
        {"AddressAsNumber", list("{name: A, addresses: [1]}"), "p:3:27", "must be a text, not a number"},
        {"AddressAsMap", list("{name: A, addresses: [{a: b}]}"), "p:3:27", "must be a text, not a map"},
        {"AddressInvalid", list("{name: A, addresses: [a@b, \"jo*@b\"]}"), "p:3:32",
         "address \"jo*@b\" of list \"A\" is no address, and no pattern"},
        {"AddressEmpty", list("{name: A, addresses: ['']}"), "p:3:27", "address \"\" of list \"A\" is no address"},
        {"AddressWithBlank", list("{name: A, addresses: [' a@b']}"), "p:3:27", "is no address"},
        {"AddressBeyondAscii", list("{name: A, addresses: [\"a@\xC3\xA4.b\"]}"), "p:3:27", "is no address"},
        {"AddressWithNul", list("{name: A, addresses: [!!binary \"YUBiAA==\"]}"), "p:3:27", "NUL"},
        {"AddressTooLong", list("{name: A, addresses: [a@" + many(510) + "]}"), "p:3:27", "longer than 511 bytes"},
        {"AddressTwice", list("{name: A, addresses: [a@b, c@d, a@b]}"), "p:3:37",
         "address \"a@b\" of list \"A\" stands twice"},
        {"AddressInOtherCase", list("{name: A, addresses: [a@b, A@B]}"), "p:3:32",
         "address \"A@B\" of list \"A\" is the same as \"a@b\""},
        {"AddressInQuotes", list("{name: A, addresses: [a.b@c, '\"a\".b@c']}"), "p:3:34",
         "address \"\\\"a\\\".b@c\" of list \"A\" is the same as \"a.b@c\""},
        {"AddressControlCharacter", list("{name: A, addresses: [\"\\e[2J\"]}"), "p:3:27", "address \"\\x1B[2J\""},
        {"ListWithoutName", list("{type: directory}"), "p:3:5", "\"name\" is missing"},
        {"ListPortAsText", list("{name: A, type: directory, port: x}"), "p:3:38", "must be a number"},
        {"ListTwice", list("{name: A, type: directory}\n  - {name: A, type: directory}"), "p:4:12", "stands twice"},
        {"ListInOtherCase", list("{name: A, type: directory}\n  - {name: a, type: directory}"), "p:4:12",
         "only in letter case"},
        {"LongPassword", list("{name: A, type: directory, password: " + many(40) + "}"), "p:3:42",
         "longer than 39 bytes"},
        {"LongSearchFilter", list("{name: A, type: directory, filter: " + many(1024) + "}"), "p:3:40", "1023"},
        {"ExclusivePriority", "zxpolicy: 1\nexclusiveFilters: [{filter: 1, priority: up}]\nroot: {}\n", "p:2:42",
         "asc or desc"},
        {"ExclusiveTwice",
         "zxpolicy: 1\nexclusiveFilters: [{filter: 1, priority: asc}, {filter: 1, priority: asc}]\nroot: {}\n",
         "p:2:48", "stands twice"},
        {"ExclusiveWithoutPriority", "zxpolicy: 1\nexclusiveFilters: [{filter: 1}]\nroot: {}\n", "p:2:20",
         "\"priority\" is missing"},
        {"ConditionsAsMap", root("  rules: [{name: A, conditions: {}}]\n"), "p:4:33", "must be a sequence"},
        {"ConditionWithoutSender", root("  rules: [{name: A, conditions: [{receiver: b}]}]\n"), "p:4:34",
         "\"sender\" is missing"},
        {"SenderWithComma", root("  rules: [{name: A, conditions: [{sender: \"a,b\", receiver: b}]}]\n"), "p:4:43",
         "comma"},
        {"SenderWithBlank", root("  rules: [{name: A, conditions: [{sender: \"a \", receiver: b}]}]\n"), "p:4:43",
         "blank"},
        {"EmptyReceiver", root("  rules: [{name: A, conditions: [{sender: b, receiver: \"\"}]}]\n"), "p:4:56", "empty"},
        {"LongReceiver", root("  rules: [{name: A, conditions: [{sender: b, receiver: " + many(512) + "}]}]\n"),
         "p:4:56", "longer than 511"},
        {"MatchTypeWithConditions",
         root("  rules: [{name: A, matchType: 1, conditions: [{sender: a, receiver: b}]}]\n"), "p:4:48", "matchType"},
        {"NegativeMatchType", root("  rules: [{name: A, matchType: -1}]\n"), "p:4:32", "whole number from 0"},
        {"LargeMatchType", root("  rules: [{name: A, matchType: 2147483648}]\n"), "p:4:32", "2147483647"},
        {"RuleWithoutName", root("  rules: [{comment: x}]\n"), "p:4:11", "\"name\" is missing"},
        {"RuleWithEmptyName", root("  rules: [{name: \"\"}]\n"), "p:4:18", "empty"},
        {"RuleWithBackslash", root("  rules: [{name: 'a\\b'}]\n"), "p:4:18", "backslash"},
        {"RuleWithLongName", root("  rules: [{name: " + many(256) + "}]\n"), "p:4:18", "longer than 255"},
        {"RuleWithNumberAsName", root("  rules: [{name: 5}]\n"), "p:4:18", "must be a text, not a number"},
        {"RuleTwice", root("  rules:\n    - name: A\n    - name: A\n"), "p:6:13", "stands twice"},
        {"RuleInOtherCase", root("  rules:\n    - name: Sales\n    - name: sALES\n"), "p:6:13", "only in letter case"},
        {"RulesNull", root("  rules:\n"), "p:4:3", "must be a sequence, not nothing"},
        {"UnknownRuleKey", root("  rules: [{name: A, color: red}]\n"), "p:4:21", "unknown key \"color\""},
        {"LongComment", root("  comment: " + many(512) + "\n"), "p:4:12", "longer than 511"},
        {"DisplayNameNull", root("  displayName:\n"), "p:4:3", "must be a text, not nothing"},
        {"DisplayNameTrue", root("  displayName: true\n"), "p:4:16", "put it in quotes"},
        {"BadBase64", root("  displayName: !!binary \"%%%%\"\n"), "p:4:16", "base64"},
        {"NulInBinary", root("  displayName: !!binary \"AA==\"\n"), "p:4:16", "NUL"},
        {"OtherTag", root("  displayName: !own x\n"), "p:4:16", "tag"},
        {"SecretKey", list("{name: A, type: directory, password: my, Passw0rd}"), "p:3:46", "unknown key in a list"},
        {"SecretTag", list("{name: A, type: directory, password: !Passw0rd x}"), "p:3:42", "has a tag that is not"},
        {"MarkTwice", root("  inactive: ['\\a', '\\A\\']\n"), "p:4:20", "stands twice"},
        {"EmptyMark", root("  inactive: ['']\n"), "p:4:14", "empty"},
        {"LongMark", root("  inactive: ['" + many(256) + "']\n"), "p:4:14", "longer than 255"},
        {"TaskWithoutName", root("  tasks: [{filter: 1}]\n"), "p:4:11", "\"name\" is missing"},
        {"TaskTwice", root("  tasks: [{name: a}, {name: A}]\n"), "p:4:22", "only in letter case"},
        {"TaskFullName", root("  rules: [{name: " + many(200) + ", tasks: [{name: " + many(54) + "}]}]\n"), "p:4:235",
         "full name"},
        {"EnableAsNumber", task("      enable: 1\n"), "p:6:15", "true or false"},
        {"EnableAsText", task("      enable: \"true\"\n"), "p:6:15", "true or false"},
        {"EnableAsWord", task("      enable: yes\n"), "p:6:15", "true or false"},
        {"FilterNegative", task("      filter: -1\n"), "p:6:15", "whole number from 0"},
        {"FilterFraction", task("      filter: 1.5\n"), "p:6:15", "whole number from 0"},
        {"FilterTooLarge", task("      filter: 4294967296\n"), "p:6:15", "4294967295"},
        {"OutcomesAsSequence", task("      outcomes: []\n"), "p:6:17", "must be a map"},
        {"OutcomeEmpty", task("      outcomes: {a: \"\"}\n"), "p:6:21", "empty"},
        {"OutcomeTwice", task("      outcomes: {a: x, A: y}\n"), "p:6:24", "only in letter case"},
        {"SettingTruth", task("      setting: {a: true}\n"), "p:6:20", "must be a text, not a truth value"},
        {"SettingFraction", task("      setting: {a: 0.5}\n"), "p:6:20", "whole number from 0"},
        {"SettingNegative", task("      setting: {a: -1}\n"), "p:6:20", "whole number from 0"},
        {"SettingNull", task("      setting: {a: }\n"), "p:6:17", "must be a text, not nothing"},
        {"SettingTwice", task("      setting: {a: 1, a: 2}\n"), "p:6:23", "stands twice"},
        {"SettingWithBackslash", task("      setting: {'a\\b': 1}\n"), "p:6:17", "backslash"},
        {"SettingListWithEmptyText", task("      setting: {a: [\"\"]}\n"), "p:6:21", "empty"},
        {"SettingListOfNumbers", task("      setting: {a: [1]}\n"), "p:6:21", "must be a text"},
        {"SettingAsText", task("      setting: x\n"), "p:6:16", "must be a map"},
    };
    return kAll;
}

class RefusedPolicy : public testing::TestWithParam<Refusal> {};

}  // namespace

TEST_P(RefusedPolicy, SaysWhereAndWhy) {
    const Refusal& refusal = GetParam();
    try {
        readPolicy("p", refusal.text);
        FAIL() << "it was taken";
    } catch (const PolicyError& error) {
        EXPECT_THAT(error.what(), StartsWith(refusal.place));
        EXPECT_THAT(error.what(), HasSubstr(refusal.says));
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
    }
}

INSTANTIATE_TEST_SUITE_P(All, RefusedPolicy, testing::ValuesIn(refusals()),
                         [](const auto& test) { return std::string(test.param.name); });

using RefusalTest = ToolTest;

TEST_F(RefusalTest, ARefusedFileChangesNothingAndExitsWith3) {
    apply(policyWithRoot("  comment: before\n"));
    const std::string before = dump();
    const std::string file = write("bad.yaml", policyWithRoot("  comment: after\n  rulez: []\n"));
    const Outcome outcome = run({"apply", file});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "zxpolicy: " + file + ":5:3: unknown key \"rulez\" in the root rule\n");
    EXPECT_EQ(dump(), before);
}

TEST_F(RefusalTest, RulesMayNestToTheDocumentedDepthAndNoDeeper) {
    for (const int depth : {63, 64}) {
        std::string text = policyWithRoot("");
        for (int i = 0; i < depth; ++i) {
            const std::string indent(static_cast<size_t>(i) * 4 + 2, ' ');
            text += indent + "rules:\n" + indent + "  - name: r\n";
        }
        const Outcome outcome = run({"apply", "-"}, text);
        EXPECT_EQ(outcome.status, depth == 63 ? 0 : 3) << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(depth == 64 ? "nest deeper than 64 levels" : ""));
    }
    EXPECT_EQ(apply(dump()), "nothing to change\n");
}

}  // namespace tool
