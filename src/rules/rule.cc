#include "rules/rule.h"

#include <utility>

#include "rules/rule_hive.h"
#include "store/store_value.h"
#include "store/update.h"

using namespace zxpol;

ZxPolRule::ZxPolRule(_ZxPolComHandle* ruleKey, ZxPolRuleHive* hive, const std::string& ruleName)
    : ZxPolRule(StoreKey(ruleKey), hive == nullptr ? nullptr : hive->_anchor, ruleName) {}

ZxPolRule::ZxPolRule(StoreKey ruleKey, std::shared_ptr<RuleAnchor> anchor, std::string ruleName)
    : _key(std::move(ruleKey)),
      _children(_key.get(), 1, "rules\\", 0),
      _tasks(_key.get(), 1, "tasks\\", 0),
      _anchor(std::move(anchor)),
      _name(std::move(ruleName)),
      _conditions(_key.get()) {
    if (_anchor != nullptr) loadInactiveTasks();
}

ZxPolRule::~ZxPolRule() = default;

// ---- child rules --------------------------------------------------------------------------------------

std::unique_ptr<ZxPolRule> ZxPolRule::_makeChild(StoreKey childKey, const char* childName) {
    std::string childPath;
    childPath.reserve(_name.size() + 1 + std::char_traits<char>::length(childName));
    childPath.append(_name).append(1, '\\').append(childName);
    return std::make_unique<ZxPolRule>(std::move(childKey), _anchor, std::move(childPath));
}

std::unique_ptr<ZxPolRule> ZxPolRule::_openChild(const char* childName, int* error) {
    StoreKey childKey(_children.openChild(childName, error));
    if (failed(*error) || !childKey) return nullptr;
    return _makeChild(std::move(childKey), childName);
}

ZxPolRule* ZxPolRule::openChildRule(const char* childName, int* error) {
    if (error == nullptr) return nullptr;
    return _openChild(childName, error).release();
}

// Opens the `index`-th child by position; null with success when there is none. Kept out of its callers' frames,
// which walk the tree.
__attribute__((noinline)) std::unique_ptr<ZxPolRule> ZxPolRule::_openChildAt(uint32_t index, int* error) {
    char childName[kNameSize];
    uint32_t size = sizeof childName;
    enumChildRule(index, childName, &size, error);
    if (succeeded(*error)) return _openChild(childName, error);
    if (isEnd(*error)) *error = ZXPOL_S_OK;
    return nullptr;
}

namespace {

bool isValidAttribute(const _ZxPolRuleAttr* attr) {
    return attr != nullptr && attr->matchType >= 0 && isTerminated(attr->displayName) && isTerminated(attr->comment);
}

}  // namespace

std::unique_ptr<ZxPolRule> ZxPolRule::_createChild(const char* childName, const _ZxPolRuleAttr* attr, int* error) {
    if (childName == nullptr || !isValidAttribute(attr)) {
        *error = ZXPOL_E_INVALID_ARG;
        return nullptr;
    }
    // The one field that comes back in a record to read.
    auto* order = const_cast<uint32_t*>(&attr->order);
    return inUpdate(_key.get(), error, [&]() -> std::unique_ptr<ZxPolRule> {
        StoreKey childKey(_children.createChild(childName, error, order));
        if (failed(*error) || !childKey) return nullptr;
        std::unique_ptr<ZxPolRule> child = _makeChild(std::move(childKey), childName);
        child->setAttribute(attr, error);
        if (*error == ZXPOL_E_NOT_SUPPORTED) {
            *error = ZXPOL_S_OK;
            return child;
        }
        if (failed(*error)) return nullptr;
        child->_makeSubkeys();
        return child;
    });
}

ZxPolRule* ZxPolRule::createChildRule(const char* childName, const _ZxPolRuleAttr* attr, int* error) {
    return error == nullptr ? nullptr : _createChild(childName, attr, error).release();
}

ZxPolRule* ZxPolRule::createChildRule(const char* childName, const _ZxPolRuleAttr* attr,
                                      const unsigned char** conditions, int* error) {
    if (error == nullptr) return nullptr;
    if (conditions == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return nullptr;
    }
    return inUpdate(_key.get(), error,
                    [&]() -> std::unique_ptr<ZxPolRule> {
                        std::unique_ptr<ZxPolRule> child = _createChild(childName, attr, error);
                        if (child == nullptr) return nullptr;
                        child->addCondition(conditions, ZXPOL_COND_CHECK_HIERARCHY, nullptr, error);
                        return succeeded(*error) ? std::move(child) : nullptr;
                    })
        .release();
}

// The keys that every rule has. A failure is passed over here: who needs the key reports that it is missing.
void ZxPolRule::_makeSubkeys() {
    for (const char* subkey : {"rules", "inactive", "tasks"})
        ensureKey(_key.get(), subkey);
}

void ZxPolRule::deleteChildRule(const char* childName, int* error) {
    _children.deleteChild(childName, error);
}

void ZxPolRule::enumChildRule(uint32_t index, char* buffer, uint32_t* size, int* error) {
    _children.enumChildByOrder(index, buffer, size, error);
}

void ZxPolRule::setChildRuleOrder(const char* childName, uint32_t position, int* error) {
    _children.setChildOrder(childName, position, error);
}

// ---- attributes -----------------------------------------------------------------------------------------

void ZxPolRule::getAttribute(_ZxPolRuleAttr* attr, int* error) {
    if (error == nullptr) return;
    if (attr == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    readText(_key.get(), "comment", attr->comment, error);
    if (failed(*error)) {
        attr->comment[0] = '\0';
        return;
    }
    // The result is the last one's; what fails before is told by the field alone.
    readTextOrEmpty(_key.get(), "displayName", attr->displayName, error);
    readNumber(_key.get(), "order", &attr->order, error);
    readNumber(_key.get(), "matchType", &attr->matchType, error);
}

void ZxPolRule::setAttribute(const _ZxPolRuleAttr* attr, int* error) {
    if (error == nullptr) return;
    if (!isValidAttribute(attr)) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    inUpdate(_key.get(), error, [&] {
        writeText(_key.get(), "comment", attr->comment, error);
        if (succeeded(*error)) writeText(_key.get(), "displayName", attr->displayName, error);
        if (succeeded(*error)) writeNumber(_key.get(), "matchType", static_cast<uint32_t>(attr->matchType), error);
    });
}
