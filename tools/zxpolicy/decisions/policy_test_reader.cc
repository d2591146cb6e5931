#include "decisions/policy_test_reader.h"

#include <set>

#include "decisions/match_words.h"
#include "decisions/policy_test_keys.h"
#include "output/text.h"
#include "policy/address_text.h"
#include "policy/unique_names.h"
#include "policy/yaml_fields.h"
#include "tool_error.h"

namespace tool {

namespace {

constexpr uint32_t kTestFormat = 1;
constexpr const char* kNoRuleWord = "none";

// Reads a value that is one of a few words; leaves it as it is when absent.
template <class Value>
void readWord(const YamlReader& reader, const YamlFields& fields, const char* key, Value& value,
              const Words<Value>& words) {
    const YamlNode* node = fields.find(key);
    if (node == nullptr) return;
    const std::string what = std::string("\"") + key + "\" of a test";
    const auto found = words.find(reader.text(*node, what, kAnyLength));
    if (found != words.end()) {
        value = found->second;
        return;
    }
    std::string list;
    for (const auto& [word, meaning] : words)
        list += (list.empty() ? "" : " or ") + word;
    reader.source().fail(node->place, what + " must be " + list + ", not " + inQuotes(node->text));
}

MatchOptions readMatchOptions(const YamlReader& reader, const YamlFields& fields) {
    MatchOptions options;
    readWord(reader, fields, "mode", options.isBest, {{"first", false}, {"best", true}});
    readWord(reader, fields, "priority", options.priority, kPriorities);
    readWord(reader, fields, "weight", options.weight, kWeights);
    for (const char* key : {"priority", "weight"})
        if (!options.isBest && fields.find(key) != nullptr)
            reader.source().fail(fields.find(key)->place,
                                 "\"" + std::string(key) + "\" of a test needs \"mode: best\" beside it");
    return options;
}

std::string readExpectedRule(const YamlReader& reader, const YamlNode& node) {
    std::string rule = reader.text(node, "\"rule\" of an expectation", kAnyLength);
    if (rule == kNoRuleWord) return "";
    if (rule.empty() || rule.front() != '\\')
        reader.source().fail(
            node.place, "\"rule\" of an expectation must be a path such as \\Sales, or none, not " + inQuotes(rule));
    return rule;
}

Expectation readExpectation(const YamlReader& reader, const YamlNode& node) {
    const YamlFields fields(reader, node, "an expectation", kExpectationKeys);
    Expectation expectation;
    const YamlNode& receiver = fields.need("receiver");
    expectation.receiver = reader.text(receiver, "\"receiver\" of an expectation", kAnyLength);
    if (expectation.receiver.empty()) reader.source().fail(receiver.place, "\"receiver\" of an expectation is empty");
    expectation.rule = readExpectedRule(reader, fields.need("rule"));
    const YamlNode* tasks = fields.find("tasks");
    if (tasks == nullptr) return expectation;
    if (expectation.rule.empty()) reader.source().fail(tasks->place, "where no rule is expected, there are no tasks");
    expectation.tasks.emplace();
    for (const YamlNode& task : fields.items("tasks"))
        expectation.tasks->push_back(reader.text(task, "a task of an expectation", kAnyLength));
    return expectation;
}

void readExpectations(const YamlReader& reader, const YamlFields& fields, PolicyTest& test) {
    std::set<std::string> seen;
    for (const YamlNode& node : reader.sequence(fields.need("expect"), "\"expect\" of a test").items) {
        test.expectations.push_back(readExpectation(reader, node));
        const std::string& receiver = test.expectations.back().receiver;
        if (!seen.insert(receiver).second)
            reader.source().fail(node.place, "receiver " + inQuotes(receiver) + " stands twice in the test");
    }
    if (test.expectations.empty()) reader.source().fail(fields.need("expect").place, "\"expect\" of a test is empty");
}

PolicyTest readTest(const YamlReader& reader, const YamlNode& node) {
    const YamlFields fields(reader, node, "a test", kPolicyTestKeys);
    PolicyTest test;
    test.place = node.place;
    const YamlNode& name = fields.need("name");
    test.name = reader.text(name, "\"name\" of a test", kAnyLength);
    if (test.name.empty()) reader.source().fail(name.place, "\"name\" of a test is empty");
    test.sender = senderFromText(reader.text(fields.need("sender"), "\"sender\" of a test", kAnyLength));
    test.match = readMatchOptions(reader, fields);
    readExpectations(reader, fields, test);
    return test;
}

std::vector<PolicyTest> readTestFile(const YamlSource& source, const std::string& text) {
    const YamlReader reader(source);
    const YamlNode document = parseYaml(source, text);
    if (document.kind == YamlNode::Kind::Null)
        source.fail({1, 1}, "the file is empty; it must begin with zxpolicyTest: 1");
    const YamlFields top(reader, document, "the test file", kTestFileKeys);
    const YamlNode& format = top.need("zxpolicyTest");
    if (reader.number(format, "\"zxpolicyTest\"") != kTestFormat)
        source.fail(format.place, "test format " + inQuotes(format.text) + " is not known; this version reads 1");
    std::vector<PolicyTest> tests;
    UniqueNames names(source, "test");
    for (const YamlNode& node : reader.sequence(top.need("tests"), "\"tests\" of the test file").items) {
        tests.push_back(readTest(reader, node));
        names.add(tests.back().name, node.place);
    }
    if (tests.empty()) source.fail(top.need("tests").place, "there is no test");
    return tests;
}

}  // namespace

std::vector<PolicyTest> readPolicyTests(const std::string& fileName, const std::string& text) {
    try {
        return readTestFile(YamlSource(fileName), text);
    } catch (const PolicyError& fault) {
        // It is no policy that failed, but a file that cannot be used.
        throw UsageError(fault.what());
    }
}

}  // namespace tool
