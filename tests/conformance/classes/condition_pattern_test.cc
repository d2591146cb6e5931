// Patterns of mail addresses: how they are taken apart, which are acceptable, what they match.
#include "pattern/cond_wildcard_pattern.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Pattern = ZxPolCondWildcardPattern;

// "name|domain" of a parsed pattern.
std::string parts(const char* text) {
    const Pattern pattern(text);
    return std::string(pattern.getName()) + "|" + pattern.getDomain();
}
bool matches(const char* pattern, const char* address) {
    return Pattern(pattern) == address;
}

TEST(ConditionPattern, IsTakenApartAtTheFirstUnquotedAt) {
    EXPECT_EQ("user|example.com", parts("user@example.com"));
    EXPECT_EQ("a|b@c", parts("a@b@c"));
    EXPECT_EQ("*|", parts("*"));
    EXPECT_EQ("*|", parts("*@"));
    EXPECT_EQ("|x", parts("@x"));
    EXPECT_EQ("|", parts(""));
    EXPECT_EQ("|", parts(nullptr));
    EXPECT_EQ("User|Example.COM", parts("User@Example.COM"));
    EXPECT_EQ("|", std::string(Pattern().getName()) + "|" + Pattern().getDomain());
}

TEST(ConditionPattern, QuotesOfDotPiecesAreRemoved) {
    EXPECT_EQ("john.doe|example.com", parts("\"john.doe\"@example.com"));
    EXPECT_EQ("a@b|c", parts("\"a@b\"@c"));
    EXPECT_EQ("a.b.c|x", parts("\"a.b\".c@x"));
}

TEST(ConditionPattern, LongHalvesAreCut) {
    const Pattern pattern((std::string(300, 'n') + "@" + std::string(300, 'd')).c_str());
    EXPECT_EQ(std::string(254, 'n'), pattern.getName());
    EXPECT_EQ(std::string(255, 'd'), pattern.getDomain());
    const Pattern exact((std::string(254, 'n') + "@" + std::string(255, 'd')).c_str());
    EXPECT_EQ(std::string(254, 'n'), exact.getName());
    EXPECT_EQ(std::string(255, 'd'), exact.getDomain());
}

TEST(ConditionPattern, SingleWildcardsMatchEveryAddress) {
    for (const char* pattern : {"*", "*@*", "*@"}) {
        EXPECT_TRUE(Pattern(pattern).isSingleWildcard()) << pattern;
        for (const char* address : {"a@b", "", "no at", "x@[10.0.0.1]"})
            EXPECT_TRUE(matches(pattern, address));
        EXPECT_TRUE(matches(pattern, nullptr));
    }
    EXPECT_FALSE(Pattern("*@*.a").isSingleWildcard());
    EXPECT_FALSE(Pattern("a@*").isSingleWildcard());
}

TEST(ConditionPattern, TheTextTestForASingleWildcardIsPlain) {
    EXPECT_TRUE(Pattern::isSingleWildcard("*"));
    EXPECT_TRUE(Pattern::isSingleWildcard("*@*"));
    EXPECT_FALSE(Pattern::isSingleWildcard("*@"));
    EXPECT_FALSE(Pattern::isSingleWildcard(" *"));
    EXPECT_FALSE(Pattern::isSingleWildcard("**"));
    EXPECT_FALSE(Pattern::isSingleWildcard(""));
}

TEST(ConditionPattern, AWildcardedDomainNeedsALabelForTheStar) {
    EXPECT_TRUE(matches("user@*.example.com", "user@a.example.com"));
    EXPECT_TRUE(matches("user@*.example.com", "user@a.b.example.com"));
    EXPECT_FALSE(matches("user@*.example.com", "user@example.com"));
    EXPECT_FALSE(matches("user@*.example.com", "other@a.example.com"));
    EXPECT_TRUE(matches("*@*.example.com", "x@mail.example.com"));
}

TEST(ConditionPattern, LetterCaseDoesNotCount) {
    EXPECT_TRUE(matches("USER@Example.COM", "user@example.com"));
    EXPECT_TRUE(matches("user@example.com", "USER@EXAMPLE.COM"));
}

TEST(ConditionPattern, QuotesDoNotCount) {
    EXPECT_TRUE(matches("\"a.b\"@example.org", "a.b@example.org"));
    EXPECT_TRUE(matches("a.b@example.org", "\"a.b\"@example.org"));
}

TEST(ConditionPattern, AStarInBracketsStandsForAnyLiteral) {
    EXPECT_TRUE(matches("*@[*]", "x@[10.0.0.1]"));
    EXPECT_TRUE(matches("x@[*]", "x@[IPv6:1]"));
    EXPECT_FALSE(matches("*@[*]", "x@10.0.0.1"));
    EXPECT_FALSE(matches("*@[*]", "x@example.com"));
    EXPECT_TRUE(matches("*@[10.0.0.1]", "x@[10.0.0.1]"));
    EXPECT_FALSE(matches("*@[10.0.0.1]", "x@[10.0.0.2]"));
}

TEST(ConditionPattern, WithoutADomainItMatchesAddressesWithoutOne) {
    EXPECT_TRUE(matches("user", "user"));
    EXPECT_FALSE(matches("user", "user@example.com"));
    EXPECT_FALSE(matches("user@example.com", "user"));
}

TEST(ConditionPattern, NoOtherPatternMatchesNull) {
    EXPECT_FALSE(matches("a@b", nullptr));
    EXPECT_FALSE(matches("*@b", nullptr));
}

TEST(ConditionPattern, ComparesWithAParsedPatternAlike) {
    EXPECT_TRUE(Pattern("*@example.com") == Pattern("a@example.com"));
    EXPECT_TRUE(Pattern("*") == Pattern("*@*.x"));
    EXPECT_FALSE(Pattern("a@example.com") == Pattern("*@example.com"));
    EXPECT_TRUE(Pattern("*@*.example.com") == Pattern("b@*.example.com"));
}

TEST(ConditionPattern, TheMatcherTakesPartialWildcardsThatNoConditionMayHold) {
    EXPECT_TRUE(matches("jo*@example.com", "john@example.com"));
    EXPECT_FALSE(matches("jo*@example.com", "jo@example.com"));
}

TEST(ConditionPatternValidity, AcceptsTheDocumentedForms) {
    for (const char* pattern : {"user@example.com", "*", "*@*", "name@*", "*@domain", "name@*.domain", "*@*.domain",
                                "name@[*]", "*@[*]", "x@[10.0.0.1]", "\"a b\"@x", "*@*.mail.example.com", "\"*\"@x"})
        EXPECT_TRUE(Pattern::isPatternValid(pattern)) << pattern;
}

TEST(ConditionPatternValidity, RefusesEverythingElse) {
    for (const char* pattern : {"jo*@example.com", "x@ex*.com", "x@*.*.com", "x@mail.*.com", "x@*com", "x@a.*", "**",
                                "", "user", "@x", "x@", "*@", "a@b@c", "x@[10.*]", "x@**", "a b@c", "(list)", "()"})
        EXPECT_FALSE(Pattern::isPatternValid(pattern)) << pattern;
    EXPECT_FALSE(Pattern::isPatternValid(nullptr));
}

}  // namespace
