#include "pattern/cond_wildcard_pattern.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Pattern = ZxPolCondWildcardPattern;

bool matches(const std::string& pattern, const std::string& address) {
    return Pattern(pattern.c_str()) == address.c_str();
}

bool isValid(const std::string& pattern) {
    return Pattern::isPatternValid(pattern.c_str());
}

void expectParts(const std::string& text, const std::string& name, const std::string& domain) {
    const Pattern pattern(text.c_str());
    EXPECT_EQ(pattern.getName(), name) << text;
    EXPECT_EQ(pattern.getDomain(), domain) << text;
}

TEST(ConditionPatternParsing, DividesAtTheFirstUnquotedAt) {
    expectParts("user@example.com", "user", "example.com");
    expectParts("a@b@c", "a", "b@c");
    expectParts("*", "*", "");
    expectParts("*@", "*", "");
    expectParts("@b", "", "b");
    expectParts("@", "", "");
    expectParts("a@@b", "a", "@b");
    expectParts("", "", "");
}

TEST(ConditionPatternParsing, QuotesAroundWordsAreTakenOff) {
    expectParts("\"john.doe\"@example.com", "john.doe", "example.com");
    expectParts("\"a.b\".c@x", "a.b.c", "x");
    expectParts("a.\"b\".\"c.d\"@x", "a.b.c.d", "x");
    expectParts("\"*\"@x", "*", "x");
    expectParts("\"\"@x", "", "x");
    expectParts("\"a\"", "a", "");
}

TEST(ConditionPatternParsing, QuotedAtDoesNotDivide) {
    expectParts("\"a@b\"@c", "a@b", "c");
    expectParts("\"a@b\"", "a@b", "");
    expectParts("\"a@b\"@\"c@d\"", "a@b", "\"c@d\"");
}

TEST(ConditionPatternParsing, QuotesElsewhereAreKept) {
    expectParts("a\"b@c", "a\"b", "c");
    expectParts("\"a@b", "\"a", "b");
    expectParts("\"@x", "\"", "x");
    expectParts("a@\"b\"", "a", "\"b\"");
    expectParts("a@b\"@c", "a", "b\"@c");
}

TEST(ConditionPatternParsing, LetterCaseIsKept) {
    expectParts("USER@Example.COM", "USER", "Example.COM");
}

TEST(ConditionPatternParsing, NullAndDefaultAreEmpty) {
    const Pattern none(nullptr);
    EXPECT_STREQ(none.getName(), "");
    EXPECT_STREQ(none.getDomain(), "");
    const Pattern initial;
    EXPECT_STREQ(initial.getName(), "");
    EXPECT_STREQ(initial.getDomain(), "");
}

TEST(ConditionPatternParsing, NameKeeps254Characters) {
    for (size_t length : {253U, 254U, 255U, 256U, 511U, 512U, 1023U, 1024U, 100000U}) {
        const std::string name(length, 'n');
        expectParts(name + "@x.y", name.substr(0, 254), "x.y");
        expectParts(name, name.substr(0, 254), "");
    }
}

TEST(ConditionPatternParsing, DomainKeeps255Characters) {
    for (size_t length : {253U, 254U, 255U, 256U, 257U, 511U, 512U, 1023U, 1024U, 100000U}) {
        const std::string domain(length, 'd');
        expectParts("x@" + domain, "x", domain.substr(0, 255));
        expectParts("\"x\"@" + domain, "x", domain.substr(0, 255));
    }
}

TEST(ConditionPatternParsing, QuotedNameIsCutBeforeItsQuotesAreTakenOff) {
    const std::string text252(252, 'q');
    expectParts("\"" + text252 + "\"@x", text252, "x");
    // The closing quote is the 255th character and lost, so the opening one is plain text.
    expectParts("\"" + text252 + "q\"@x", "\"" + text252 + "q", "x");
}

TEST(ConditionPatternParsing, CuttingInsideAQuotedAtLeavesThePlainText) {
    const std::string name = "\"" + std::string(100, 'a') + "@" + std::string(200, 'b') + "\"";
    expectParts(name + "@x", name.substr(0, 254), "x");
}

TEST(ConditionPatternParsing, Assigning) {
    Pattern pattern("a@b");
    EXPECT_EQ(&(pattern = "\"C\"@d"), &pattern);
    EXPECT_STREQ(pattern.getName(), "C");
    EXPECT_STREQ(pattern.getDomain(), "d");
    pattern = "x";
    EXPECT_STREQ(pattern.getName(), "x");
    EXPECT_STREQ(pattern.getDomain(), "");
    pattern = nullptr;
    EXPECT_STREQ(pattern.getName(), "");
}

TEST(ConditionPatternParsing, AssigningItsOwnParts) {
    Pattern pattern("a@bb@cc");
    pattern = pattern.getDomain();
    EXPECT_STREQ(pattern.getName(), "bb");
    EXPECT_STREQ(pattern.getDomain(), "cc");
    pattern = "\"x@y\"@z";
    pattern = pattern.getName();
    EXPECT_STREQ(pattern.getName(), "x");
    EXPECT_STREQ(pattern.getDomain(), "y");
    pattern = "a@\"b@c\"@d";
    pattern = pattern.getDomain();
    EXPECT_STREQ(pattern.getName(), "b@c");
    EXPECT_STREQ(pattern.getDomain(), "d");
}

TEST(SingleWildcard, OfAWholePattern) {
    for (const char* pattern : {"*", "*@*", "*@", "\"*\"@*"})
        EXPECT_TRUE(Pattern(pattern).isSingleWildcard()) << pattern;
    for (const char* pattern : {"", "**", "* ", " *", "*@**", "a@*", "*@a", "*@*.*", "@*", "*@*@*"}) {
        EXPECT_FALSE(Pattern(pattern).isSingleWildcard()) << pattern;
    }
}

TEST(SingleWildcard, OfAText) {
    EXPECT_TRUE(Pattern::isSingleWildcard("*"));
    EXPECT_TRUE(Pattern::isSingleWildcard("*@*"));
    for (const char* text : {"", "**", " *", "* ", "*@", "*@**", "a"}) {
        EXPECT_FALSE(Pattern::isSingleWildcard(text)) << text;
    }
    EXPECT_FALSE(Pattern::isSingleWildcard(nullptr));
}

TEST(PatternValidity, Wildcards) {
    EXPECT_TRUE(isValid("*"));
    EXPECT_TRUE(isValid("*@*"));
    EXPECT_FALSE(isValid("*@"));
    EXPECT_FALSE(isValid("**"));
    EXPECT_FALSE(isValid(" *"));
}

TEST(PatternValidity, AcceptedForms) {
    for (const char* pattern : {"user@example.com", "user@*", "*@example.com", "user@*.example.com", "*@*.example.com",
                                "user@[*]", "*@[*]", "user@[10.0.0.1]", "*@[10.0.0.1]", "\"a b\"@example.com",
                                "\"*\"@example.com", "a..b@c.", "x@*.", "x@*.com"}) {
        EXPECT_TRUE(isValid(pattern)) << pattern;
    }
}

TEST(PatternValidity, PartialWildcardsAreRefused) {
    for (const char* pattern : {"jo*@example.com", "*jo@example.com", "**@example.com", "a.*@example.com", "x@ex*.com",
                                "x@mail.*.com", "x@*.*.com", "x@*.com*", "x@*com", "x@**", "x@mail.*", "x@**.com",
                                "x@[*.1]", "x@[10.*]", "x@[**]", "\"a*\"@example.com", "\"*\".a@example.com"}) {
        EXPECT_FALSE(isValid(pattern)) << pattern;
    }
}

TEST(PatternValidity, MustBeAnAddress) {
    EXPECT_FALSE(Pattern::isPatternValid(nullptr));
    for (const char* pattern : {"", "user", "@example.com", "user@", "user@a b", "user@@b", ".user@b", "us er@b",
                                "user@b@c", "*@*@*", "(list)", "user@\x80", "us\xe4r@b", "a@b,c"}) {
        EXPECT_FALSE(isValid(pattern)) << pattern;
    }
}

TEST(PatternValidity, LongPatterns) {
    for (size_t length : {254U, 255U, 256U, 511U, 512U, 1023U, 1024U, 100000U}) {
        EXPECT_TRUE(isValid(std::string(length, 'a') + "@b"));
        EXPECT_TRUE(isValid("a@" + std::string(length, 'b')));
        EXPECT_FALSE(isValid(std::string(length, 'a')));
        EXPECT_FALSE(isValid("a*" + std::string(length, 'a') + "@b"));
    }
}

TEST(ConditionMatch, WholeWildcardsMatchEveryAddress) {
    for (const char* pattern : {"*", "*@*", "*@"}) {
        for (const char* address : {"a@b", "", "a", "@", "\"", "a@[1]", "\x80@\xff"}) {
            EXPECT_TRUE(matches(pattern, address)) << pattern << " " << address;
        }
    }
}

TEST(ConditionMatch, NullAddress) {
    EXPECT_TRUE(Pattern("*") == nullptr);
    EXPECT_TRUE(Pattern("*@*") == nullptr);
    EXPECT_FALSE(Pattern("a@b") == nullptr);
    EXPECT_FALSE(Pattern("a@*") == nullptr);
    EXPECT_FALSE(Pattern("") == nullptr);
}

TEST(ConditionMatch, NameAndDomainMustBothMatch) {
    EXPECT_TRUE(matches("user@example.com", "user@example.com"));
    EXPECT_FALSE(matches("user@example.com", "user2@example.com"));
    EXPECT_FALSE(matches("user@example.com", "user@example.org"));
    EXPECT_FALSE(matches("user@example.com", "user"));
    EXPECT_FALSE(matches("user@example.com", ""));
}

TEST(ConditionMatch, CaseIsIgnored) {
    EXPECT_TRUE(matches("USER@Example.COM", "user@example.com"));
    EXPECT_TRUE(matches("user@example.com", "User@EXAMPLE.com"));
    EXPECT_TRUE(matches("*@*.Example.com", "x@MAIL.example.COM"));
}

TEST(ConditionMatch, LeadingLabel) {
    EXPECT_TRUE(matches("user@*.example.com", "user@a.example.com"));
    EXPECT_TRUE(matches("user@*.example.com", "user@a.b.example.com"));
    EXPECT_FALSE(matches("user@*.example.com", "user@example.com"));
    EXPECT_FALSE(matches("user@*.example.com", "user@badexample.com"));
    EXPECT_TRUE(matches("*@*.example.com", "x@mail.example.com"));
}

TEST(ConditionMatch, WildcardSides) {
    EXPECT_TRUE(matches("user@*", "user@anything.at.all"));
    EXPECT_TRUE(matches("user@*", "user"));
    EXPECT_FALSE(matches("user@*", "loser@x"));
    EXPECT_TRUE(matches("*@example.com", "a.b.c@example.com"));
    EXPECT_TRUE(matches("*@example.com", "@example.com"));
    EXPECT_FALSE(matches("*@example.com", "a@mail.example.com"));
}

TEST(ConditionMatch, QuotedNames) {
    EXPECT_TRUE(matches("\"a.b\"@example.org", "a.b@example.org"));
    EXPECT_TRUE(matches("a.b@example.org", "\"a.b\"@example.org"));
    EXPECT_TRUE(matches("\"a\".b@example.org", "a.\"b\"@example.org"));
    EXPECT_FALSE(matches("\"a@b\"@c", "a@b@c"));
    EXPECT_TRUE(matches("\"a@b\"@c", "\"A@B\"@c"));
}

TEST(ConditionMatch, BracketedDomains) {
    EXPECT_TRUE(matches("*@[*]", "x@[10.0.0.1]"));
    EXPECT_TRUE(matches("*@[*]", "x@[a]"));
    EXPECT_FALSE(matches("*@[*]", "x@example.com"));
    EXPECT_FALSE(matches("*@[*]", "x@[10.0.0.1"));
    EXPECT_FALSE(matches("*@[*]", "x@10.0.0.1]"));
    EXPECT_FALSE(matches("*@[*]", "x"));
    EXPECT_TRUE(matches("*@[10.0.0.1]", "x@[10.0.0.1]"));
    EXPECT_FALSE(matches("*@[10.0.0.1]", "x@[10.0.0.2]"));
}

TEST(ConditionMatch, StarInBracketsIsACharacterWildcard) {
    // Not accepted in a policy, but the engine knows it: dots do not cut inside brackets.
    EXPECT_TRUE(matches("*@[10.*]", "x@[10.0.0.1]"));
    EXPECT_FALSE(matches("*@[10.*]", "x@[11.0.0.1]"));
    // Without the closing bracket the domain is cut at dots.
    EXPECT_TRUE(matches("*@[10.*", "x@[10.0.0.1]"));
    EXPECT_TRUE(matches("*@[*.1]", "x@[10.0.0.1]"));
}

TEST(ConditionMatch, PatternWithoutDomain) {
    EXPECT_TRUE(matches("user", "user"));
    EXPECT_TRUE(matches("user", "user@"));
    EXPECT_FALSE(matches("user", "user@x"));
    EXPECT_TRUE(matches("", ""));
    EXPECT_FALSE(matches("", "a"));
}

TEST(ConditionMatch, PartialWildcardsWorkInTheEngine) {
    EXPECT_TRUE(matches("jo*@example.com", "john@example.com"));
    EXPECT_FALSE(matches("jo*@example.com", "jo@example.com"));
    EXPECT_TRUE(matches("x@mail.*.com", "x@mail.a.b.com"));
}

TEST(ConditionMatch, LongAddressesAreComparedUpToTheWidths) {
    const std::string name(254, 'n');
    const std::string domain(255, 'd');
    EXPECT_TRUE(matches(name + "@" + domain, name + "@" + domain));
    EXPECT_FALSE(matches(name + "@" + domain, name.substr(1) + "@" + domain));
    EXPECT_FALSE(matches(name + "@" + domain, name + "@" + domain.substr(1)));
    EXPECT_TRUE(matches(name + "@" + domain, name + "more@" + domain + "more"));
    EXPECT_TRUE(matches("*@" + domain, std::string(100000, 'x') + "@" + domain));
}

TEST(ConditionMatch, MoreThanFiftySegments) {
    std::string labels;
    for (int i = 0; i < 49; ++i)
        labels += "a.";
    EXPECT_TRUE(matches("x@" + labels + "b", "x@" + labels + "b"));
    EXPECT_FALSE(matches("x@" + labels + "b", "x@" + labels + "c"));
    EXPECT_TRUE(matches("x@" + labels + "b.c", "x@" + labels + "b.d"));
    EXPECT_TRUE(matches("x@*.b", "x@" + labels + "b.d"));
    EXPECT_FALSE(matches("x@*.d", "x@" + labels + "b.d"));
}

TEST(ConditionMatch, ParsedPatternsAgainstEachOther) {
    EXPECT_TRUE(Pattern("*@*.example.com") == Pattern("x@mail.example.com"));
    EXPECT_TRUE(Pattern("*") == Pattern());
    EXPECT_TRUE(Pattern("*@example.com") == Pattern("*@example.com"));
    EXPECT_TRUE(Pattern("*@*.example.com") == Pattern("x@*.mail.example.com"));
    EXPECT_FALSE(Pattern("x@mail.example.com") == Pattern("*@*.example.com"));
    EXPECT_TRUE(Pattern("\"a.b\"@c") == Pattern("A.\"b\"@C"));
}

TEST(ConditionMatch, PartsByThemselves) {
    const Pattern pattern("user@*.com");
    EXPECT_TRUE(pattern._matchName("USER"));
    EXPECT_FALSE(pattern._matchName("user2"));
    EXPECT_FALSE(pattern._matchName(nullptr));
    EXPECT_TRUE(pattern._matchDomain("a.com"));
    EXPECT_FALSE(pattern._matchDomain("com"));
    EXPECT_FALSE(pattern._matchDomain(nullptr));
    EXPECT_FALSE(Pattern("*@*")._matchName(nullptr));
}

TEST(ConditionMatch, BlanksAroundTheParts) {
    EXPECT_TRUE(matches("user@example.com", " user @ example.com "));
    EXPECT_TRUE(matches(" user @ example.com ", "user@example.com"));
    EXPECT_FALSE(matches("user@example.com", "us er@example.com"));
}

}  // namespace
