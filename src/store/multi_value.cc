#include "store/multi_value.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "store/store_value.h"
#include "store/update.h"
#include "zxbase.h"

using namespace zxpol;

namespace {

constexpr uint32_t kMovedValueSize = 2048;

// No store has names like this; one that asks for such a buffer is out of order.
constexpr uint32_t kLongestName = 0x10000;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// The number after the prefix without leading zeros; empty for 0 and for no digits.
std::string_view numberOf(std::string_view name, size_t prefixLength) {
    std::string_view digits = name.substr(prefixLength);
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    return digits;
}

// Whether the one name's number is below the other's, however many digits they have.
bool isNumberedBelow(std::string_view a, std::string_view b, size_t prefixLength) {
    if ((a.size() == prefixLength) != (b.size() == prefixLength)) return a.size() == prefixLength;
    const std::string_view left = numberOf(a, prefixLength);
    const std::string_view right = numberOf(b, prefixLength);
    if (left.size() != right.size()) return left.size() < right.size();
    return left < right;
}

// Copies a name out under the sizes that this class writes back: the length without the NUL, always.
void deliver(const std::string& name, char* buffer, uint32_t* size, int* error) {
    const bool fits = *size > name.size();
    if (fits) std::memcpy(buffer, name.c_str(), name.size() + 1);
    *size = static_cast<uint32_t>(name.size());
    *error = fits ? ZXPOL_S_OK : ZXPOL_E_BUFFER_TOO_SMALL;
}

}  // namespace

ZxPolMultiValue::ZxPolMultiValue(_ZxPolComHandle* valueKey, const char* namePrefix) : key(valueKey) {
    const size_t length = std::min(std::strlen(namePrefix), sizeof prefix - 1);
    std::memcpy(prefix, namePrefix, length);
    prefix[length] = '\0';
    _cacheValueName();
}

ZxPolMultiValue::~ZxPolMultiValue() = default;

bool ZxPolMultiValue::_prefixMatch(const char* name) const {
    const size_t length = std::strlen(prefix);
    if (kr_strnicmp(name, prefix, length) != 0) return false;
    return std::all_of(name + length, name + std::strlen(name), isDigit);
}

void ZxPolMultiValue::_cacheValueName() {
    char inlineBuffer[kNameSize];
    std::string grown;
    char* buffer = inlineBuffer;
    uint32_t capacity = sizeof inlineBuffer;
    for (uint32_t index = 0;;) {
        int result = ZXPOL_S_OK;
        uint32_t size = capacity;
        enumValue(key, index, buffer, &size, nullptr, nullptr, nullptr, &result);
        if (hasReason(result, kReasonBufferTooSmall) && size >= capacity && size < kLongestName) {
            grown.resize(size_t{size} + 1);
            buffer = grown.data();
            capacity = size + 1;
            continue;
        }
        if (failed(result)) {
            if (!isEnd(result)) readResult = result;
            break;
        }
        if (_prefixMatch(buffer)) names.emplace_back(buffer);
        ++index;
    }
    const size_t length = std::strlen(prefix);
    const auto below = [length](const std::string& a, const std::string& b) { return isNumberedBelow(a, b, length); };
    if (!std::is_sorted(names.begin(), names.end(), below)) std::stable_sort(names.begin(), names.end(), below);
}

void ZxPolMultiValue::createValueName(char* buffer, uint32_t* size, int* error) {
    if (error == nullptr) return;
    if (buffer == nullptr || size == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    if (failed(readResult)) {
        *error = readResult;
        return;
    }
    std::string name = prefix + std::to_string(names.size() + 1);
    deliver(name, buffer, size, error);
    if (succeeded(*error)) names.push_back(std::move(name));
}

void ZxPolMultiValue::enumValueName(uint32_t index, char* buffer, uint32_t* size, int* error) {
    if (error == nullptr) return;
    if (buffer == nullptr || size == nullptr || *size == 0) {
        *error = ZXPOL_E_INVALID_ARG;
    } else if (index >= names.size()) {
        *error = ZXPOL_E_NO_MORE_ITEMS;
    } else {
        deliver(names[index], buffer, size, error);
    }
}

void ZxPolMultiValue::deleteValueName(uint32_t index, int* error) {
    if (error == nullptr) return;
    if (index >= INT32_MAX) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    deleteValueName((prefix + std::to_string(uint64_t{index} + 1)).c_str(), error);
}

void ZxPolMultiValue::deleteValueName(const char* name, int* error) {
    if (error == nullptr) return;
    if (name == nullptr || !_prefixMatch(name)) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    const std::string_view digits = numberOf(name, std::strlen(prefix));
    if (digits.empty()) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    if (failed(readResult) || names.empty()) {
        *error = failed(readResult) ? readResult : ZXPOL_E_NOT_FOUND;
        return;
    }
    // A number beyond the list's end moves nothing; more digits than any list has are such a number.
    const size_t number = digits.size() > 9 ? names.size() : std::stoul(std::string(digits));
    inUpdate(key, error, [&] {
        _moveDown(number, error);
        if (failed(*error)) return;
        deleteValue(key, names.back().c_str(), error);
        names.pop_back();
    });
}

void ZxPolMultiValue::deleteAll(int* error) {
    if (error == nullptr) return;
    *error = readResult;
    if (failed(*error) || names.empty()) return;
    if (numberOf(names.front(), std::strlen(prefix)).empty()) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    inUpdate(key, error, [&] {
        for (; !names.empty() && succeeded(*error); names.pop_back())
            deleteValue(key, names.back().c_str(), error);
    });
}

// Moves the values after the `number`-th down by one. Entry i of the names stands for number i + 1.
void ZxPolMultiValue::_moveDown(size_t number, int* error) {
    *error = ZXPOL_S_OK;
    unsigned char data[kMovedValueSize];
    for (size_t i = number; i < names.size(); ++i) {
        uint32_t type = 0;
        uint32_t size = sizeof data;
        queryValue(key, names[i].c_str(), &type, data, &size, error);
        if (failed(*error)) return;
        setValue(key, names[i - 1].c_str(), type, data, size, error);
        if (failed(*error)) return;
    }
}
