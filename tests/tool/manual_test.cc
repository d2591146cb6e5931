// The manual pages beside the program that they describe.
#include <gmock/gmock.h>

#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "decisions/policy_test_keys.h"
#include "policy/policy_keys.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using Words = std::set<std::string>;

class ManualTest : public ToolTest {
protected:
    // The lines of a page, with what the typesetter writes for a sign replaced by the sign.
    static std::vector<std::string> page(const std::string& name) {
        std::istringstream text(read(std::string(ZX_MANUAL) + "/" + name));
        std::vector<std::string> lines;
        for (std::string line; std::getline(text, line);) {
            for (const auto& [written, sign] :
                 {std::pair{"\\-", "-"}, {"\\(dq", "\""}, {"\\e", "\\"}, {"\\fR", ""}, {"\\fI", ""}})
                for (size_t at = 0; (at = line.find(written, at)) != std::string::npos; at += 1)
                    line.replace(at, std::string(written).size(), sign), at -= *sign == '\0' ? 1 : 0;
            lines.push_back(line);
        }
        EXPECT_GT(lines.size(), 100U) << name;
        return lines;
    }

    // Of each sub-section the words that its tags begin with, or all that match.
    static std::map<std::string, Words> tags(const std::string& name, const std::regex& word) {
        std::map<std::string, Words> sections;
        std::string section;
        bool isTag = false;
        for (const std::string& line : page(name)) {
            if (line.rfind(".SH ", 0) == 0 || line.rfind(".SS ", 0) == 0) sections[section = line.substr(4)];
            if (isTag && line.rfind(".B", 0) == 0)
                for (std::sregex_iterator found(line.begin(), line.end(), word), end; found != end; ++found)
                    sections[section].insert((*found)[1]);
            isTag = line == ".TP";
        }
        return sections;
    }

    // What --help of a command says: the words of one block.
    Words wordsOfHelp(const std::vector<std::string>& command, const std::string& block, const std::regex& word) {
        std::vector<std::string> arguments = command;
        arguments.emplace_back("--help");
        const Outcome outcome = runPlain(arguments);
        EXPECT_EQ(outcome.status, 0);
        std::istringstream text(outcome.out);
        Words words;
        bool isInside = false;
        for (std::string line; std::getline(text, line);) {
            if (line.empty() || line[0] != ' ') isInside = line == block + ":";
            std::smatch found;
            if (isInside && std::regex_search(line, found, word)) words.insert(found[1]);
        }
        return words;
    }

    Words commandsOf(const std::vector<std::string>& command) {
        return wordsOfHelp(command, "Subcommands", std::regex("^  ([a-z]+)"));
    }
    Words optionsOf(const std::vector<std::string>& command) {
        return wordsOfHelp(command, "Options", std::regex("^  (?:-h,)?(--[a-z-]+)"));
    }
};

// The words of a command in a heading such as "list add NAME ADDRESS...".
std::string commandIn(const std::string& heading) {
    std::smatch found;
    std::regex_search(heading, found, std::regex("^[a-z]+( [a-z]+)*"));
    return found.str();
}

// A page writes what an option does once for all commands.
Words without(Words words, const std::string& word) {
    words.erase(word);
    return words;
}

}  // namespace

TEST_F(ManualTest, TellsEveryCommandAndItsOptionsAndNoOthers) {
    std::map<std::string, Words> expected;
    for (const std::string& command : commandsOf({})) {
        const Words below = commandsOf({command});
        // "refs" by itself does nothing.
        if (below.empty() || command == "list") expected[command] = without(optionsOf({command}), "--help");
        for (const std::string& second : below)
            expected[command + " " + second] = without(optionsOf({command, second}), "--help");
    }
    EXPECT_GT(expected.size(), 10U);
    std::map<std::string, Words> told;
    for (const auto& [heading, options] : tags("zxpolicy.1", std::regex("(--[a-z-]+)")))
        if (!commandIn(heading).empty()) told[commandIn(heading)] = options;
    EXPECT_EQ(told, expected);
    EXPECT_EQ(tags("zxpolicy.1", std::regex("(--[a-z-]+)"))["OPTIONS"], optionsOf({}));
}

TEST_F(ManualTest, TellsTheExitStatusAndTheEnvironment) {
    auto sections = tags("zxpolicy.1", std::regex("[ \"]([A-Z0-9_]+)(?=[ \",]|$)"));
    EXPECT_EQ(sections["EXIT STATUS"], (Words{"0", "1", "2", "3"}));
    EXPECT_EQ(sections["ENVIRONMENT"].count("ZXPOLICY_STORE"), 1U);
}

TEST_F(ManualTest, TellsEveryKeyOfThePolicyFileAndNoOthers) {
    auto told = tags("zxpolicy-policy.5", std::regex("[ \"]([a-zA-Z]+)(?=[ \",]|$)"));
    for (const auto& [section, keys] : {std::pair{"The policy file", kFileKeys},
                                        {"An address list", kListKeys},
                                        {"A classification", kClassificationKeys},
                                        {"An action", kActionKeys},
                                        {"An exclusive filter", kExclusiveFilterKeys},
                                        {"The root rule", kRootKeys},
                                        {"A rule", kRuleKeys},
                                        {"A condition", kConditionKeys},
                                        {"A task", kTaskKeys},
                                        {"The test file", kTestFileKeys},
                                        {"A test", kPolicyTestKeys},
                                        {"An expectation", kExpectationKeys}}) {
        EXPECT_EQ(told[section], Words(keys.begin(), keys.end())) << section;
        told.erase(section);
    }
    for (const auto& [section, keys] : told)
        EXPECT_TRUE(keys.empty()) << section;
}

TEST_F(ManualTest, TheExamplePolicyIsTakenAndGivenBackAndDecidesOnTheEnvelopes) {
    std::vector<std::string> examples;
    bool isInside = false;
    for (const std::string& line : page("zxpolicy-policy.5")) {
        if (line == ".EX") examples.emplace_back();
        if (line == ".EX" || line == ".EE")
            isInside = line == ".EX";
        else if (isInside)
            examples.back() += line + "\n";
    }
    ASSERT_EQ(examples.size(), 3U);
    const Outcome outcome = run({"apply", "-"}, examples[0]);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(apply(dump()), "nothing to change\n");
    for (const char* key : {"lists:", "classifications:", "exclusiveFilters:", "actions:", "inactive:", "outcomes:"})
        EXPECT_THAT(examples[0], testing::HasSubstr(key));
    EXPECT_EQ(
        run({"match", "--json", "--envelopes", "-"}, examples[1]).out,
        R"x({"version":1,"sender":"ann@partner.example","matches":[{"rule":"\\Sales","receivers":["bob@sales.example.com",)x"
        R"x("sue@sales.example.com"],"tasks":["\\Sales\\footer"]}],"unmatched":[]})x"
        "\n"
        R"x({"version":1,"sender":"","matches":[{"rule":"\\","receivers":["postmaster@example.com"],"tasks":["\\scan"]}],)x"
        R"x("unmatched":[]})x"
        "\n");
    const Outcome tested = run({"test", "-", "--min-coverage", "100"}, examples[2]);
    EXPECT_EQ(tested.status, 0) << tested.out << tested.err;
}

TEST_F(ManualTest, ThePagesAreTypesetWithoutAWarning) {
    for (const char* name : {"zxpolicy.1", "zxpolicy-policy.5"}) {
        const std::string command = "LC_ALL=C.UTF-8 man --warnings -E UTF-8 -l -Tutf8 -Z " + std::string(ZX_MANUAL) +
                                    "/" + name + " 2>" + path("err") + " >" + path("out");
        EXPECT_EQ(std::system(command.c_str()), 0);
        EXPECT_EQ(read(path("err")), "");
        EXPECT_GT(read(path("out")).size(), 10000U);
    }
}

}  // namespace tool
