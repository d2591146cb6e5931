// Every command, as text and as JSON, on both engines: what it reports does not depend on where the policy is.
#include <gmock/gmock.h>
#include <unistd.h>

#include <iostream>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>

#include "command_line.h"
#include "stored/store.h"
#include "tool_error.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using Words = std::vector<std::string>;

const std::string kExampleFolder = ZX_EXAMPLES;
const std::string kMails = "FOLDER/mails.tsv";
const std::string kPolicyExample = kExampleFolder + "/policy.yaml";

enum class Reports { TextAndJson, TextOnly };

struct Command {
    Words words;  // STORE stands for the store's location, FOLDER for a folder to write to
    int status = kSuccess;
    Reports reports = Reports::TextAndJson;
};

// In this order: an edit finds what those before it made. Edits are tried with --dry-run first.
const std::vector<Command>& commands() {
    static const std::vector<Command> all = {
        {{"apply", kPolicyExample}},
        {{"dump"}, kSuccess, Reports::TextOnly},
        {{"match", "--envelopes", kMails}},
        {{"match", "--sender", "<>", "--receiver", "tim@netnoteinc.com", "a@b.example"}},
        {{"explain", "--best", "--sender", "ann@hotmail.com", "--receiver", "tim@netnoteinc.com"}},
        {{"refs", "list", "Welcome"}},
        {{"refs", "classification", "Discard"}},
        {{"lint"}, kAnswerIsNo},
        {{"test", kExampleFolder + "/tests.yaml"}},
        {{"replay", "--envelopes", kMails}},
        {{"replay", "--envelopes", kMails, "--against", kPolicyExample}},
        {{"report", "--envelopes", kMails, "--html", "FOLDER/page.html"}, kSuccess, Reports::TextOnly},
        {{"list", "add", "Welcome", "a@b.example", "*@c.example"}},
        {{"list", "remove", "Welcome", "a@b.example"}},
        {{"list", "import", "Welcome", "FOLDER/addresses"}},
        {{"list", "show", "Welcome"}},
        {{"list", "check", "Welcome", "x@c.example"}},
        {{"list", "export", "Welcome"}, kSuccess, Reports::TextOnly},
        {{"list"}},
        {{"rule", "add", R"(\Added)", "--condition", "*@c.example,*"}},
        {{"rule", "set", R"(\Added)", "--comment", "set", "--inactivate", R"(\spam)"}},
        {{"rule", "move", R"(\Added)", "--position", "1"}},
        {{"rule", "show", R"(\Added)"}},
        {{"task", "add", R"(\Added\first)", "--filter", "3"}},
        {{"task", "add", R"(\Added\second)", "--setting", "level=[a, b]"}},
        {{"task", "set", R"(\Added\first)", "--enable", "false"}},
        {{"task", "move", R"(\Added\second)", "--position", "1"}},
        {{"task", "show", R"(\Added\second)"}},
        {{"tree"}},
        {{"tree", R"(\Added)"}},
        {{"diff", "STORE", kPolicyExample}, kAnswerIsNo},
        {{"diff", "--decisions", "STORE", kPolicyExample}, kAnswerIsNo},
        {{"task", "remove", R"(\Added\first)"}},
        {{"rule", "remove", R"(\Added)"}},
        {{"classification", "add", "Added"}},
        {{"classification", "add", R"(Added\one)", "--action-type", "3"}},
        {{"classification", "add", R"(Added\two)"}},
        {{"classification", "set", "Added", "--display-name", "set"}},
        {{"classification", "move", R"(Added\two)", "--position", "1"}},
        {{"classification", "show", "Added"}},
        {{"classification", "remove", "Added"}},
    };
    return all;
}

bool isEdit(const Command& command) {
    static const std::set<std::string> kVerbs = {"add", "remove", "import", "set", "move"};
    return command.words.front() == "apply" || (command.words.size() > 1 && kVerbs.count(command.words[1]) != 0);
}

// Runs a command in this process, in which a store in memory stays open.
Outcome runHere(Words words) {
    words.insert(words.begin(), "zxpolicy");
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    const std::ostringstream out;
    const std::ostringstream err;
    std::streambuf* const oldOut = std::cout.rdbuf(out.rdbuf());
    std::streambuf* const oldErr = std::cerr.rdbuf(err.rdbuf());
    Outcome outcome;
    try {
        outcome.status = runCommandLine(static_cast<int>(arguments.size()), arguments.data());
    } catch (const ToolError& error) {
        outcome.status = error.status();
        std::cerr << error.what();
    }
    std::cout.rdbuf(oldOut);
    std::cerr.rdbuf(oldErr);
    outcome.out = out.str();
    outcome.err = err.str();
    return outcome;
}

std::string withWord(const std::string& text, const std::string& word, const std::string& other) {
    std::string changed = text;
    for (size_t at = 0; (at = changed.find(word, at)) != std::string::npos; at += other.size())
        changed.replace(at, word.size(), other);
    return changed;
}

// A report without what differs from run to run: how long decisions took.
std::string withoutTimes(const std::string& report) {
    static const std::regex kText("(a decision took )[^\n]*|( in )[0-9.]+ s\n");
    static const std::regex kJson(R"re(("[A-Za-z0-9]*(Nanoseconds|PerSecond|seconds)":)[-+.e0-9]+)re");
    return std::regex_replace(std::regex_replace(report, kText, "$1$2\n"), kJson, "$1 0");
}

// Whether a report is a JSON document, or several, one a line.
bool isJson(const std::string& report) {
    std::istringstream lines(report);
    std::string line;
    size_t count = 0;
    for (; std::getline(lines, line); ++count) {
        if (!nlohmann::json::accept(line)) return nlohmann::json::accept(report);
    }
    return count > 0;
}

// The first lines of a file.
std::string firstLines(const std::string& file, size_t count) {
    std::istringstream all(file);
    std::string some;
    std::string line;
    for (size_t i = 0; i < count && std::getline(all, line); ++i)
        some += line + "\n";
    return some;
}

// The commands that the help names below this one; the command itself if there are none.
std::set<std::string> commandsBelow(const Words& command) {
    Words asked = command;
    asked.push_back("--help");
    std::istringstream lines(runHere(asked).out);
    std::string line;
    while (std::getline(lines, line) && line != "Subcommands:") {
    }
    std::set<std::string> found;
    while (std::getline(lines, line) && line.rfind("  ", 0) == 0) {
        Words below = command;
        below.push_back(line.substr(2, line.find(' ', 2) - 2));
        const std::set<std::string> further = commandsBelow(below);
        found.insert(further.begin(), further.end());
    }
    if (found.empty()) found.insert(testing::PrintToString(command));
    return found;
}

class EveryCommandTest : public ToolTest {
protected:
    Outcome runAt(const std::string& store, const Words& words) {
        Words arguments = {"--store", store};
        for (const std::string& word : words)
            arguments.push_back(withWord(withWord(word, "STORE", store), "FOLDER/", path("")));
        Outcome outcome = runHere(arguments);
        outcome.out = withoutTimes(withWord(outcome.out, store, "STORE"));
        outcome.err = withoutTimes(withWord(outcome.err, store, "STORE"));
        return outcome;
    }

    // Runs a command as users may ask for it; the last report is the one that counts for an edit.
    std::vector<Outcome> runAll(const std::string& store, const Command& command) {
        Words asked = command.words;
        if (isEdit(command)) asked.emplace_back("--dry-run");
        std::vector<Outcome> outcomes = {runAt(store, asked)};
        if (command.reports == Reports::TextOnly) return outcomes;
        asked = command.words;
        asked.emplace_back("--json");
        outcomes.push_back(runAt(store, asked));
        EXPECT_TRUE(isJson(outcomes.back().out)) << outcomes.back().out;
        return outcomes;
    }
};

}  // namespace

TEST_F(EveryCommandTest, ReportsTheSameOnBothEngines) {
    const Store memory("memory:every-command", Store::Missing::Create);
    write("mails.tsv", firstLines(read(kExampleFolder + "/envelopes.tsv"), 20));
    write("addresses", "d@e.example\n*@f.example\n");
    for (const Command& command : commands()) {
        SCOPED_TRACE(testing::PrintToString(command.words));
        const std::vector<Outcome> inMemory = runAll("memory:every-command", command);
        const std::vector<Outcome> inFile = runAll(location(), command);
        for (size_t i = 0; i < inMemory.size(); ++i) {
            EXPECT_EQ(inMemory[i].status, command.status) << inMemory[i].err;
            EXPECT_EQ(inFile[i].status, command.status) << inFile[i].err;
            EXPECT_EQ(inMemory[i].out, inFile[i].out);
            EXPECT_EQ(inMemory[i].err, inFile[i].err);
        }
        if (HasFailure()) break;
    }
}

TEST_F(EveryCommandTest, IsOneOfThoseThatTheHelpNames) {
    std::set<std::string> tried;
    const std::set<std::string> known = commandsBelow({});
    for (const Command& command : commands()) {
        const Words& words = command.words;
        tried.insert(testing::PrintToString(Words{words[0]}));
        if (words.size() > 1) tried.insert(testing::PrintToString(Words{words[0], words[1]}));
    }
    ASSERT_GT(known.size(), 20u);
    for (const std::string& command : known)
        EXPECT_EQ(tried.count(command), 1u) << command << " is not tried";
}

}  // namespace tool
