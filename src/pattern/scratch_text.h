// ScratchText: working memory for one text, on the stack where it is short enough.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>

namespace zxpol {

// Addresses and patterns are shorter than 1024 characters nearly always; longer ones come from hostile callers and may
// cost an allocation. The memory is not initialised.
class ScratchText {
public:
    explicit ScratchText(size_t size) : _long(size > sizeof(_short) ? new char[size] : nullptr) {}

    // A copy of the first `length` characters of `text`, with a NUL.
    ScratchText(const char* text, size_t length) : ScratchText(length + 1) {
        std::memcpy(data(), text, length);
        data()[length] = '\0';
    }

    ScratchText(const ScratchText&) = delete;
    ScratchText& operator=(const ScratchText&) = delete;

    char* data() { return _long != nullptr ? _long.get() : _short; }

private:
    std::unique_ptr<char[]> _long;
    char _short[1024];
};

}  // namespace zxpol
