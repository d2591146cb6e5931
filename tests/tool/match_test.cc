#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tool_fixture.h"

namespace tool {

namespace {

using testing::HasSubstr;

class MatchTest : public ToolTest {
protected:
    MatchTest() {
        apply(
            "zxpolicy: 1\nexclusiveFilters: [{filter: 26, priority: asc}, {filter: 7, priority: desc}]\n"
            "root:\n"
            "  conditions: [{sender: \"*\", receiver: \"*@*.example\"}]\n"
            "  tasks:\n"
            "    - {name: scan, filter: 26}\n"
            "    - {name: spam, filter: 12, overridable: true}\n"
            "    - {name: foot, filter: 7}\n"
            "    - {name: off, enable: false}\n"
            "  rules:\n"
            "    - name: Wide\n"
            "      conditions: [{sender: \"*\", receiver: \"*@sales.example\"}]\n"
            "      inactive: ['\\spam']\n"
            "      tasks: [{name: scan, filter: 26}, {name: foot, filter: 7}, {name: last}]\n"
            "    - name: Narrow\n"
            "      conditions: [{sender: \"*\", receiver: \"bob@sales.example\"}]\n"
            "    - name: ByName\n"
            "      conditions: [{sender: \"*\", receiver: \"ann@*.example\"}]\n");
    }

    std::string json(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"match", "--format", "json"});
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        return outcome.out;
    }
};

}  // namespace

TEST_F(MatchTest, JsonHasTheDocumentedShape) {
    EXPECT_EQ(
        json({"--sender", "a@b.c", "--receiver", "bob@sales.example", "x@other.example", "nobody@else.test",
              "ann@sales.example"}),
        R"({"version":1,"sender":"a@b.c","matches":[{"rule":"\\Wide","receivers":["bob@sales.example","ann@sales.example"],)"
        R"("tasks":["\\scan","\\Wide\\foot","\\Wide\\last"]},{"rule":"\\","receivers":["x@other.example"],)"
        R"("tasks":["\\scan","\\spam","\\foot"]}],"unmatched":["nobody@else.test"]})"
        "\n");
}

TEST_F(MatchTest, TheBestMatchAndItsOptionsDecideOtherwise) {
    const auto rule = [&](std::vector<std::string> options, const std::string& receiver) {
        options.insert(options.end(), {"--sender", "a@b.c", "--receiver", receiver});
        return nlohmann::json::parse(json(options))["matches"][0]["rule"].get<std::string>();
    };
    EXPECT_EQ(rule({}, "bob@sales.example"), "\\Wide");
    EXPECT_EQ(rule({"--best"}, "bob@sales.example"), "\\Narrow");
    EXPECT_EQ(rule({"--best"}, "ann@sales.example"), "\\Wide");
    EXPECT_EQ(rule({"--best", "--weight", "domain"}, "ann@sales.example"), "\\Wide");
    EXPECT_EQ(rule({"--best", "--weight", "name"}, "ann@sales.example"), "\\ByName");
}

TEST_F(MatchTest, ThePriorityDecidesWhichSideCounts) {
    apply(
        policyWithRoot("  rules:\n"
                       "    - {name: Sender, conditions: [{sender: a@b.c, receiver: \"*\"}]}\n"
                       "    - {name: Receiver, conditions: [{sender: \"*\", receiver: x@y.z}]}\n"
                       "    - {name: Both, conditions: [{sender: \"*@b.c\", receiver: \"*@y.z\"}]}\n"));
    for (const auto& [priority, rule] :
         {std::pair{"total", "\\Both"}, {"sender", "\\Sender"}, {"receiver", "\\Receiver"}}) {
        const auto mail =
            nlohmann::json::parse(json({"--best", "--priority", priority, "--sender", "a@b.c", "--receiver", "x@y.z"}));
        EXPECT_EQ(mail["matches"][0]["rule"], rule) << priority;
    }
}

TEST_F(MatchTest, TheNullSenderIsTheEmptyText) {
    for (const char* sender : {"<>", ""})
        EXPECT_THAT(json({"--sender", sender, "--receiver", "x@other.example"}),
                    HasSubstr("{\"version\":1,\"sender\":\"\",\"matches\":[{"));
}

TEST_F(MatchTest, TextNamesReceiversTasksAndWhoIsLeft) {
    const Outcome outcome =
        run({"match", "--sender", "a@b.c", "--receiver", "x@sales.example", "y@sales.example", "z@else.test"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out,
              "mail from a@b.c\n"
              "\n"
              "rule \\Wide\n"
              "  receivers  x@sales.example\n"
              "             y@sales.example\n"
              "  tasks      1. \\scan\n"
              "             2. \\Wide\\foot\n"
              "             3. \\Wide\\last\n"
              "\n"
              "no rule\n"
              "  receivers  z@else.test\n");
}

TEST_F(MatchTest, EnvelopesAreAddedUpInATree) {
    const std::string file = write("mails.tsv",
                                   "\xEF\xBB\xBF"
                                   "a@b.c\tx@sales.example,y@sales.example\r\n"
                                   "\n"
                                   "<>\tz@else.test,o@other.example\n"
                                   "   \n"
                                   "d@e.f\tx@sales.example");
    const Outcome outcome = run({"match", "--envelopes", file});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out.substr(0, outcome.out.find("a decision")),
              "3 mails, 5 receivers\n"
              "\n"
              "rule       receivers  mails\n"
              "\\                  1      1\n"
              "├─ Wide            3      2\n"
              "├─ Narrow          -      -\n"
              "└─ ByName          -      -\n"
              "no rule            1      1\n"
              "\n"
              "task        receivers  mails\n"
              "\\scan               4      3\n"
              "\\spam               1      1\n"
              "\\foot               1      1\n"
              "\\off                -      -\n"
              "\\Wide\\scan          -      -\n"
              "\\Wide\\foot          3      2\n"
              "\\Wide\\last          3      2\n"
              "\n");
    EXPECT_THAT(outcome.out, testing::ContainsRegex("a decision took [0-9,.]+ µs \\(median\\), [0-9,.]+ µs "
                                                    "\\(99 of 100\\): [0-9,]+ mails/s\n"));
}

TEST_F(MatchTest, EnvelopesAsJsonAreOneObjectALine) {
    const Outcome outcome =
        run({"match", "--format", "json", "--envelopes", "-"}, "<>\tx@sales.example\na@b.c\tz@else.test\n");
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, R"({"version":1,"sender":"","matches":[{"rule":"\\Wide","receivers":["x@sales.example"],)"
                           R"("tasks":["\\scan","\\Wide\\foot","\\Wide\\last"]}],"unmatched":[]})"
                           "\n"
                           R"({"version":1,"sender":"a@b.c","matches":[],"unmatched":["z@else.test"]})"
                           "\n");
}

TEST_F(MatchTest, MalformedEnvelopesAreNamedByLine) {
    for (const auto& [line, says] : {std::pair<std::string, const char*>{"a@b.c x@y.z", "no TAB"},
                                     {"a@b.c\t", "a receiver is empty"},
                                     {"a@b.c\tx@y.z,,v@w.x", "a receiver is empty"},
                                     {"a@b.c\tx@y.z,", "a receiver is empty"},
                                     {"\tx@y.z", "the null sender is <>"},
                                     {" a@b.c\tx@y.z", "a blank stands"},
                                     {"a@b.c\tx@y.z, v@w.x", "a blank stands"},
                                     {"a@b.c\tx@y.z\tmore", "second TAB"},
                                     {std::string("a@b.c\tx\0y", 9), "NUL"}}) {
        const std::string file = write("mails.tsv", "a@b.c\tx@y.example\n\n" + line + "\n");
        const Outcome outcome = run({"match", "--envelopes", file});
        EXPECT_EQ(outcome.status, 2) << line;
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, HasSubstr("zxpolicy: " + file + ":3: "));
        EXPECT_THAT(outcome.err, HasSubstr("; match ends at the first bad line, correct it (replay goes on)\n"));
        EXPECT_THAT(outcome.err, HasSubstr(says));
    }
}

TEST_F(MatchTest, BytesThatAreNoUtf8DoNotBreakTheReport) {
    const std::string file = write("mails.tsv", "a\xFF@b.c\tx\xFE@sales.example\n");
    EXPECT_NO_THROW(nlohmann::json::parse(json({"--envelopes", file})));
    EXPECT_EQ(run({"match", "--envelopes", file}).status, 0);
    EXPECT_THAT(run({"match", "--sender", "a\x1b[2J@b", "--receiver", "x@y"}).out, HasSubstr("a\\x1B[2J@b"));
}

TEST_F(MatchTest, EveryExampleMailIsDecided) {
    EXPECT_EQ(run({"apply", ZX_EXAMPLES "/policy.yaml"}).status, 0);
    for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"--best"}}) {
        std::vector<std::string> arguments{"--envelopes", ZX_EXAMPLES "/envelopes.tsv"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        std::istringstream lines(json(arguments));
        size_t mails = 0;
        size_t receivers = 0;
        for (std::string line; std::getline(lines, line); ++mails) {
            const auto mail = nlohmann::json::parse(line);
            for (const auto& match : mail["matches"])
                receivers += match["receivers"].size();
            receivers += mail["unmatched"].size();
        }
        EXPECT_EQ(mails, 1400u);
        EXPECT_EQ(receivers, 5099u);
    }
}

// The library cuts its messages: the name of a task that is cut must come out whole.
TEST_F(MatchTest, LongNamesOfTasksAreWhole) {
    const std::string rule(240, 'r');
    apply(policyWithRoot("  rules:\n    - name: " + rule +
                         "\n      conditions: [{sender: \"*\", receiver: \"*\"}]\n"
                         "      tasks: [{name: twelve-bytes}, {name: twelve}]\n"));
    const auto mail = nlohmann::json::parse(json({"--sender", "a@b", "--receiver", "c@d"}));
    EXPECT_EQ(mail["matches"][0]["tasks"], nlohmann::json({"\\" + rule + "\\twelve-bytes", "\\" + rule + "\\twelve"}));
}

TEST_F(ToolTest, TasksOfRulesWithVeryLongPathsAreNamed) {
    const std::string name(200, 'n');
    const std::string condition = "conditions: [{sender: \"*\", receiver: \"*\"}]";
    std::string rules = "  tasks: [{name: scan}, {name: archive}]\n";
    for (const char* indent : {"  ", "      ", "          "}) {
        rules.append(indent).append("rules:\n").append(indent).append("  - name: ").append(name).append("\n");
        rules.append(indent).append("    ").append(condition).append("\n");
    }
    apply(policyWithRoot(rules));
    const Outcome outcome = run({"match", "--sender", "a@b", "--receiver", "c@d"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("\\scan"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("\\archive"), std::string::npos) << outcome.out;
}

}  // namespace tool
