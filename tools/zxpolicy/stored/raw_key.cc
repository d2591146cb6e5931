#include "stored/raw_key.h"

#include <algorithm>
#include <cstring>

#include "output/text.h"
#include "result_names.h"
#include "tool_error.h"

namespace tool {

namespace {

// Reads name and type of the value at `index`. False at the end.
bool readHeadAt(_ZxPolComHandle* key, uint32_t index, RawValue& value) {
    char name[ZXREG_MAX_NAME + 1];
    uint32_t size = sizeof name;
    int result = ZXREG_S_OK;
    zxreg_enumValue(key, index, name, &size, &value.type, nullptr, nullptr, &result);
    if (hasReason(result, kReasonEnd)) return false;
    require(result, "cannot read the values of a key");
    value.name = name;
    return true;
}

}  // namespace

std::string rawData(_ZxPolComHandle* key, const std::string& name, const std::string& where) {
    std::string data(1024, '\0');
    for (;;) {
        auto size = static_cast<uint32_t>(data.size());
        int result = ZXREG_S_OK;
        zxreg_queryValue(key, name.c_str(), nullptr, data.data(), &size, &result);
        const bool mayGrow = size > data.size();
        if (!hasReason(result, kReasonTooSmall) || !mayGrow)
            require(result, "cannot read value " + inQuotes(name, 255) + " of " + where);
        const bool isRead = size <= data.size();
        data.resize(size);
        if (isRead) return data;
    }
}

std::string rawText(_ZxPolComHandle* key, const std::string& name, const std::string& where) {
    return rawData(key, name, where).c_str();
}

uint32_t rawNumber(_ZxPolComHandle* key, const std::string& name, const std::string& where) {
    RawValue value;
    value.data = rawData(key, name, where);
    return numberOf(value);
}

KeyHandle openRawKey(_ZxPolComHandle* parent, const std::string& path) {
    int result = ZXREG_S_OK;
    KeyHandle key(zxreg_openKey(parent, path.c_str(), &result));
    if (hasReason(result, kReasonNotFound)) return {};
    require(result, "cannot open key " + inQuotes(path, 1024));
    return key;
}

std::vector<RawValue> rawValues(_ZxPolComHandle* key) {
    std::vector<RawValue> values;
    RawValue value;
    while (readHeadAt(key, static_cast<uint32_t>(values.size()), value)) {
        value.data = value.type == ZXREG_PROTECTED_STRING ? "" : rawData(key, value.name, "a key");
        values.push_back(value);
    }
    return values;
}

std::vector<std::string> rawValueNames(_ZxPolComHandle* key) {
    std::vector<std::string> names;
    RawValue value;
    while (readHeadAt(key, static_cast<uint32_t>(names.size()), value))
        names.push_back(value.name);
    return names;
}

std::vector<std::string> rawSubkeys(_ZxPolComHandle* key) {
    std::vector<std::string> names;
    for (;;) {
        char name[ZXREG_MAX_NAME + 1];
        uint32_t size = sizeof name;
        int result = ZXREG_S_OK;
        zxreg_enumSubkey(key, static_cast<uint32_t>(names.size()), name, &size, &result);
        if (hasReason(result, kReasonEnd)) return names;
        require(result, "cannot read the subkeys of a key");
        names.emplace_back(name);
    }
}

bool isNumbered(const std::string& name, const std::string& prefix) {
    return lowerCase(name).compare(0, prefix.size(), prefix) == 0 &&
           std::all_of(name.begin() + static_cast<std::ptrdiff_t>(prefix.size()), name.end(),
                       [](char c) { return c >= '0' && c <= '9'; });
}

bool isText(const RawValue& value) {
    return !value.data.empty() && value.data.find('\0') == value.data.size() - 1;
}

std::string textOf(const RawValue& value) {
    return value.data.c_str();
}

uint32_t numberOf(const RawValue& value) {
    uint32_t number = 0;
    std::memcpy(&number, value.data.data(), std::min(sizeof number, value.data.size()));
    return number;
}

bool splitTexts(const RawValue& value, std::vector<std::string>& texts) {
    texts.clear();
    for (size_t position = 0; position < value.data.size();) {
        const size_t end = value.data.find('\0', position);
        if (end == std::string::npos) return false;
        if (end == position) return end + 1 == value.data.size();
        texts.push_back(value.data.substr(position, end - position));
        position = end + 1;
    }
    return false;
}

}  // namespace tool
