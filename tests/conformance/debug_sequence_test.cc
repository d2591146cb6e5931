// The debug messages of whole matches, in their order.
#include "support/policy_fixture.h"

namespace {

using zxtest::DebugMessages;
using Lines = std::vector<std::string>;

class DebugSequence : public zxtest::PolicyTest {
protected:
    void SetUp() override {
        PolicyTest::SetUp();
        setExclusive(26, ZXPOL_FILTER_ASC_EXCLUSIVE);
        setExclusive(27, ZXPOL_FILTER_DESC_EXCLUSIVE);
        addRule("\\", "Broken", "(Missing)", "*@corp.example");
        addRule("\\", "A", "*@partner.example", "*@corp.example");
        addRule("\\A", "A1", "bob@partner.example", "carl@corp.example");
        addRule("\\", "B", "*@partner.example", "*@corp.example");
        addTask("\\", "scan", {26, 1, 0, 0});
        addTask("\\", "trace", {27, 1, 0, 0});
        addTask("\\", "off", {0, 0, 0, 0});
        addTask("\\", "optional", {1, 1, 1, 0});
        addTask("\\A", "scan2", {26, 1, 0, 0});
        addTask("\\A", "trace2", {27, 1, 0, 0});
        addTask("\\A", "plain", {0, 1, 0, 0});
        inactivate("\\A", "\\optional");
    }
};
ZXTEST_ON_BOTH_ENGINES(DebugSequence);

TEST_P(DebugSequence, OfAFirstMatch) {
    const DebugMessages messages;
    matched("smtp:bob@partner.example", {"dave@corp.example", "x@other.example"}, 0);
    EXPECT_EQ((Lines{
                  "Using First match.",
                  "Checking rule \\Broken",
                  "receiver: dave@corp.example, pattern: *@corp.example, result: 1",
                  "sender: smtp:bob@partner.example, pattern: (Missing), result: 0",
                  "Fail to check rule \\Broken (0x81021804), ignore",
                  "Checking rule \\A\\A1",
                  "receiver: dave@corp.example, pattern: carl@corp.example, result: 0",
                  "Checking rule \\A",
                  "receiver: dave@corp.example, pattern: *@corp.example, result: 1",
                  "split smtp:bob@partner.example to bob@partner.example",
                  "sender: smtp:bob@partner.example, pattern: *@partner.example, result: 1",
                  "Matched in rule \\A",
                  "Checking rule \\Broken",
                  "receiver: x@other.example, pattern: *@corp.example, result: 0",
                  "Checking rule \\A\\A1",
                  "receiver: x@other.example, pattern: carl@corp.example, result: 0",
                  "Checking rule \\A",
                  "receiver: x@other.example, pattern: *@corp.example, result: 0",
                  "Checking rule \\B",
                  "receiver: x@other.example, pattern: *@corp.example, result: 0",
                  "Checking rule \\",
                  "receiver: x@other.example, pattern: *, result: 1",
                  "split smtp:bob@partner.example to bob@partner.example",
                  "sender: smtp:bob@partner.example, pattern: *, result: 1",
                  "Matched in rule \\",
                  "*****[Match 2 rules]*****",
                  "task \\scan, enable:1, overridable:0, filterType:0000001A",
                  "Pushing ASC-exclusive task \\scan",
                  "task \\trace, enable:1, overridable:0, filterType:0000001B",
                  "Pushing DESC-exclusive task \\trace",
                  "task \\off, enable:0, overridable:0, filterType:00000000",
                  "Ignoring task \\off",
                  "task \\optional, enable:1, overridable:1, filterType:00000001",
                  "Ignoring task \\optional",
                  "task \\A\\scan2, enable:1, overridable:0, filterType:0000001A",
                  "Ignoring ASC-exclusive task \\A\\scan2",
                  "task \\A\\trace2, enable:1, overridable:0, filterType:0000001B",
                  "Erasing previous DESC-exclusive task \\trace",
                  "Pushing DESC-exclusive task \\A\\trace2",
                  "task \\A\\plain, enable:1, overridable:0, filterType:00000000",
                  "Pushing task \\A\\plain",
                  "Matched rule1 - {\\A} has 3 tasks",
                  "Rule {\\A} has task : <<\\scan>>",
                  "Rule {\\A} has task : <<\\A\\trace2>>",
                  "Rule {\\A} has task : <<\\A\\plain>>",
                  "task \\scan, enable:1, overridable:0, filterType:0000001A",
                  "Pushing ASC-exclusive task \\scan",
                  "task \\trace, enable:1, overridable:0, filterType:0000001B",
                  "Pushing DESC-exclusive task \\trace",
                  "task \\off, enable:0, overridable:0, filterType:00000000",
                  "Ignoring task \\off",
                  "task \\optional, enable:1, overridable:1, filterType:00000001",
                  "Pushing task \\optional",
                  "Matched rule2 - {\\} has 3 tasks",
                  "Rule {\\} has task : <<\\scan>>",
                  "Rule {\\} has task : <<\\trace>>",
                  "Rule {\\} has task : <<\\optional>>",
              }),
              messages.all());
}

TEST_P(DebugSequence, OfABestMatch) {
    addRule("\\A", "Never", "bob@partner.example", "carl@corp.example");
    const DebugMessages messages;
    matched("bob@partner.example", {"carl@corp.example"}, 1);
    EXPECT_EQ((Lines{
                  "Using Best match.",
                  "Checking rule \\",
                  "receiver: carl@corp.example, pattern: *, result: 1",
                  "sender: bob@partner.example, pattern: *, result: 1",
                  "Matched in rule \\",
                  "Checking rule \\Broken",
                  "receiver: carl@corp.example, pattern: *@corp.example, result: 1",
                  "sender: bob@partner.example, pattern: (Missing), result: 0",
                  "Fail to check rule \\Broken (0x81021804), ignore",
                  "Checking rule \\A",
                  "receiver: carl@corp.example, pattern: *@corp.example, result: 1",
                  "sender: bob@partner.example, pattern: *@partner.example, result: 1",
                  "Matched in rule \\A, checking its priority-(4000, 4000) with previous matched priority-(0, 0)",
                  "Rule \\A has higher priority",
                  "Checking rule \\B",
                  "receiver: carl@corp.example, pattern: *@corp.example, result: 1",
                  "sender: bob@partner.example, pattern: *@partner.example, result: 1",
                  "Matched in rule \\B, checking its priority-(4000, 4000) with previous matched priority-(4000, 4000)",
                  "Checking rule \\A\\A1",
                  "receiver: carl@corp.example, pattern: carl@corp.example, result: 1",
                  "sender: bob@partner.example, pattern: bob@partner.example, result: 1",
                  "Matched in rule \\A\\A1, checking its priority-(5000, 5000) with previous matched priority-(0, 0)",
                  "Sender and Receiver are both fully qualified in rule \\A\\A1",
                  "*****[Match 1 rules]*****",
                  "task \\scan, enable:1, overridable:0, filterType:0000001A",
                  "Pushing ASC-exclusive task \\scan",
                  "task \\trace, enable:1, overridable:0, filterType:0000001B",
                  "Pushing DESC-exclusive task \\trace",
                  "task \\off, enable:0, overridable:0, filterType:00000000",
                  "Ignoring task \\off",
                  "task \\optional, enable:1, overridable:1, filterType:00000001",
                  "Pushing task \\optional",
                  "task \\A\\scan2, enable:1, overridable:0, filterType:0000001A",
                  "Ignoring ASC-exclusive task \\A\\scan2",
                  "task \\A\\trace2, enable:1, overridable:0, filterType:0000001B",
                  "Erasing previous DESC-exclusive task \\trace",
                  "Pushing DESC-exclusive task \\A\\trace2",
                  "task \\A\\plain, enable:1, overridable:0, filterType:00000000",
                  "Pushing task \\A\\plain",
                  "Matched rule1 - {\\A\\A1} has 4 tasks",
                  "Rule {\\A\\A1} has task : <<\\scan>>",
                  "Rule {\\A\\A1} has task : <<\\optional>>",
                  "Rule {\\A\\A1} has task : <<\\A\\trace2>>",
                  "Rule {\\A\\A1} has task : <<\\A\\plain>>",
              }),
              messages.all());
}

TEST_P(DebugSequence, OfABestMatchThatEndsAtTheRoot) {
    rawRule().setText("condition1", "bob@partner.example,carl@corp.example");
    rawRule().setText("condition2", "*,*");
    const DebugMessages messages;
    matched("bob@partner.example", {"carl@corp.example"}, 1);
    const Lines start(messages.all().begin(), messages.all().begin() + 9);
    EXPECT_EQ((Lines{
                  "Using Best match.",
                  "Checking rule \\",
                  "receiver: carl@corp.example, pattern: carl@corp.example, result: 1",
                  "sender: bob@partner.example, pattern: bob@partner.example, result: 1",
                  "receiver: carl@corp.example, pattern: *, result: 1",
                  "sender: bob@partner.example, pattern: *, result: 1",
                  "Matched in rule \\",
                  "Sender and Receiver are both fully qualified in rule \\",
                  "*****[Match 1 rules]*****",
              }),
              start);
}

TEST_P(DebugSequence, OfAMatchWithoutAResult) {
    rawRule().setText("condition1", "nobody@y.z,*");
    const DebugMessages messages;
    EXPECT_EQ(Lines{}, matched("bob@partner.example", {"carl@corp.example"}, 1));
    EXPECT_EQ((Lines{
                  "Using Best match.",
                  "Checking rule \\",
                  "receiver: carl@corp.example, pattern: *, result: 1",
                  "sender: bob@partner.example, pattern: nobody@y.z, result: 0",
                  "*****[Match 0 rules]*****",
              }),
              messages.all());
}

}  // namespace
