// The arguments of one call of the flat interface, chosen by bytes, and what the call gives back.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "bytes.h"
#include "memory_file.h"
#include "zxpolicy.h"

namespace fuzz {

// What the program holds open, in the order of opening.
using OpenHandles = std::vector<_ZxPolComHandle*>;

// Everything that is pointed to lives as long as the object, in a block of its own size: what is read or written beside
// it is seen.
class Arguments {
public:
    Arguments(Bytes& bytes, OpenHandles& open) : _bytes(bytes), _open(open) {}
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    // Mostly one of the kind, now and then null or, but where a key of the store is wanted, any other: what is no key
    // is the store's business.
    _ZxPolComHandle* handle(uint32_t kind);
    // A handle to close, which is not open any more then; null when there is none.
    _ZxPolComHandle* closing();

    // Names and paths of rules, tasks, lists and others; words of the policy, longest ones, too long ones, null.
    const char* name();
    const char* address();
    // Closed by null pointers.
    const char** addresses();
    const unsigned char** conditions();
    const uint32_t* indices();
    const unsigned char* condition();
    // The path of a file of addresses.
    const char* file();

    uint32_t number();
    // 0 or 1 mostly.
    uint32_t flag();
    uint32_t index() { return _bytes.below(8) == 7 ? number() : _bytes.below(5); }

    // Room for a text, and how much there is of it.
    char* buffer();
    uint32_t* size();

    // A result to write to, which a few calls find to be a failure or null.
    int* error();
    int code() const { return _code; }

    // A record of attributes, filled with texts of all lengths, also without a NUL.
    template <class Attributes>
    Attributes* attributes() {
        Attributes* made = block<Attributes>();
        fill(made->displayName, sizeof made->displayName);
        fill(made->comment, sizeof made->comment);
        return _bytes.below(32) == 31 ? nullptr : made;
    }

    // A block of zeros.
    template <class Value>
    Value* block(size_t count = 1) {
        _blocks.emplace_back(count * sizeof(Value));
        return static_cast<Value*>(static_cast<void*>(_blocks.back().data()));
    }

    // Takes a handle that a call gave; null is none.
    void keep(_ZxPolComHandle* handle);

private:
    char* copyOf(const std::string& text);
    void fill(char* field, size_t size);
    std::string text();

    Bytes& _bytes;
    OpenHandles& _open;
    std::deque<std::vector<char>> _blocks;
    std::deque<MemoryFile> _files;
    uint32_t _size = 0;
    int _code = ZXPOL_S_OK;
};

}  // namespace fuzz
