// Reports on terminals of 40 and of 80 columns.
#include <iterator>
#include <set>
#include <sstream>

#include "output/text.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using testing::HasSubstr;

const std::string kWidePolicy = R"(zxpolicy: 1
lists:
  - name: Business partners
    displayName: Partners that we do business with since a long time
    addresses: ["*@a-partner-of-many-years.example", "someone.with.a.long.name@a-partner-of-many-years.example"]
classifications:
  - name: Infected mail
    displayName: Mail in which a scanner has found something that should not be there
    actions: [{name: quarantine, actionType: 3, setting: {folder: /var/spool/filter/quarantine/infected}}]
root:
  displayName: Everything that comes in
  conditions: [{sender: "*", receiver: "*"}]
  tasks:
    - name: scan
      filter: 26
      overridable: true
      outcomes: {infected: Infected mail}
      setting: {path: {of: {the: {engine: /usr/lib/engines/one}}}}
  rules:
    - name: Sales
      displayName: All that goes to the sales department
      conditions: [{sender: (Business partners), receiver: "*@sales-department.example"}]
      inactive: ["\\scan"]
      tasks: [{name: footer with a notice, filter: 7, overridable: true}]
      rules:
        - name: North and east
          displayName: The region in the north
          conditions:
            - {sender: (Business partners), receiver: "someone-in-the-north@sales-department.example"}
            - {sender: (Business partners), receiver: "*@sales-department.example"}
          rules: [{name: Office, conditions: [{sender: (Business partners), receiver: "b@sales-department.example"}]}]
    - name: Never reached by any mail at all
)";

const std::string kWideMails =
    "someone.with.a.long.name@a-partner-of-many-years.example\tb@sales-department.example,o@b.example\n"
    "a line without what separates sender and receivers\n"
    "<>\tsomeone-in-the-north@sales-department.example\n";

const std::string kWideTests = R"(zxpolicyTest: 1
tests:
  - name: A test whose name says what must become of such a mail
    sender: someone.with.a.long.name@a-partner-of-many-years.example
    expect:
      - receiver: someone-in-the-north@sales-department.example
        rule: '\Sales'
        tasks: ['\scan', '\Sales\footer with a notice']
)";

// Each command that reports, and the status that it ends with.
struct WideCommand {
    const char* name;
    const char* line;
    int status;
};

void PrintTo(const WideCommand& command, std::ostream* out) {
    *out << command.line;
}

const WideCommand kWideCommands[] = {
    {"Replay", "replay --envelopes mails.tsv", 1},
    {"ReplayAgainst", "replay --envelopes mails.tsv --against other.yaml", 1},
    {"MatchMany", "match --envelopes good.tsv", 0},
    {"MatchOne",
     "match --sender a@a-partner-of-many-years.example --receiver b@sales-department.example --receiver o@b.example",
     0},
    {"Explain", "explain --best --sender a@a-partner-of-many-years.example --receiver b@sales-department.example", 0},
    {"Test", "test tests.yaml", 1},
    {"Lint", "lint", 0},
    {"Tree", "tree", 0},
    {"Diff", "diff policy.yaml other.yaml", 1},
    {"DiffDecisions", "diff --decisions policy.yaml other.yaml", 1},
    {"Lists", "list", 0},
    {"ListShow", "list show 'Business partners'", 0},
    {"ListCheck", "list check 'Business partners' someone.with.a.long.name@a-partner-of-many-years.example", 0},
    {"ListCheckNone", "list check 'Business partners' nobody.at.all@b.example", 1},
    {"ListAdd", "list add 'Business partners' a@b.example 'no address' --dry-run", 1},
    {"ListImport", "list import 'Business partners' addresses --dry-run", 1},
    {"RuleShow", "rule show '\\Sales'", 0},
    {"RuleSet", "rule set '\\Sales' --comment 'One that tells in many words what it is' --dry-run", 0},
    {"TaskShow", "task show '\\scan'", 0},
    {"Classifications", "classification show", 0},
    {"Classification", "classification show 'Infected mail'", 0},
    {"Action", "classification show 'Infected mail\\quarantine'", 0},
    {"RefsList", "refs list 'Business partners'", 0},
    {"RefsClassification", "refs classification 'Infected mail'", 0},
    {"Apply", "apply --dry-run other.yaml", 0},
    {"Report", "report --envelopes mails.tsv --html page-with-a-name-that-is-rather-long.html", 1},
};

class OutputWidth : public ToolTest, public testing::WithParamInterface<WideCommand> {
protected:
    OutputWidth() {
        apply(kWidePolicy);
        write("policy.yaml", kWidePolicy);
        std::string other = kWidePolicy;
        for (const auto& [before, after] :
             {std::pair{"All that goes", "Everything"}, {"\"b@", "\"c@"}, {"name: Office", "name: Desk"}})
            other.replace(other.find(before), std::string(before).size(), after);
        write("other.yaml", other);
        write("mails.tsv", kWideMails);
        write("good.tsv", "a@a-partner-of-many-years.example\tb@sales-department.example\n");
        write("tests.yaml", kWideTests);
        write("addresses", "a@b.example\na line that is no address, and long enough to be folded\n");
    }
    Outcome runAt(const std::string& width) const { return runShell(width + " $zxpolicy " + GetParam().line); }
};

using OutputWidthOnATerminal = ToolTest;

// Whether a line holds nothing that could be broken.
bool isOneWord(const std::string& line) {
    std::istringstream words(line);
    std::string first, second;
    words >> first;
    return !(words >> second) && displayWidth(line) == displayWidth(first);
}

// The words of an output that are the same whenever it is made.
std::set<std::string> wordsOf(const std::string& text) {
    std::istringstream stream(text);
    std::set<std::string> words;
    for (std::string word; stream >> word;)
        if (word.find_first_of("0123456789") != 0) words.insert(word);
    return words;
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Commands, OutputWidth, testing::ValuesIn(kWideCommands),
                         [](const auto& command) { return command.param.name; });

TEST_F(OutputWidthOnATerminal, WhatIsNoReportToReadStaysAsItIs) {
    apply(kWidePolicy);
    for (const char* command : {"dump", "tree --json", "list --names", "list --json", "list show 'Business partners'",
                                "list export 'Business partners'", "lint --json"}) {
        const std::string line = std::string(" $zxpolicy ") + command;
        EXPECT_EQ(runShell("COLUMNS=8" + line).out, runShell("COLUMNS=" + line).out) << command;
    }
}

TEST_F(OutputWidthOnATerminal, ARowThatIsTooLongMakesATableBlocks) {
    apply(kWidePolicy);
    EXPECT_EQ(runShell("COLUMNS=40 $zxpolicy refs classification 'Infected mail'").out,
              "rule\n"
              "\\\n"
              "  place: outcome \"infected\" of task\n"
              "    \\scan\n"
              "  text: Infected mail\n"
              "\n"
              "one rule refers to classification\n"
              "  \"Infected mail\"\n");
    const std::string mails = write("good.tsv", "a@b.example\to@b.example\n");
    const std::string replayed = runShell("COLUMNS=40 $zxpolicy replay --envelopes " + mails).out;
    EXPECT_EQ(replayed.substr(0, replayed.find("└─ Never")),
              "1 mail, 1 receiver\n"
              "\n"
              "rule\n"
              "\\\n"
              "  receivers: 1  mails: 1\n"
              "├─ Sales\n"
              "│    receivers: -  mails: -\n"
              "│  └─ North and east\n"
              "│       receivers: -  mails: -\n"
              "│     └─ Office\n"
              "│          receivers: -  mails: -\n");
}

TEST_F(OutputWidthOnATerminal, TheTerminalSaysHowWideItIs) {
    apply(kWidePolicy);
    const std::string narrow = runShell("COLUMNS=40 $zxpolicy tree").out;
    const std::string typed =
        runShell("unset COLUMNS; script -qec \"stty cols 40 -onlcr; $zxpolicy tree\" /dev/null").out;
    EXPECT_EQ(typed, narrow);
    EXPECT_NE(narrow, runShell("unset COLUMNS; $zxpolicy tree").out);
}

TEST_P(OutputWidth, NothingIsLostOnANarrowOne) {
    const std::string narrow = runAt("COLUMNS=40").out;
    for (const std::string& word : wordsOf(runAt("COLUMNS=").out))
        EXPECT_NE(narrow.find(word), std::string::npos) << word << " in " << narrow;
}

TEST_P(OutputWidth, NoLineIsWiderThanTheTerminal) {
    for (const size_t width : {40U, 80U}) {
        const Outcome outcome = runAt("COLUMNS=" + std::to_string(width));
        EXPECT_EQ(outcome.status, GetParam().status) << outcome.err;
        EXPECT_NE(outcome.out, "");
        std::istringstream lines(outcome.out);
        for (std::string line; std::getline(lines, line);)
            EXPECT_TRUE(displayWidth(line) <= width || isOneWord(line)) << width << ": " << line;
    }
}

}  // namespace tool
