// The command explain: its reports, and that they lead to the answer of the command match.
#include <gmock/gmock.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>

#include "output/colours.h"
#include "output/statements.h"
#include "output/text.h"
#include "result_names.h"
#include "tool_fixture.h"
#include "zxpolicy.h"

namespace tool {

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kPolicy = R"yaml(zxpolicy: 1
lists:
  - {name: Partners, addresses: ["*@partner.example", "ann@*.example"]}
  - {name: Staff, type: directory, server: ldap.example}
exclusiveFilters: [{filter: 26, priority: asc}, {filter: 7, priority: desc}]
root:
  conditions: [{sender: "*", receiver: "*@*.example"}]
  tasks:
    - {name: scan, filter: 26}
    - {name: spam, filter: 12, overridable: true}
    - {name: foot, filter: 7}
    - {name: off, enable: false}
  rules:
    - name: Wide
      conditions: [{sender: "*", receiver: "*@sales.example"}]
      inactive: ['\spam']
      tasks: [{name: scan, filter: 26}, {name: foot, filter: 7}]
      rules:
        - name: Partners
          conditions: [{sender: "(Partners)", receiver: "*@sales.example"}]
    - name: Staff
      conditions: [{sender: "(Staff)", receiver: "bob@sales.example"}]
    - name: Narrow
      conditions: [{sender: "*", receiver: "*@hr.example"}, {sender: "*", receiver: "bob@sales.example"}]
)yaml";

class ExplainTest : public ToolTest {
protected:
    ExplainTest() { apply(kPolicy); }

    // The explanation as JSON, whose answer must be that of match.
    json explained(const std::vector<std::string>& arguments) {
        const json explanation = report("explain", arguments);
        const json answer = report("match", arguments);
        for (const char* part : {"sender", "matches", "unmatched"})
            EXPECT_EQ(explanation[part], answer[part]) << part;
        EXPECT_EQ(explanation["version"], 1);
        EXPECT_EQ(explanation["failure"], nullptr);
        return explanation;
    }

    // The explanation as text, which must end with what match prints.
    std::string textOf(const std::vector<std::string>& arguments) {
        explained(arguments);
        const std::string text = textReport("explain", arguments);
        const std::string answer = textReport("match", arguments);
        EXPECT_GT(text.size(), answer.size());
        EXPECT_EQ(text.substr(text.size() - answer.size()), answer);
        return text.substr(0, text.size() - answer.size());
    }

private:
    Outcome succeeding(const std::string& command, std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), command);
        Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        return outcome;
    }
    std::string textReport(const std::string& command, const std::vector<std::string>& arguments) {
        return succeeding(command, arguments).out;
    }
    json report(const std::string& command, std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "--json");
        const std::string out = succeeding(command, arguments).out;
        EXPECT_EQ(out.find('\n'), out.size() - 1) << "one object on one line";
        return json::parse(out);
    }
};

std::vector<std::string> mail(const std::vector<std::string>& receivers, const std::vector<std::string>& options = {}) {
    std::vector<std::string> arguments = options;
    arguments.insert(arguments.end(), {"--sender", "ann@partner.example", "--receiver"});
    arguments.insert(arguments.end(), receivers.begin(), receivers.end());
    return arguments;
}

// What the tool advises for the result of a directory list.
std::string notSupported() {
    const std::string text = describeResult(ZXPOL_E_NOT_SUPPORTED);
    return text.substr(text.find("): ") + 3);
}

// One member of each object of an array.
std::vector<std::string> each(const json& array, const char* member) {
    std::vector<std::string> found;
    for (const json& item : array)
        found.push_back(item[member].is_string() ? item[member].get<std::string>() : item[member].dump());
    return found;
}

}  // namespace

TEST_F(ExplainTest, JsonHasTheDocumentedShape) {
    const json explanation = explained(mail({"x@sales.example"}));
    EXPECT_EQ(explanation["mode"], "first");
    EXPECT_EQ(explanation["priority"], nullptr);
    EXPECT_EQ(explanation["weight"], "domain");
    EXPECT_EQ(explanation["restarts"], 0);
    EXPECT_EQ(explanation["unreadFilters"], nullptr);
    EXPECT_EQ(explanation["receivers"].dump(),
              R"x([{"failure":null,"receiver":"x@sales.example","rule":"\\Wide\\Partners","rules":[{"against":null,)x"
              R"x("choice":null,"condition":1,"conditions":[{"condition":1,"receiver":{"address":"x@sales.example",)x"
              R"x("entry":null,"failure":null,"matched":true,"pattern":"*@sales.example","weight":4000},"sender":)x"
              R"x({"address":"ann@partner.example","entry":"*@partner.example","failure":null,"matched":true,)x"
              R"x("pattern":"(Partners)","weight":4000}}],"failure":null,"matched":true,"receiverWeight":4000,)x"
              R"x("rule":"\\Wide\\Partners","senderWeight":4000,"step":"checked","unreadConditions":null}]}])x");
    ASSERT_EQ(explanation["collections"].size(), 1U);
    const json& collection = explanation["collections"][0];
    EXPECT_EQ(collection["rule"], "\\Wide\\Partners");
    EXPECT_EQ(collection["unreadMarks"], json::array());
    EXPECT_EQ(collection["tasks"][2].dump(),
              R"({"enable":true,"fate":"taken","filter":7,"mark":null,"markRule":null,"other":null,)"
              R"("overridable":false,"replacedBy":"\\Wide\\foot","task":"\\foot"})");
    EXPECT_THAT(each(collection["tasks"], "fate"),
                ElementsAre("taken", "taken", "taken", "disabled", "held", "replaces"));
    EXPECT_THAT(each(collection["tasks"], "other"), ElementsAre("null", "null", "null", "null", "\\scan", "\\foot"));
}

TEST_F(ExplainTest, TheBestMatchTellsWhichSiblingWon) {
    const json explanation = explained(mail({"bob@sales.example"}, {"--best", "--priority", "receiver"}));
    EXPECT_EQ(explanation["mode"], "best");
    EXPECT_EQ(explanation["priority"], "receiver");
    const json& rules = explanation["receivers"][0]["rules"];
    EXPECT_THAT(each(rules, "rule"), ElementsAre("\\", "\\Wide", "\\Staff", "\\Narrow"));
    EXPECT_THAT(each(rules, "choice"), ElementsAre("null", "better", "null", "better"));
    EXPECT_THAT(each(rules, "against"), ElementsAre("null", "null", "null", "\\Wide"));
    EXPECT_EQ(rules[3]["condition"], 2);
    EXPECT_EQ(rules[3]["receiverWeight"], 5000);
}

TEST_F(ExplainTest, EveryWayToMatchLeadsToTheAnswerOfMatch) {
    for (const char* priority : {"total", "sender", "receiver"})
        for (const char* weight : {"domain", "name"})
            explained(mail({"bob@sales.example", "x@hr.example", "nobody@else.test", "x@sales.example"},
                           {"--best", "--priority", priority, "--weight", weight}));
    explained(mail({"bob@sales.example", "x@hr.example", "nobody@else.test", "x@sales.example"}));
    explained({"--sender", "<>", "--receiver", "bob@sales.example"});
}

TEST_F(ExplainTest, AListThatCannotBeAskedIsNamedWithItsResult) {
    const json rules = explained({"--sender", "x@y.z", "--receiver", "bob@sales.example"})["receivers"][0]["rules"];
    EXPECT_THAT(each(rules, "rule"), ElementsAre("\\Wide\\Partners", "\\Wide"));
    const json best =
        explained({"--best", "--sender", "x@y.z", "--receiver", "bob@sales.example"})["receivers"][0]["rules"][2];
    EXPECT_EQ(best["rule"], "\\Staff");
    EXPECT_EQ(best["matched"], false);
    EXPECT_EQ(best["failure"].dump(), R"({"code":"0x81020001","name":"ZXPOL_E_NOT_SUPPORTED"})");
    EXPECT_EQ(best["conditions"][0]["sender"]["failure"], best["failure"]);
    EXPECT_THAT(textOf({"--best", "--sender", "x@y.z", "--receiver", "bob@sales.example"}),
                HasSubstr("(Staff)            cannot be asked: ZXPOL_E_NOT_SUPPORTED (0x81020001): "));
}

TEST_F(ExplainTest, TextShowsTheRoadInOneColumn) {
    EXPECT_EQ(textOf(mail({"bob@sales.example", "x@y.z"}, {"--best"})),
              "the road of a mail: best match, both sides together, domains before names\n"
              "\n"
              "receiver bob@sales.example\n"
              "  \\                                 applies by condition 1, sender 0 and receiver 2001\n"
              "    1 receiver *@*.example          matches, weight 2001\n"
              "      sender   *                    matches, weight 0\n"
              "    \\Wide                           applies by condition 1, sender 0 and receiver 4000\n"
              "      1 receiver *@sales.example    matches, weight 4000\n"
              "        sender   *                  matches, weight 0\n"
              "      the first that applies here\n"
              "    \\Staff                          cannot be checked: ZXPOL_E_NOT_SUPPORTED (0x81020001): " +
                  notSupported() +
                  "\n"
                  "      1 receiver bob@sales.example  matches, weight 5000\n"
                  "        sender   (Staff)            cannot be asked: ZXPOL_E_NOT_SUPPORTED (0x81020001): " +
                  notSupported() +
                  "\n"
                  "    \\Narrow                         applies by condition 2, sender 0 and receiver 5000\n"
                  "      1 receiver *@hr.example       does not match\n"
                  "      2 receiver bob@sales.example  matches, weight 5000\n"
                  "        sender   *                  matches, weight 0\n"
                  "      better than \\Wide\n"
                  "  taken by \\Narrow\n"
                  "\n"
                  "receiver x@y.z\n"
                  "  \\                         does not apply\n"
                  "    1 receiver *@*.example  does not match\n"
                  "  no rule takes it\n"
                  "\n"
                  "tasks of rule \\Narrow\n"
                  "  \\scan  taken\n"
                  "  \\spam  taken\n"
                  "  \\foot  taken\n"
                  "  \\off   disabled\n"
                  "\n");
}

TEST_F(ExplainTest, TextTellsWhatWasComparedOfAnAddress) {
    const std::string cut =
        textOf({"--sender", "smtp:x@y.z", "--receiver", "x400:a:b@sales.example", "bob@sales.example"});
    EXPECT_THAT(cut, testing::StartsWith("the road of a mail: first match\n"
                                         "sender smtp:x@y.z, compared as \"x@y.z\"\n"
                                         "\n"
                                         "receiver x400:a:b@sales.example, compared as \"a:b@sales.example\"\n"));
    EXPECT_THAT(cut, HasSubstr("\nreceiver bob@sales.example\n"));
    EXPECT_THAT(textOf({"--sender", "<>", "--receiver", "bob@sales.example"}), Not(HasSubstr("compared as")));
}

TEST_F(ExplainTest, TextTellsWhyATaskIsLeftOut) {
    EXPECT_THAT(textOf({"--sender", "x@y.z", "--receiver", "x@sales.example"}),
                HasSubstr("tasks of rule \\Wide\n"
                          "  \\scan       taken\n"
                          "  \\spam       switched off by the mark \\spam in rule \\Wide\n"
                          "  \\foot       taken, then replaced by \\Wide\\foot\n"
                          "  \\off        disabled\n"
                          "  \\Wide\\scan  left out: \\scan holds exclusive filter 26\n"
                          "  \\Wide\\foot  taken in place of \\foot, which has exclusive filter 7 too\n"));
}

TEST_F(ExplainTest, LinesAreFoldedForANarrowTerminal) {
    const std::vector<std::string> arguments{
        "--store", location(), "explain", "--best", "--sender", "ann@partner.example", "--receiver", "x@sales.example"};
    explained(mail({"x@sales.example"}, {"--best"}));
    const Outcome outcome = runPlain(arguments, {"COLUMNS=40"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    std::istringstream lines(outcome.out);
    for (std::string line; std::getline(lines, line);)
        EXPECT_LE(displayWidth(line), 40U) << line;
    EXPECT_THAT(outcome.out,
                HasSubstr("    \\Wide\n        applies by condition 1, sender 0\n          and receiver 4000\n"));
}

TEST_F(ExplainTest, OnlyATerminalGetsColours) {
    explained(mail({"x@sales.example"}));
    const std::string command =
        std::string(ZX_TOOL) + " --store " + location() + " explain --sender a@b.c --receiver x@sales.example";
    const auto onTerminal = [&](const std::string& environment) {
        const std::string line = environment + " script -qec '" + command + "' /dev/null </dev/null >" + path("typed");
        EXPECT_EQ(std::system(line.c_str()), 0);
        return read(path("typed"));
    };
    EXPECT_THAT(onTerminal("NO_COLOR= TERM=xterm"), HasSubstr("\x1b[32mapplies by condition 1\x1b[0m"));
    for (const char* environment : {"NO_COLOR=1 TERM=xterm", "NO_COLOR= TERM=dumb", "NO_COLOR= TERM="}) {
        EXPECT_THAT(onTerminal(environment), HasSubstr("applies by condition 1")) << environment;
        EXPECT_THAT(onTerminal(environment), Not(HasSubstr("\x1b"))) << environment;
    }
}

TEST_F(ExplainTest, AFailedMatchShowsTheRoadToItsFailure) {
    apply(
        "zxpolicy: 1\nlists: [{name: Staff, type: directory, server: s}]\n"
        "root: {conditions: [{sender: \"*\", receiver: \"(Staff)\"}]}\n");
    const std::vector<std::string> arguments{"--sender", "a@b.c", "--receiver", "x@y.z"};
    for (const char* format : {"text", "json"}) {
        std::vector<std::string> explain{"explain", "--format", format};
        explain.insert(explain.end(), arguments.begin(), arguments.end());
        std::vector<std::string> match = explain;
        match[0] = "match";
        const Outcome outcome = run(explain);
        EXPECT_EQ(outcome.status, 3);
        EXPECT_EQ(outcome.err, run(match).err);
        if (format == std::string("text")) {
            EXPECT_THAT(outcome.out, HasSubstr("the match ends here: ZXPOL_E_NOT_SUPPORTED (0x81020001)"));
            continue;
        }
        const json explanation = json::parse(outcome.out);
        EXPECT_EQ(explanation["failure"]["name"], "ZXPOL_E_NOT_SUPPORTED");
        EXPECT_EQ(explanation["receivers"][0]["failure"], explanation["failure"]);
        EXPECT_EQ(explanation["matches"], json::array());
        EXPECT_EQ(explanation["unmatched"], json::array());
    }
}

TEST_F(ExplainTest, WrongUsageIsRefused) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"explain"},
          {"explain", "--sender", "a@b.c"},
          {"explain", "--receiver", "a@b.c"},
          {"explain", "--sender", "a@b.c", "--receiver", ""},
          {"explain", "--sender", "a@b.c", "--receiver", "x@y.z", "--priority", "total"},
          {"explain", "--sender", "a@b.c", "--receiver", "x@y.z", "--format", "yaml"}}) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(outcome.out, "");
    }
}

TEST_F(ExplainTest, AStoreThatIsNotThereIsNoPolicy) {
    const Outcome outcome =
        runPlain({"--store", "sqlite:" + path("none.db"), "explain", "--sender", "a@b.c", "--receiver", "x@y.z"});
    EXPECT_EQ(outcome.status, 3) << outcome.err;
    EXPECT_EQ(outcome.out, "");
}

// ---- lines ------------------------------------------------------------------------------------------------

TEST(Statements, StandInOneColumnWhereThereIsRoom) {
    const std::vector<Statement> statements{{0, "a", "one"}, {2, "bcd", "two three"}, {1, "", "four"}, {0, "e", ""}};
    const auto printed = [&](size_t width) {
        std::ostringstream out;
        printStatements(out, statements, width, Colours(false));
        return out.str();
    };
    EXPECT_EQ(printed(80), "a      one\n  bcd  two three\n four\ne\n");
    EXPECT_EQ(printed(9), "a  one\n  bcd\n      two three\n four\ne\n");
}

TEST(ColoursOfReports, AreForTonesOnly) {
    EXPECT_EQ(Colours(true).paint("a", Tone::Good), "\x1b[32ma\x1b[0m");
    EXPECT_EQ(Colours(true).paint("a", Tone::Plain), "a");
    EXPECT_EQ(Colours(true).paint("", Tone::Good), "");
    EXPECT_EQ(Colours(false).paint("a", Tone::Good), "a");
}

}  // namespace tool
