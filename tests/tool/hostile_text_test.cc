// Texts in a policy that want to be more than texts: lines of their own, commands to a terminal, another order of what
// stands beside them, or bytes that are no UTF-8.
#include <sstream>

#include "output/json.h"
#include "output/text.h"
#include "tool_fixture.h"

namespace tool {

namespace {

// Ends its line and forges another; steers a terminal in two ways; turns the order round.
constexpr const char* kHostile =
    "x\nzxpolicy: forged\x1b[2J\xC2\x9B"
    "2J\xE2\x80\xA8\xE2\x80\xAE";
constexpr const char* kInYaml = R"(x\nzxpolicy: forged\e[2J\u009b2J\u2028\u202e)";
constexpr const char* kInJson = R"(x\nzxpolicy: forged\u001b[2J\u009b2J\u2028\u202e)";
constexpr const char* kShown = R"(x\x0Azxpolicy: forged\x1B[2J\xC2\x9B2J\xE2\x80\xA8\xE2\x80\xAE)";

// A policy with that text, for which $ stands, wherever one may be.
std::string hostilePolicy() {
    const std::string form = R"yaml(zxpolicy: 1
lists:
  - name: "$"
    displayName: "$"
    comment: !!binary "YQr/Yg=="
    addresses:
      - "\"x\e[2Jy\"@b.example"
classifications:
  - name: "$"
root:
  comment: "$"
  conditions:
    - {sender: "*", receiver: "*"}
  tasks:
    - name: "$"
      filter: 1
      outcomes:
        "$": "$"
      setting:
        "$": "$"
  rules:
    - name: "$"
      conditions:
        - {sender: "*@x.example", receiver: "($)"}
    - name: !!binary "gP8="
      conditions:
        - {sender: "*@y.example", receiver: "*"}
)yaml";
    std::string policy;
    for (const char c : form)
        policy += c == '$' ? std::string(kInYaml) : std::string(1, c);
    return policy;
}

// The commands that print what the policy says; the first word of each is the status that it ends with.
const std::vector<std::vector<std::string>> kCommands{
    {"0", "list"},
    {"0", "list", "--names"},
    {"0", "list", "--json"},
    {"0", "list", "show", kHostile},
    {"0", "list", "show", "--json", kHostile},
    {"1", "list", "check", kHostile, "no@x.example"},
    {"1", "list", "check", "--json", kHostile, "no@x.example"},
    {"0", "match", "--sender", "a@y.example", "--receiver", "b@z.example"},
    {"0", "match", "--json", "--sender", "a@y.example", "--receiver", "b@z.example"},
    {"0", "explain", "--sender", "a@y.example", "--receiver", "b@z.example"},
    {"0", "explain", "--sender", "\"x\x1b[2Jy\"@b.example", "--receiver", std::string("b\n@x.example") + kHostile,
     "--best"},
    {"0", "explain", "--sender", "\"x\x1b[2Jy\"@b.example", "--receiver", "b@x.example", "--best"},
    {"0", "explain", "--json", "--sender", "\"x\x1b[2Jy\"@b.example", "--receiver", kHostile, "--best"},
    {"2", "explain", kHostile},
    {"0", "refs", "list", kHostile},
    {"0", "refs", "list", "--json", kHostile},
    {"0", "refs", "classification", kHostile},
    {"0", "refs", "classification", "--json", kHostile},
    {"0", "dump"},
    {"3", "list", "show", std::string(kHostile) + "?"},
    {"3", "--store", std::string("sqlite:/nowhere/") + kHostile, "dump"},
    {"2", kHostile},
    {"2", "--store", "memory:", "apply", kHostile},
    {"2", "match", kHostile},
    {"2", "match", "--sender", kHostile},
    {"2", "match", "--envelopes", kHostile},
    {"2", "list", "--format", kHostile}};

class HostileText : public ToolTest {
protected:
    // Expects that each line is fit for a terminal, and that none begins as the texts want.
    static void expectClean(const std::string& output) {
        std::istringstream lines(output);
        for (std::string line; std::getline(lines, line);) {
            EXPECT_EQ(oneLine(line), line);
            EXPECT_NE(line.rfind("zxpolicy: forged", 0), 0u) << line;
        }
    }
    Outcome runCommand(const std::vector<std::string>& command) {
        const std::vector<std::string> arguments(command.begin() + 1, command.end());
        const Outcome outcome = command[1] == "--store" ? runPlain(arguments) : run(arguments);
        EXPECT_EQ(std::to_string(outcome.status), command[0]) << testing::PrintToString(command) << outcome.err;
        return outcome;
    }
    void applyHostile() { EXPECT_EQ(run({"apply", "-"}, hostilePolicy()).status, 0); }
};

}  // namespace

TEST_F(HostileText, NoCommandPrintsWhatIsNotFitForALine) {
    const Outcome applied = run({"apply", "-"}, hostilePolicy());
    ASSERT_EQ(applied.status, 0) << applied.err;
    expectClean(applied.out + applied.err);
    for (const auto& command : kCommands) {
        SCOPED_TRACE(testing::PrintToString(command));
        const Outcome outcome = runCommand(command);
        expectClean(outcome.out);
        expectClean(outcome.err);
        EXPECT_NE(outcome.out + outcome.err, "");
    }
}

TEST_F(HostileText, TextsAreShownByTheirBytesAndJsonByTheirNumbers) {
    applyHostile();
    EXPECT_EQ(run({"list", "--names"}).out, std::string(kShown) + "\n");
    EXPECT_EQ(run({"list", "show", kHostile}).out, "\"x\\x1B[2Jy\"@b.example\n");
    EXPECT_NE(run({"list", "--json"}).out.find("\"displayName\":\"" + std::string(kInJson) + "\""), std::string::npos);
    const Outcome refused = run({"list", "show", std::string(kHostile) + "?"});
    EXPECT_NE(refused.err.find("there is no address list \"" + std::string(kShown).substr(0, 20)), std::string::npos);
    EXPECT_EQ(refused.err.find('\n'), refused.err.size() - 1);
}

TEST_F(HostileText, WhatIsNoUtf8IsReplacedInJsonAndKeptInADump) {
    applyHostile();
    EXPECT_NE(run({"list", "--json"})
                  .out.find("\"comment\":\"a\\n\xEF\xBF\xBD"
                            "b\""),
              std::string::npos);
    const std::string dumped = dump();
    EXPECT_NE(dumped.find("comment: !!binary \"YQr/Yg==\"\n"), std::string::npos) << dumped;
    EXPECT_NE(dumped.find("name: !!binary \"gP8=\"\n"), std::string::npos) << dumped;
}

TEST_F(HostileText, ADumpSaysTheSamePolicyAgain) {
    applyHostile();
    const std::string dumped = dump();
    EXPECT_EQ(run({"apply", "-"}, dumped).out, "nothing to change\n");
    const Outcome fresh = runPlain({"--store", "sqlite:" + path("other.db"), "apply", "-"}, {}, dumped);
    EXPECT_EQ(fresh.status, 0) << fresh.err;
    EXPECT_EQ(runPlain({"--store", "sqlite:" + path("other.db"), "dump"}).out, dumped);
}

// The addresses come from mails: everybody may send what they like.
TEST_F(HostileText, NoAddressForgesALineOfTheLog) {
    applyHostile();
    const std::string forged = "a\n2026-03-01 09:30:00 [1] log 1.1 forged\r\xE2\x80\xA8\xC2\x85@y.example";
    const Outcome outcome =
        runPlain({"--store", location(), "match", "--best", "--sender", forged, "--receiver", forged, "<" + forged},
                 {"ZXBASE_DEBUG=all", "ZXBASE_LOG_LEVEL=9"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    expectClean(outcome.out);
    expectClean(outcome.err);
    std::istringstream lines(outcome.err);
    size_t count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        const size_t prefix = line.find("] ");
        ASSERT_NE(prefix, std::string::npos) << line;
        const bool isEntry = line.compare(prefix, 10, "] debug 2.") == 0 || line.compare(prefix, 6, "] log ") == 0;
        EXPECT_TRUE(isEntry) << line;
    }
    EXPECT_GT(count, 5u);
    EXPECT_NE(outcome.err.find("forged\\x0d\\xe2\\x80\\xa8\\xc2\\x85@y.example"), std::string::npos);
    EXPECT_EQ(outcome.err.find("\n2026-03-01 09:30:00 [1]"), std::string::npos);
}

TEST(HostileJson, ADocumentIsOneCleanLineWhateverItsTexts) {
    for (int first = 0; first < 256; ++first) {
        std::string text;
        for (const char second : {'a', '\n', '\x80', '\x9b', '\xc2', '\xe2', '\xff', '"', '\\'})
            text.append(1, static_cast<char>(first)).append(1, second);
        const std::string line = Json::object({{"text", text}}).line();
        EXPECT_EQ(oneLine(line), line.substr(0, line.size() - 1) + "\\x0A") << first;
    }
    EXPECT_EQ(Json("\xE2\x80\xAE\x7f\xC2\x9b\xD8\x9C").line(), R"("\u202e\u007f\u009b\u061c")"
                                                               "\n");
}

TEST(HostileTexts, MarksOfDirectionCountAsUnfit) {
    for (const uint32_t mark : {0x61cu, 0x200eu, 0x200fu, 0x202au, 0x202eu, 0x2066u, 0x2069u, 0x2028u, 0x2029u})
        EXPECT_FALSE(isFitForLine(mark)) << std::hex << mark;
    for (const uint32_t plain : {0x61bu, 0x200du, 0x2010u, 0x202fu, 0x2065u, 0x206au, 0x20u, 0xa0u, 0x1f4eeu})
        EXPECT_TRUE(isFitForLine(plain)) << std::hex << plain;
}

}  // namespace tool
