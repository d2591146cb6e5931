// Conditions as texts and as pairs, and whether one pair covers another.
#include "rules/mail_condition.h"
#include "support/store_fixture.h"

namespace {

_ZxPolAddrPairCond pairOf(const std::string& sender, const std::string& receiver) {
    _ZxPolAddrPairCond pair = {};
    sender.copy(pair.sender, sizeof pair.sender - 1);
    receiver.copy(pair.receiver, sizeof pair.receiver - 1);
    return pair;
}

// "sender|receiver" of a text, or the code of the failure.
std::string parsed(const char* text) {
    const ZxPolMailCondition conditions(nullptr);
    _ZxPolAddrPairCond pair = pairOf("kept", "kept");
    int error = ZXPOL_S_OK;
    conditions.parseAddressPair(text, &pair, &error);
    if (error < 0) {
        EXPECT_STREQ("kept", pair.sender);
        EXPECT_STREQ("kept", pair.receiver);
        return zxtest::codeText(error);
    }
    EXPECT_CODE(ZXPOL_S_OK, error);
    return std::string(pair.sender) + "|" + pair.receiver;
}

bool valid(const char* sender, const char* receiver) {
    _ZxPolAddrPairCond pair = pairOf(sender, receiver);
    return ZxPolMailCondition(nullptr).isValid(&pair);
}

bool covers(const _ZxPolAddrPairCond& parent, const _ZxPolAddrPairCond& child) {
    return ZxPolMailCondition(nullptr)._checkAddrPairRelated(&parent, &child);
}

TEST(AddressPair, IsCutAtTheFirstComma) {
    EXPECT_EQ("  abc|*  ", parsed("  abc  ,  *  "));
    EXPECT_EQ("a|b,c", parsed("a,b,c"));
    EXPECT_EQ("|b", parsed("   ,b"));
    EXPECT_EQ("a|", parsed("a,   "));
    EXPECT_EQ("|", parsed(","));
    EXPECT_EQ("0x81021806", parsed("no comma"));
    EXPECT_EQ("0x81021806", parsed(""));
}

TEST(AddressPair, OnlyBlanksNextToTheCommaGo) {
    EXPECT_EQ("a\t|\tb", parsed("a\t,\tb"));
}

TEST(AddressPair, IsPutTogetherWithAComma) {
    const _ZxPolAddrPairCond pair = pairOf("*", " b ");
    std::string text = "before";
    ZxPolMailCondition(nullptr).formatAddressPair(&pair, text);
    EXPECT_EQ("*, b ", text);
}

TEST(AddressPair, NeedsAReferenceOrAPatternOnEachSide) {
    EXPECT_TRUE(valid("*", "*"));
    EXPECT_TRUE(valid("(list1)", "a@b.c"));
    EXPECT_TRUE(valid("(x)", "( )"));
    EXPECT_FALSE(valid("()", "*"));
    EXPECT_FALSE(valid("*", "()"));
    EXPECT_FALSE(valid("(list1", "*"));
    EXPECT_FALSE(valid("", "*"));
    EXPECT_FALSE(valid("*", ""));
}

TEST(AddressPair, CoversByPatternOrOnTrust) {
    EXPECT_TRUE(covers(pairOf("*", "*"), pairOf("a@b.c", "x@y.z")));
    EXPECT_TRUE(covers(pairOf("*@b.c", "*"), pairOf("a@b.c", "*")));
    EXPECT_FALSE(covers(pairOf("a@b.c", "*"), pairOf("*@b.c", "*")));
    EXPECT_FALSE(covers(pairOf("*", "x@y.z"), pairOf("a@b.c", "*")));
    EXPECT_TRUE(covers(pairOf("(list)", "x@y.z"), pairOf("a@b.c", "X@Y.Z")));
    EXPECT_TRUE(covers(pairOf("a@b.c", "*"), pairOf("(list)", "x@y.z")));
    EXPECT_FALSE(covers(pairOf("a@b.c", "q@r.s"), pairOf("(list)", "x@y.z")));
}

}  // namespace
