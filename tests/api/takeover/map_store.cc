#include "map_store.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <map>
#include <memory>
#include <string>

namespace {

struct CaseBlind {
    bool operator()(const std::string& a, const std::string& b) const {
        return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
            return std::tolower(static_cast<unsigned char>(x)) < std::tolower(static_cast<unsigned char>(y));
        });
    }
};

struct Value {
    uint32_t type = 0;
    std::string data;
};

struct Node {
    std::map<std::string, std::shared_ptr<Node>, CaseBlind> keys;
    std::map<std::string, Value, CaseBlind> values;
};

// What a handle of this store designates.
struct OpenKey {
    std::shared_ptr<Node> node;
};

uint64_t calls = 0;
size_t openKeys = 0;

std::shared_ptr<Node>& root() {
    static auto node = std::make_shared<Node>();
    return node;
}

_ZxPolComHandle* handleOf(const std::shared_ptr<Node>& node) {
    ++openKeys;
    return new _ZxPolComHandle{ZXREG_HANDLE_KEY, new OpenKey{node}};
}

const std::shared_ptr<Node>& nodeOf(const _ZxPolComHandle* key) {
    return static_cast<OpenKey*>(key->object)->node;
}

// Walks to the key that `path` designates, making its last level when wanted.
std::shared_ptr<Node> walk(const _ZxPolComHandle* key, const char* path, bool make, int* error) {
    std::shared_ptr<Node> node = nodeOf(key);
    std::string rest = path;
    *error = kHostOk;
    while (!rest.empty()) {
        const size_t end = rest.find('\\');
        const std::string name = rest.substr(0, end);
        rest = end == std::string::npos ? "" : rest.substr(end + 1);
        if (name.empty()) {
            if (rest.empty()) return node;
            *error = kHostRefused;
            return nullptr;
        }
        auto child = node->keys.find(name);
        if (child == node->keys.end()) {
            if (!make || !rest.empty() || name.size() > ZXREG_MAX_NAME) {
                *error = name.size() > ZXREG_MAX_NAME ? kHostRefused : kHostNotFound;
                return nullptr;
            }
            child = node->keys.emplace(name, std::make_shared<Node>()).first;
        }
        node = child->second;
    }
    return node;
}

// Delivers a name under the contract's sizes: the length without the NUL, whether it fits or not.
bool deliverName(const std::string& name, char* buffer, uint32_t* size) {
    const bool fits = *size > name.size();
    if (fits) std::memcpy(buffer, name.c_str(), name.size() + 1);
    *size = static_cast<uint32_t>(name.size());
    return fits;
}

template <class Map>
auto at(Map& map, uint32_t index) {
    auto place = map.begin();
    while (index > 0 && place != map.end()) {
        ++place;
        --index;
    }
    return place;
}

}  // namespace

_ZxPolComHandle* zxhost_openRoot(void) {
    return handleOf(root());
}

uint64_t zxhost_calls(void) {
    return calls;
}

size_t zxhost_openKeys(void) {
    return openKeys;
}

_ZxPolComHandle* zxreg_openKey(_ZxPolComHandle* key, const char* name, int* error) {
    ++calls;
    const std::shared_ptr<Node> node = walk(key, name, false, error);
    return node == nullptr ? nullptr : handleOf(node);
}

_ZxPolComHandle* zxreg_createKey(_ZxPolComHandle* key, const char* name, int* error) {
    ++calls;
    const std::shared_ptr<Node> node = walk(key, name, true, error);
    return node == nullptr ? nullptr : handleOf(node);
}

void zxreg_closeKey(_ZxPolComHandle* key, int* error) {
    ++calls;
    --openKeys;
    delete static_cast<OpenKey*>(key->object);
    delete key;
    *error = kHostOk;
}

void zxreg_deleteKey(_ZxPolComHandle* key, const char* name, int* error) {
    ++calls;
    Node& parent = *nodeOf(key);
    const auto child = parent.keys.find(name);
    *error = kHostNotFound;
    if (child == parent.keys.end()) return;
    *error = kHostRefused;
    if (!child->second->keys.empty()) return;
    parent.keys.erase(child);
    *error = kHostOk;
}

void zxreg_queryValue(_ZxPolComHandle* key, const char* name, uint32_t* type, void* data, uint32_t* size, int* error) {
    ++calls;
    const Node& node = *nodeOf(key);
    const auto value = node.values.find(name);
    *error = kHostNotFound;
    if (value == node.values.end()) return;
    const auto needed = static_cast<uint32_t>(value->second.data.size());
    const bool fits = data == nullptr || *size >= needed;
    *size = needed;
    *error = kHostTooSmall;
    if (!fits) return;
    if (data != nullptr) std::memcpy(data, value->second.data.data(), needed);
    if (type != nullptr) *type = value->second.type;
    *error = kHostOk;
}

void zxreg_setValue(_ZxPolComHandle* key, const char* name, uint32_t type, const void* data, uint32_t size,
                    int* error) {
    ++calls;
    nodeOf(key)->values[name] = Value{type, std::string(static_cast<const char*>(data), size)};
    *error = kHostOk;
}

void zxreg_deleteValue(_ZxPolComHandle* key, const char* name, int* error) {
    ++calls;
    *error = nodeOf(key)->values.erase(name) == 1 ? kHostOk : kHostNotFound;
}

void zxreg_enumSubkey(_ZxPolComHandle* key, uint32_t index, char* name, uint32_t* size, int* error) {
    ++calls;
    Node& node = *nodeOf(key);
    const auto place = at(node.keys, index);
    *error = kHostEnd;
    if (place == node.keys.end()) return;
    *error = deliverName(place->first, name, size) ? kHostOk : kHostTooSmall;
}

void zxreg_enumValue(_ZxPolComHandle* key, uint32_t index, char* name, uint32_t* nameSize, uint32_t* type, void* data,
                     uint32_t* dataSize, int* error) {
    ++calls;
    Node& node = *nodeOf(key);
    const auto place = at(node.values, index);
    *error = kHostEnd;
    if (place == node.values.end()) return;
    const Value& value = place->second;
    const auto needed = static_cast<uint32_t>(value.data.size());
    const bool dataFits = data == nullptr || dataSize == nullptr || *dataSize >= needed;
    if (dataSize != nullptr) *dataSize = needed;
    *error = kHostTooSmall;
    if (!dataFits || *nameSize <= place->first.size()) {
        *nameSize = static_cast<uint32_t>(place->first.size());
        return;
    }
    deliverName(place->first, name, nameSize);
    if (data != nullptr && dataSize != nullptr) std::memcpy(data, value.data.data(), needed);
    if (type != nullptr) *type = value.type;
    *error = kHostOk;
}
