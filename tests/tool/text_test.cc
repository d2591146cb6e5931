#include "output/text.h"

#include <gtest/gtest.h>

#include "policy/yaml_text.h"
#include "result_names.h"
#include "zxpolicy.h"
#include "zxregistry.h"

namespace tool {

TEST(Text, Utf8IsCheckedByTheBook) {
    EXPECT_TRUE(isUtf8("a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x93\xAE"));
    for (const char* bad : {"\x80", "\xC3", "\xC0\xAF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
                            "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xE2\x82", "a\xFFz"})
        EXPECT_FALSE(isUtf8(bad)) << bad;
}

TEST(Text, NothingThatSteersATerminalComesThrough) {
    EXPECT_EQ(oneLine("a\nb\x1b[2J\x7f"), "a\\x0Ab\\x1B[2J\\x7F");
    EXPECT_EQ(oneLine("\xC2\x9B"
                      "31m\xFF"),
              "\\xC2\\x9B31m\\xFF");
    EXPECT_EQ(oneLine("\xC3\xA4"), "\xC3\xA4");
    EXPECT_EQ(inQuotes("a\"\\\n"), "\"a\\\"\\\\\\x0A\"");
    EXPECT_EQ(inQuotes("abcdef", 3), "\"abc...\"");
}

TEST(Text, NumbersAreGroupedByThousands) {
    EXPECT_EQ(grouped(0), "0");
    EXPECT_EQ(grouped(999), "999");
    EXPECT_EQ(grouped(1000), "1,000");
    EXPECT_EQ(grouped(1234567), "1,234,567");
}

TEST(YamlText, OnlyWhatEveryReaderTakesForATextStaysPlain) {
    for (const char* plain : {"a", "Sales department", "ldap.example.com", "x-1_2/3@b"})
        EXPECT_EQ(yamlText(plain), plain);
    for (const char* other :
         {"",     "1", "1a", "true", "No",       "null", "Y", "~",  "*",  "a ", " a", "a: b", "a #b", "a -b",
          "a  b", "-", "[a", "{",    "\xC3\xA4", "a,b",  "'", "&a", "!a", "%",  "@a", "0x1f", ".5"})
        EXPECT_EQ(yamlText(other).front(), '"') << other;
}

TEST(YamlText, ControlCharactersAreEscapedAndOtherBytesAreBinary) {
    EXPECT_EQ(yamlQuoted("a\n\t\r\x01\"\\"), "\"a\\n\\t\\r\\x01\\\"\\\\\"");
    EXPECT_EQ(yamlQuoted("\xC2\x85\xE2\x80\xA8\xEF\xBB\xBF"), "\"\\x85\\u2028\\uFEFF\"");
    EXPECT_EQ(yamlQuoted("\xFF\xFE"), "!!binary \"//4=\"");
}

TEST(ResultNames, EveryCodeHasItsNameAndNumber) {
    EXPECT_EQ(describeResult(ZXPOL_E_NOT_FOUND).rfind("ZXPOL_E_NOT_FOUND (0x81021804): ", 0), 0u);
    EXPECT_EQ(describeResult(ZXREG_E_BUSY).rfind("ZXREG_E_BUSY (0x81021906)", 0), 0u);
    EXPECT_EQ(describeResult(static_cast<int>(0x80990001)).rfind("unknown result (0x80990001): ", 0), 0u);
    for (const int code : {ZXPOL_E_NOT_SUPPORTED,
                           ZXPOL_E_EXCEPTION,
                           ZXPOL_E_OUT_OF_MEMORY,
                           ZXPOL_E_BUFFER_TOO_SMALL,
                           ZXPOL_E_INVALID_ARG,
                           ZXPOL_E_CONVERSION,
                           ZXPOL_E_INVALID_FORMAT,
                           ZXPOL_E_WRONG_HANDLE,
                           ZXPOL_E_NO_MORE_ITEMS,
                           ZXPOL_E_FILE_OPEN,
                           ZXPOL_E_FILE_READ,
                           ZXPOL_E_NOT_FOUND,
                           ZXPOL_E_ALREADY_EXISTS,
                           ZXPOL_E_PARSE,
                           ZXPOL_E_VERSION,
                           ZXPOL_E_CONDITION_CHECK,
                           ZXREG_E_IO,
                           ZXREG_E_CORRUPT,
                           ZXREG_E_FOREIGN,
                           ZXREG_E_NOT_EMPTY,
                           ZXREG_E_PERMISSION,
                           ZXREG_E_BUSY,
                           ZXREG_E_DELETED,
                           ZXREG_E_LOCATION,
                           ZXREG_E_NO_UPDATE,
                           ZXREG_E_SECRET,
                           ZXREG_E_UNSAFE,
                           ZXPOL_S_OK})
        EXPECT_STRNE(resultName(code), "unknown result") << std::hex << code;
}

}  // namespace tool
