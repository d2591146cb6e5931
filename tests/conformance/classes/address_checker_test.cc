// The syntax of mail addresses, the tokenizer and the stripping of quotes.
#include "pattern/rfc2822_checker.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using Checker = ZxPolRfc2822Checker;

std::vector<std::string> tokens(const char* text, const char* separators, char quote) {
    std::vector<char> copy(text, text + std::strlen(text) + 1);
    unsigned int count = 0;
    EXPECT_EQ(copy.data(), Checker::getTokens(copy.data(), separators, count, quote));
    std::vector<std::string> found;
    const char* at = copy.data();
    for (unsigned int token = 0; token < count; ++token, at += found.back().size() + 1) {
        if (at >= copy.data() + copy.size()) {
            ADD_FAILURE() << "more tokens counted than cut";
            break;
        }
        found.emplace_back(at);
    }
    return found;
}
using Tokens = std::vector<std::string>;

std::string stripped(const char* text) {
    char out[64] = "";
    Checker::stripLocalPartBoundary(out, text);
    return out;
}

TEST(AddressSyntax, NeedsALocalPartAndADomain) {
    EXPECT_TRUE(Checker::checkFormatValidity("a@b"));
    for (const char* address : {"a", "@b", "a@", "a@b@c", "", "@", "a b@c", "a@b c"})
        EXPECT_FALSE(Checker::checkFormatValidity(address)) << address;
    EXPECT_FALSE(Checker::checkFormatValidity(nullptr));
}

TEST(AddressSyntax, OnlyTheFirstAtomMustNotBeEmpty) {
    EXPECT_TRUE(Checker::checkFormatValidity("a.@b"));
    EXPECT_TRUE(Checker::checkFormatValidity("a..b@c"));
    EXPECT_TRUE(Checker::checkFormatValidity("a@b."));
    EXPECT_TRUE(Checker::checkFormatValidity("a@b..c"));
    EXPECT_FALSE(Checker::checkFormatValidity(".a@b"));
    EXPECT_FALSE(Checker::checkFormatValidity("a@.b"));
}

TEST(AddressSyntax, QuotedStringsAndDomainLiterals) {
    EXPECT_TRUE(Checker::checkFormatValidity("\"a b\"@x"));
    EXPECT_TRUE(Checker::checkFormatValidity("a@[10.0.0.1]"));
    EXPECT_FALSE(Checker::checkFormatValidity("a@[x]y"));
    EXPECT_FALSE(Checker::checkFormatValidity("a@[x y]"));
    EXPECT_TRUE(Checker::checkFormatValidity("\"a@b\"@c"));
    EXPECT_TRUE(Checker::checkFormatValidity("\"john smith\".doe@x"));
    EXPECT_TRUE(Checker::checkFormatValidity("\"\"@x"));
    EXPECT_TRUE(Checker::checkFormatValidity("a@[]"));
    EXPECT_FALSE(Checker::checkFormatValidity("\"a@x"));
}

TEST(AddressSyntax, HighBytesAreInvalidOutsideAnEscape) {
    EXPECT_FALSE(Checker::checkFormatValidity("\x80@b"));
    EXPECT_FALSE(Checker::checkFormatValidity("a@\xff"));
    EXPECT_FALSE(Checker::checkFormatValidity("\"\xe9\"@b"));
    EXPECT_FALSE(Checker::checkFormatValidity("a@[\xe9]"));
    EXPECT_TRUE(Checker::checkFormatValidity("\"\\\xe9\"@b"));
}

TEST(AddressSyntax, AStarIsAnOrdinaryCharacter) {
    EXPECT_TRUE(Checker::checkFormatValidity("*@*.example.com"));
    EXPECT_TRUE(Checker::checkFormatValidity("a*@b"));
}

TEST(AddressSyntax, TheCharactersOfAtoms) {
    const std::string listed = "!#$%&'*+-/0123456789=?ABCXYZ^_`abcxyz{|}~";
    for (int code = 1; code < 256; ++code) {
        const char text[2] = {static_cast<char>(code), '\0'};
        const bool expected = (code >= 'A' && code <= 'Z') || (code >= 'a' && code <= 'z') ||
                              listed.find(static_cast<char>(code)) != std::string::npos;
        EXPECT_EQ(expected, Checker::_isAllCharLegal(text, Checker::atext)) << code;
    }
    EXPECT_TRUE(Checker::_isAllCharLegal("", Checker::atext));
}

TEST(AddressSyntax, TheCharactersOfQuotedStringsAndLiterals) {
    for (int code = 1; code < 256; ++code) {
        const char text[2] = {static_cast<char>(code), '\0'};
        const bool control = code == 9 || code == 10 || code == 13;
        EXPECT_EQ(code < 128 && !control && code != ' ' && code != '"' && code != '\\',
                  Checker::_isAllCharLegal(text, Checker::qtext))
            << code;
        EXPECT_EQ(code < 128 && !control && code != ' ' && code != '[' && code != '\\' && code != ']',
                  Checker::_isAllCharLegal(text, Checker::dtext))
            << code;
        EXPECT_EQ(code < 128 && code != 10 && code != 13, Checker::_isAllCharLegal(text, Checker::text)) << code;
    }
}

TEST(AddressSyntax, DotAtomsAndWords) {
    EXPECT_TRUE(Checker::_is_dot_atom("a.b"));
    EXPECT_TRUE(Checker::_is_dot_atom("a..b"));
    EXPECT_TRUE(Checker::_is_dot_atom("a."));
    EXPECT_FALSE(Checker::_is_dot_atom(".a"));
    EXPECT_FALSE(Checker::_is_dot_atom(""));
    EXPECT_TRUE(Checker::_is_obs_domain("a..b"));
    EXPECT_FALSE(Checker::_is_obs_domain(".a"));
    EXPECT_TRUE(Checker::_is_obs_local_part("\"john smith\".doe"));
    EXPECT_FALSE(Checker::_is_obs_local_part("\"a\"..b"));
    EXPECT_FALSE(Checker::_is_obs_local_part("a."));
    EXPECT_FALSE(Checker::_is_quoted_string("\""));
    EXPECT_TRUE(Checker::_is_quoted_string("\"\""));
    EXPECT_FALSE(Checker::_is_quoted_string("a\""));
    EXPECT_FALSE(Checker::_is_domain_literal("["));
    EXPECT_TRUE(Checker::_is_domain_literal("[]"));
}

TEST(AddressSyntax, ABackslashFreesWhatFollowsIt) {
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("", Checker::dtext));
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("a\\]b", Checker::dtext));
    // The effect of a backslash does not end with the next character.
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("\\ab]c", Checker::dtext));
    EXPECT_FALSE(Checker::_is_xtext_or_quoted_pair("a]\\b", Checker::dtext));
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("\\\xff", Checker::dtext));
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("\\\n", Checker::dtext));
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("\\\r", Checker::dtext));
    EXPECT_FALSE(Checker::_is_xtext_or_quoted_pair("\\\r\n", Checker::dtext));
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("\\\ra\n", Checker::dtext));
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("\\\r]\n", Checker::dtext));
}

TEST(Tokenizer, WithoutAQuoteEverySeparatorCuts) {
    EXPECT_EQ((Tokens{"a", "b", "c"}), tokens("a.b@c", ".@", '\0'));
    EXPECT_EQ((Tokens{"", "a", "", "b", ""}), tokens(".a..b.", ".", '\0'));
    EXPECT_EQ((Tokens{""}), tokens("", ".", '\0'));
    EXPECT_EQ((Tokens{"\"a", "b\""}), tokens("\"a.b\"", ".", '\0'));
}

TEST(Tokenizer, QuotedSectionsAreOneToken) {
    EXPECT_EQ((Tokens{"\"a.b\"", "c"}), tokens("\"a.b\".c", ".", '"'));
    EXPECT_EQ((Tokens{"c", "\"a.b\""}), tokens("c.\"a.b\"", ".", '"'));
    EXPECT_EQ((Tokens{"x", "y", "\"a.b\"", "z"}), tokens("x.y.\"a.b\".z", ".", '"'));
    EXPECT_EQ((Tokens{"\"a.b\"", "\"c.d\""}), tokens("\"a.b\".\"c.d\"", ".", '"'));
    EXPECT_EQ((Tokens{"a", "b"}), tokens("a.b", ".", '"'));
}

TEST(Tokenizer, QuotesElsewhereAreText) {
    EXPECT_EQ((Tokens{"a\"b", "c\"d"}), tokens("a\"b.c\"d", ".", '"'));
}

TEST(Stripping, TakesTheQuotesOfTheWordsOfALocalPart) {
    EXPECT_EQ("a.b.c@x", stripped("\"a.b\".c@x"));
    EXPECT_EQ("john.doe@example.com", stripped("\"john.doe\"@example.com"));
    EXPECT_EQ("a@b", stripped("a@b"));
    EXPECT_EQ("a", stripped("\"a\""));
    EXPECT_EQ("a@\"b\"", stripped("a@\"b\""));
    EXPECT_EQ("a\"b@c", stripped("a\"b@c"));
}

TEST(Stripping, DoesNothingWithNull) {
    char kept[8] = "kept";
    Checker::stripLocalPartBoundary(kept, nullptr);
    EXPECT_STREQ("kept", kept);
    Checker::stripLocalPartBoundary(nullptr, "a");
}

}  // namespace
