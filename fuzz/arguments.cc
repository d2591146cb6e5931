#include "arguments.h"

#include <algorithm>
#include <cstring>

#include "fail.h"

namespace fuzz {

namespace {

const char* const kNames[] = {"A",       "B",    "C",      "t",       "u",     "L",          "Infected", "move",
                              "\\",      "\\A",  "\\A\\B", "\\A\\t",  "\\t",   "\\A\\B\\C",  "a",        "",
                              "\\\\A\\", "A\\B", "rules",  "setting", "order", "condition1", "l",        "\xC3\xA4"};

const char* const kAddresses[] = {
    "*",           "*@*",     "a@b.c",     "*@b.c",     "*@*.b.c",    "a@sub.b.c", "\"a b\"@b.c",
    "a@[1.2.3.4]", "*@[*]",   "(L)",       "(Missing)", "smtp:a@b.c", "",          "a@b@c",
    "A@B.C",       "x,y@b.c", "\"*\"@b.c", "()",        "(",          " a@b.c "};

constexpr uint32_t kNumbers[] = {0, 1, 2, 3, 26, 255, 256, 0x7FFFFFFE, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};

template <class Item, size_t count>
const Item& pick(const Item (&items)[count], unsigned choice) {
    return items[choice % count];
}

}  // namespace

_ZxPolComHandle* Arguments::handle(uint32_t kind) {
    const unsigned choice = _bytes.byte();
    if (choice == 255) return nullptr;
    OpenHandles fitting;
    for (_ZxPolComHandle* open : _open) {
        if (open->kind == kind || (choice >= 250 && kind != ZXREG_HANDLE_KEY)) fitting.push_back(open);
    }
    // The newest is the most interesting.
    return fitting.empty() ? nullptr : fitting[fitting.size() - 1 - choice % fitting.size()];
}

_ZxPolComHandle* Arguments::closing() {
    // The store's own key stays open.
    if (_open.size() < 2) return nullptr;
    const auto chosen = _open.begin() + 1 + static_cast<std::ptrdiff_t>(_bytes.byte() % (_open.size() - 1));
    _ZxPolComHandle* handle = *chosen;
    _open.erase(chosen);
    return handle;
}

char* Arguments::copyOf(const std::string& text) {
    _blocks.emplace_back(text.c_str(), text.c_str() + text.size() + 1);
    return _blocks.back().data();
}

// A word, or one of a length that matters.
std::string Arguments::text() {
    static constexpr size_t kLengths[] = {1, 2, 3, 254, 255, 256, 511, 512, 600, 2100};
    const unsigned choice = _bytes.byte();
    if (choice < 160) return pick(kNames, choice);
    if (choice < 230) return pick(kAddresses, choice);
    return std::string(pick(kLengths, choice), 'n');
}

const char* Arguments::name() {
    const std::string chosen = text();
    return chosen.size() == 2 && chosen[0] == 'n' ? nullptr : copyOf(chosen);
}

const char* Arguments::address() {
    const unsigned choice = _bytes.byte();
    if (choice < 200) return copyOf(pick(kAddresses, choice));
    if (choice < 254) return copyOf(std::string(choice * 2, 'l') + "@b.c");
    return choice == 254 ? nullptr : copyOf(text());
}

const char** Arguments::addresses() {
    const unsigned count = _bytes.below(12);
    if (count == 11) return nullptr;
    const char** array = block<const char*>(count + 1);
    for (unsigned i = 0; i < count; ++i) {
        array[i] = address();
        if (array[i] == nullptr) break;
    }
    return array;
}

const unsigned char* Arguments::condition() {
    if (_bytes.below(32) == 31) return nullptr;
    auto* pair = block<_ZxPolAddrPairCond>();
    for (char* side : {pair->sender, pair->receiver}) {
        const char* chosen = address();
        if (chosen != nullptr)
            std::memcpy(side, chosen, std::min(std::strlen(chosen) + 1, sizeof pair->sender));
        else
            std::memset(side, 'n', sizeof pair->sender);
    }
    return reinterpret_cast<const unsigned char*>(pair);
}

const unsigned char** Arguments::conditions() {
    const unsigned count = _bytes.below(6);
    if (count == 5) return nullptr;
    const auto** array = block<const unsigned char*>(count + 1);
    for (unsigned i = 0; i < count; ++i) {
        array[i] = condition();
        if (array[i] == nullptr) break;
    }
    return array;
}

const uint32_t* Arguments::indices() {
    constexpr size_t kMost = 5;
    if (_bytes.below(4) == 3) return nullptr;
    uint32_t* array = block<uint32_t>(kMost);
    for (size_t i = 0; i < kMost; ++i)
        array[i] = index();
    return array;
}

const char* Arguments::file() {
    if (_bytes.below(16) == 15) return name();
    std::string content;
    for (unsigned lines = _bytes.below(16); lines > 0; --lines) {
        const char* chosen = address();
        content += std::string(_bytes.below(2) == 1 ? "mail: " : "") + (chosen == nullptr ? "\r" : chosen) + "\n";
    }
    _files.emplace_back(content);
    return copyOf(_files.back().path());
}

uint32_t Arguments::number() {
    return pick(kNumbers, _bytes.byte());
}

uint32_t Arguments::flag() {
    const unsigned choice = _bytes.byte();
    return choice < 250 ? choice % 2 : number();
}

char* Arguments::buffer() {
    static constexpr uint32_t kSizes[] = {512, 512, 256, 1024, 2048, 0, 1, 2, 5, 255};
    const unsigned choice = _bytes.below(64);
    _size = pick(kSizes, choice);
    if (choice == 63) return nullptr;
    _blocks.emplace_back(_size);
    _blocks.back().shrink_to_fit();
    return _blocks.back().data();
}

uint32_t* Arguments::size() {
    uint32_t* made = block<uint32_t>();
    *made = _size;
    return _bytes.below(64) == 63 ? nullptr : made;
}

int* Arguments::error() {
    const unsigned choice = _bytes.below(64);
    _code = choice == 63 ? ZXPOL_E_EXCEPTION : ZXPOL_S_OK;
    return choice == 62 ? nullptr : &_code;
}

void Arguments::fill(char* field, size_t size) {
    const std::string chosen = text();
    std::memcpy(field, chosen.c_str(), std::min(chosen.size() + 1, size));
}

void Arguments::keep(_ZxPolComHandle* handle) {
    if (handle == nullptr) return;
    require(_code >= 0, "a handle comes with a failure");
    _open.push_back(handle);
}

}  // namespace fuzz
