// Whether one rule applies: its conditions against a sender and a receiver.
#include "support/policy_fixture.h"

namespace {

using zxtest::DebugMessages;
using Lines = std::vector<std::string>;

class RuleMatching : public zxtest::PolicyTest {
protected:
    void SetUp() override {
        PolicyTest::SetUp();
        addRule("\\", "A");
    }
    // Writes a condition of rule A as it lies in the store.
    void condition(int number, const std::string& text) {
        rawRule("\\A").setText("condition" + std::to_string(number), text);
    }
    // Whether rule A applies in the given mode; the mail always matches the root.
    bool applies(const char* sender, const char* receiver, uint32_t mode) {
        const Lines lines = matched(sender, {receiver}, mode);
        return lines == Lines{std::string("\\A: ") + receiver + " |"};
    }
    bool applies(const char* sender, const char* receiver) {
        const bool first = applies(sender, receiver, 0);
        EXPECT_EQ(first, applies(sender, receiver, 1));
        return first;
    }
    // The debug messages of a match that begin with `start`.
    Lines messages(const char* sender, const char* receiver, uint32_t mode, const std::string& start) {
        const DebugMessages recorded;
        match(sender, {receiver}, mode);
        Lines found;
        for (const std::string& text : recorded.all())
            if (text.compare(0, start.size(), start) == 0) found.push_back(text);
        return found;
    }
};
ZXTEST_ON_BOTH_ENGINES(RuleMatching);

TEST_P(RuleMatching, StarsMatchEveryMailWithoutAnyWeight) {
    EXPECT_TRUE(applies("a@b.c", "x@y.z"));
    EXPECT_TRUE(applies("", ""));
    EXPECT_TRUE(applies("no address", "at all"));
    EXPECT_EQ(Lines{"Matched in rule \\A, checking its priority-(0, 0) with previous matched priority-(0, 0)"},
              messages("a@b.c", "x@y.z", 1, "Matched in rule \\A"));
}

TEST_P(RuleMatching, BothSidesMustMatch) {
    condition(1, "*@b.c,*@y.z");
    EXPECT_TRUE(applies("a@b.c", "x@y.z"));
    EXPECT_FALSE(applies("a@b.c", "x@other.z"));
    EXPECT_FALSE(applies("a@other.c", "x@y.z"));
}

TEST_P(RuleMatching, OneMatchingConditionIsEnough) {
    condition(1, "nobody@b.c,*");
    condition(2, "a@b.c,nobody@y.z");
    EXPECT_FALSE(applies("a@b.c", "x@y.z"));
    condition(3, "a@b.c,*");
    EXPECT_TRUE(applies("a@b.c", "x@y.z"));
}

TEST_P(RuleMatching, ThePriorityIsTheHighestOfAllMatchingConditions) {
    condition(1, "*@example.com,*");
    condition(2, "a@example.com,*");
    condition(3, "*,*");
    EXPECT_EQ(Lines{"Matched in rule \\A, checking its priority-(5000, 0) with previous matched priority-(0, 0)"},
              messages("a@example.com", "x@y.z", 1, "Matched in rule \\A"));
}

TEST_P(RuleMatching, OfEqualConditionsTheEarlierIsKept) {
    condition(1, "a@example.com,*");
    condition(2, "*,x@y.z");
    EXPECT_EQ(Lines{"Matched in rule \\A, checking its priority-(5000, 0) with previous matched priority-(0, 0)"},
              messages("a@example.com", "x@y.z", 1, "Matched in rule \\A"));
}

TEST_P(RuleMatching, TheReceiverIsComparedFirstAndMayDecide) {
    condition(1, "(Missing),nobody@y.z");
    condition(2, "a@b.c,*");
    EXPECT_TRUE(applies("a@b.c", "x@y.z"));
    condition(1, "nobody@b.c,(Missing)");
    EXPECT_FALSE(applies("a@b.c", "x@y.z"));
}

TEST_P(RuleMatching, InFirstMatchTheFirstMatchingConditionDecides) {
    condition(1, "*,*");
    condition(2, "(Missing),*");
    EXPECT_TRUE(applies("a@b.c", "x@y.z", 0));
    EXPECT_FALSE(applies("a@b.c", "x@y.z", 1));
}

TEST_P(RuleMatching, AddressesAreComparedBehindTheirFirstColon) {
    condition(1, "a@example.com,x@y.z");
    EXPECT_TRUE(applies("smtp:a@example.com", "SMTP:x@y.z"));
    EXPECT_FALSE(applies("a:b:a@example.com", "x@y.z"));
    EXPECT_EQ(Lines{"split smtp:a@example.com to a@example.com"},
              messages("smtp:a@example.com", "nobody@y.z", 0, "split"));
}

TEST_P(RuleMatching, AMissingListFailsTheRule) {
    condition(1, "(Nowhere),*");
    EXPECT_FALSE(applies("a@b.c", "x@y.z"));
    EXPECT_EQ(Lines{"Fail to check rule \\A (0x81021804), ignore"}, messages("a@b.c", "x@y.z", 0, "Fail"));
    EXPECT_EQ(Lines{"Fail to check rule \\A (0x81021804), ignore"}, messages("a@b.c", "x@y.z", 1, "Fail"));
    condition(2, "*,*");  // not looked at any more
    EXPECT_FALSE(applies("a@b.c", "x@y.z"));
}

TEST_P(RuleMatching, ADirectoryListFailsTheRule) {
    addDirectoryList("Staff");
    condition(1, "(Staff),*");
    EXPECT_FALSE(applies("a@b.c", "x@y.z"));
    EXPECT_EQ(Lines{"Fail to check rule \\A (0x81020001), ignore"}, messages("a@b.c", "x@y.z", 0, "Fail"));
    condition(1, "*,(Staff)");
    EXPECT_FALSE(applies("a@b.c", "x@y.z"));
    EXPECT_EQ(Lines{"Fail to check rule \\A (0x81020001), ignore"}, messages("a@b.c", "x@y.z", 1, "Fail"));
}

TEST_P(RuleMatching, AnAddressIsSplitForAListOnceTheListIsOpen) {
    condition(1, "(Staff),*");
    rawRule().setText("condition1", "*,nobody@y.z");
    EXPECT_EQ(Lines{}, messages("smtp:a@b.c", "x@y.z", 0, "split"));
    addDirectoryList("Staff");
    EXPECT_EQ(Lines{"split smtp:a@b.c to a@b.c"}, messages("smtp:a@b.c", "x@y.z", 0, "split"));
}

TEST_P(RuleMatching, AReferenceIsKnownByItsFirstCharacterAlone) {
    addDirectoryList("ab");
    condition(1, "(abc,*");
    EXPECT_EQ(Lines{"Fail to check rule \\A (0x81020001), ignore"}, messages("a@b.c", "x@y.z", 0, "Fail"));
    condition(1, "(ab),*");
    EXPECT_EQ(Lines{"Fail to check rule \\A (0x81020001), ignore"}, messages("a@b.c", "x@y.z", 0, "Fail"));
    condition(1, "(abcd,*");
    EXPECT_EQ(Lines{"Fail to check rule \\A (0x81021804), ignore"}, messages("a@b.c", "x@y.z", 0, "Fail"));
}

TEST_P(RuleMatching, AReferenceWithoutANameNeverMatches) {
    for (const char* text : {"(,*", "(),*", "*,(", "*,()"}) {
        condition(1, text);
        EXPECT_FALSE(applies("a@b.c", "x@y.z")) << text;
    }
}

TEST_P(RuleMatching, AConditionThatCannotBeReadEndsTheConditions) {
    condition(1, "nobody@b.c,*");
    condition(2, "*," + std::string(1022, ' '));
    condition(3, "*,*");
    EXPECT_FALSE(applies("a@b.c", "x@y.z"));
    condition(1, "*,*");
    EXPECT_TRUE(applies("a@b.c", "x@y.z"));
    rawRule("\\A").setNumber("condition2", 5);
    EXPECT_FALSE(applies("a@b.c", "x@y.z"));
    EXPECT_EQ(Lines{}, messages("a@b.c", "x@y.z", 0, "Fail"));
}

TEST_P(RuleMatching, AStoredTextThatIsNoPairMatchesNothing) {
    for (const std::string& text : {std::string("*"), std::string(), std::string(600, '*') + ",*"}) {
        condition(1, "nobody@b.c,*");
        condition(2, text);
        EXPECT_FALSE(applies("a@b.c", "x@y.z")) << text;
        condition(1, text);
        condition(2, "*,*");
        EXPECT_TRUE(applies("a@b.c", "x@y.z")) << text;
    }
}

TEST_P(RuleMatching, ARuleOfAnotherMatchTypeNeverMatches) {
    rawRule("\\A").setNumber("matchType", 1);
    EXPECT_FALSE(applies("a@b.c", "x@y.z"));
    EXPECT_EQ(Lines{}, messages("a@b.c", "x@y.z", 0, "Fail"));
}

}  // namespace
