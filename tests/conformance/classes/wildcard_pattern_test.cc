// One text against a pattern in which a star stands for unknown text.
#include "pattern/wildcard_pattern.h"

#include <gtest/gtest.h>

#include <string>

namespace {

bool dotted(const char* pattern, const char* subject) {
    return ZxPolWildcardPattern(pattern, ".", '\0') == subject;
}
bool whole(const char* pattern, const char* subject) {
    return ZxPolWildcardPattern(pattern, "", '\0') == subject;
}
// `count` labels "s", dots between them.
std::string labels(int count) {
    std::string text = "s";
    for (int at = 1; at < count; ++at)
        text += ".s";
    return text;
}

TEST(WildcardPattern, ASingleWildcardMatchesEverything) {
    for (const char* pattern : {"*", "**", " * ", "* *", "\t*\n"})
        for (const char* subject : {"", "a", "a.b.c", " ", "."})
            EXPECT_TRUE(dotted(pattern, subject)) << pattern;
}

TEST(WildcardPattern, NothingMatchesANullSubject) {
    EXPECT_FALSE(dotted("*", nullptr));
    EXPECT_FALSE(dotted("", nullptr));
    EXPECT_FALSE(dotted("a", nullptr));
}

TEST(WildcardPattern, TheEmptyPatternMatchesTheEmptySubjectOnly) {
    for (const char* pattern : {"", "  ", "\t\n"}) {
        EXPECT_TRUE(dotted(pattern, "")) << pattern;
        EXPECT_FALSE(dotted(pattern, "a")) << pattern;
        EXPECT_FALSE(dotted(pattern, "  ")) << pattern;
    }
}

TEST(WildcardPattern, ALeadingWildcardSegmentStandsForOneOrMoreSegments) {
    EXPECT_TRUE(dotted("*.example.com", "a.example.com"));
    EXPECT_TRUE(dotted("*.example.com", "a.b.example.com"));
    EXPECT_FALSE(dotted("*.example.com", "example.com"));
    EXPECT_FALSE(dotted("*.example.com", "a.example.org"));
    EXPECT_FALSE(dotted("*.example.com", "a.example.com.b"));
    EXPECT_TRUE(dotted("*.example.com", "example.com.example.com"));
}

TEST(WildcardPattern, ATrailingWildcardSegmentStandsForOneOrMoreSegments) {
    EXPECT_TRUE(dotted("mail.*", "mail.a"));
    EXPECT_TRUE(dotted("mail.*", "mail.a.b"));
    EXPECT_FALSE(dotted("mail.*", "mail"));
    EXPECT_FALSE(dotted("mail.*", "x.mail.a"));
}

TEST(WildcardPattern, AWildcardSegmentInTheMiddle) {
    EXPECT_TRUE(dotted("a.*.c", "a.b.c"));
    EXPECT_TRUE(dotted("a.*.c", "a.b.x.c"));
    EXPECT_TRUE(dotted("a.*.c", "a.c.c"));
    EXPECT_FALSE(dotted("a.*.c", "a.c"));
    EXPECT_FALSE(dotted("a.*.c", "a.b.x"));
    EXPECT_FALSE(dotted("a.*.c", "a.b.c.d"));
}

TEST(WildcardPattern, SeveralWildcardSegments) {
    EXPECT_TRUE(dotted("*.*", "a.b"));
    EXPECT_TRUE(dotted("*.*", "a.b.c"));
    EXPECT_FALSE(dotted("*.*", "a"));
    EXPECT_TRUE(dotted("*.b.*", "a.b.c"));
    EXPECT_TRUE(dotted("*.b.*", "a.x.b.c.d"));
    EXPECT_FALSE(dotted("*.b.*", "a.b"));
    EXPECT_TRUE(dotted("a.*.b.c.*.d", "a.x.y.b.c.z.d"));
    EXPECT_FALSE(dotted("a.*.b.c.*.d", "a.x.b.y.c.z.d"));
}

TEST(WildcardPattern, MorePatternSegmentsThanSubjectSegmentsNeverMatch) {
    EXPECT_FALSE(dotted("*.*.*", "a.b"));
    EXPECT_FALSE(dotted("a.b.c", "a.b"));
}

TEST(WildcardPattern, TheSearchedRunTakesTheLeftmostPlace) {
    // "b" is found at its first place; the wildcard behind it takes the rest.
    EXPECT_TRUE(dotted("*.b.*", "x.b.b.b"));
    EXPECT_TRUE(dotted("*.b.*.b", "x.b.b.b"));
}

TEST(WildcardPattern, TheBackwardScanDoesNotAskWhatTheForwardScanUsed) {
    // "a.*.a" has three segments and so needs three; its last one is anchored at the end.
    EXPECT_TRUE(dotted("a.*.a", "a.b.a"));
    EXPECT_FALSE(dotted("a.*.a", "a.a"));
    // The wildcard behind the first "b" takes the second one, and the trailing run is compared with it once more.
    EXPECT_TRUE(dotted("*.b.*.b.c", "x.y.b.b.c"));
    // Here the run "b" is found at the very end, and nothing is left for the rest of the pattern.
    EXPECT_FALSE(dotted("a.*.b.*.b", "a.x.y.z.b"));
}

TEST(WildcardPattern, LiteralSegmentsMatchWholeAndCaseBlind) {
    EXPECT_TRUE(dotted("A.Example.COM", "a.example.com"));
    EXPECT_TRUE(dotted("a.example.com", "A.EXAMPLE.Com"));
    EXPECT_FALSE(dotted("example.com", "a.example.com"));
    EXPECT_FALSE(dotted("example.co", "example.com"));
    EXPECT_FALSE(dotted("example.com", "example.com.a"));
    EXPECT_TRUE(dotted("a..b", "a..b"));
    EXPECT_FALSE(dotted("a..b", "a.x.b"));
}

TEST(WildcardPattern, BlanksAroundTheTextsDoNotCount) {
    EXPECT_TRUE(dotted(" a.b\n", "\ta.b "));
}

TEST(WildcardPattern, AStarAtTheEndOfASegmentStandsForSomething) {
    EXPECT_TRUE(dotted("ex*", "example"));
    EXPECT_FALSE(dotted("ex*", "ex"));
    EXPECT_TRUE(dotted("*ex", "ex"));
    EXPECT_TRUE(dotted("*ex", "index"));
    EXPECT_FALSE(dotted("*ex", "exact"));
}

TEST(WildcardPattern, StarsInsideASegment) {
    EXPECT_TRUE(dotted("a*b", "ab"));
    EXPECT_TRUE(dotted("a*b", "axxb"));
    EXPECT_FALSE(dotted("a*b", "axxbc"));
    EXPECT_FALSE(dotted("a*b", "a"));
    EXPECT_TRUE(dotted("a*m*z", "a12m34z"));
    EXPECT_TRUE(dotted("a*m*z", "amz"));
    EXPECT_FALSE(dotted("a*m*z", "a12z"));
    EXPECT_FALSE(dotted("a*a", "a"));
    EXPECT_FALSE(dotted("a*b", "a.b"));
}

TEST(WildcardPattern, SegmentMatchesByThemselves) {
    EXPECT_TRUE(ZxPolWildcardPattern::_partialMatch("", ""));
    EXPECT_FALSE(ZxPolWildcardPattern::_partialMatch("", "a"));
    EXPECT_FALSE(ZxPolWildcardPattern::_partialMatch(nullptr, "a"));
    EXPECT_FALSE(ZxPolWildcardPattern::_partialMatch("a", nullptr));
    EXPECT_TRUE(ZxPolWildcardPattern::_partialMatch("*ab", "ab"));
    EXPECT_FALSE(ZxPolWildcardPattern::_partialMatch("ab*", "ab"));
    EXPECT_TRUE(ZxPolWildcardPattern::_partialMatch("ab*", "abc"));
    EXPECT_TRUE(ZxPolWildcardPattern::_partialMatch("*a*", "xay"));
    // First and last pieces are compared without regard to case, those between with it.
    EXPECT_TRUE(ZxPolWildcardPattern::_partialMatch("a*b*c", "AxbxC"));
    EXPECT_FALSE(ZxPolWildcardPattern::_partialMatch("a*b*c", "AxBxC"));
}

TEST(WildcardPattern, OnlyTheFirstFiftySegmentsCount) {
    EXPECT_TRUE(dotted(labels(50).c_str(), labels(51).c_str()));
    EXPECT_TRUE(dotted(labels(51).c_str(), labels(50).c_str()));
    EXPECT_TRUE(dotted(labels(50).c_str(), (labels(50) + ".other").c_str()));
    EXPECT_FALSE(dotted(labels(49).c_str(), labels(50).c_str()));
    EXPECT_FALSE(dotted(labels(50).c_str(), labels(49).c_str()));
}

TEST(WildcardPattern, WithoutSeparatorsThePatternIsOneSegment) {
    EXPECT_TRUE(whole("[10.1.*]", "[10.1.2.3]"));
    EXPECT_TRUE(whole("[10.1.*]", "[10.1.]"));
    EXPECT_FALSE(whole("[10.1.*]", "[10.2.1.3]"));
    EXPECT_TRUE(whole("[*]", "[x]"));
    EXPECT_FALSE(whole("[*]", "x"));
    const ZxPolWildcardPattern none("a.b", nullptr, '\0');
    EXPECT_EQ(1u, none.segmentCount());
}

TEST(WildcardPattern, AssigningForgetsTheSeparators) {
    ZxPolWildcardPattern pattern("a.*", ".", '\0');
    EXPECT_EQ(2u, pattern.segmentCount());
    pattern = "x.y";
    EXPECT_EQ(1u, pattern.segmentCount());
    EXPECT_TRUE(pattern == "X.Y");
    EXPECT_STREQ("", pattern.separators());
}

TEST(WildcardPattern, KeepsAtMost29Separators) {
    const std::string many(40, ';');
    EXPECT_EQ(29u, std::string(ZxPolWildcardPattern("a", many.c_str(), '\0').separators()).size());
}

TEST(WildcardPattern, QuotedSectionsAreNotCut) {
    EXPECT_EQ(2u, ZxPolWildcardPattern("\"a.b\".c", ".", '"').segmentCount());
    EXPECT_EQ(3u, ZxPolWildcardPattern("\"a.b\".c", ".", '\0').segmentCount());
}

TEST(WildcardPattern, WhatIsAWildcardSegment) {
    EXPECT_TRUE(ZxPolWildcardPattern::isSingleWildcard("*"));
    EXPECT_TRUE(ZxPolWildcardPattern::isSingleWildcard("* *"));
    EXPECT_TRUE(ZxPolWildcardPattern::isSingleWildcard("*\r"));
    EXPECT_TRUE(ZxPolWildcardPattern::isSingleWildcard("\r"));  // trimming leaves it, and it is in the set
    EXPECT_FALSE(ZxPolWildcardPattern::isSingleWildcard("a*"));
    EXPECT_FALSE(ZxPolWildcardPattern::isSingleWildcard(""));
    EXPECT_FALSE(ZxPolWildcardPattern::isSingleWildcard(" \t\n"));
    EXPECT_FALSE(ZxPolWildcardPattern::isSingleWildcard(static_cast<const char*>(nullptr)));
    EXPECT_FALSE(ZxPolWildcardPattern("*.*", ".", '\0').isSingleWildcard());
}

TEST(Trimming, TakesBlanksTabsAndLineFeedsOnly) {
    char text[32];
    EXPECT_STREQ("a b", ZxPolWildcardPattern::trim(text, " \t\na b\n\t "));
    EXPECT_STREQ("a\r", ZxPolWildcardPattern::trim(text, " a\r\n"));
    EXPECT_STREQ("", ZxPolWildcardPattern::trim(text, " \t\n"));
    EXPECT_EQ(nullptr, ZxPolWildcardPattern::trim(nullptr, "a"));
    EXPECT_EQ(nullptr, ZxPolWildcardPattern::trim(text, nullptr));
}

}  // namespace
