#include "rules/error_conds.h"

#include <cstring>
#include <memory>

namespace zxpol {

namespace {

struct CondArrayDeleter {
    void operator()(unsigned char** conditions) const { freeCondArray(conditions); }
};

// Makes an entry record. The contract of the lists leaves these records to the process: releasing a list
// does not release them.
__attribute__((noinline)) _ZxPolErrorCond* newEntryRecord() {
    return new _ZxPolErrorCond{};
}

// Takes a list that was built only in part down again, entry records included.
struct PartialListDeleter {
    void operator()(_ZxPolErrorCond** list) const {
        for (_ZxPolErrorCond** entry = list; *entry != nullptr; ++entry) {
            delete[](*entry)->ruleName;
            freeCondArray((*entry)->conds);
            delete *entry;
        }
        delete[] list;
    }
};

char* newText(const std::string& text) {
    char* copy = new char[text.size() + 1];
    std::memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

}  // namespace

_ZxPolAddrPairCond terminatedCopy(const _ZxPolAddrPairCond& pair) {
    _ZxPolAddrPairCond copy = pair;
    copy.sender[sizeof copy.sender - 1] = '\0';
    copy.receiver[sizeof copy.receiver - 1] = '\0';
    return copy;
}

std::vector<const unsigned char*> pointersTo(const CondList& pairs) {
    std::vector<const unsigned char*> pointers;
    pointers.reserve(pairs.size() + 1);
    for (const _ZxPolAddrPairCond& pair : pairs)
        pointers.push_back(reinterpret_cast<const unsigned char*>(&pair));
    pointers.push_back(nullptr);
    return pointers;
}

unsigned char** newCondArray(const CondList& pairs) {
    std::unique_ptr<unsigned char*, CondArrayDeleter> copies(new unsigned char* [pairs.size() + 1] {});
    for (size_t i = 0; i < pairs.size(); ++i) {
        copies.get()[i] = new unsigned char[sizeof pairs[i]];
        std::memcpy(copies.get()[i], &pairs[i], sizeof pairs[i]);
    }
    return copies.release();
}

void freeCondArray(unsigned char** conditions) {
    if (conditions == nullptr) return;
    for (unsigned char** pair = conditions; *pair != nullptr; ++pair)
        delete[] * pair;
    delete[] conditions;
}

size_t ErrorConds::add(const std::string& ruleName, const CondList& pairs) {
    _entries.push_back({ruleName, pairs});
    return _entries.size() - 1;
}

void ErrorConds::remove(size_t place) {
    _entries.erase(_entries.begin() + static_cast<std::ptrdiff_t>(place));
}

_ZxPolErrorCond** ErrorConds::toFlat() const {
    std::unique_ptr<_ZxPolErrorCond*, PartialListDeleter> list(new _ZxPolErrorCond* [_entries.size() + 1] {});
    for (size_t i = 0; i < _entries.size(); ++i) {
        _ZxPolErrorCond* record = list.get()[i] = newEntryRecord();
        record->ruleName = newText(_entries[i].ruleName);
        record->conds = newCondArray(_entries[i].pairs);
    }
    return list.release();
}

void freeErrorConds(_ZxPolErrorCond** list) {
    if (list == nullptr) return;
    for (_ZxPolErrorCond** entry = list; *entry != nullptr; ++entry) {
        delete[](*entry)->ruleName;
        freeCondArray((*entry)->conds);
    }
    delete[] list;
}

}  // namespace zxpol
