#include "pattern/wildcard_pattern.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "pattern/rfc2822_checker.h"

namespace {

bool matches(const std::string& pattern, const std::string& subject, const char* separators = ".", char quote = '\0') {
    return ZxPolWildcardPattern(pattern.c_str(), separators, quote) == subject.c_str();
}

bool partial(const char* pattern, const char* subject) {
    return ZxPolWildcardPattern::_partialMatch(pattern, subject);
}

using Texts = std::vector<std::string>;

Texts segmentsOf(const ZxPolWildcardPattern& pattern) {
    Texts result;
    for (unsigned int i = 0; i < pattern.segmentCount(); ++i)
        result.emplace_back(pattern.segment(i));
    return result;
}

Texts tokens(std::string text, const char* separators, char quote) {
    unsigned int count = 99;
    EXPECT_EQ(ZxPolRfc2822Checker::getTokens(&text[0], separators, count, quote), &text[0]);
    Texts result;
    const char* token = text.c_str();
    for (unsigned int i = 0; i < count; ++i) {
        result.emplace_back(token);
        token += result.back().size() + 1;
    }
    return result;
}

// "s0.s1.s2..." with so many segments.
std::string dotted(size_t count, const std::string& segment = "s") {
    std::string text;
    for (size_t i = 0; i < count; ++i)
        text += (i > 0 ? "." : "") + segment + std::to_string(i);
    return text;
}

TEST(Tokenizer, CutsAtEverySeparatorWithoutQuoting) {
    EXPECT_EQ(tokens("a.b", ".", 0), (Texts{"a", "b"}));
    EXPECT_EQ(tokens("a", ".", 0), (Texts{"a"}));
    EXPECT_EQ(tokens("..", ".", 0), (Texts{"", "", ""}));
    EXPECT_EQ(tokens("", ".", 0), (Texts{""}));
    EXPECT_EQ(tokens("a.b@c", ".@", 0), (Texts{"a", "b", "c"}));
    EXPECT_EQ(tokens("a.b", "", 0), (Texts{"a.b"}));
    EXPECT_EQ(tokens("a.b", nullptr, 0), (Texts{"a.b"}));
    EXPECT_EQ(tokens("\"a.b\"", ".", 0), (Texts{"\"a", "b\""}));
}

TEST(Tokenizer, QuotedSectionsAreNotCut) {
    EXPECT_EQ(tokens("\"a.b\".c", ".", '"'), (Texts{"\"a.b\"", "c"}));
    EXPECT_EQ(tokens("c.\"a.b\"", ".", '"'), (Texts{"c", "\"a.b\""}));
    EXPECT_EQ(tokens("a.b.\"c.d\".e.f", ".", '"'), (Texts{"a", "b", "\"c.d\"", "e", "f"}));
    EXPECT_EQ(tokens("\"a.b\"", ".", '"'), (Texts{"\"a.b\""}));
    EXPECT_EQ(tokens("\"a\".\"b\"", ".", '"'), (Texts{"\"a\"", "\"b\""}));
    EXPECT_EQ(tokens("\"a\".x.y.\"b\"", ".", '"'), (Texts{"\"a\"", "x", "y", "\"b\""}));
    EXPECT_EQ(tokens("\"a@b\"@c", "@", '"'), (Texts{"\"a@b\"", "c"}));
    EXPECT_EQ(tokens("\"\"", ".", '"'), (Texts{"\"\""}));
    EXPECT_EQ(tokens("'a.b'.c", ".", '\''), (Texts{"'a.b'", "c"}));
}

TEST(Tokenizer, EmptyTokensAroundQuotedSections) {
    EXPECT_EQ(tokens(".\"a.b\"", ".", '"'), (Texts{"", "\"a.b\""}));
    EXPECT_EQ(tokens("\"a.b\".", ".", '"'), (Texts{"\"a.b\"", ""}));
    EXPECT_EQ(tokens("\"a\"..\"b\"", ".", '"'), (Texts{"\"a\"", "", "\"b\""}));
    EXPECT_EQ(tokens("..\"a\"", ".", '"'), (Texts{"", "", "\"a\""}));
}

TEST(Tokenizer, EmptyTextHasNoTokensWithQuoting) {
    EXPECT_EQ(tokens("", ".", '"'), Texts{});
}

TEST(Tokenizer, QuotesElsewhereAreText) {
    EXPECT_EQ(tokens("a\"b.c\"d", ".", '"'), (Texts{"a\"b", "c\"d"}));
    EXPECT_EQ(tokens("a\"b.c\"", ".", '"'), (Texts{"a\"b", "c\""}));
    EXPECT_EQ(tokens("\"a\"b.c\"", ".", '"'), (Texts{"\"a\"b.c\""}));
    EXPECT_EQ(tokens("a\".b", ".", '"'), (Texts{"a\"", "b"}));
}

TEST(Tokenizer, UnclosedSectionIsCut) {
    EXPECT_EQ(tokens("\"a.b", ".", '"'), (Texts{"\"a", "b"}));
    EXPECT_EQ(tokens("x.\"a.b", ".", '"'), (Texts{"x", "\"a", "b"}));
    EXPECT_EQ(tokens("\"", ".", '"'), (Texts{"\""}));
    EXPECT_EQ(tokens(".\"", ".", '"'), (Texts{"", "\""}));
}

TEST(Tokenizer, QuoteBehindBackslashDoesNotCloseTheSection) {
    EXPECT_EQ(tokens("\"a\\\".b\"", ".", '"'), (Texts{"\"a\\\".b\""}));
    EXPECT_EQ(tokens("\"a\\\".b\".c", ".", '"'), (Texts{"\"a\\\".b\"", "c"}));
}

TEST(Tokenizer, QuoteBehindBackslashMayHaveClosedTheSection) {
    EXPECT_EQ(tokens("\"a\\\".\"b.c\"", ".", '"'), (Texts{"\"a\\\"", "\"b.c\""}));
    EXPECT_EQ(tokens("\"a.x\\\".b", ".", '"'), (Texts{"\"a.x\\\"", "b"}));
    EXPECT_EQ(tokens("\"x\\\".a.b.\"c\"", ".", '"'), (Texts{"\"x\\\"", "a", "b", "\"c\""}));
}

TEST(Tokenizer, QuoteThatIsASeparatorToo) {
    EXPECT_EQ(tokens("\"\"", "\"", '"'), (Texts{"\"\""}));
    // The second quote opens a section behind the first one, which separates; the section is never closed and is cut.
    EXPECT_EQ(tokens("a\"\"b", "\"", '"'), (Texts{"a", "", "b"}));
    EXPECT_EQ(tokens("\"\"\"x", "\"", '"'), (Texts{"\"", "", "x"}));
}

TEST(Tokenizer, NullTextHasNoTokens) {
    unsigned int count = 99;
    EXPECT_EQ(ZxPolRfc2822Checker::getTokens(nullptr, ".", count, 0), nullptr);
    EXPECT_EQ(count, 0U);
}

TEST(Trimming, TakesBlanksTabsAndLineFeedsOnly) {
    char out[64];
    EXPECT_EQ(ZxPolWildcardPattern::trim(out, " \t\n a b \n\t "), out);
    EXPECT_STREQ(out, "a b");
    EXPECT_STREQ(ZxPolWildcardPattern::trim(out, "\ra\r"), "\ra\r");
    EXPECT_STREQ(ZxPolWildcardPattern::trim(out, " \r "), "\r");
    EXPECT_STREQ(ZxPolWildcardPattern::trim(out, "\va\f"), "\va\f");
    EXPECT_STREQ(ZxPolWildcardPattern::trim(out, " \t\n"), "");
    EXPECT_STREQ(ZxPolWildcardPattern::trim(out, ""), "");
    EXPECT_STREQ(ZxPolWildcardPattern::trim(out, "\xa0\x80"), "\xa0\x80");
}

TEST(Trimming, InPlaceAndNull) {
    char text[] = "  ab  ";
    EXPECT_STREQ(ZxPolWildcardPattern::trim(text, text), "ab");
    EXPECT_EQ(ZxPolWildcardPattern::trim(nullptr, "a"), nullptr);
    EXPECT_EQ(ZxPolWildcardPattern::trim(text, nullptr), nullptr);
    EXPECT_STREQ(text, "ab");
}

TEST(WildcardSegment, ConsistsOfStarsAndWhiteSpace) {
    for (const char* segment : {"*", "**", "* *", " * ", "\t*\n", "*\r", "\r"}) {
        EXPECT_TRUE(ZxPolWildcardPattern::isSingleWildcard(segment)) << segment;
    }
    for (const char* segment : {"", " ", "\t\n", "a*", "*a", "*.*", "*\v", "*\x80"}) {
        EXPECT_FALSE(ZxPolWildcardPattern::isSingleWildcard(segment)) << segment;
    }
    EXPECT_FALSE(ZxPolWildcardPattern::isSingleWildcard(nullptr));
}

TEST(WildcardSegment, PatternOfOneWildcardSegment) {
    EXPECT_TRUE(ZxPolWildcardPattern("*", ".", 0).isSingleWildcard());
    EXPECT_TRUE(ZxPolWildcardPattern(" ** ", ".", 0).isSingleWildcard());
    EXPECT_TRUE(ZxPolWildcardPattern("* *", "", 0).isSingleWildcard());
    EXPECT_FALSE(ZxPolWildcardPattern("*.*", ".", 0).isSingleWildcard());
    EXPECT_FALSE(ZxPolWildcardPattern("a", ".", 0).isSingleWildcard());
    EXPECT_FALSE(ZxPolWildcardPattern("", ".", 0).isSingleWildcard());
    EXPECT_FALSE(ZxPolWildcardPattern(" ", ".", 0).isSingleWildcard());
}

TEST(PatternParsing, SegmentsAreTrimmedOutsideAndLowerCased) {
    const ZxPolWildcardPattern pattern(" Mail. Example .COM\n", ".", 0);
    EXPECT_EQ(segmentsOf(pattern), (Texts{"mail", " example ", "com"}));
    EXPECT_EQ(pattern.segment(3), nullptr);
    EXPECT_STREQ(pattern.separators(), ".");
    EXPECT_EQ(pattern.quoteChar(), '\0');
}

TEST(PatternParsing, EmptySegmentsAreKept) {
    EXPECT_EQ(segmentsOf(ZxPolWildcardPattern("a..b.", ".", 0)), (Texts{"a", "", "b", ""}));
    EXPECT_EQ(segmentsOf(ZxPolWildcardPattern(".", ".", 0)), (Texts{"", ""}));
}

TEST(PatternParsing, NothingLeftMeansNoSegments) {
    EXPECT_EQ(ZxPolWildcardPattern("", ".", 0).segmentCount(), 0U);
    EXPECT_EQ(ZxPolWildcardPattern(" \t\n", ".", 0).segmentCount(), 0U);
    EXPECT_EQ(ZxPolWildcardPattern(nullptr, ".", 0).segmentCount(), 0U);
}

TEST(PatternParsing, WithoutSeparatorsThePatternIsOneSegment) {
    EXPECT_EQ(segmentsOf(ZxPolWildcardPattern("A.b", nullptr, 0)), (Texts{"a.b"}));
    EXPECT_EQ(segmentsOf(ZxPolWildcardPattern("A.b", "", 0)), (Texts{"a.b"}));
}

TEST(PatternParsing, LettersCanSeparate) {
    EXPECT_EQ(segmentsOf(ZxPolWildcardPattern("1A2a3", "A", 0)), (Texts{"1", "2a3"}));
    EXPECT_EQ(segmentsOf(ZxPolWildcardPattern("1A2a3", "a", 0)), (Texts{"1a2", "3"}));
}

TEST(PatternParsing, AtMost29Separators) {
    const std::string separators = "0123456789ABCDEFGHIJKLMNOPQRSTUV";
    const ZxPolWildcardPattern pattern("xSyTz", separators.c_str(), 0);
    EXPECT_EQ(pattern.separators(), separators.substr(0, 29));
    // "S" is the 29th, "T" the 30th.
    EXPECT_EQ(segmentsOf(pattern), (Texts{"x", "ytz"}));
}

TEST(PatternParsing, QuoteProtectsSeparators) {
    EXPECT_EQ(segmentsOf(ZxPolWildcardPattern("\"A.b\".c", ".", '"')), (Texts{"\"a.b\"", "c"}));
}

TEST(PatternParsing, FiftySegmentsAtMost) {
    EXPECT_EQ(ZxPolWildcardPattern(dotted(49).c_str(), ".", 0).segmentCount(), 49U);
    EXPECT_EQ(ZxPolWildcardPattern(dotted(50).c_str(), ".", 0).segmentCount(), 50U);
    const ZxPolWildcardPattern cut(dotted(51).c_str(), ".", 0);
    ASSERT_EQ(cut.segmentCount(), 50U);
    EXPECT_STREQ(cut.segment(49), "s49");
    EXPECT_EQ(ZxPolWildcardPattern(std::string(100000, '.').c_str(), ".", 0).segmentCount(), 50U);
}

TEST(StringParsing, OwnSeparatorsAndQuoteByDefault) {
    const ZxPolWildcardPattern pattern("x", ".", '"');
    char buffer[32];
    char* segments[5] = {};
    unsigned int count = 5;
    pattern._parseString(" \"A.b\".C ", buffer, segments, count, static_cast<char>(0xFF), nullptr);
    ASSERT_EQ(count, 2U);
    EXPECT_STREQ(segments[0], "\"a.b\"");
    EXPECT_STREQ(segments[1], "c");
    EXPECT_EQ(segments[0], buffer);
}

TEST(StringParsing, GivenSeparatorsAndQuote) {
    const ZxPolWildcardPattern pattern("x", ".", '"');
    char buffer[32];
    char* segments[5] = {};
    unsigned int count = 5;
    pattern._parseString("\"a*b\".c", buffer, segments, count, '\0', "*");
    ASSERT_EQ(count, 2U);
    EXPECT_STREQ(segments[0], "\"a");
    EXPECT_STREQ(segments[1], "b\".c");
}

TEST(StringParsing, CapacityLimitsTheSegments) {
    const ZxPolWildcardPattern pattern("x", ".", 0);
    char buffer[32];
    char* segments[3] = {};
    unsigned int count = 2;
    pattern._parseString("a.b.c", buffer, segments, count, '\0', nullptr);
    ASSERT_EQ(count, 2U);
    EXPECT_STREQ(segments[1], "b");
    EXPECT_EQ(segments[2], nullptr);
    count = 0;
    pattern._parseString("a.b.c", buffer, segments, count, '\0', nullptr);
    EXPECT_EQ(count, 0U);
}

TEST(StringParsing, BlankTextHasNoSegments) {
    const ZxPolWildcardPattern pattern("x", ".", '"');
    char buffer[8] = "#";
    char* segments[2] = {};
    unsigned int count = 2;
    pattern._parseString(" \n", buffer, segments, count, '\0', nullptr);
    EXPECT_EQ(count, 0U);
    EXPECT_STREQ(buffer, "");
}

TEST(StringParsing, NullArgumentsChangeNothing) {
    const ZxPolWildcardPattern pattern("x", ".", 0);
    char buffer[8] = "#";
    char* segments[2] = {};
    unsigned int count = 2;
    pattern._parseString(nullptr, buffer, segments, count, '\0', nullptr);
    pattern._parseString("a", nullptr, segments, count, '\0', nullptr);
    pattern._parseString("a", buffer, nullptr, count, '\0', nullptr);
    EXPECT_EQ(count, 2U);
    EXPECT_STREQ(buffer, "#");
    EXPECT_EQ(segments[0], nullptr);
}

TEST(Reassigning, ForgetsTheSeparators) {
    ZxPolWildcardPattern pattern("a.b", ".", 0);
    EXPECT_EQ(&(pattern = "C.d.*"), &pattern);
    EXPECT_EQ(segmentsOf(pattern), (Texts{"c.d.*"}));
    EXPECT_STREQ(pattern.separators(), "");
    EXPECT_TRUE(pattern == "c.d.e.f");
    EXPECT_FALSE(pattern == "c.d");
}

TEST(Reassigning, KeepsTheQuoteCharacter) {
    ZxPolWildcardPattern pattern("a.b", ".", '"');
    pattern = "x";
    EXPECT_EQ(pattern.quoteChar(), '"');
}

TEST(Reassigning, AnyOrderOfLengths) {
    const std::string longText(5000, 'L');
    ZxPolWildcardPattern pattern("a", ".", 0);
    pattern = longText.c_str();
    EXPECT_TRUE(pattern == std::string(5000, 'l').c_str());
    pattern = (longText + "x").c_str();
    EXPECT_FALSE(pattern == longText.c_str());
    pattern = "short";
    EXPECT_TRUE(pattern == "SHORT");
    pattern = nullptr;
    EXPECT_EQ(pattern.segmentCount(), 0U);
    EXPECT_TRUE(pattern == "");
    pattern = "again";
    EXPECT_TRUE(pattern == "again");
}

TEST(Reassigning, FromItsOwnSegment) {
    ZxPolWildcardPattern pattern("ab.cd", ".", 0);
    pattern = pattern.segment(1);
    EXPECT_EQ(segmentsOf(pattern), (Texts{"cd"}));
    const std::string longText = std::string(600, 'a') + "." + std::string(600, 'b');
    ZxPolWildcardPattern longPattern(longText.c_str(), ".", 0);
    longPattern = longPattern.segment(1);
    EXPECT_EQ(segmentsOf(longPattern), (Texts{std::string(600, 'b')}));
}

TEST(SegmentMatch, NullNeverMatches) {
    EXPECT_FALSE(partial(nullptr, "a"));
    EXPECT_FALSE(partial("a", nullptr));
    EXPECT_FALSE(partial(nullptr, nullptr));
}

TEST(SegmentMatch, EmptyPatternSegment) {
    EXPECT_TRUE(partial("", ""));
    EXPECT_FALSE(partial("", "a"));
}

TEST(SegmentMatch, Literal) {
    EXPECT_TRUE(partial("ab", "ab"));
    EXPECT_TRUE(partial("aB", "Ab"));
    EXPECT_FALSE(partial("ab", "abc"));
    EXPECT_FALSE(partial("abc", "ab"));
    EXPECT_FALSE(partial("ab", ""));
    EXPECT_FALSE(partial("ab", "xab"));
}

TEST(SegmentMatch, PatternSegmentIsTrimmedTheSubjectIsNot) {
    EXPECT_TRUE(partial(" ab ", "ab"));
    EXPECT_FALSE(partial(" ab ", " ab "));
    EXPECT_FALSE(partial("ab ", "ab "));
    EXPECT_FALSE(partial(" ", " "));
    EXPECT_TRUE(partial(" ", ""));
    EXPECT_TRUE(partial(" a* ", "abc"));
}

TEST(SegmentMatch, LeadingStarMayStandForNothing) {
    EXPECT_TRUE(partial("*ex", "ex"));
    EXPECT_TRUE(partial("*ex", "index"));
    EXPECT_TRUE(partial("*ex", "exex"));
    EXPECT_FALSE(partial("*ex", "x"));
    EXPECT_FALSE(partial("*ex", "exa"));
}

TEST(SegmentMatch, TrailingStarNeedsACharacter) {
    EXPECT_TRUE(partial("ex*", "example"));
    EXPECT_TRUE(partial("ex*", "exa"));
    EXPECT_FALSE(partial("ex*", "ex"));
    EXPECT_FALSE(partial("ex*", "e"));
    EXPECT_FALSE(partial("ex*", "xex"));
}

TEST(SegmentMatch, StarInTheMiddle) {
    EXPECT_TRUE(partial("a*b", "ab"));
    EXPECT_TRUE(partial("a*b", "axxb"));
    EXPECT_FALSE(partial("a*b", "a"));
    EXPECT_FALSE(partial("a*b", "axc"));
    EXPECT_FALSE(partial("ab*b", "ab"));
    EXPECT_TRUE(partial("a**b", "ab"));
}

TEST(SegmentMatch, LastPieceMustFitInWhatIsLeft) {
    EXPECT_FALSE(partial("aba*ba", "aba"));
    EXPECT_TRUE(partial("aba*ba", "ababa"));
    EXPECT_FALSE(partial("a*bc*cd", "abcd"));
    EXPECT_TRUE(partial("a*bc*cd", "abccd"));
}

TEST(SegmentMatch, MiddlePiecesAreSearchedInOrder) {
    EXPECT_TRUE(partial("a*b*c", "a1b2c"));
    EXPECT_TRUE(partial("a*b*c", "abc"));
    EXPECT_FALSE(partial("a*b*c", "acb"));
    EXPECT_TRUE(partial("*b*", "abc"));
    EXPECT_FALSE(partial("*b*", "ab"));
    EXPECT_FALSE(partial("a*b*", "ab"));
    EXPECT_TRUE(partial("*b*b*", "abxbx"));
    EXPECT_FALSE(partial("*b*b*", "abx"));
}

TEST(SegmentMatch, MiddlePiecesAreSearchedWithCase) {
    // Pieces are lower-cased, the subject is taken as it comes.
    EXPECT_TRUE(partial("a*B*c", "abc"));
    EXPECT_FALSE(partial("a*b*c", "aBc"));
    EXPECT_TRUE(partial("A*c", "aC"));
}

TEST(SegmentMatch, StarsOnly) {
    EXPECT_TRUE(partial("*", "a"));
    EXPECT_FALSE(partial("*", ""));
    EXPECT_TRUE(partial("***", "a"));
}

TEST(SegmentMatch, FiftyPiecesAtMost) {
    std::string pattern;
    std::string subject;
    for (int i = 0; i < 50; ++i) {
        pattern += i > 0 ? "*a" : "a";
        subject += "a";
    }
    EXPECT_TRUE(partial(pattern.c_str(), subject.c_str()));
    // The 51st piece does not count: the 50th is the last and takes the end.
    EXPECT_TRUE(partial((pattern + "*b").c_str(), subject.c_str()));
    EXPECT_FALSE(partial((pattern + "*b").c_str(), (subject + "b").c_str()));
}

TEST(SegmentMatch, BytesFrom0x80AreTakenAsTheyAre) {
    EXPECT_TRUE(partial("\x80*\xff", "\x80\xfe\xff"));
    EXPECT_FALSE(partial("\xc4", "\xe4"));
    EXPECT_TRUE(partial("A\x80", "a\x80"));
}

TEST(SegmentMatch, LongSegments) {
    for (size_t length : {511U, 512U, 1023U, 1024U, 1025U, 100000U}) {
        const std::string text(length, 'x');
        EXPECT_TRUE(partial(text.c_str(), text.c_str()));
        EXPECT_FALSE(partial((text + "x").c_str(), text.c_str()));
        EXPECT_TRUE(partial((text + "*y").c_str(), (text + "zzy").c_str()));
        EXPECT_FALSE(partial((text + "*").c_str(), text.c_str()));
    }
}

TEST(RunSearch, LeftmostPlaceWins) {
    const char* subject[] = {"x", "a", "b", "a", "b"};
    const char* run[] = {"a", "b"};
    EXPECT_EQ(ZxPolWildcardPattern::_findSegInSeg(subject, 5, run, 2), 1);
    EXPECT_EQ(ZxPolWildcardPattern::_findSegInSeg(subject + 1, 4, run, 2), 0);
    EXPECT_EQ(ZxPolWildcardPattern::_findSegInSeg(subject + 2, 3, run, 2), 1);
    EXPECT_EQ(ZxPolWildcardPattern::_findSegInSeg(subject + 4, 1, run, 2), -1);
    EXPECT_EQ(ZxPolWildcardPattern::_findSegInSeg(subject, 2, run, 2), -1);
}

TEST(RunSearch, PiecesCountInRuns) {
    const char* subject[] = {"xy", "alpha", "beta"};
    const char* run[] = {"al*", "*ta"};
    EXPECT_EQ(ZxPolWildcardPattern::_findSegInSeg(subject, 3, run, 2), 1);
}

TEST(RunSearch, Limits) {
    const char* subject[] = {"a"};
    const char* run[] = {"a"};
    EXPECT_EQ(ZxPolWildcardPattern::_findSegInSeg(subject, 0, run, 1), -1);
    EXPECT_EQ(ZxPolWildcardPattern::_findSegInSeg(subject, 1, run, 0), 0);
    EXPECT_EQ(ZxPolWildcardPattern::_findSegInSeg(subject, 0, run, 0), -1);
    EXPECT_EQ(ZxPolWildcardPattern::_findSegInSeg(nullptr, 1, run, 1), -1);
    EXPECT_EQ(ZxPolWildcardPattern::_findSegInSeg(subject, 1, nullptr, 1), -1);
}

TEST(WildcardMatch, SingleWildcardMatchesEverything) {
    for (const char* pattern : {"*", "**", " * ", "\r"}) {
        for (const char* subject : {"", " ", "a", "a.b.c", "\x80", "..."}) {
            EXPECT_TRUE(matches(pattern, subject)) << pattern << " " << subject;
        }
    }
}

TEST(WildcardMatch, NullSubjectNeverMatches) {
    EXPECT_FALSE(ZxPolWildcardPattern("*", ".", 0) == nullptr);
    EXPECT_FALSE(ZxPolWildcardPattern("", ".", 0) == nullptr);
    EXPECT_FALSE(ZxPolWildcardPattern(nullptr, ".", 0) == nullptr);
}

TEST(WildcardMatch, EmptyPatternMatchesTheEmptySubjectOnly) {
    for (const char* pattern : {"", "  ", "\t\n"}) {
        EXPECT_TRUE(matches(pattern, ""));
        EXPECT_FALSE(matches(pattern, "  "));
        EXPECT_FALSE(matches(pattern, "a"));
    }
    EXPECT_TRUE(ZxPolWildcardPattern(nullptr, ".", 0) == "");
    EXPECT_FALSE(ZxPolWildcardPattern(nullptr, ".", 0) == "a");
}

TEST(WildcardMatch, EmptySubjectMatchesNoOtherPattern) {
    EXPECT_FALSE(matches("a", ""));
    EXPECT_FALSE(matches(".", ""));
    EXPECT_FALSE(matches("*.*", ""));
    EXPECT_FALSE(matches("a", "  "));
}

TEST(WildcardMatch, LeadingWildcardSegment) {
    EXPECT_TRUE(matches("*.example.com", "a.example.com"));
    EXPECT_TRUE(matches("*.example.com", "a.b.example.com"));
    EXPECT_FALSE(matches("*.example.com", "example.com"));
    EXPECT_FALSE(matches("*.example.com", "a.example.org"));
    EXPECT_FALSE(matches("*.example.com", "a.example.com.x"));
    EXPECT_TRUE(matches("*.example.com", ".example.com"));
}

TEST(WildcardMatch, TrailingWildcardSegment) {
    EXPECT_TRUE(matches("mail.*", "mail.a"));
    EXPECT_TRUE(matches("mail.*", "mail.a.b"));
    EXPECT_FALSE(matches("mail.*", "mail"));
    EXPECT_TRUE(matches("mail.*", "mail."));
    EXPECT_FALSE(matches("mail.*", "xmail.a"));
}

TEST(WildcardMatch, WildcardSegmentInTheMiddle) {
    EXPECT_TRUE(matches("a.*.c", "a.b.c"));
    EXPECT_TRUE(matches("a.*.c", "a.b.x.c"));
    EXPECT_FALSE(matches("a.*.c", "a.c"));
    EXPECT_FALSE(matches("a.*.c", "a.b.c.d"));
}

TEST(WildcardMatch, SeveralWildcardSegments) {
    EXPECT_TRUE(matches("*.b.*", "a.b.c"));
    EXPECT_TRUE(matches("*.b.*", "a.x.b.c.d"));
    EXPECT_FALSE(matches("*.b.*", "a.b"));
    EXPECT_FALSE(matches("*.b.*", "b.c.d"));
    EXPECT_TRUE(matches("*.*", "a.b"));
    EXPECT_TRUE(matches("*.*", "a.b.c"));
    EXPECT_FALSE(matches("*.*", "a"));
    EXPECT_TRUE(matches("a.*.c.*.e", "a.b.b.c.d.d.e"));
    EXPECT_FALSE(matches("a.*.c.*.e", "a.b.b.c.e"));
    EXPECT_TRUE(matches("*.a.b.*.z", "x.a.a.b.y.z"));
}

TEST(WildcardMatch, RunBetweenWildcardsTakesTheLeftmostPlace) {
    // The first "b" that is found leaves one segment for the second wildcard.
    EXPECT_TRUE(matches("*.b.*", "a.b.b"));
    EXPECT_FALSE(matches("*.b.*", "a.a.b"));
}

TEST(WildcardMatch, TailIsComparedWithoutRegardToWhatTheRunsUsed) {
    // The "b" of the middle run and the "b" of the tail are the same subject segment.
    EXPECT_TRUE(matches("*.b.*.b.c.d", "x.x.x.b.c.d"));
    EXPECT_FALSE(matches("*.b.*.b.c", "x.x.x.b.c"));
}

TEST(WildcardMatch, MoreSegmentsThanTheSubjectNeverMatch) {
    EXPECT_FALSE(matches("a.b", "a"));
    EXPECT_FALSE(matches("*.*.*", "a.b"));
    EXPECT_FALSE(matches("a.b.*", "a.b"));
}

TEST(WildcardMatch, CaseIsIgnored) {
    EXPECT_TRUE(matches("A.Example.COM", "a.example.com"));
    EXPECT_TRUE(matches("a.example.com", "A.EXAMPLE.Com"));
    EXPECT_TRUE(matches("a*B*c.x", "A1B2C.X"));
    EXPECT_FALSE(matches("\xc4", "\xe4"));
}

TEST(WildcardMatch, SubjectIsTrimmed) {
    EXPECT_TRUE(matches("a.b", " a.b\t\n"));
    EXPECT_FALSE(matches("a.b", "a. b"));
    EXPECT_FALSE(matches("a.b", "a.b\r"));
}

TEST(WildcardMatch, EmptySegments) {
    EXPECT_TRUE(matches("a..b", "a..b"));
    EXPECT_FALSE(matches("a..b", "a.b"));
    EXPECT_FALSE(matches("a..b", "a.x.b"));
    EXPECT_TRUE(matches("a.*.b", "a..b"));
    EXPECT_TRUE(matches("a.", "a."));
    EXPECT_FALSE(matches("a.", "a"));
}

TEST(WildcardMatch, OnlyTheFirstFiftySegmentsCount) {
    EXPECT_TRUE(matches(dotted(50), dotted(51)));
    EXPECT_TRUE(matches(dotted(50), dotted(1000)));
    EXPECT_TRUE(matches(dotted(51), dotted(50)));
    EXPECT_TRUE(matches(dotted(51), dotted(52) + ".x"));
    EXPECT_FALSE(matches(dotted(49), dotted(50)));
    EXPECT_FALSE(matches(dotted(49), dotted(51)));
    EXPECT_FALSE(matches(dotted(50), dotted(49)));
    EXPECT_FALSE(matches(dotted(50), dotted(51, "t")));
    // The end of the subject is its 50th segment.
    EXPECT_TRUE(matches("*.s49", dotted(51)));
    EXPECT_FALSE(matches("*.s50", dotted(51)));
    EXPECT_TRUE(matches("*.s48", dotted(49)));
}

TEST(WildcardMatch, OneSegmentWithPieces) {
    EXPECT_TRUE(matches("[10.1.*]", "[10.1.2.3]", ""));
    EXPECT_TRUE(matches("[10.1.*]", "[10.1.]", ""));
    EXPECT_FALSE(matches("[10.1.*]", "[10.2.2.3]", ""));
    EXPECT_FALSE(matches("[10.1.*]", "[10.1.2.3", ""));
    EXPECT_FALSE(matches("[10.1.*]", "[10.1.2.3]x", ""));
}

TEST(WildcardMatch, QuotedSectionsOfTheSubject) {
    EXPECT_TRUE(matches("*.b", "\"x.y\".b", ".", '"'));
    EXPECT_FALSE(matches("*.*.b", "\"x.y\".b", ".", '"'));
    EXPECT_TRUE(matches("*.*.b", "\"x.y\".b", "."));
    EXPECT_TRUE(matches("\"x.*\".b", "\"x.y\".b", ".", '"'));
}

TEST(WildcardMatch, LongTexts) {
    for (size_t length : {253U, 254U, 255U, 256U, 257U, 511U, 512U, 1023U, 1024U, 1025U, 300000U}) {
        const std::string text(length, 'm');
        EXPECT_TRUE(matches(text, text)) << length;
        EXPECT_TRUE(matches("*." + text, "a." + text)) << length;
        EXPECT_FALSE(matches(text, text + "m")) << length;
        EXPECT_FALSE(matches(text + "m", text)) << length;
    }
}

TEST(WildcardMatch, ManySegmentsAndStarsEndSoon) {
    std::string pattern;
    std::string subject;
    for (int i = 0; i < 25; ++i)
        pattern += "*.a*a*a*a*a*b.";
    for (int i = 0; i < 50; ++i)
        subject += std::string(2000, 'a') + ".";
    EXPECT_FALSE(matches(pattern, subject));
}

TEST(WildcardMatch, ControlCharactersAndHighBytes) {
    EXPECT_TRUE(matches("a\x01.\x7f", "A\x01.\x7f"));
    EXPECT_TRUE(matches("\x80.*", "\x80.\xff"));
    EXPECT_FALSE(matches("\x80", "\x81"));
    EXPECT_FALSE(matches("a\v", "a"));
}

}  // namespace
