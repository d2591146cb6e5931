#include "pattern/rfc2822_checker.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using Checker = ZxPolRfc2822Checker;

bool isAddress(const std::string& text) {
    return Checker::checkFormatValidity(text.c_str());
}

std::string stripped(const std::string& text) {
    std::vector<char> out(text.size() + 1, '#');
    Checker::stripLocalPartBoundary(out.data(), text.c_str());
    return out.data();
}

std::string oneByte(int byte) {
    return std::string(1, static_cast<char>(byte));
}

const std::string atomCharacters = "!#$%&'*+-/0123456789=?ABCDEFGHIJKLMNOPQRSTUVWXYZ^_`abcdefghijklmnopqrstuvwxyz{|}~";

bool isControlOfText(int byte) {
    return byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r';
}

TEST(AddressFormat, LocalPartAtDomain) {
    for (const char* address :
         {"a@b", "john.smith@mail.example.com", "a.@b", "a..b@c", "a@b.", "a@b..c", "*@*.example.com", "\"a b\"@x",
          "\"john smith\".doe@x", "a@[10.0.0.1]", "a@[]", "\"\"@x", "a@[b@c]", "\"a@b\"@c", "\"a.b\".c.\"d\"@x"}) {
        EXPECT_TRUE(isAddress(address)) << address;
    }
}

TEST(AddressFormat, Refused) {
    for (const char* address : {"",
                                "a",
                                "@",
                                "@b",
                                "a@",
                                "a@b@c",
                                ".a@b",
                                "a@.b",
                                ".@b",
                                "a b@c",
                                "a@b c",
                                "a@[x]y",
                                "a@x[y]",
                                "a@[x",
                                "a@x]",
                                "a@[1 2]",
                                "a@[a[b]",
                                "\"a\"b@c",
                                "a\"b\"@c",
                                "\"a@b",
                                "\"a\"@",
                                "a@\"b\"",
                                "\"john\"..doe@x",
                                ".\"a\"@x",
                                "\"a\".@x",
                                "a@b\n",
                                "a\t@b",
                                "(c)a@b",
                                "a@b(c)",
                                "a,b@c",
                                "a:b@c",
                                "<a@b>",
                                "a;b@c",
                                "a\\b@c"}) {
        EXPECT_FALSE(isAddress(address)) << address;
    }
    EXPECT_FALSE(Checker::checkFormatValidity(nullptr));
}

TEST(AddressFormat, EveryByteInAnAtom) {
    for (int byte = 1; byte < 256; ++byte) {
        const bool legal = atomCharacters.find(static_cast<char>(byte)) != std::string::npos;
        EXPECT_EQ(isAddress(oneByte(byte) + "@b"), legal) << byte;
        EXPECT_EQ(isAddress("a" + oneByte(byte) + "a@b"), legal || byte == '.') << byte;
        EXPECT_EQ(isAddress("a@b" + oneByte(byte)), legal || byte == '.') << byte;
    }
}

TEST(AddressFormat, EveryByteInAQuotedString) {
    for (int byte = 1; byte < 256; ++byte) {
        const bool legal =
            isControlOfText(byte) || byte == ' ' || (byte > ' ' && byte < 0x80 && byte != '"' && byte != '\\');
        // A lone backslash is a pair without its second half, which is let pass.
        EXPECT_EQ(isAddress("\"a" + oneByte(byte) + "a\"@b"), legal || byte == '\\') << byte;
    }
}

TEST(AddressFormat, EveryByteInADomainLiteral) {
    for (int byte = 1; byte < 256; ++byte) {
        const bool legal =
            isControlOfText(byte) || (byte > ' ' && byte < 0x80 && byte != '[' && byte != ']' && byte != '\\');
        EXPECT_EQ(isAddress("a@[1" + oneByte(byte) + "1]"), legal || byte == '\\') << byte;
    }
}

TEST(AddressFormat, HighBytesOnlyBehindABackslash) {
    EXPECT_FALSE(isAddress("\xc3\xa4@b"));
    EXPECT_FALSE(isAddress("a@\xc3\xa4"));
    EXPECT_FALSE(isAddress("\"\x80\"@b"));
    EXPECT_FALSE(isAddress("a@[\xff]"));
    EXPECT_FALSE(isAddress("a\\\x80@b"));
    EXPECT_TRUE(isAddress("\"\\\x80\"@b"));
    EXPECT_TRUE(isAddress("a@[\\\xff]"));
}

TEST(AddressFormat, LongAddresses) {
    for (size_t length : {511U, 512U, 1022U, 1023U, 1024U, 1025U, 200000U}) {
        const std::string text(length, 'a');
        EXPECT_TRUE(isAddress(text + "@b"));
        EXPECT_TRUE(isAddress("a@" + text));
        EXPECT_TRUE(isAddress("\"" + text + "\"@" + text));
        EXPECT_TRUE(isAddress("a@[" + text + "]"));
        EXPECT_FALSE(isAddress(text));
        EXPECT_FALSE(isAddress(text + " @b"));
        EXPECT_FALSE(isAddress("\"" + text));
        EXPECT_FALSE(isAddress(std::string(length, '"')));
        EXPECT_FALSE(isAddress(std::string(length, '@')));
    }
}

TEST(AddressParts, EmptyAndNullAreInvalid) {
    using Check = bool (*)(const char*);
    const Check checks[] = {
        Checker::_checkLocalPartValidity, Checker::_checkDomainValidity, Checker::_is_dot_atom,
        Checker::_is_quoted_string,       Checker::_is_obs_local_part,   Checker::_is_domain_literal,
        Checker::_is_obs_domain};
    for (Check check : checks) {
        EXPECT_FALSE(check(nullptr));
        EXPECT_FALSE(check(""));
    }
}

TEST(AddressParts, DotAtom) {
    for (auto check : {Checker::_is_dot_atom, Checker::_is_obs_domain}) {
        for (const char* text : {"a", "a.b", "a.", "a..", "a..b", "*"})
            EXPECT_TRUE(check(text)) << text;
        for (const char* text : {".", ".a", "a b", "a.b c", "a@b", "\"a\""})
            EXPECT_FALSE(check(text)) << text;
    }
}

TEST(AddressParts, QuotedString) {
    for (const char* text : {"\"\"", "\"a\"", "\"a b\"", "\" \"", "\"a.b@c\"", "\"(,;:<>[])\"", "\"\x7f\""}) {
        EXPECT_TRUE(Checker::_is_quoted_string(text)) << text;
    }
    for (const char* text : {"\"", "a", "\"a", "a\"", "\"a\"b\"", "\"a\tb\"", "\"a\nb\"", "x\"a\""}) {
        EXPECT_FALSE(Checker::_is_quoted_string(text)) << text;
    }
}

TEST(AddressParts, ObsoleteLocalPart) {
    for (const char* text : {"a", "a.b", "\"a\"", "\"john smith\".doe", "a.\"b.c\".d", "\"a.b\""}) {
        EXPECT_TRUE(Checker::_is_obs_local_part(text)) << text;
    }
    for (const char* text : {".", ".a", "a.", "a..b", "a.\"b", "\"a\"b", "a b", "\"a\"."}) {
        EXPECT_FALSE(Checker::_is_obs_local_part(text)) << text;
    }
}

TEST(AddressParts, LocalPartTakesEitherForm) {
    EXPECT_TRUE(Checker::_checkLocalPartValidity("a..b"));
    EXPECT_TRUE(Checker::_checkLocalPartValidity("\"a b\""));
    EXPECT_TRUE(Checker::_checkLocalPartValidity("\"a b\".c"));
    EXPECT_FALSE(Checker::_checkLocalPartValidity("[a]"));
}

TEST(AddressParts, DomainTakesEitherForm) {
    EXPECT_TRUE(Checker::_checkDomainValidity("a..b"));
    EXPECT_FALSE(Checker::_checkDomainValidity("[a b]"));
    EXPECT_TRUE(Checker::_checkDomainValidity("[10.0.0.1]"));
    EXPECT_FALSE(Checker::_checkDomainValidity("\"a\""));
}

TEST(AddressParts, DomainLiteral) {
    for (const char* text : {"[]", "[a]", "[10.0.0.1]", "[IPv6:::1]", "[a@b]", "[\"]", "[*]"}) {
        EXPECT_TRUE(Checker::_is_domain_literal(text)) << text;
    }
    for (const char* text : {"[", "]", "a", "[a", "a]", "[[]", "[]]", "[a]b", "[ ]", "[\t]"}) {
        EXPECT_FALSE(Checker::_is_domain_literal(text)) << text;
    }
}

TEST(CharacterClasses, HoldExactlyTheirRanges) {
    for (int byte = 1; byte < 256; ++byte) {
        const std::string text = oneByte(byte);
        const bool inAtext = atomCharacters.find(text[0]) != std::string::npos;
        const bool inQtext = isControlOfText(byte) || (byte > ' ' && byte < 0x80 && byte != '"' && byte != '\\');
        const bool inDtext = isControlOfText(byte) || (byte > ' ' && byte < 0x80 && (byte < '[' || byte > ']'));
        const bool inText = byte < 0x80 && byte != '\n' && byte != '\r';
        EXPECT_EQ(Checker::_isAllCharLegal(text.c_str(), Checker::atext), inAtext) << byte;
        EXPECT_EQ(Checker::_isAllCharLegal(text.c_str(), Checker::qtext), inQtext) << byte;
        EXPECT_EQ(Checker::_isAllCharLegal(text.c_str(), Checker::dtext), inDtext) << byte;
        EXPECT_EQ(Checker::_isAllCharLegal(text.c_str(), Checker::text), inText) << byte;
    }
}

TEST(CharacterClasses, EmptyTextIsLegalNullIsNot) {
    EXPECT_TRUE(Checker::_isAllCharLegal("", Checker::atext));
    EXPECT_FALSE(Checker::_isAllCharLegal(nullptr, Checker::atext));
    EXPECT_FALSE(Checker::_isAllCharLegal("a", nullptr));
    EXPECT_FALSE(Checker::_isAllCharLegal("ab c", Checker::atext));
}

TEST(QuotedPairs, WithoutBackslashOnlyTheTable) {
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("", Checker::qtext));
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("abc", Checker::qtext));
    EXPECT_FALSE(Checker::_is_xtext_or_quoted_pair("a b", Checker::qtext));
    EXPECT_FALSE(Checker::_is_xtext_or_quoted_pair("a\"b", Checker::qtext));
    EXPECT_FALSE(Checker::_is_xtext_or_quoted_pair("a\rb", Checker::qtext));
    EXPECT_FALSE(Checker::_is_xtext_or_quoted_pair(nullptr, Checker::qtext));
    EXPECT_FALSE(Checker::_is_xtext_or_quoted_pair("a", nullptr));
}

TEST(QuotedPairs, BackslashFreesAllThatFollows) {
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("a\\\"b", Checker::qtext));
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("a\\\"b\"c d\xe4", Checker::qtext));
    EXPECT_FALSE(Checker::_is_xtext_or_quoted_pair("a\"b\\\"c", Checker::qtext));
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("a\\", Checker::qtext));
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("\\\\", Checker::qtext));
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("x\\]y[z", Checker::dtext));
}

TEST(QuotedPairs, LineFeedDirectlyBehindCarriageReturnIsRefused) {
    EXPECT_FALSE(Checker::_is_xtext_or_quoted_pair("\\a\r\n", Checker::qtext));
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("\\a\n", Checker::qtext));
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("\\a\r", Checker::qtext));
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("\\a\n\r", Checker::qtext));
    // A table character, a backslash or another character of text in between makes it harmless.
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("\\a\rb\n", Checker::qtext));
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("\\a\r\\\n", Checker::qtext));
    EXPECT_TRUE(Checker::_is_xtext_or_quoted_pair("\\a\r \n", Checker::qtext));
    // Further carriage returns and bytes that are no text do not.
    EXPECT_FALSE(Checker::_is_xtext_or_quoted_pair("\\a\r\r\n", Checker::qtext));
    EXPECT_FALSE(Checker::_is_xtext_or_quoted_pair("\\a\r\xe4\n", Checker::qtext));
}

TEST(QuotedPairs, InAddresses) {
    EXPECT_TRUE(isAddress("\"a\\\"b\"@x"));
    EXPECT_TRUE(isAddress("\"a\\\"b\"c\"@x"));
    EXPECT_TRUE(isAddress("\"a\\\nb\"@x"));
    EXPECT_FALSE(isAddress("\"a\\\r\nb\"@x"));
    EXPECT_TRUE(isAddress("\"a\\\"@x"));
    EXPECT_TRUE(isAddress("a@[x\\]y]"));
}

TEST(StrippingTheLocalPart, WordsLoseTheirQuotes) {
    EXPECT_EQ(stripped("\"a.b\".c@x"), "a.b.c@x");
    EXPECT_EQ(stripped("\"a\".\"b\"@x"), "a.b@x");
    EXPECT_EQ(stripped("\"john smith\"@x"), "john smith@x");
    EXPECT_EQ(stripped("\"a\""), "a");
    EXPECT_EQ(stripped("\"\"@x"), "@x");
    EXPECT_EQ(stripped("\"\".\"\""), ".");
}

TEST(StrippingTheLocalPart, OtherTextIsKept) {
    for (const char* text : {"", "a", "a@b", "a.b@c", "a..b@c", ".@.", "@", "a@b@c", "a@\"b\".c", "a\"b@c", "\"",
                             "\"a@b", "*@*.example.com", "\"a\"b@c", "a\"b\"@c"}) {
        EXPECT_EQ(stripped(text), text);
    }
}

TEST(StrippingTheLocalPart, QuotedAtBelongsToTheLocalPart) {
    EXPECT_EQ(stripped("\"a@b\"@c"), "a@b@c");
    EXPECT_EQ(stripped("\"a@b\"@\"c\"@\"d\""), "a@b@\"c\"@\"d\"");
}

TEST(StrippingTheLocalPart, OneQuoteOnlyIsNoPair) {
    EXPECT_EQ(stripped("\"@x"), "\"@x");
    EXPECT_EQ(stripped("a.\"@x"), "a.\"@x");
}

TEST(StrippingTheLocalPart, InPlaceAndNull) {
    char text[] = "\"a\".\"b\"@x";
    Checker::stripLocalPartBoundary(text, text);
    EXPECT_STREQ(text, "a.b@x");
    Checker::stripLocalPartBoundary(text, nullptr);
    Checker::stripLocalPartBoundary(nullptr, "a");
    EXPECT_STREQ(text, "a.b@x");
}

TEST(StrippingTheLocalPart, WritesNoMoreThanTheTextNeeds) {
    for (size_t length : {10U, 511U, 1023U, 1024U, 1025U, 100000U}) {
        const std::string word(length, 'w');
        EXPECT_EQ(stripped("\"" + word + "\".\"" + word + "\"@" + word), word + "." + word + "@" + word);
        EXPECT_EQ(stripped(word + "@" + word), word + "@" + word);
        EXPECT_EQ(stripped(std::string(length, '.') + "\"a\""), std::string(length, '.') + "a");
    }
}

}  // namespace
