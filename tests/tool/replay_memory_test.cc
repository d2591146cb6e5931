// Traffic of any length: what it takes in memory does not depend on how many mails there are.
#include <gtest/gtest.h>

#include "running_program.h"
#include "tool_fixture.h"

namespace tool {

namespace {

struct LongTraffic {
    const char* name;
    std::vector<std::string> words;
};

void PrintTo(const LongTraffic& traffic, std::ostream* out) {
    *out << traffic.name;
}

class ReplayMemory : public ToolTest, public testing::WithParamInterface<LongTraffic> {
protected:
    // Mails of which no two are the same, and a bad line after every tenth.
    static std::string mails(int from, int count) {
        std::string lines;
        for (int i = from; i < from + count; ++i) {
            const std::string number = std::to_string(i);
            lines += "sender" + number + "@a.example\treceiver" + number + "@b.example,x" + number + "@c.example\n";
            if (i % 10 == 0) lines += "no mail " + number + "\n";
        }
        return lines;
    }
};

}  // namespace

TEST_P(ReplayMemory, StaysTheSame) {
    const std::string rest = "  rules: [{name: A, conditions: [{sender: \"*\", receiver: \"*@b.example\"}]}]\n";
    apply(policyWithRoot(rest + "  tasks: [{name: old}]\n"));
    write("new.yaml", policyWithRoot(rest + "  tasks: [{name: new}]\n"));
    std::vector<std::string> words{ZX_TOOL, "--store", location()};
    for (const std::string& word : GetParam().words)
        words.push_back(word == "NEW" || word == "PAGE" ? path(word == "NEW" ? "new.yaml" : "page.html") : word);
    RunningProgram program(words, path("program-out"), path("program-err"));
    constexpr int kFirst = 10000;
    constexpr int kMore = 60000;
    program.write(mails(0, kFirst));
    const uint64_t before = program.peakMemory();
    program.write(mails(kFirst, kMore));
    const uint64_t after = program.peakMemory();
    program.closeInput();
    EXPECT_EQ(program.wait(), 1) << read(path("program-err"));
    // Each mail has more than 50 bytes of text.
    EXPECT_LT(after - before, kMore * 50 / 1024 / 4) << before << " KiB before";
}

INSTANTIATE_TEST_SUITE_P(All, ReplayMemory,
                         testing::Values(LongTraffic{"Replay", {"replay", "--envelopes", "-"}},
                                         LongTraffic{"ReplayAgainst",
                                                     {"replay", "--envelopes", "-", "--against", "NEW"}},
                                         LongTraffic{"Report", {"report", "--envelopes", "-", "--html", "PAGE"}}),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace tool
