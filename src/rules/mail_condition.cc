#include "rules/mail_condition.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <string_view>

#include "frame/reg_debug.h"
#include "pattern/cond_wildcard_pattern.h"
#include "pattern/wildcard_pattern.h"
#include "store/multi_value.h"
#include "store/store_value.h"
#include "store/update.h"
#include "zxbase.h"
#include "zxregistry.h"

using namespace zxpol;

namespace {

constexpr const char* kConditionValue = "condition";
constexpr size_t kStoredTextSize = 2048;
constexpr uint32_t kNoIndex = UINT32_MAX;

static_assert(sizeof(_ZxPolAddrPairCond) == 1024, "the record's size is part of the interface");

// Sides of a caller's record may lack their NUL; the width bounds what is logged of them.
void logSkipped(const char* why, const _ZxPolAddrPairCond& given) {
    ZXPOL_DEBUG(3, "Condition with sender: %.511s & receiver: %.511s %s", given.sender, given.receiver, why);
}

void logInvalid(const _ZxPolAddrPairCond& given) {
    logSkipped("is not valid. Skip!", given);
}

void logExisting(const _ZxPolAddrPairCond& given) {
    logSkipped("already exist", given);
}

bool isTerminatedPair(const _ZxPolAddrPairCond& pair) {
    return isTerminated(pair.sender) && isTerminated(pair.receiver);
}

bool areSame(const _ZxPolAddrPairCond& a, const _ZxPolAddrPairCond& b) {
    return kr_stricmp(a.sender, b.sender) == 0 && kr_stricmp(a.receiver, b.receiver) == 0;
}

bool isListReference(std::string_view side) {
    return side.size() >= 3 && side.front() == '(' && side.back() == ')';
}

bool isSideValid(const char* side) {
    return isListReference(side) || ZxPolCondWildcardPattern::isPatternValid(side);
}

template <size_t N>
void copySide(std::string_view side, char (&field)[N]) {
    std::memcpy(field, side.data(), side.size());
    field[side.size()] = '\0';
}

// The name of the value that holds the condition numbered `number`.
std::string numberedName(uint32_t number) {
    return kConditionValue + std::to_string(number);
}

}  // namespace

ZxPolCondition::~ZxPolCondition() = default;

ZxPolMailCondition::ZxPolMailCondition(_ZxPolComHandle* ruleKey) : ZxPolCondition(ruleKey) {}

ZxPolMailCondition::~ZxPolMailCondition() = default;

// ---- the text of a pair -------------------------------------------------------------------------

void ZxPolMailCondition::parseAddressPair(const char* text, _ZxPolAddrPairCond* pair, int* error) const {
    if (error == nullptr) return;
    if (text == nullptr || pair == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    const std::string_view whole = text;
    const size_t comma = whole.find(',');
    if (comma == std::string_view::npos) {
        *error = ZXPOL_E_PARSE;
        return;
    }
    std::string_view sender = whole.substr(0, comma);
    sender = sender.substr(0, sender.find_last_not_of(' ') + 1);
    std::string_view receiver = whole.substr(comma + 1);
    receiver.remove_prefix(std::min(receiver.find_first_not_of(' '), receiver.size()));
    if (sender.size() >= sizeof pair->sender || receiver.size() >= sizeof pair->receiver) {
        // A side cut to its field could match mails that were not meant; empty sides match empty addresses only.
        sender = receiver = "";
    }
    copySide(sender, pair->sender);
    copySide(receiver, pair->receiver);
    *error = ZXPOL_S_OK;
}

void ZxPolMailCondition::formatAddressPair(const _ZxPolAddrPairCond* pair, std::string& text) const {
    text.assign(pair->sender, strnlen(pair->sender, sizeof pair->sender));
    text += ',';
    text.append(pair->receiver, strnlen(pair->receiver, sizeof pair->receiver));
}

bool ZxPolMailCondition::isValid(const _ZxPolAddrPairCond* pair) const {
    return pair != nullptr && isTerminatedPair(*pair) && isSideValid(pair->sender) && isSideValid(pair->receiver);
}

// ---- reading --------------------------------------------------------------------------------------

void ZxPolMailCondition::_cacheAllConditions(int* error) {
    if (error == nullptr) return;
    cache.clear();
    ZxPolMultiValue names(key, kConditionValue);
    char name[kNameSize];
    for (uint32_t index = 0;; ++index) {
        uint32_t size = sizeof name;
        names.enumValueName(index, name, &size, error);
        if (failed(*error)) break;
        _cacheOne(name, error);
        if (failed(*error)) return;
    }
    if (isEnd(*error)) *error = ZXPOL_S_OK;
    // Names that could not be read to their end are not all there are.
    endOfNames = failed(names.result()) ? names.result() : ZXPOL_E_NO_MORE_ITEMS;
}

// Reads the caches anew; a part of the conditions is never taken for all of them.
void ZxPolMailCondition::_refreshCache(int* error) {
    try {
        _cacheAllConditions(error);
    } catch (...) {
        cache.clear();
        throw;
    }
    if (failed(*error)) cache.clear();
}

// Reads the text of one condition; the buffer is out of the way of the callers' frames.
__attribute__((noinline)) void ZxPolMailCondition::_cacheOne(const char* name, int* error) {
    char data[kStoredTextSize];
    uint32_t type = ZXREG_STRING;
    uint32_t size = sizeof data;
    queryValue(key, name, &type, data, &size, error);
    if (failed(*error)) return;
    if (type != ZXREG_STRING) {
        *error = ZXPOL_E_INVALID_FORMAT;
        return;
    }
    cache.push_back({name, std::string(data, strnlen(data, std::min<size_t>(size, sizeof data)))});
}

void ZxPolMailCondition::enumCondition(uint32_t index, unsigned char* record, uint32_t* size, char* valueName,
                                       int* error) {
    if (error == nullptr) return;
    if (record == nullptr || size == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    *error = ZXPOL_S_OK;
    if (index == 0 || cache.empty()) _refreshCache(error);
    if (failed(*error)) return;
    if (index >= cache.size()) {
        *error = endOfNames;
        return;
    }
    const _CachedCondition& found = cache[index];
    auto* pair = reinterpret_cast<_ZxPolAddrPairCond*>(record);
    if (*size < sizeof *pair || found.text.size() >= sizeof *pair) {
        *size = sizeof *pair;
        *error = ZXPOL_E_BUFFER_TOO_SMALL;
        return;
    }
    // A text without a comma leaves the record as it was.
    int ignored = ZXPOL_S_OK;
    parseAddressPair(found.text.c_str(), pair, &ignored);
    if (valueName != nullptr) std::memcpy(valueName, found.name.c_str(), found.name.size() + 1);
}

// Looks for a condition with the pair's sides, other than the one at `ignoredIndex`. Success when there is
// one, else what ended the enumeration.
int ZxPolMailCondition::_find(const _ZxPolAddrPairCond& pair, uint32_t ignoredIndex, char* valueName) {
    for (uint32_t index = 0;; ++index) {
        _ZxPolAddrPairCond stored{};  // empty for each, as a text without a comma leaves it
        int result = ZXPOL_S_OK;
        uint32_t size = sizeof stored;
        enumCondition(index, reinterpret_cast<unsigned char*>(&stored), &size, valueName, &result);
        if (failed(result)) return result;
        if (index != ignoredIndex && areSame(stored, pair)) return result;
    }
}

// ---- changing -------------------------------------------------------------------------------------

// Trims a caller's pair. False, after logging, when it cannot be a condition.
bool ZxPolMailCondition::_makeWorkingPair(const _ZxPolAddrPairCond& given, _ZxPolAddrPairCond& working) const {
    if (isTerminatedPair(given)) {
        ZxPolWildcardPattern::trim(working.sender, given.sender);
        ZxPolWildcardPattern::trim(working.receiver, given.receiver);
        if (isValid(&working)) return true;
    }
    logInvalid(given);
    return false;
}

// Runs operation(place in the list, pair as given, trimmed pair) for the valid pairs of a list, up to the first
// failure. Invalid ones are passed over and reported at the end.
template <class Operation>
void ZxPolMailCondition::_forEachValid(const unsigned char** conditions, int* error, Operation operation) {
    bool wereAllValid = true;
    *error = ZXPOL_S_OK;
    for (size_t i = 0; conditions[i] != nullptr; ++i) {
        const _ZxPolAddrPairCond& given = asPair(conditions[i]);
        _ZxPolAddrPairCond working{};
        if (!_makeWorkingPair(given, working)) {
            wereAllValid = false;
            continue;
        }
        operation(i, given, working);
        if (failed(*error)) return;
    }
    if (!wereAllValid) *error = ZXPOL_E_INVALID_FORMAT;
}

void ZxPolMailCondition::_write(const char* valueName, const _ZxPolAddrPairCond& pair, int* error) {
    std::string text;
    formatAddressPair(&pair, text);
    writeText(key, valueName, text.c_str(), error);
}

void ZxPolMailCondition::addCondition(const unsigned char** conditions, int* error) {
    if (error == nullptr) return;
    if (conditions == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    inUpdate(key, error, [&] {
        _forEachValid(conditions, error,
                      [&](size_t, const _ZxPolAddrPairCond& given, const _ZxPolAddrPairCond& working) {
                          _addPair(given, working, error);
                      });
    });
}

// Writes a pair that is not there yet. When that cannot be told, the pair is passed over without a failure; so a look
// that failed is repeated, lest a disturbance that is over by then costs a condition.
void ZxPolMailCondition::_addPair(const _ZxPolAddrPairCond& given, const _ZxPolAddrPairCond& working, int* error) {
    int search = _find(working, kNoIndex, nullptr);
    if (failed(search) && !isEnd(search)) search = _find(working, kNoIndex, nullptr);
    if (succeeded(search)) {
        logExisting(given);
        return;
    }
    if (!isEnd(search)) return;
    char valueName[kNameSize];
    uint32_t size = sizeof valueName;
    ZxPolMultiValue(key, kConditionValue).createValueName(valueName, &size, error);
    if (succeeded(*error)) _write(valueName, working, error);
}

void ZxPolMailCondition::removeCondition(const unsigned char** conditions, int* error) {
    if (error == nullptr) return;
    if (conditions == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    inUpdate(key, error, [&] {
        *error = ZXPOL_S_OK;
        for (; *conditions != nullptr && succeeded(*error); ++conditions)
            _removePair(asPair(*conditions), error);
    });
}

void ZxPolMailCondition::_removePair(const _ZxPolAddrPairCond& pair, int* error) {
    char valueName[kNameSize];
    if (!isTerminatedPair(pair) || failed(_find(pair, kNoIndex, valueName))) {
        *error = ZXPOL_E_NOT_FOUND;
        return;
    }
    ZxPolMultiValue(key, kConditionValue).deleteValueName(valueName, error);
}

void ZxPolMailCondition::replaceCondition(const unsigned char** conditions, int* error) {
    if (error == nullptr) return;
    if (conditions == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    inUpdate(key, error, [&] {
        _removeNumbered(error);
        if (failed(*error)) return;
        uint32_t number = 0;
        _forEachValid(conditions, error, [&](size_t, const _ZxPolAddrPairCond&, const _ZxPolAddrPairCond& working) {
            _write(numberedName(++number).c_str(), working, error);
        });
    });
}

// Deletes condition1, condition2, ... up to the first number that is missing.
void ZxPolMailCondition::_removeNumbered(int* error) {
    uint32_t number = 1;
    do
        deleteValue(key, numberedName(number++).c_str(), error);
    while (succeeded(*error));
    if (hasReason(*error, kReasonNotFound)) *error = ZXPOL_S_OK;
}

void ZxPolMailCondition::updateCondition(const uint32_t* indices, const unsigned char** conditions, int* error) {
    if (error == nullptr) return;
    if (indices == nullptr || conditions == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    inUpdate(key, error, [&] {
        _forEachValid(conditions, error,
                      [&](size_t place, const _ZxPolAddrPairCond& given, const _ZxPolAddrPairCond& working) {
                          _updatePair(indices[place], given, working, error);
                      });
    });
}

void ZxPolMailCondition::_updatePair(uint32_t index, const _ZxPolAddrPairCond& given, const _ZxPolAddrPairCond& working,
                                     int* error) {
    if (index >= INT32_MAX) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    const int search = _find(working, index, nullptr);
    if (succeeded(search)) {
        logExisting(given);
        *error = ZXPOL_E_ALREADY_EXISTS;
    } else if (isEnd(search)) {
        _write(numberedName(index + 1).c_str(), working, error);
    } else {
        *error = search;
    }
}
