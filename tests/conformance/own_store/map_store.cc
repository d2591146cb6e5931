// Defines the store's functions for this program, in place of the library's that would else be bound.
#include "map_store.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

namespace {

struct Value {
    std::string name;
    uint32_t type;
    std::string data;
};
struct Node {
    std::vector<std::pair<std::string, std::shared_ptr<Node>>> children;
    std::vector<Value> values;
};
// What a handle designates; a key shares its node, so that deleting does not pull it away.
struct Key {
    std::shared_ptr<Node> node;
};

Node& nodeOf(_ZxPolComHandle* key) {
    return *static_cast<Key*>(key->object)->node;
}

_ZxPolComHandle* handleTo(std::shared_ptr<Node> node) {
    ++zxtest::ownStore().openKeys;
    return new _ZxPolComHandle{ZXREG_HANDLE_KEY, new Key{std::move(node)}};
}

std::shared_ptr<Node> childOf(Node& node, const std::string& name) {
    for (auto& [childName, child] : node.children)
        if (childName == name) return child;
    return nullptr;
}

// Walks a path; with `make` its last level is made when missing. Null when a level is missing.
std::shared_ptr<Node> walk(_ZxPolComHandle* key, std::string path, bool make) {
    std::shared_ptr<Node> node = static_cast<Key*>(key->object)->node;
    if (!path.empty() && path.back() == '\\') path.pop_back();
    while (!path.empty()) {
        const size_t cut = path.find('\\');
        const std::string name = path.substr(0, cut);
        path = cut == std::string::npos ? "" : path.substr(cut + 1);
        std::shared_ptr<Node> child = childOf(*node, name);
        if (child == nullptr && make && path.empty()) {
            child = std::make_shared<Node>();
            node->children.emplace_back(name, child);
        }
        if (child == nullptr) return nullptr;
        node = child;
    }
    return node;
}

// Notes a call; the code that it is to fail with, or 0.
int plannedFailure(const char* call, const std::string& name, const std::map<std::string, int>& failing) {
    zxtest::ownStore().calls.push_back(call + (" " + name));
    const auto found = failing.find(name);
    if (found == failing.end() || zxtest::ownStore().spared[name]-- > 0) return 0;
    return found->second;
}

_ZxPolComHandle* open(_ZxPolComHandle* key, const char* name, bool make, int* error) {
    const zxtest::OwnStore& plan = zxtest::ownStore();
    const int failure =
        make ? plannedFailure("create", name, plan.failingMakes) : plannedFailure("open", name, plan.failingOpens);
    std::shared_ptr<Node> node = failure == 0 || plan.givesKeysWithFailures ? walk(key, name, make) : nullptr;
    if (failure != 0) {
        *error = failure;
        return node == nullptr ? nullptr : handleTo(std::move(node));
    }
    *error = node == nullptr ? zxtest::kOwnMissing : zxtest::kOwnOk;
    return node == nullptr ? nullptr : handleTo(std::move(node));
}

std::vector<Value>::iterator find(Node& node, const char* name) {
    return std::find_if(node.values.begin(), node.values.end(), [&](const Value& value) { return value.name == name; });
}

// Hands a name out by the rules of the enumerations.
int giveName(const std::string& found, char* name, uint32_t* size) {
    const uint32_t capacity = *size;
    *size = static_cast<uint32_t>(found.size());
    if (capacity < found.size() + 1) return zxtest::kOwnTooSmall;
    std::memcpy(name, found.c_str(), found.size() + 1);
    return zxtest::kOwnOk;
}

int giveData(const Value& value, uint32_t* type, void* data, uint32_t* size) {
    if (type != nullptr) *type = value.type;
    if (size == nullptr) return zxtest::kOwnOk;
    const uint32_t capacity = *size;
    *size = static_cast<uint32_t>(value.data.size());
    if (data == nullptr) return zxtest::kOwnOk;
    if (capacity < value.data.size()) return zxtest::kOwnTooSmall;
    std::memcpy(data, value.data.data(), value.data.size());
    return zxtest::kOwnOk;
}

}  // namespace

namespace zxtest {

OwnStore& ownStore() {
    static OwnStore store;
    return store;
}

_ZxPolComHandle* newOwnStore() {
    return handleTo(std::make_shared<Node>());
}

std::vector<std::string> ownValues(_ZxPolComHandle* root, const char* path) {
    std::vector<std::string> names;
    if (const std::shared_ptr<Node> node = walk(root, path, false))
        for (const Value& value : node->values)
            names.push_back(value.name);
    return names;
}

std::vector<std::string> ownSubkeys(_ZxPolComHandle* root, const char* path) {
    std::vector<std::string> names;
    if (const std::shared_ptr<Node> node = walk(root, path, false))
        for (const auto& child : node->children)
            names.push_back(child.first);
    return names;
}

}  // namespace zxtest

_ZxPolComHandle* zxreg_openKey(_ZxPolComHandle* key, const char* name, int* error) {
    return open(key, name, false, error);
}

_ZxPolComHandle* zxreg_createKey(_ZxPolComHandle* key, const char* name, int* error) {
    return open(key, name, true, error);
}

void zxreg_closeKey(_ZxPolComHandle* key, int* error) {
    --zxtest::ownStore().openKeys;
    delete static_cast<Key*>(key->object);
    delete key;
    *error = zxtest::kOwnOk;
}

void zxreg_deleteKey(_ZxPolComHandle* key, const char* name, int* error) {
    auto& children = nodeOf(key).children;
    const auto found = std::find_if(children.begin(), children.end(), [&](auto& child) { return child.first == name; });
    *error = found == children.end() ? zxtest::kOwnMissing : zxtest::kOwnOk;
    if (found != children.end()) children.erase(found);
}

void zxreg_queryValue(_ZxPolComHandle* key, const char* name, uint32_t* type, void* data, uint32_t* size, int* error) {
    *error = plannedFailure("get", name, zxtest::ownStore().failingReads);
    if (*error != 0) return;
    const auto found = find(nodeOf(key), name);
    *error = found == nodeOf(key).values.end() ? zxtest::kOwnMissing : giveData(*found, type, data, size);
}

void zxreg_setValue(_ZxPolComHandle* key, const char* name, uint32_t type, const void* data, uint32_t size,
                    int* error) {
    *error = plannedFailure("set", name, zxtest::ownStore().failingWrites);
    if (*error != 0) return;
    const std::string bytes(static_cast<const char*>(data), size);
    const auto found = find(nodeOf(key), name);
    if (found == nodeOf(key).values.end())
        nodeOf(key).values.push_back({name, type, bytes});
    else
        *found = {name, type, bytes};
    *error = zxtest::kOwnOk;
}

void zxreg_deleteValue(_ZxPolComHandle* key, const char* name, int* error) {
    const auto found = find(nodeOf(key), name);
    *error = found == nodeOf(key).values.end() ? zxtest::kOwnMissing : zxtest::kOwnOk;
    if (found != nodeOf(key).values.end()) nodeOf(key).values.erase(found);
}

void zxreg_enumSubkey(_ZxPolComHandle* key, uint32_t index, char* name, uint32_t* size, int* error) {
    const auto& children = nodeOf(key).children;
    *error = index >= children.size() ? zxtest::kOwnEnd : giveName(children[index].first, name, size);
}

void zxreg_enumValue(_ZxPolComHandle* key, uint32_t index, char* name, uint32_t* nameSize, uint32_t* type, void* data,
                     uint32_t* dataSize, int* error) {
    const auto& values = nodeOf(key).values;
    if (index >= values.size()) {
        *error = zxtest::kOwnEnd;
        return;
    }
    *error = giveName(values[index].name, name, nameSize);
    if (*error >= 0) *error = giveData(values[index], type, data, dataSize);
}

void zxreg_beginUpdate(_ZxPolComHandle*, int* error) {
    ++zxtest::ownStore().openUpdates;
    *error = zxtest::kOwnOk;
}

void zxreg_endUpdate(_ZxPolComHandle*, int* error) {
    --zxtest::ownStore().openUpdates;
    *error = zxtest::kOwnOk;
}

void zxreg_cancelUpdate(_ZxPolComHandle* key, int* error) {
    zxreg_endUpdate(key, error);
}

uint64_t zxreg_stamp(_ZxPolComHandle*, int* error) {
    *error = zxtest::kOwnOk;
    return 0;
}
