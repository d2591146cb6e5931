#include "rules/rule_anchor.h"

#include <utility>

#include "rules/rule.h"

namespace zxpol {

bool rulePathToKeyPath(const char* path, const char* rootPath, std::string& keyPath) {
    if (path == nullptr || *path != '\\') return false;
    keyPath = rootPath;
    const std::string rest = path + 1;
    if (rest.empty()) return true;
    keyPath += "\\rules\\";
    for (size_t begin = 0;;) {
        const size_t end = rest.find('\\', begin);
        if (end == std::string::npos) {
            keyPath.append(rest, begin, std::string::npos);
            return true;
        }
        keyPath.append(rest, begin, end + 1 - begin);
        begin = end + 1;
        if (begin == rest.size()) return true;
        keyPath += "rules\\";
    }
}

namespace {

// Turns a full path into a key path and a rule's name, or writes why not.
bool resolve(const char* path, const char* rootPath, std::string& keyPath, std::string& name, int* error) {
    if (path == nullptr || *path == '\0') {
        *error = ZXPOL_E_INVALID_ARG;
        return false;
    }
    if (!rulePathToKeyPath(path, rootPath, keyPath)) {
        *error = ZXPOL_E_INVALID_FORMAT;
        return false;
    }
    name = path;
    if (name.back() == '\\') name.pop_back();
    return true;
}

}  // namespace

std::unique_ptr<ZxPolRule> openRuleAt(_ZxPolComHandle* hiveKey, const std::shared_ptr<RuleAnchor>& anchor,
                                      const char* path, int* error) {
    std::string keyPath;
    std::string name;
    if (!resolve(path, anchor->rootPath(), keyPath, name, error)) return nullptr;
    StoreKey key = StoreKey::open(hiveKey, keyPath.c_str(), error);
    if (!key) return nullptr;
    *error = ZXPOL_S_OK;
    return std::make_unique<ZxPolRule>(std::move(key), anchor, std::move(name));
}

RuleAnchor::RuleAnchor(_ZxPolComHandle* hiveKey, const char* rootPath)
    : _key(StoreKey::create(hiveKey, "", &_keyError)), _rootPath(rootPath) {}

std::unique_ptr<ZxPolRule> RuleAnchor::openRule(const std::shared_ptr<RuleAnchor>& self, const char* path, int* error) {
    const std::lock_guard<std::mutex> lock(self->_mutex);
    if (!self->_key) {
        *error = self->_keyError;
        return nullptr;
    }
    return openRuleAt(self->_key.get(), self, path, error);
}

}  // namespace zxpol
