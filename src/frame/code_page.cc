// Conversion of text between UTF-16 and UTF-8. The whole text is converted before the output is touched, so that
// input and output may be the same memory, and need not be aligned.
#include <unicode/ucnv.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "frame/frame.h"

namespace {

struct CloseConverter {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

int resultOf(UErrorCode status) {
    if (status == U_ZERO_ERROR) return ZXPOL_S_OK;
    return status == U_MEMORY_ALLOCATION_ERROR ? ZXPOL_E_OUT_OF_MEMORY : ZXPOL_E_CONVERSION;
}

// A converter that stops at malformed text, where it would put a substitute by default; null on failure.
Converter openConverter(UErrorCode* status) {
    Converter converter(ucnv_open("utf8", status));
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, status);
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, status);
    return converter;
}

// A text made of units of one width.
template <class Unit>
struct Text {
    std::unique_ptr<Unit[]> units;
    size_t length = 0;

    explicit Text(uint64_t capacity) {
        if (capacity > PTRDIFF_MAX / sizeof(Unit)) throw std::bad_alloc();
        units.reset(new Unit[static_cast<size_t>(capacity)]);
    }
    size_t bytes() const { return length * sizeof(Unit); }
};

// Copies a conversion into the caller's buffer, when it fits and there is one; `tooSmall` is what a caller is told
// whose buffer is too small.
template <class Unit>
int handOut(const Text<Unit>& text, size_t tooSmall, char* output, unsigned* outputSize) {
    if (*outputSize < text.bytes()) {
        *outputSize = static_cast<unsigned>(tooSmall);
        return ZXPOL_E_BUFFER_TOO_SMALL;
    }
    *outputSize = static_cast<unsigned>(text.bytes());
    if (output != nullptr) std::memcpy(output, text.units.get(), text.bytes());
    return ZXPOL_S_OK;
}

int fromUnicode(char* output, unsigned* outputSize, const char* input, unsigned inputBytes) {
    constexpr unsigned kMostBytesPerUnit = 3;
    UErrorCode status = U_ZERO_ERROR;
    const Converter converter = openConverter(&status);
    Text<UChar> text(inputBytes / sizeof(UChar));
    text.length = inputBytes / sizeof(UChar);
    if (text.length != 0) std::memcpy(text.units.get(), input, text.bytes());
    Text<char> utf8(uint64_t{text.length} * kMostBytesPerUnit);
    const UChar* source = text.units.get();
    char* target = utf8.units.get();
    ucnv_fromUnicode(converter.get(), &target, target + text.length * kMostBytesPerUnit, &source, source + text.length,
                     nullptr, true, &status);
    if (status != U_ZERO_ERROR) return resultOf(status);
    utf8.length = static_cast<size_t>(target - utf8.units.get());
    return handOut(utf8, utf8.bytes(), output, outputSize);
}

int toUnicode(char* output, unsigned* outputSize, const char* input, unsigned inputBytes) {
    UErrorCode status = U_ZERO_ERROR;
    const Converter converter = openConverter(&status);
    Text<UChar> text(inputBytes);
    const char* source = input;
    UChar* target = text.units.get();
    if (inputBytes != 0) {
        ucnv_toUnicode(converter.get(), &target, target + inputBytes, &source, source + inputBytes, nullptr, true,
                       &status);
    }
    if (status != U_ZERO_ERROR) return resultOf(status);
    text.length = static_cast<size_t>(target - text.units.get());
    return handOut(text, inputBytes, output, outputSize);
}

// Refuses missing arguments and lets no exception pass.
template <class Convert>
int checked(Convert convert, char* output, unsigned* outputSize, const char* input, unsigned inputBytes) {
    if (outputSize == nullptr || (input == nullptr && inputBytes != 0)) return ZXPOL_E_INVALID_ARG;
    int result = ZXPOL_S_OK;
    const int converted =
        zxpol::frame::guarded(&result, [&] { return convert(output, outputSize, input, inputBytes); });
    return ZX_FAILURE(result) ? result : converted;
}

}  // namespace

int mapFromUnicode(char* output, unsigned* outputSize, const char* input, unsigned inputBytes) {
    return checked(fromUnicode, output, outputSize, input, inputBytes);
}

int mapToUnicode(char* output, unsigned* outputSize, const char* input, unsigned inputBytes) {
    return checked(toUnicode, output, outputSize, input, inputBytes);
}
