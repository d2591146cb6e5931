// The string helpers.
#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cstdarg>
#include <cstring>
#include <string>

#include "zxbase.h"

namespace {

std::string itoa(int value, int radix) {
    char buffer[40];
    EXPECT_EQ(kr_itoa(value, buffer, radix), buffer);
    return buffer;
}

int sign(int number) {
    return (number > 0) - (number < 0);
}

__attribute__((format(printf, 3, 4))) int print(char* buffer, size_t size, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = kr_vsnprintf(buffer, size, format, arguments);
    va_end(arguments);
    return length;
}

TEST(NumberText, Decimal) {
    EXPECT_EQ(itoa(0, 10), "0");
    EXPECT_EQ(itoa(7, 10), "7");
    EXPECT_EQ(itoa(-42, 10), "-42");
    EXPECT_EQ(itoa(INT_MAX, 10), "2147483647");
    EXPECT_EQ(itoa(INT_MIN, 10), "-2147483648");
}

TEST(NumberText, OtherBasesAreUnsigned) {
    EXPECT_EQ(itoa(255, 16), "ff");
    EXPECT_EQ(itoa(-1, 16), "ffffffff");
    EXPECT_EQ(itoa(35, 36), "z");
    EXPECT_EQ(itoa(8, 8), "10");
    EXPECT_EQ(itoa(-1, 2), std::string(32, '1'));
}

TEST(NumberText, WritesNoMoreThanTheTextAndItsNul) {
    char buffer[13];
    std::memset(buffer, '#', sizeof(buffer));
    kr_itoa(INT_MIN, buffer, 10);
    EXPECT_EQ(buffer[11], '\0');
    EXPECT_EQ(buffer[12], '#');
}

TEST(CaseBlindComparison, IgnoresAsciiCase) {
    EXPECT_EQ(kr_stricmp("", ""), 0);
    EXPECT_EQ(kr_stricmp("Mail", "mAIL"), 0);
    EXPECT_LT(kr_stricmp("abc", "ABD"), 0);
    EXPECT_GT(kr_stricmp("b", "A"), 0);
    EXPECT_LT(kr_stricmp("ab", "abc"), 0);
    EXPECT_GT(kr_stricmp("abc", "ab"), 0);
}

TEST(CaseBlindComparison, ComparesLowerCase) {
    // "_" lies between the upper-case and the lower-case letters.
    EXPECT_LT(kr_stricmp("_", "A"), 0);
    EXPECT_LT(kr_strnicmp("_", "A", 1), 0);
    EXPECT_LT(kr_stricmp("@", "a"), 0);
    EXPECT_NE(kr_stricmp("@", "`"), 0);
    EXPECT_NE(kr_stricmp("[", "{"), 0);
}

TEST(CaseBlindComparison, BytesAreUnsigned) {
    EXPECT_GT(kr_stricmp("\x80", "z"), 0);
    EXPECT_GT(kr_strnicmp("\xff", "\x7f", 1), 0);
    EXPECT_NE(kr_stricmp("\xe4", "\xc4"), 0);
    EXPECT_EQ(kr_stricmp("\xc3\xa4", "\xc3\xa4"), 0);
}

TEST(CaseBlindComparison, EverySingleByteAgainstEveryOther) {
    const auto lower = [](int c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; };
    for (int a = 0; a < 256; ++a) {
        for (int b = 0; b < 256; ++b) {
            const char textA[] = {static_cast<char>(a), '\0'};
            const char textB[] = {static_cast<char>(b), '\0'};
            const int expected = sign(lower(a) - lower(b));
            ASSERT_EQ(sign(kr_stricmp(textA, textB)), expected) << a << " " << b;
            ASSERT_EQ(sign(kr_strnicmp(textA, textB, 1)), expected) << a << " " << b;
        }
    }
}

TEST(CaseBlindComparison, StopsAfterN) {
    EXPECT_EQ(kr_strnicmp("abX", "ABY", 2), 0);
    EXPECT_LT(kr_strnicmp("abX", "ABY", 3), 0);
    EXPECT_EQ(kr_strnicmp("a", "b", 0), 0);
    EXPECT_EQ(kr_strnicmp("ab", "AB", 100), 0);
    EXPECT_LT(kr_strnicmp("ab", "abc", 100), 0);
    const char notTerminated[] = {'A', 'b'};
    EXPECT_EQ(kr_strnicmp(notTerminated, "aB", sizeof(notTerminated)), 0);
}

TEST(LowerCasing, InPlaceAsciiOnly) {
    char text[] = "@AZ[`az{ 09 \xc3\x84";
    EXPECT_EQ(kr_strlwr(text), text);
    EXPECT_STREQ(text, "@az[`az{ 09 \xc3\x84");
    char empty[] = "";
    EXPECT_STREQ(kr_strlwr(empty), "");
}

TEST(LowerCasing, LocaleHasNoInfluence) {
    // In a Turkish locale the lower-case form of "I" would be another letter.
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* locale : {"tr_TR.UTF-8", "C.UTF-8", "de_DE.ISO-8859-1"}) {
        std::setlocale(LC_ALL, locale);
        char text[] = "I\xc4";
        EXPECT_STREQ(kr_strlwr(text), "i\xc4");
        EXPECT_EQ(kr_stricmp("I", "i"), 0);
    }
    std::setlocale(LC_ALL, before.c_str());
}

TEST(Formatting, CutsAndTerminates) {
    char buffer[8];
    EXPECT_EQ(print(buffer, sizeof(buffer), "%s-%d", "ab", 7), 4);
    EXPECT_STREQ(buffer, "ab-7");
    EXPECT_EQ(print(buffer, sizeof(buffer), "%s", "0123456789"), 10);
    EXPECT_STREQ(buffer, "0123456");
    EXPECT_EQ(print(buffer, 1, "%s", "x"), 1);
    EXPECT_STREQ(buffer, "");
}

TEST(Formatting, SizeZeroWritesNothing) {
    char buffer[] = "##";
    EXPECT_EQ(print(buffer, 0, "%d", 123), 3);
    EXPECT_STREQ(buffer, "##");
    EXPECT_EQ(print(nullptr, 0, "%d", 123), 3);
}

}  // namespace
