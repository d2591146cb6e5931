#include "support/store_dump.h"

#include <stdexcept>

namespace zxtest {

namespace {

constexpr uint32_t kNameSize = ZXREG_MAX_NAME + 1;
constexpr uint32_t kDataSize = 64 * 1024;

bool isEnd(int result) {
    return (static_cast<uint32_t>(result) & 0xffffu) == 12;
}

void demand(int result, const std::string& what) {
    if (result < 0) throw std::runtime_error("the store failed: " + what);
}

_ZxPolComHandle* child(_ZxPolComHandle* key, const std::string& name, bool create) {
    int result = 0;
    _ZxPolComHandle* handle =
        create ? zxreg_createKey(key, name.c_str(), &result) : zxreg_openKey(key, name.c_str(), &result);
    demand(result, name);
    return handle;
}

void close(_ZxPolComHandle* key) {
    int result = 0;
    zxreg_closeKey(key, &result);
}

void readValues(_ZxPolComHandle* key, StoredKey& content) {
    std::string data(kDataSize, '\0');
    char name[kNameSize];
    for (uint32_t index = 0;; ++index) {
        int result = 0;
        StoredValue value;
        uint32_t nameSize = sizeof name;
        uint32_t dataSize = kDataSize;
        zxreg_enumValue(key, index, name, &nameSize, &value.type, data.data(), &dataSize, &result);
        if (isEnd(result)) return;
        demand(result, "values of " + content.name);
        value.name = name;
        value.data = data.substr(0, dataSize);
        content.values.push_back(value);
    }
}

void describe(const StoredKey& content, const std::string& path, std::string& text) {
    text += path + "\\\n";
    for (const StoredValue& value : content.values) {
        text += path + "\\" + value.name + " " + std::to_string(value.type) + " ";
        for (const char c : value.data) {
            const auto byte = static_cast<unsigned char>(c);
            const bool plain = byte >= 0x20 && byte < 0x7f;
            text += plain ? std::string(1, c) : "<" + std::to_string(byte) + ">";
        }
        text += "\n";
    }
    for (const StoredKey& below : content.keys)
        describe(below, path + "\\" + below.name, text);
}

}  // namespace

StoredKey readStore(_ZxPolComHandle* key) {
    StoredKey content;
    readValues(key, content);
    char name[kNameSize];
    for (uint32_t index = 0;; ++index) {
        int result = 0;
        uint32_t size = sizeof name;
        zxreg_enumSubkey(key, index, name, &size, &result);
        if (isEnd(result)) return content;
        demand(result, "subkeys");
        _ZxPolComHandle* below = child(key, name, false);
        content.keys.push_back(readStore(below));
        content.keys.back().name = name;
        close(below);
    }
}

void writeStore(_ZxPolComHandle* key, const StoredKey& content) {
    for (const StoredValue& value : content.values) {
        int result = 0;
        zxreg_setValue(key, value.name.c_str(), value.type, value.data.data(), static_cast<uint32_t>(value.data.size()),
                       &result);
        demand(result, value.name);
    }
    for (const StoredKey& below : content.keys) {
        _ZxPolComHandle* made = child(key, below.name, true);
        writeStore(made, below);
        close(made);
    }
}

std::string describe(const StoredKey& content) {
    std::string text;
    describe(content, "", text);
    return text;
}

}  // namespace zxtest
