// Conversions between UTF-16 and UTF-8 against slow ones. The first byte of an input says which way, and how much room
// there is; the others are the text.
#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "bytes.h"
#include "fail.h"
#include "support/utf_oracle.h"
#include "zxpolicy.h"

namespace {

using Convert = int (*)(char*, unsigned*, const char*, unsigned);

std::string asBytes(const std::u16string& units) {
    return {reinterpret_cast<const char*>(units.data()), units.size() * 2};
}

std::u16string asUnits(const std::string& bytes) {
    std::u16string units(bytes.size() / 2, u'\0');
    std::memcpy(units.data(), bytes.data(), units.size() * 2);
    return units;
}

unsigned sizeOf(const std::string& text) {
    return static_cast<unsigned>(text.size());
}

void checkRefused(Convert convert, const std::string& input) {
    std::vector<char> output(input.size() * 3 + 2, 'x');
    unsigned size = static_cast<unsigned>(output.size());
    fuzz::requireSame(ZXPOL_E_CONVERSION, convert(output.data(), &size, input.data(), sizeOf(input)), "refusal");
    fuzz::requireSame(output.size(), size_t{size}, "size after a refusal");
    fuzz::requireSame(std::vector<char>(output.size(), 'x'), output, "output after a refusal");
}

// Too little room: nothing is written. The size that is told is the input's in one direction, where twice as much is
// enough, and the output's in the other.
void checkTooSmall(Convert convert, const std::string& input, const std::string& right, size_t room) {
    std::vector<char> output(right.size() + 1, 'x');
    unsigned size = static_cast<unsigned>(room);
    const int code = convert(output.data(), &size, input.data(), sizeOf(input));
    fuzz::requireSame(ZXPOL_E_BUFFER_TOO_SMALL, code, "code without room");
    fuzz::requireSame(std::vector<char>(output.size(), 'x'), output, "output without room");
    fuzz::requireSame(convert == mapToUnicode ? input.size() : right.size(), size_t{size}, "size that is told");
    size = convert == mapToUnicode ? size * 2 : size;
    std::vector<char> enough(size);
    fuzz::requireSame(ZXPOL_S_OK, convert(enough.data(), &size, input.data(), sizeOf(input)), "enough room");
}

void checkConverted(Convert convert, const std::string& input, const std::string& right) {
    std::vector<char> output(right.size());
    unsigned size = static_cast<unsigned>(output.size());
    fuzz::requireSame(ZXPOL_S_OK, convert(output.data(), &size, input.data(), sizeOf(input)), "code");
    fuzz::requireSame(right.size(), size_t{size}, "size");
    fuzz::requireSame(right, std::string(output.data(), output.size()), "text");
    unsigned sizeOnly = ~0u;
    fuzz::requireSame(ZXPOL_S_OK, convert(nullptr, &sizeOnly, input.data(), sizeOf(input)), "size only");
    fuzz::requireSame(size, sizeOnly, "the size alone");
    // Input and output may be the same memory, aligned or not.
    std::vector<char> both(1 + std::max(input.size(), right.size()));
    std::memcpy(both.data() + 1, input.data(), input.size());
    convert(both.data() + 1, &size, both.data() + 1, sizeOf(input));
    fuzz::requireSame(right, std::string(both.data() + 1, right.size()), "text in place");
}

void check(Convert convert, const std::string& input, const std::optional<std::string>& right, size_t room) {
    if (!right) return checkRefused(convert, input);
    checkConverted(convert, input, *right);
    if (room < right->size()) checkTooSmall(convert, input, *right, room);
}

std::optional<std::string> rightUtf16(const std::string& utf8) {
    const std::optional<std::u16string> units = oracle::rightUnits(utf8);
    return units ? std::optional<std::string>(asBytes(*units)) : std::nullopt;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Bytes bytes(data, size);
    const unsigned choice = bytes.byte();
    const std::string text = bytes.rest();
    const size_t room = choice / 2;
    if (choice % 2 == 0) {
        const std::optional<std::string> utf16 = rightUtf16(text);
        check(mapToUnicode, text, utf16, room);
        // What was converted converts back.
        if (utf16) check(mapFromUnicode, *utf16, text, room);
    } else {
        check(mapFromUnicode, text, oracle::rightBytes(asUnits(text)), room);
    }
    return 0;
}
