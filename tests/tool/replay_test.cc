#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <thread>

#include "tool_fixture.h"

namespace tool {

namespace {

using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const char* const kReplayedPolicy =
    "zxpolicy: 1\n"
    "lists: [{name: Partners, addresses: [\"*@partner.example\"]}]\n"
    "root:\n"
    "  conditions: [{sender: \"*\", receiver: \"*@*.example\"}]\n"
    "  tasks: [{name: scan}, {name: off, enable: false}]\n"
    "  rules:\n"
    "    - name: Sales\n"
    "      conditions:\n"
    "        - {sender: \"(Partners)\", receiver: \"*@sales.example\"}\n"
    "        - {sender: \"*@corp.example\", receiver: \"*@sales.example\"}\n"
    "      inactive: ['\\scan']\n"
    "      tasks: [{name: foot}]\n"
    "    - name: Bob\n"
    "      conditions: [{sender: \"*\", receiver: \"bob@sales.example\"}]\n";

const char* const kReplayedMails =
    "a@partner.example\tx@sales.example,bob@sales.example,o@other.example\n"
    "a@corp.example\tx@sales.example\n"
    "<>\tbob@sales.example,x@else.test\n"
    "a@partner.example\tx@sales.example\n";

class ReplayTest : public ToolTest {
protected:
    ReplayTest() { apply(kReplayedPolicy); }

    // Replays the mails of a text, with JSON for its report.
    json replay(const std::string& mails, const std::vector<std::string>& options = {}, int status = 0) {
        std::vector<std::string> arguments{"replay", "--json", "--envelopes", "-"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = run(arguments, mails);
        EXPECT_EQ(outcome.status, status) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        return json::parse(outcome.out);
    }

    std::string otherStore(const std::string& policy) {
        const std::string location = "sqlite:" + path("other.db");
        EXPECT_EQ(runPlain({"--store", location, "apply", "-"}, {}, policy).status, 0);
        return location;
    }
};

}  // namespace

TEST_F(ReplayTest, TextAddsUpRulesConditionsAndTasks) {
    const Outcome outcome = run({"replay", "--envelopes", write("mails.tsv", kReplayedMails)});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out.substr(0, outcome.out.find("a decision")),
              "4 mails, 7 receivers\n"
              "\n"
              "rule      receivers  mails\n"
              "\\                 1      1\n"
              "├─ Sales          4      3\n"
              "└─ Bob            1      1\n"
              "no rule           1      1\n"
              "\n"
              "condition    receivers  mails  sender          receiver\n"
              "1 of \\               1      1  *               *@*.example\n"
              "1 of \\Sales          3      2  (Partners)      *@sales.example\n"
              "2 of \\Sales          1      1  *@corp.example  *@sales.example\n"
              "1 of \\Bob            1      1  *               bob@sales.example\n"
              "\n"
              "task         receivers  mails\n"
              "\\scan                6      4\n"
              "\\off                 -      -\n"
              "\\Sales\\foot          4      3\n"
              "\n");
    EXPECT_THAT(outcome.out, testing::ContainsRegex("a decision took [0-9,.]+ µs \\(median\\), [0-9,.]+ µs "
                                                    "\\(99 of 100\\): [0-9,]+ mails/s\n$"));
}

TEST_F(ReplayTest, JsonHasTheDocumentedShape) {
    json report = replay(kReplayedMails);
    for (const char* figure : {"medianNanoseconds", "p99Nanoseconds", "mailsPerSecond", "receiversPerSecond"}) {
        EXPECT_GT(report[figure].get<double>(), 0) << figure;
        report.erase(figure);
    }
    const auto condition = [](int number, const char* sender, const char* receiver, int receivers, int mails) {
        return json{{"condition", number},
                    {"senderPattern", sender},
                    {"receiverPattern", receiver},
                    {"receivers", receivers},
                    {"mails", mails}};
    };
    const auto rule = [](const char* path, int receivers, int mails, const json& conditions) {
        return json{{"rule", path}, {"receivers", receivers}, {"mails", mails}, {"conditions", conditions}};
    };
    const auto task = [](const char* name, int receivers, int mails) {
        return json{{"task", name}, {"receivers", receivers}, {"mails", mails}};
    };
    const json expected{{"version", 1},
                        {"mails", 4},
                        {"receivers", 7},
                        {"unmatched", {{"receivers", 1}, {"mails", 1}}},
                        {"failed", {{"receivers", 0}, {"mails", 0}, {"first", json::array()}}},
                        {"rules",
                         {rule("\\", 1, 1, json::array({condition(1, "*", "*@*.example", 1, 1)})),
                          rule("\\Sales", 4, 3,
                               {condition(1, "(Partners)", "*@sales.example", 3, 2),
                                condition(2, "*@corp.example", "*@sales.example", 1, 1)}),
                          rule("\\Bob", 1, 1, json::array({condition(1, "*", "bob@sales.example", 1, 1)}))}},
                        {"tasks", {task("\\scan", 6, 4), task("\\off", 0, 0), task("\\Sales\\foot", 4, 3)}},
                        {"badLines", {{"count", 0}, {"first", json::array()}}}};
    EXPECT_EQ(report, expected) << report.dump();
}

TEST_F(ReplayTest, BestMatchCountsTheConditionThatDecides) {
    const json report = replay(kReplayedMails, {"--best", "--priority", "receiver"});
    EXPECT_EQ(report["rules"][1]["receivers"], 3);
    EXPECT_EQ(report["rules"][1]["conditions"][0]["receivers"], 2);
    EXPECT_EQ(report["rules"][2]["conditions"][0]["receivers"], 2);
    EXPECT_EQ(report["rules"][0]["conditions"][0]["receivers"], 1);
}

TEST_F(ReplayTest, CountsAreThoseOfMatch) {
    EXPECT_EQ(run({"apply", ZX_EXAMPLES "/policy.yaml"}).status, 0);
    for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"--best"}}) {
        const auto textOf = [&](std::vector<std::string> arguments) {
            arguments.insert(arguments.end(), {"--envelopes", ZX_EXAMPLES "/envelopes.tsv"});
            arguments.insert(arguments.end(), options.begin(), options.end());
            return run(arguments).out;
        };
        const auto part = [](const std::string& text, const std::string& from, const std::string& to) {
            const size_t begin = text.find(from);
            return text.substr(begin, text.find(to, begin) - begin);
        };
        const std::string match = textOf({"match"});
        const std::string replayed = textOf({"replay"});
        EXPECT_EQ(part(replayed, "1,400 mails", "\n\ncondition"), part(match, "1,400 mails", "\n\ntask"));
        EXPECT_EQ(part(replayed, "\ntask", "a decision"), part(match, "\ntask", "a decision"));
        // Every receiver that a rule takes is taken by one of its conditions.
        const json report = json::parse(textOf({"replay", "--json"}));
        for (const json& rule : report["rules"]) {
            uint64_t receivers = 0;
            for (const json& condition : rule["conditions"])
                receivers += condition["receivers"].get<uint64_t>();
            EXPECT_EQ(receivers, rule["receivers"].get<uint64_t>()) << rule["rule"];
        }
    }
}

TEST_F(ReplayTest, BadLinesAreCountedShownAndPassedOver) {
    const std::string mails = std::string("a@corp.example\tx@sales.example\nno tab\na@b\tx,,y\n") +
                              std::string("a@\0b\tx@y\n", 9) + "a@corp.example\tx@sales.example\na@b\t" +
                              std::string((16U << 20) + 5, 'x') + "\n\n\tx@y\na@corp.example\tx@sales.example";
    const Outcome outcome = run({"replay", "--envelopes", "-", "--bad-lines", "4"}, mails);
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, StartsWith("3 mails, 3 receivers\n"));
    EXPECT_THAT(outcome.out, EndsWith("\n"
                                      "5 bad lines passed over\n"
                                      "  line 2: there is no TAB between sender and receivers\n"
                                      "  line 3: a receiver is empty\n"
                                      "  line 4: a NUL byte cannot stand in an address\n"
                                      "  line 6: the line is longer than 16 MiB; split the mail\n"
                                      "  and 1 more\n"));
    const json report = replay(mails, {"--bad-lines", "1"}, 1);
    EXPECT_EQ(report["mails"], 3);
    EXPECT_EQ(report["badLines"]["count"], 5);
    EXPECT_EQ(report["badLines"]["first"],
              (json::array({{{"line", 2}, {"fault", "there is no TAB between sender and receivers"}}})));
    EXPECT_EQ(replay(mails, {"--bad-lines", "0"}, 1)["badLines"]["first"], json::array());
}

// A carriage return or a vertical tab would be a character of the address to the policy.
TEST_F(ReplayTest, WhatShowsAsABlankAroundAnAddressMakesALineBad) {
    const json report = replay(
        "a@b\tc@d\r\r\na@b\t\x0b"
        "c@d\n\fa@b\tc@d\na@b\r\tc@d\na@b\tc@d\x0b,e@f\n",
        {}, 1);
    EXPECT_EQ(report["mails"], 0);
    ASSERT_EQ(report["badLines"]["count"], 5);
    EXPECT_EQ(report["badLines"]["first"][0]["fault"], "a blank stands before or after a receiver; remove it");
    EXPECT_EQ(report["badLines"]["first"][2]["fault"], "a blank stands before or after the sender; remove it");
}

TEST_F(ReplayTest, LinesMayEndInCarriageReturnAndLineFeed) {
    EXPECT_EQ(replay("a@b\tc@d\r\na@b\tc@d,e@f\r\n\r\na@b\tc@d\r")["mails"], 3);
}

TEST_F(ReplayTest, NothingButBadLinesIsReportedToo) {
    const json report = replay("one\ntwo\n", {}, 1);
    EXPECT_EQ(report["mails"], 0);
    EXPECT_EQ(report["badLines"]["count"], 2);
    EXPECT_EQ(replay("")["mails"], 0);
}

TEST_F(ReplayTest, AnInputThatCannotBeReadOnIsAFailureAndNoBadLine) {
    const Outcome outcome = run({"replay", "--envelopes", path("")});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, HasSubstr("cannot read on"));
}

TEST_F(ReplayTest, AgainstAStoreGroupsByCause) {
    std::string other = kReplayedPolicy;
    other.replace(other.find("{name: scan}, "), 14, "{name: look}, ");
    other.replace(other.find("*@corp.example"), 14, "*@else.example");
    const std::string location = otherStore(other);
    const Outcome outcome =
        run({"replay", "--envelopes", "-", "--against", location, "--samples", "1"}, kReplayedMails);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out,
              "4 mails, 7 receivers; treated otherwise: 6 receivers of 4 mails\n"
              "\n"
              "\\Sales -> \\Sales\n"
              "  3 receivers of 2 mails\n"
              "  - task \\scan\n"
              "  + task \\look\n"
              "  such as a@partner.example to x@sales.example\n"
              "\n"
              "\\ -> \\\n"
              "  1 receiver of 1 mail\n"
              "  - task \\scan\n"
              "  + task \\look\n"
              "  such as a@partner.example to o@other.example\n"
              "\n"
              "\\Bob -> \\Bob\n"
              "  1 receiver of 1 mail\n"
              "  - task \\scan\n"
              "  + task \\look\n"
              "  such as <> to bob@sales.example\n"
              "\n"
              "\\Sales -> \\\n"
              "  1 receiver of 1 mail\n"
              "  - task \\scan\n"
              "  - task \\Sales\\foot\n"
              "  + task \\look\n"
              "  such as a@corp.example to x@sales.example\n");
}

TEST_F(ReplayTest, AgainstAFileTellsWhatApplyingItWouldChange) {
    // The list keeps the addresses that the store has, as with apply.
    std::string other = kReplayedPolicy;
    other.replace(other.find(", addresses: [\"*@partner.example\"]"), 34, "");
    const std::string file = write("other.yaml", other);
    const json same = replay(kReplayedMails, {"--against", file});
    EXPECT_EQ(same["changedReceivers"], 0);
    EXPECT_EQ(same["changes"], json::array());
    other.replace(other.find("*@*.example"), 11, "*@else.test");
    write("other.yaml", other);
    const json report = replay(kReplayedMails, {"--against", file, "--changes", path("changes.tsv")}, 1);
    EXPECT_EQ(report["version"], 1);
    EXPECT_EQ(report["mails"], 4);
    EXPECT_EQ(report["receivers"], 7);
    EXPECT_EQ(report["changedMails"], 2);
    EXPECT_EQ(report["changedReceivers"], 2);
    EXPECT_EQ(
        report["changes"],
        json::parse(
            R"([{"ruleBefore":null,"ruleAfter":"\\","failureBefore":null,"failureAfter":null,"tasksRemoved":[],"tasksAdded":["\\scan"],)"
            R"("receivers":1,"mails":1,"samples":[{"sender":"","receiver":"x@else.test"}]},)"
            R"({"ruleBefore":"\\","ruleAfter":null,"failureBefore":null,"failureAfter":null,"tasksRemoved":["\\scan"],"tasksAdded":[],)"
            R"("receivers":1,"mails":1,)"
            R"("samples":[{"sender":"a@partner.example","receiver":"o@other.example"}]}])"));
    EXPECT_EQ(read(path("changes.tsv")),
              "1\ta@partner.example\to@other.example\t\\\tno rule\n"
              "3\t<>\tx@else.test\tno rule\t\\\n");
    // The store itself stays as it was.
    EXPECT_EQ(apply(kReplayedPolicy), "nothing to change\n");
}

TEST_F(ReplayTest, SamplesAreTheFirstAndEachStandsOnce) {
    const std::string location = otherStore("zxpolicy: 1\nroot: {conditions: [{sender: x@y, receiver: x@y}]}\n");
    std::string mails;
    for (const char* receiver : {"a", "a", "b", "a", "c"})
        mails += std::string("s@t\t") + receiver + "@z.example\n";
    const json report = replay(mails, {"--against", location, "--samples", "2"}, 1);
    EXPECT_EQ(report["changes"][0]["receivers"], 5);
    EXPECT_EQ(report["changes"][0]["samples"],
              json::parse(R"([{"sender":"s@t","receiver":"a@z.example"},{"sender":"s@t","receiver":"b@z.example"}])"));
    EXPECT_EQ(replay(mails, {"--against", location, "--samples", "0"}, 1)["changes"][0]["samples"], json::array());
}

TEST_F(ReplayTest, BadLinesMakeTheAnswerNoAlsoWhereNothingWouldChange) {
    const json report = replay("bad\na@corp.example\tx@sales.example\n", {"--against", location()}, 1);
    EXPECT_EQ(report["changedReceivers"], 0);
    EXPECT_EQ(report["badLines"]["count"], 1);
}

TEST_F(ReplayTest, WhatCannotBeComparedWithIsAFailure) {
    const std::string bad = write("bad.yaml", "zxpolicy: 1\nrot: {}\n");
    for (const auto& [against, status, says] : {std::tuple{path("none.yaml"), 2, "cannot open"},
                                                {bad, 3, "bad.yaml:2:1: unknown key \"rot\""},
                                                {"sqlite:" + path("none.db"), 3, "there is no store at"},
                                                {std::string("memory:"), 3, "holds no policy"}}) {
        const Outcome outcome = run({"replay", "--envelopes", "-", "--against", against}, kReplayedMails);
        EXPECT_EQ(outcome.status, status) << against;
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, HasSubstr(says));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1);
    }
    EXPECT_NE(access(path("none.db").c_str(), F_OK), 0) << "the store was made";
}

TEST_F(ReplayTest, AListingThatCannotBeWrittenIsAFailure) {
    const std::string location = otherStore("zxpolicy: 1\nroot: {conditions: [{sender: x@y, receiver: x@y}]}\n");
    const auto changesTo = [&](const std::string& file) {
        return run({"replay", "--envelopes", "-", "--against", location, "--changes", file}, kReplayedMails);
    };
    EXPECT_EQ(changesTo(path("none/changes.tsv")).status, 2);
    const Outcome full = changesTo("/dev/full");
    EXPECT_EQ(full.status, 3);
    EXPECT_THAT(full.err, HasSubstr("cannot write \"/dev/full\": No space left on device"));
}

TEST_F(ReplayTest, TheMailsAreNeitherWrittenOverNorReadForAPolicy) {
    const std::string mails = write("mails.tsv", kReplayedMails);
    const Outcome over =
        run({"replay", "--envelopes", mails, "--against", location(), "--changes", path("./mails.tsv")});
    EXPECT_EQ(over.status, 2);
    EXPECT_THAT(over.err, HasSubstr("the command needs the file"));
    EXPECT_EQ(read(mails), kReplayedMails);
    EXPECT_EQ(run({"replay", "--envelopes", "-", "--against", "-"}, kReplayedPolicy).status, 2);
    EXPECT_EQ(run({"replay", "--envelopes", mails, "--against", "-"}, kReplayedPolicy).status, 0);
}

TEST_F(ReplayTest, HostileTextsStayInTheirLines) {
    std::string policy = kReplayedPolicy;
    policy.replace(policy.find("name: Sales"), 11, R"(name: "S\e[2J\n\u202E")");
    apply(policy);
    const std::string location = otherStore(kReplayedPolicy);
    const std::string mails = "a\x1b[2J@partner.example\tx\x1b[2J\xFF@sales.example\n";
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{}, {"--json"}, {"--against", location}, {"--against", location, "--json"}}) {
        std::vector<std::string> arguments{"replay", "--envelopes", "-"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = run(arguments, mails);
        EXPECT_THAT(outcome.out, Not(HasSubstr("\x1b")));
        EXPECT_THAT(outcome.out, Not(HasSubstr("\xE2\x80\xAE")));
        EXPECT_THAT(outcome.out, HasSubstr("[2J"));
    }
}

TEST_F(ReplayTest, AStoreThatChangesMeanwhileIsReplayedAsItWas) {
    const std::string fifo = path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    Outcome outcome;
    const std::string command = std::string(ZX_TOOL) + " --store " + location() + " replay --json --envelopes " + fifo +
                                " >" + path("replayed") + " 2>" + path("said");
    int status = -1;
    std::thread replaying([&] { status = std::system(command.c_str()); });
    // It opens the traffic when it has its copy of the policy.
    const int pipe = open(fifo.c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_GE(pipe, 0);
    const std::string mail = "a@corp.example\tx@sales.example\n";
    EXPECT_EQ(::write(pipe, mail.data(), mail.size()), static_cast<ssize_t>(mail.size()));
    apply("zxpolicy: 1\nroot: {conditions: [{sender: x@y, receiver: x@y}]}\n");
    EXPECT_EQ(::write(pipe, mail.data(), mail.size()), static_cast<ssize_t>(mail.size()));
    close(pipe);
    replaying.join();
    EXPECT_EQ(WEXITSTATUS(status), 0);
    const json report = json::parse(read(path("replayed")));
    EXPECT_EQ(report["rules"][1]["rule"], "\\Sales");
    EXPECT_EQ(report["rules"][1]["receivers"], 2);
    EXPECT_THAT(read(path("said")), HasSubstr("zxpolicy: note: " + location() + " has changed meanwhile"));
}

// The mails have many times the text that memory may grow by.
TEST_F(ReplayTest, MemoryDoesNotGrowWithTheTraffic) {
    const std::string other = write("other.yaml", "zxpolicy: 1\nroot: {conditions: [{sender: x@y, receiver: x@y}]}\n");
    const std::string fifo = path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    // A sanitizer would keep what is given back.
    const std::string command = "ASAN_OPTIONS=$ASAN_OPTIONS:quarantine_size_mb=0 exec " + std::string(ZX_TOOL) +
                                " --store " + location() + " replay --envelopes " + fifo + " --against " + other +
                                " >" + path("out");
    const pid_t child = fork();
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        _exit(127);
    }
    const int pipe = open(fifo.c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_GE(pipe, 0);
    // What was written before has been read, but for what fits into the pipe.
    const auto peakAfter = [&](size_t mails) {
        for (size_t i = 0; i < mails; ++i) {
            std::string mail = "s" + std::to_string(i) + "@partner.example\t";
            for (size_t j = 0; j < 10; ++j)
                mail += (j == 0 ? "" : ",") + std::to_string(i * 10 + j) + std::string(200, 'r') + "@sales.example";
            mail += '\n';
            EXPECT_EQ(::write(pipe, mail.data(), mail.size()), static_cast<ssize_t>(mail.size()));
        }
        const std::string status = read("/proc/" + std::to_string(child) + "/status");
        return std::stol(status.substr(status.find("VmHWM:") + 6));
    };
    const long few = peakAfter(500);
    const long many = peakAfter(5000);
    close(pipe);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_THAT(read(path("out")), StartsWith("5,500 mails, 55,000 receivers"));
    EXPECT_LT(many, few + 2 * 1024) << "KiB";
}

}  // namespace tool
