// How far long work is.
#include "output/progress.h"

#include <gmock/gmock.h>

#include "output/text.h"
#include "support/experiment.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

using std::chrono::seconds;

using ProgressTest = ToolTest;

// So many that they take longer than it waits before it is drawn.
constexpr int kMails = 150000 / static_cast<int>(zxtest::kStride);

std::string manyMails() {
    std::string mails;
    for (int i = 0; i < kMails; ++i)
        mails += "a@b.c\td" + std::to_string(i) + "@e.f\n";
    return mails;
}

}  // namespace

TEST_F(ProgressTest, ABarWithPercentageAndRateWhereTheWholeIsKnown) {
    EXPECT_EQ(progressLine({12345, 0.25, seconds(3)}, "mails", 40), "[####..............]  25%  4,115 mails/s");
    EXPECT_EQ(progressLine({10, 0.0, seconds(0)}, "mails", 40), "[......................]   0%  0 mails/s");
    EXPECT_EQ(progressLine({10, 1.0, seconds(1)}, "mails", 40), "[#####################] 100%  10 mails/s");
    EXPECT_EQ(progressLine({10, 1.5, seconds(1)}, "mails", 27), "[########] 100%  10 mails/s");
    EXPECT_EQ(progressLine({2, 0.5, seconds(1)}, "mails", 1000),
              "[" + std::string(20, '#') + std::string(20, '.') + "]  50%  2 mails/s");
}

TEST_F(ProgressTest, ACountWhereItIsNot) {
    EXPECT_EQ(progressLine({1234567, {}, seconds(3)}, "mails", 40), "1,234,567 mails");
}

TEST_F(ProgressTest, WhatThereIsNoRoomForIsLeftOut) {
    EXPECT_EQ(progressLine({12, 0.5, seconds(1)}, "mails", 16), " 50%  12 mails/s");
    EXPECT_EQ(progressLine({12, 0.5, seconds(1)}, "mails", 15), "[####....]  50%");
    EXPECT_EQ(progressLine({12, 0.5, seconds(1)}, "mails", 11), " 50%");
    for (size_t width = 0; width < 60; ++width) {
        EXPECT_LE(displayWidth(progressLine({123456, 0.4, seconds(1)}, "mails", width)), width);
        EXPECT_LE(displayWidth(progressLine({123456, {}, seconds(1)}, "mails", width)), width);
    }
}

// On a terminal of 30 columns, whose output is what this reads.
TEST_F(ProgressTest, ItIsDrawnOnATerminalAndWipedAtTheEnd) {
    apply(policyWithRoot(""));
    write("mails.tsv", manyMails());
    const auto onTerminal = [&](const std::string& replay) {
        const Outcome outcome = runShell("script -qec \"stty cols 30; " + replay + " >report\" /dev/null");
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(read(path("report")), HasSubstr("\"mails\":" + std::to_string(kMails)));
        return outcome.out;
    };
    const std::string known = onTerminal("$zxpolicy replay --json --envelopes mails.tsv");
    EXPECT_THAT(known, ContainsRegex("\r\\[#*\\.*\\] +[0-9]+%  [0-9,]+ mails/s\x1b\\[K"));
    EXPECT_THAT(known, EndsWith("\r\x1b[K"));
    for (size_t begin = 0, end = 0; (end = known.find('\r', begin)) != std::string::npos; begin = end + 1)
        EXPECT_LT(displayWidth(known.substr(begin, end - begin)), 30 + sizeof "\x1b[K") << known;
    EXPECT_THAT(onTerminal("$zxpolicy replay --json --envelopes - <mails.tsv"), HasSubstr("% "));
    const std::string piped = onTerminal("cat mails.tsv | $zxpolicy replay --json --envelopes -");
    EXPECT_THAT(piped, ContainsRegex("\r[0-9,]+ mails\x1b\\[K"));
    EXPECT_THAT(piped, Not(HasSubstr("%")));
}

TEST_F(ProgressTest, NothingIsDrawnWhereThereIsNoTerminal) {
    apply(policyWithRoot(""));
    EXPECT_EQ(run({"replay", "--envelopes", write("mails.tsv", manyMails())}).err, "");
}

}  // namespace tool
