// Sets of classes of addresses.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tool {

// A set of numbers below a size.
class ClassBits {
public:
    explicit ClassBits(size_t size = 0, bool isFull = false)
        : _size(size), _words((size + 63) / 64, isFull ? ~uint64_t{0} : 0) {
        if (isFull && size % 64 != 0) _words.back() = (uint64_t{1} << (size % 64)) - 1;
    }

    size_t size() const { return _size; }
    bool has(size_t i) const { return (_words[i / 64] >> (i % 64) & 1) != 0; }
    void add(size_t i) { _words[i / 64] |= uint64_t{1} << (i % 64); }
    void remove(size_t i) { _words[i / 64] &= ~(uint64_t{1} << (i % 64)); }

    bool isEmpty() const {
        for (uint64_t word : _words)
            if (word != 0) return false;
        return true;
    }

    ClassBits& operator&=(const ClassBits& other) {
        for (size_t i = 0; i < _words.size(); ++i)
            _words[i] &= other._words[i];
        return *this;
    }
    ClassBits& operator|=(const ClassBits& other) {
        for (size_t i = 0; i < _words.size(); ++i)
            _words[i] |= other._words[i];
        return *this;
    }
    // Takes the members of the other set away.
    ClassBits& operator-=(const ClassBits& other) {
        for (size_t i = 0; i < _words.size(); ++i)
            _words[i] &= ~other._words[i];
        return *this;
    }

    bool isIn(const ClassBits& other) const {
        for (size_t i = 0; i < _words.size(); ++i)
            if ((_words[i] & ~other._words[i]) != 0) return false;
        return true;
    }

    template <class Visit>
    void forEach(Visit visit) const {
        for (size_t i = 0; i < _words.size(); ++i)
            for (uint64_t word = _words[i]; word != 0; word &= word - 1)
                visit(i * 64 + static_cast<size_t>(__builtin_ctzll(word)));
    }

private:
    size_t _size;
    std::vector<uint64_t> _words;
};

}  // namespace tool
