// The entries as the host's log receives them: levels, tag, category, and what is not written at all.
#include "frame/reg_debug.h"
#include "recording_log.h"
#include "support/policy_fixture.h"

namespace {

using zxtest::recordingLog;
using Lines = std::vector<std::string>;

class HostLog : public zxtest::PolicyTest {
protected:
    void SetUp() override {
        PolicyTest::SetUp();
        recordingLog() = zxtest::RecordingLog();
    }
    static std::string filled(char letter, size_t count) { return std::string(count, letter); }
    static bool has(const Lines& lines, const std::string& line) {
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }
};
ZXTEST_ON_BOTH_ENGINES(HostLog);

TEST_P(HostLog, UnwantedDebugEntriesAreNotEvenFormatted) {
    ZxRegDebug::debugLog(2, "f.cc", "-POLICY-", 7, "%s", "text");
    EXPECT_EQ(1, recordingLog().asked);
    EXPECT_EQ(0, recordingLog().formatted);
    EXPECT_TRUE(recordingLog().debugEntries.empty());
    matched("a@b.c", {"x@y.z"});
    EXPECT_TRUE(recordingLog().debugEntries.empty());
}

TEST_P(HostLog, WantedDebugEntriesCarryAllTheyWereGiven) {
    recordingLog().debugWanted = true;
    ZxRegDebug::debugLog(3, "f.cc", "-POLICY-", 7, "%s %d", "text", 5);
    EXPECT_EQ(Lines{"2 3 -POLICY- 2 null text 5"}, recordingLog().debugEntries);
    EXPECT_EQ(Lines{"f.cc:7"}, recordingLog().sources);
    recordingLog().debugEntries.clear();
    ZxRegDebug::debugLog(1, "f.cc", "-POLICY-", 7, "%s", filled('a', 600).c_str());
    EXPECT_EQ(Lines{"2 1 -POLICY- 2 null " + filled('a', 511)}, recordingLog().debugEntries);
}

TEST_P(HostLog, ADebugFunctionReceivesThemInsteadWhetherWantedOrNot) {
    for (const bool wanted : {false, true}) {
        recordingLog().debugWanted = wanted;
        const zxtest::DebugMessages messages;
        ZxRegDebug::debugLog(2, "f.cc", "-POLICY-", 7, "text");
        EXPECT_EQ(Lines{"text"}, messages.all());
    }
    EXPECT_TRUE(recordingLog().debugEntries.empty());
}

TEST_P(HostLog, ApplicationEntriesAreWrittenUpToTheLogsLevel) {
    recordingLog().level = 2;
    ZxRegDebug::appLog(3, 1, "%s", "three");
    EXPECT_TRUE(recordingLog().applicationEntries.empty());
    EXPECT_EQ(0, recordingLog().formatted);
    ZxRegDebug::appLog(2, 9, "%s %d", "two", 2);
    EXPECT_EQ(Lines{"2 9 null two 2"}, recordingLog().applicationEntries);
}

TEST_P(HostLog, ApplicationEntriesHaveAtMost255Characters) {
    for (const size_t length : {size_t{255}, size_t{256}, size_t{600}})
        ZxRegDebug::appLog(1, 1, "%s", filled('a', length).c_str());
    EXPECT_EQ(Lines(3, "1 1 null " + filled('a', 255)), recordingLog().applicationEntries);
}

TEST_P(HostLog, ApplicationEntriesNeverGoToTheDebugFunction) {
    const zxtest::DebugMessages messages;
    ZxRegDebug::appLog(1, 1, "text");
    EXPECT_EQ(Lines{}, messages.all());
    EXPECT_EQ(1u, recordingLog().applicationEntries.size());
}

TEST_P(HostLog, EachMatchedRuleIsAnApplicationEntryOfLevelTwo) {
    addRule("\\", "A", "*", "*@a.z");
    matched("a@b.c", {"1@a.z", "2@b.z", "3@a.z"});
    EXPECT_TRUE(recordingLog().applicationEntries.empty());
    recordingLog().level = 2;
    matched("a@b.c", {"1@a.z", "2@b.z", "3@a.z"});
    EXPECT_EQ((Lines{"2 1 null Matched rule : \\A", "2 1 null Matched rule : \\"}), recordingLog().applicationEntries);
}

TEST_P(HostLog, EditingIsTracedAtLevelThree) {
    recordingLog().debugWanted = true;
    addCondition("\\", "bad", "*");
    addCondition("\\", "*", "*");
    EXPECT_EQ((Lines{"2 3 -POLICY- 2 null Condition with sender: bad & receiver: * is not valid. Skip!",
                     "2 3 -POLICY- 2 null Condition with sender: * & receiver: * already exist"}),
              recordingLog().debugEntries);
}

TEST_P(HostLog, MatchingIsTracedAtLevelTwoAndSplittingAtLevelOne) {
    addTask("\\", "t");
    recordingLog().debugWanted = true;
    matched("smtp:a@b.c", {"x@y.z"});
    EXPECT_EQ((Lines{
                  "2 2 -POLICY- 2 null Using First match.",
                  "2 2 -POLICY- 2 null Checking rule \\",
                  "2 2 -POLICY- 2 null receiver: x@y.z, pattern: *, result: 1",
                  "2 1 -POLICY- 2 null split smtp:a@b.c to a@b.c",
                  "2 2 -POLICY- 2 null sender: smtp:a@b.c, pattern: *, result: 1",
                  "2 2 -POLICY- 2 null Matched in rule \\",
                  "2 2 -POLICY- 2 null *****[Match 1 rules]*****",
                  "2 2 -POLICY- 2 null task \\t, enable:1, overridable:0, filterType:00000000",
                  "2 2 -POLICY- 2 null Pushing task \\t",
                  "2 2 -POLICY- 2 null Matched rule1 - {\\} has 1 tasks",
                  "2 2 -POLICY- 2 null Rule {\\} has task : <<\\t>>",
              }),
              recordingLog().debugEntries);
}

TEST_P(HostLog, FailuresAreTracedAtLevelTwo) {
    addRule("\\", "Broken", "(Missing)");
    recordingLog().debugWanted = true;
    matched("a@b.c", {"x@y.z"}, 1);
    EXPECT_TRUE(
        has(recordingLog().debugEntries, "2 2 -POLICY- 2 null Fail to check rule \\Broken (0x81021804), ignore"));
}

TEST_P(HostLog, WhatListsPassOverIsOfLevel3) {
    _ZxPolAddrListAttr attr{};
    int error = ZXPOL_S_OK;
    const zxtest::Handle list(zxpol_createAddrList(listHive(), "L", &attr, &error));
    recordingLog().debugWanted = true;
    const char* addresses[] = {"a@b.c", "A@b.c", "nowhere", nullptr};
    zxpol_insertAddress(list.get(), addresses, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, error);
    const char* absent[] = {"x@y.z", nullptr};
    error = ZXPOL_S_OK;
    zxpol_removeAddress(list.get(), absent, &error);
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, error);
    EXPECT_EQ((Lines{"2 3 -POLICY- 2 null Address 'A@b.c' already exist",
                     "2 3 -POLICY- 2 null Address 'nowhere' is not valid. Skip!",
                     "2 3 -POLICY- 2 null Address 'x@y.z' doesn't exist"}),
              recordingLog().debugEntries);
}

}  // namespace
