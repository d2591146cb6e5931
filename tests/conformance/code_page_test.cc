// UTF-16 to UTF-8 and back: sizes, what is untouched on failure, and what is malformed. The table of well-formed
// sequences says what the right answers are.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <ctime>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "support/raw_store.h"
#include "support/utf_oracle.h"

namespace {

using namespace oracle;
using zxtest::codeText;

// ---- calling --------------------------------------------------------------------------------------------------

using Conversion = int (*)(char*, unsigned*, const char*, unsigned);

std::string rawBytes(const std::u16string& units) {
    std::string bytes(units.size() * 2, '\0');
    std::memcpy(bytes.data(), units.data(), bytes.size());
    return bytes;
}

std::string printable(const std::string& bytes) {
    std::string text;
    for (size_t at = 0; at < bytes.size() && at < 40; ++at) {
        char hex[4];
        std::snprintf(hex, sizeof hex, "%02x ", byteAt(bytes, at));
        text += hex;
    }
    return text + "of " + std::to_string(bytes.size());
}

// What one call did. The buffer has canaries on both sides.
struct Converted {
    int code = 0;
    unsigned size = 0;
    std::string output;        // the capacity's bytes after the call
    bool isIntact = false;     // nothing outside the capacity was written
    bool isUntouched = false;  // nothing inside either
};

constexpr char kCanary = 0x5a;

Converted convert(Conversion function, const std::string& input, size_t capacity) {
    constexpr size_t guard = 16;
    std::string memory(capacity + 2 * guard, kCanary);
    const std::vector<char> exactInput(input.begin(), input.end());  // no NUL behind it
    Converted result;
    result.size = static_cast<unsigned>(capacity);
    result.code =
        function(memory.data() + guard, &result.size, exactInput.data(), static_cast<unsigned>(exactInput.size()));
    const std::string edge(guard, kCanary);
    result.output = memory.substr(guard, capacity);
    result.isIntact = memory.substr(0, guard) == edge && memory.substr(guard + capacity) == edge;
    result.isUntouched = memory == std::string(memory.size(), kCanary);
    return result;
}

// Converts into a buffer that is large enough; nothing where the input is malformed.
std::optional<std::string> outputOf(Conversion function, const std::string& input) {
    const size_t capacity = input.size() * 2;
    const Converted result = convert(function, input, capacity);
    EXPECT_TRUE(result.isIntact) << printable(input);
    if (result.code < 0) {
        EXPECT_CODE(ZXPOL_E_CONVERSION, result.code) << printable(input);
        EXPECT_TRUE(result.isUntouched) << printable(input);
        EXPECT_EQ(capacity, result.size) << printable(input);
        return std::nullopt;
    }
    EXPECT_CODE(ZXPOL_S_OK, result.code) << printable(input);
    EXPECT_LE(result.size, capacity) << printable(input);
    EXPECT_EQ(std::string(capacity - result.size, kCanary), result.output.substr(result.size)) << printable(input);
    return result.output.substr(0, result.size);
}

void expectLikeTheTable(const std::string& bytes) {
    const std::optional<std::u16string> right = rightUnits(bytes);
    const std::optional<std::string> found = outputOf(mapToUnicode, bytes);
    ASSERT_EQ(right.has_value(), found.has_value()) << printable(bytes);
    if (right) {
        ASSERT_EQ(rawBytes(*right), *found) << printable(bytes);
    }
}

void expectLikeTheTable(const std::u16string& units) {
    const std::optional<std::string> right = rightBytes(units);
    const std::optional<std::string> found = outputOf(mapFromUnicode, rawBytes(units));
    ASSERT_EQ(right, found) << printable(rawBytes(units));
}

// Malformed, whatever the capacity, and with no buffer at all.
void expectMalformed(Conversion function, const std::string& input) {
    SCOPED_TRACE(printable(input));
    for (const size_t capacity : {size_t{0}, size_t{1}, input.size() * 3}) {
        const Converted result = convert(function, input, capacity);
        EXPECT_CODE(ZXPOL_E_CONVERSION, result.code);
        EXPECT_EQ(capacity, result.size);
        EXPECT_TRUE(result.isUntouched);
    }
    unsigned size = 4711;
    EXPECT_CODE(ZXPOL_E_CONVERSION, function(nullptr, &size, input.data(), static_cast<unsigned>(input.size())));
    EXPECT_EQ(4711u, size);
}

void expectTooSmall(Conversion function, const std::string& input, size_t capacity, unsigned writtenBack) {
    const Converted result = convert(function, input, capacity);
    EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, result.code) << capacity;
    EXPECT_EQ(writtenBack, result.size) << capacity;
    EXPECT_TRUE(result.isUntouched) << capacity;
}

void expectOutput(Conversion function, const std::string& input, size_t capacity, const std::string& output) {
    const Converted result = convert(function, input, capacity);
    EXPECT_CODE(ZXPOL_S_OK, result.code) << capacity;
    EXPECT_EQ(output.size(), result.size) << capacity;
    EXPECT_EQ(output, result.output.substr(0, output.size())) << capacity;
    EXPECT_EQ(std::string(capacity - output.size(), kCanary), result.output.substr(output.size())) << "no NUL is added";
    EXPECT_TRUE(result.isIntact) << capacity;
}

const std::string kHello = "hello";
const std::string kHello16 = rawBytes(u"hello");

// ---- sizes ----------------------------------------------------------------------------------------------------

TEST(CodePage, Utf8OfHelloNeedsFiveBytes) {
    expectOutput(mapFromUnicode, kHello16, 5, kHello);
    expectOutput(mapFromUnicode, kHello16, 6, kHello);
    expectOutput(mapFromUnicode, kHello16, 100, kHello);
    for (const size_t capacity : {0u, 1u, 4u})
        expectTooSmall(mapFromUnicode, kHello16, capacity, 5);
}

TEST(CodePage, Utf16OfHelloNeedsTenBytes) {
    expectOutput(mapToUnicode, kHello, 10, kHello16);
    expectOutput(mapToUnicode, kHello, 11, kHello16);
    expectOutput(mapToUnicode, kHello, 100, kHello16);
}

TEST(CodePage, TooSmallForUtf16WritesBackTheLengthOfTheInput) {
    for (const size_t capacity : {0u, 1u, 4u, 5u, 6u, 9u})
        expectTooSmall(mapToUnicode, kHello, capacity, 5);
    // Two bytes for each character: the size written back suffices.
    const std::string umlauts = "\xc3\xa4\xc3\xb6\xc3\xbc";
    expectTooSmall(mapToUnicode, umlauts, 5, 6);
    expectOutput(mapToUnicode, umlauts, 6, rawBytes(u"\u00e4\u00f6\u00fc"));
    // More bytes than units: the size written back is more than is needed.
    const std::string euro = "\xe2\x82\xac";
    expectTooSmall(mapToUnicode, euro, 1, 3);
    expectOutput(mapToUnicode, euro, 2, rawBytes(u"\u20ac"));
}

TEST(CodePage, TooSmallForUtf8WritesBackTheSizeNeeded) {
    const std::string units = rawBytes(u"a\u00e4\u20ac\U0001f600");
    expectTooSmall(mapFromUnicode, units, 0, 10);
    expectTooSmall(mapFromUnicode, units, 9, 10);
    expectOutput(mapFromUnicode, units, 10, "a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80");
}

TEST(CodePage, WithoutABufferOnlyTheSizeIsComputed) {
    unsigned size = 100;
    EXPECT_CODE(ZXPOL_S_OK, mapFromUnicode(nullptr, &size, kHello16.data(), 10));
    EXPECT_EQ(5u, size);
    EXPECT_CODE(ZXPOL_S_OK, mapFromUnicode(nullptr, &size, kHello16.data(), 10));
    EXPECT_EQ(5u, size);
    size = 4;
    EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, mapFromUnicode(nullptr, &size, kHello16.data(), 10));
    EXPECT_EQ(5u, size);
    size = 100;
    EXPECT_CODE(ZXPOL_S_OK, mapToUnicode(nullptr, &size, kHello.data(), 5));
    EXPECT_EQ(10u, size);
    size = 9;
    EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, mapToUnicode(nullptr, &size, kHello.data(), 5));
    EXPECT_EQ(5u, size);
}

TEST(CodePage, NothingBecomesNothing) {
    for (const Conversion function : {mapFromUnicode, mapToUnicode}) {
        for (const unsigned capacity : {0u, 1u, 100u}) {
            char output[100];
            std::memset(output, kCanary, sizeof output);
            unsigned size = capacity;
            EXPECT_CODE(ZXPOL_S_OK, function(output, &size, "x", 0));
            EXPECT_EQ(0u, size);
            EXPECT_EQ(std::string(sizeof output, kCanary), std::string(output, sizeof output));
            size = capacity;
            EXPECT_CODE(ZXPOL_S_OK, function(nullptr, &size, nullptr, 0));
            EXPECT_EQ(0u, size);
        }
    }
}

TEST(CodePage, MissingArgumentsAreRefused) {
    for (const Conversion function : {mapFromUnicode, mapToUnicode}) {
        char output[8];
        std::memset(output, kCanary, sizeof output);
        unsigned size = 7;
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, function(output, nullptr, "ab", 2));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, function(output, nullptr, nullptr, 0));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, function(nullptr, nullptr, nullptr, 2));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, function(output, &size, nullptr, 2));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, function(output, &size, nullptr, 1));
        EXPECT_EQ(7u, size);
        EXPECT_EQ(std::string(sizeof output, kCanary), std::string(output, sizeof output));
    }
}

TEST(CodePage, AnOddLastByteOfUtf16IsIgnored) {
    expectOutput(mapFromUnicode, kHello16 + "\xd8", 5, kHello);
    expectTooSmall(mapFromUnicode, kHello16 + "\xd8", 4, 5);
    expectOutput(mapFromUnicode, "\xff", 3, "");
    expectMalformed(mapFromUnicode, rawBytes(u"a\xd83d") + "\x01");
}

TEST(CodePage, TwiceTheInputIsAlwaysEnoughForUtf16) {
    for (const char* text : {"ascii", "\xc3\xa4", "\xe2\x82\xac", "\xf0\x9f\x98\x80", "a\xc3\xa4\xe2\x82\xac"}) {
        const std::string bytes = text;
        EXPECT_CODE(ZXPOL_S_OK, convert(mapToUnicode, bytes, bytes.size() * 2).code) << printable(bytes);
    }
}

// ---- what is converted ------------------------------------------------------------------------------------------

TEST(CodePage, ATerminatorIsConvertedWhereItIsPartOfTheInput) {
    expectOutput(mapFromUnicode, rawBytes(std::u16string(u"a\0b\0", 4)), 4, std::string("a\0b\0", 4));
    expectOutput(mapToUnicode, std::string("a\0b\0", 4), 8, rawBytes(std::u16string(u"a\0b\0", 4)));
    expectOutput(mapFromUnicode, rawBytes(std::u16string(3, u'\0')), 3, std::string(3, '\0'));
}

TEST(CodePage, AByteOrderMarkIsACharacterLikeAnyOther) {
    const std::string mark = "\xef\xbb\xbf";
    expectOutput(mapToUnicode, mark, 2, rawBytes(u"\ufeff"));
    expectOutput(mapToUnicode, mark + "a" + mark, 6, rawBytes(u"\ufeffa\ufeff"));
    expectOutput(mapFromUnicode, rawBytes(u"\ufeff"), 3, mark);
    expectOutput(mapFromUnicode, rawBytes(u"\ufeffa\ufeff"), 7, mark + "a" + mark);
    // The swapped mark is a character too (of no meaning), and turns nothing round.
    expectOutput(mapFromUnicode,
                 rawBytes(u"\xfffe"
                          u"a"),
                 4,
                 "\xef\xbf\xbe"
                 "a");
}

TEST(CodePage, TheCharactersAtTheEdgesOfTheFormsAreConverted) {
    for (const uint32_t scalar :
         {0x0u,    0x7Fu,   0x80u,   0x7FFu,  0x800u,   0xFFFu,   0x1000u,  0xCFFFu,  0xD000u,  0xD7FFu,   0xE000u,
          0xFDD0u, 0xFFFDu, 0xFFFEu, 0xFFFFu, 0x10000u, 0x1FFFFu, 0x3FFFFu, 0x40000u, 0xFFFFFu, 0x100000u, 0x10FFFFu}) {
        std::string bytes;
        std::u16string units;
        appendBytes(bytes, scalar);
        appendUnits(units, scalar);
        expectOutput(mapFromUnicode, rawBytes(units), bytes.size(), bytes);
        expectOutput(mapToUnicode, bytes, units.size() * 2, rawBytes(units));
    }
}

TEST(CodePage, AllCharactersMakeTheRoundTrip) {
    std::string bytes;
    std::u16string units;
    for (uint32_t scalar = 0; scalar <= 0x10FFFF; ++scalar) {
        if (scalar >= 0xD800 && scalar <= 0xDFFF) continue;
        appendBytes(bytes, scalar);
        appendUnits(units, scalar);
        if (bytes.size() < 10000 && scalar < 0x10FFFF) continue;
        ASSERT_EQ(rawBytes(units), outputOf(mapToUnicode, bytes)) << std::hex << scalar;
        ASSERT_EQ(bytes, outputOf(mapFromUnicode, rawBytes(units))) << std::hex << scalar;
        bytes.clear();
        units.clear();
    }
}

// ---- malformed input -----------------------------------------------------------------------------------------------

TEST(CodePage, LoneSurrogatesAreMalformed) {
    const std::u16string high(1, char16_t{0xD83D}), low(1, char16_t{0xDE00});
    for (const std::u16string& lone :
         {high, low, low + high, high + high, low + low, high + u"a", low + u"a", high + high + low, high + low + low})
        for (const std::u16string& before : {std::u16string(), std::u16string(u"a"), high + low}) {
            expectMalformed(mapFromUnicode, rawBytes(before + lone));
            expectMalformed(mapFromUnicode, rawBytes(before + lone + u"z"));
        }
    for (const char16_t unit : {char16_t{0xD800}, char16_t{0xDBFF}, char16_t{0xDC00}, char16_t{0xDFFF}})
        expectMalformed(mapFromUnicode, rawBytes(std::u16string(1, unit)));
}

const char* const kMalformed[] = {
    // stray continuation bytes
    "\x80", "\xbf", "\x80\x80", "\xc3\xa4\xa4", "\xe2\x82\xac\x82", "\xf0\x9f\x98\x80\x80",
    // truncated
    "\xc3", "\xe2", "\xe2\x82", "\xf0", "\xf0\x9f", "\xf0\x9f\x98", "\xc3\xc3\xa4", "\xe2\x82\xe2\x82\xac",
    // over-long
    "\xc0\x80", "\xc0\xaf", "\xc1\xbf", "\xe0\x80\x80", "\xe0\x80\xaf", "\xe0\x9f\xbf", "\xf0\x80\x80\x80",
    "\xf0\x80\x80\xaf", "\xf0\x8f\xbf\xbf", "\xf8\x80\x80\x80\x80", "\xfc\x80\x80\x80\x80\x80",
    // surrogates, single and in pairs
    "\xed\xa0\x80", "\xed\xaf\xbf", "\xed\xb0\x80", "\xed\xbf\xbf", "\xed\xa0\xbd\xed\xb8\x80",
    // above U+10FFFF
    "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xf7\xbf\xbf\xbf", "\xf8\x88\x80\x80\x80", "\xfd\xbf\xbf\xbf\xbf\xbf",
    // bytes of no sequence
    "\xfe", "\xff", "\xfe\xff", "\xff\xfe"};

TEST(CodePage, MalformedUtf8IsRefused) {
    for (const char* bytes : kMalformed) {
        ASSERT_FALSE(rightUnits(bytes)) << printable(bytes);
        expectMalformed(mapToUnicode, bytes);
        expectMalformed(mapToUnicode, std::string("hello ") + bytes);
        expectMalformed(mapToUnicode, std::string(bytes) + " hello");
        expectMalformed(mapToUnicode, std::string("\xe2\x82\xac") + bytes + "\xe2\x82\xac");
    }
}

// Converters work in pieces; what is cut by the edge of one, or stands behind the last, must not be lost.
TEST(CodePage, MalformedInputIsFoundWhereverItStands) {
    std::vector<size_t> lengths = {255, 256, 1022, 1023, 1024, 1025, 4094, 4095, 4096, 8191, 8192, 65535, 65536, 99999};
    for (size_t length = 0; length < 70; ++length)
        lengths.push_back(length);
    for (const size_t length : lengths) {
        for (const char* filler : {"a", "\xe2\x82\xac"}) {
            std::string bytes;
            while (bytes.size() < length)
                bytes += filler;
            expectMalformed(mapToUnicode, bytes + "\xf0\x9f\x98");
            expectMalformed(mapToUnicode, bytes + "\xc0\x80" + bytes);
            const std::u16string units = *rightUnits(bytes);
            expectMalformed(mapFromUnicode, rawBytes(units + char16_t{0xD83D}));
            expectMalformed(mapFromUnicode, rawBytes(units + char16_t{0xDE00} + units));
        }
        if (HasFailure()) return;
    }
}

TEST(CodePage, EverySequenceOfTwoBytesIsJudgedByTheTable) {
    for (unsigned first = 0; first < 256; ++first) {
        for (unsigned second = 0; second < 256; ++second) {
            expectLikeTheTable(std::string{static_cast<char>(first), static_cast<char>(second)});
            if (HasFailure()) return;
        }
    }
}

TEST(CodePage, LongerSequencesAreJudgedByTheTable) {
    for (unsigned first = 0xC0; first < 256; ++first) {
        for (unsigned second = 0; second < 256; ++second) {
            const std::string start{static_cast<char>(first), static_cast<char>(second)};
            for (const char third : {'\x7f', '\x80', '\xbf', '\xc0'}) {
                expectLikeTheTable(start + third);
                if (first < 0xEF) continue;
                for (const char fourth : {'a', '\x80', '\xbf', '\xe0'})
                    expectLikeTheTable(start + third + fourth);
            }
            if (HasFailure()) return;
        }
    }
}

TEST(CodePage, RandomBytesAreJudgedByTheTable) {
    std::mt19937 random(20260101);
    const std::string alphabet =
        "a\x7f\x80\x8f\x90\x9f\xa0\xbf\xc0\xc1\xc2\xdf\xe0\xe1\xec\xed\xee\xef\xf0\xf1\xf3\xf4\xf5\xff";
    for (int round = 0; round < 100000; ++round) {
        std::string bytes;
        for (size_t length = 1 + random() % 9; length > 0; --length) {
            // Mostly well-formed characters, so that the other ones stand between them.
            if (random() % 4 == 0)
                bytes += alphabet[random() % alphabet.size()];
            else
                appendBytes(bytes, static_cast<uint32_t>(random() % 0xD800));
        }
        expectLikeTheTable(bytes);
        if (HasFailure()) return;
    }
}

TEST(CodePage, EverySingleUnitAndRandomUnitsAreJudgedByTheTable) {
    for (uint32_t unit = 0; unit <= 0xFFFF; ++unit)
        expectLikeTheTable(std::u16string(1, static_cast<char16_t>(unit)));
    std::mt19937 random(20260102);
    const std::u16string alphabet = {u'a', 0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000};
    for (int round = 0; round < 100000; ++round) {
        std::u16string units;
        for (size_t length = 1 + random() % 6; length > 0; --length)
            units += alphabet[random() % alphabet.size()];
        expectLikeTheTable(units);
        if (HasFailure()) return;
    }
}

// ---- where the memory lies, and how much there is
// --------------------------------------------------------------------

TEST(CodePage, TextsMayLieAtOddAddresses) {
    const std::u16string units = u"a\u00e4\u20ac\U0001f600 and some more";
    const std::string bytes = *rightBytes(units), raw = rawBytes(units);
    for (size_t inputShift = 0; inputShift < 4; ++inputShift) {
        for (size_t outputShift = 0; outputShift < 4; ++outputShift) {
            alignas(8) char input[128] = {}, output[128] = {};
            std::memcpy(input + inputShift, raw.data(), raw.size());
            unsigned size = 100;
            EXPECT_CODE(ZXPOL_S_OK, mapFromUnicode(output + outputShift, &size, input + inputShift,
                                                   static_cast<unsigned>(raw.size())));
            EXPECT_EQ(bytes, std::string(output + outputShift, size));
            std::memcpy(input + inputShift, bytes.data(), bytes.size());
            size = 100;
            EXPECT_CODE(ZXPOL_S_OK, mapToUnicode(output + outputShift, &size, input + inputShift,
                                                 static_cast<unsigned>(bytes.size())));
            EXPECT_EQ(raw, std::string(output + outputShift, size));
        }
    }
}

TEST(CodePage, TheInputIsLeftAsItIs) {
    const std::string bytes = "a\xc3\xa4", units = rawBytes(u"a\u00e4");
    std::string input = bytes;
    unsigned size = 4;
    char output[8];
    mapToUnicode(output, &size, input.data(), 3);
    EXPECT_EQ(bytes, input);
    input = units;
    size = 3;
    mapFromUnicode(output, &size, input.data(), 4);
    EXPECT_EQ(units, input);
}

// Processor time of one conversion, in seconds; other processes do not count.
double secondsOf(Conversion function, std::string& output, unsigned* size, const std::string& input, int* code) {
    const std::clock_t begin = std::clock();
    *code = function(output.data(), size, input.data(), static_cast<unsigned>(input.size()));
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

#if defined(__SANITIZE_ADDRESS__)
constexpr double kPatience = 10;
#else
constexpr double kPatience = 1;
#endif

TEST(CodePage, AHugeTextIsConvertedWithinASecond) {
    constexpr size_t kHuge = 64u << 20;
    const std::string unit = "a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80 hello";  // 16 bytes, 11 units
    std::string bytes;
    bytes.reserve(kHuge);
    while (bytes.size() < kHuge)
        bytes += unit;
    const size_t rightSize = bytes.size() / 16 * 22;
    std::string units(rightSize, '\0');
    unsigned size = static_cast<unsigned>(units.size());
    int code = 0;
    EXPECT_LT(secondsOf(mapToUnicode, units, &size, bytes, &code), kPatience);
    ASSERT_EQ(codeText(ZXPOL_S_OK), codeText(code));
    ASSERT_EQ(rightSize, size);
    std::string back(bytes.size(), '\0');
    size = static_cast<unsigned>(back.size());
    EXPECT_LT(secondsOf(mapFromUnicode, back, &size, units, &code), kPatience);
    ASSERT_EQ(codeText(ZXPOL_S_OK), codeText(code));
    ASSERT_EQ(bytes.size(), size);
    EXPECT_TRUE(bytes == back);
    bytes.back() = '\xc3';
    EXPECT_LT(secondsOf(mapToUnicode, units, &size, bytes, &code), kPatience);
    EXPECT_CODE(ZXPOL_E_CONVERSION, code);
    EXPECT_EQ(back.size(), size);
}

}  // namespace
