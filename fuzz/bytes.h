// An input taken apart: numbers from single bytes, texts up to a separator. Behind its end all is 0 and empty.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace fuzz {

class Bytes {
public:
    Bytes(const uint8_t* data, size_t size) : _rest(reinterpret_cast<const char*>(data), size) {}

    bool isEmpty() const { return _at == _rest.size(); }

    unsigned byte() { return isEmpty() ? 0 : static_cast<unsigned char>(_rest[_at++]); }

    unsigned below(unsigned limit) { return byte() % limit; }

    // What stands before the next `separator`, which is taken too.
    std::string until(char separator) {
        const size_t end = _rest.find(separator, _at);
        std::string found = _rest.substr(_at, end == std::string::npos ? end : end - _at);
        _at = end == std::string::npos ? _rest.size() : end + 1;
        return found;
    }

    std::string rest() {
        std::string found = _rest.substr(_at);
        _at = _rest.size();
        return found;
    }

    // The lines of the rest.
    std::vector<std::string> lines() {
        std::vector<std::string> found;
        while (!isEmpty())
            found.push_back(until('\n'));
        return found;
    }

private:
    const std::string _rest;
    size_t _at = 0;
};

// A text as C sees it: up to its first NUL.
inline std::string upToNul(const std::string& text) {
    return text.c_str();
}

}  // namespace fuzz
