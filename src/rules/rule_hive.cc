#include "rules/rule_hive.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "rules/rule.h"
#include "store/multi_value.h"
#include "store/store_value.h"
#include "store/update.h"
#include "zxbase.h"

using namespace zxpol;

namespace {

constexpr const char* kHiveKey = "Rule";
constexpr const char* kRootKey = "Mail";
constexpr const char kExclusivePrefix[] = "ExcluId";
constexpr size_t kExclusivePrefixLength = sizeof kExclusivePrefix - 1;
constexpr size_t kExclusiveDigits = 8;
constexpr size_t kExclusiveDataSize = 256;

std::string exclusiveName(uint32_t filterId) {
    char name[kExclusivePrefixLength + kExclusiveDigits + 1];
    std::snprintf(name, sizeof name, "%s%08x", kExclusivePrefix, static_cast<unsigned>(filterId));
    return name;
}

bool isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Whether reading failed because of what is there, in a form that cannot be used, and not for want of it.
bool isUnusable(int code) {
    return hasReason(code, kReasonBufferTooSmall) || code == ZXPOL_E_INVALID_FORMAT;
}

bool hasAttributes(ZxPolRule& rule) {
    int result = ZXPOL_S_OK;
    _ZxPolRuleAttr attr{};
    rule.getAttribute(&attr, &result);
    return succeeded(result);
}

// Reads whether the rule has a condition; also a success for a rule that cannot have address pairs.
int readFirstCondition(ZxPolRule& rule) {
    int result = ZXPOL_S_OK;
    _ZxPolAddrPairCond pair{};
    uint32_t size = sizeof pair;
    rule.enumCondition(0, reinterpret_cast<unsigned char*>(&pair), &size, &result);
    return isUnusable(result) || result == ZXPOL_E_NOT_SUPPORTED ? ZXPOL_S_OK : result;
}

// Whether the rule at a key has no conditions. A failure to tell is no "yes".
bool lacksConditions(_ZxPolComHandle* ruleKey, int* error) {
    const ZxPolMultiValue names(ruleKey, "condition");
    if (failed(names.result())) *error = names.result();
    return succeeded(names.result()) && names.count() == 0;
}

// Turns the refusal of an operation that the rule does not support into a success, and tells whether it was one.
bool passUnsupported(int* error) {
    if (*error != ZXPOL_E_NOT_SUPPORTED) return false;
    *error = ZXPOL_S_OK;
    return true;
}

// The condition of a new root: every sender to every receiver.
void addDefaultCondition(ZxPolRule& root, int* error) {
    static constexpr _ZxPolAddrPairCond kAll = {"*", "*"};
    const unsigned char* list[] = {reinterpret_cast<const unsigned char*>(&kAll), nullptr};
    root.addCondition(list, ZXPOL_COND_CHECK_NONE, nullptr, error);
}

}  // namespace

ZxPolRuleHive::ZxPolRuleHive(_ZxPolComHandle* hiveKey, int layout)
    : _key(hiveKey), _anchor(std::make_shared<RuleAnchor>(hiveKey, layout == 0 ? kRootKey : "")) {}

ZxPolRuleHive::~ZxPolRuleHive() = default;

ZxPolRuleHive* ZxPolRuleHive::open(_ZxPolComHandle* parent, int hiveType, int* error) {
    using Hive = std::unique_ptr<ZxPolRuleHive>;
    if (error == nullptr) return nullptr;
    if (hiveType != 0) {
        *error = ZXPOL_E_NOT_SUPPORTED;
        return nullptr;
    }
    if (StoreKey present = StoreKey::open(parent, kHiveKey, error)) {
        Hive hive(new ZxPolRuleHive(present.release(), hiveType));
        *error = ZXPOL_S_OK;
        if (hive->_isRootComplete()) return hive.release();
    }
    return inUpdate(parent, error,
                    [&]() -> Hive {
                        StoreKey hiveKey = StoreKey::create(parent, kHiveKey, error);
                        if (!hiveKey) return nullptr;
                        Hive hive(new ZxPolRuleHive(hiveKey.release(), hiveType));
                        hive->createRootRule(error);
                        return succeeded(*error) ? std::move(hive) : nullptr;
                    })
        .release();
}

// ---- the root rule ----------------------------------------------------------------------------------

std::unique_ptr<ZxPolRule> ZxPolRuleHive::_openRoot(int* error) {
    StoreKey rootKey = StoreKey::open(_key.get(), _anchor->rootPath(), error);
    if (!rootKey) return nullptr;
    return std::make_unique<ZxPolRule>(std::move(rootKey), _anchor, std::string());
}

ZxPolRule* ZxPolRuleHive::openRootRule(int* error) {
    if (error == nullptr) return nullptr;
    return _openRoot(error).release();
}

// Whether there is nothing to make, told by reading alone: opening a hive costs no update then.
bool ZxPolRuleHive::_isRootComplete() {
    int result = ZXPOL_S_OK;
    const std::unique_ptr<ZxPolRule> root = _openRoot(&result);
    return root != nullptr && hasAttributes(*root) && succeeded(readFirstCondition(*root));
}

void ZxPolRuleHive::createRootRule(int* error) {
    if (error == nullptr) return;
    inUpdate(_key.get(), error, [&] { _fillRoot(error); });
}

// Only what is missing is made. A root whose attributes cannot be read is taken for a new one. Conditions that
// cannot be read are not taken for missing ones, so that a root never lets everything through by mistake.
void ZxPolRuleHive::_fillRoot(int* error) {
    StoreKey rootKey = StoreKey::create(_key.get(), _anchor->rootPath(), error);
    if (!rootKey) return;
    ZxPolRule root(std::move(rootKey), nullptr, std::string());
    if (!hasAttributes(root)) {
        const _ZxPolRuleAttr fresh{};
        root.setAttribute(&fresh, error);
        if (passUnsupported(error) || failed(*error)) return;
        writeNumber(root._key.get(), "order", 1, error);
        if (failed(*error)) return;
        root._makeSubkeys();
    }
    *error = readFirstCondition(root);
    if (isEnd(*error)) {
        *error = ZXPOL_S_OK;
        if (lacksConditions(root._key.get(), error)) addDefaultCondition(root, error);
    }
    if (!passUnsupported(error) && succeeded(*error)) *error = ZXPOL_S_OK;
}

// ---- rules by path ------------------------------------------------------------------------------------

bool ZxPolRuleHive::transRulePathToKeyPath(const char* path, std::string& keyPath) const {
    return rulePathToKeyPath(path, _anchor->rootPath(), keyPath);
}

ZxPolRule* ZxPolRuleHive::openRuleByFullPath(const char* path, int* error) {
    if (error == nullptr) return nullptr;
    return openRuleAt(_key.get(), _anchor, path, error).release();
}

// ---- exclusive filter types -----------------------------------------------------------------------------

void ZxPolRuleHive::setExclusiveFilterType(uint32_t filterId, ZxPolFilterPriorityType type, int* error) {
    if (error == nullptr) return;
    if (type != ZXPOL_FILTER_ASC_EXCLUSIVE && type != ZXPOL_FILTER_DESC_EXCLUSIVE) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    writeNumber(_key.get(), exclusiveName(filterId).c_str(), type, error);
}

void ZxPolRuleHive::removeExclusiveFilterType(uint32_t filterId, int* error) {
    if (error == nullptr) return;
    deleteValue(_key.get(), exclusiveName(filterId).c_str(), error);
}

void ZxPolRuleHive::enumExclusiveFilterType(uint32_t index, uint32_t* filterId, ZxPolFilterPriorityType* type,
                                            int* error) {
    if (error == nullptr) return;
    if (filterId == nullptr || type == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    uint32_t valueIndex = 0;
    uint32_t foundId = 0;
    ZxPolFilterPriorityType foundType = ZXPOL_FILTER_ASC_EXCLUSIVE;
    for (uint64_t found = 0; found <= index; ++found) {
        _nextExclusiveFilterType(&valueIndex, &foundId, &foundType, error);
        if (failed(*error)) return;
    }
    *filterId = foundId;
    *type = foundType;
}

void ZxPolRuleHive::_nextExclusiveFilterType(uint32_t* valueIndex, uint32_t* filterId, ZxPolFilterPriorityType* type,
                                             int* error) {
    char name[kNameSize];
    char data[kExclusiveDataSize];
    uint32_t number = 0;
    do {
        uint32_t nameSize = sizeof name;
        uint32_t dataSize = sizeof data;
        std::memset(data, 0, sizeof number);
        enumValue(_key.get(), (*valueIndex)++, name, &nameSize, nullptr, data, &dataSize, error);
        if (failed(*error)) return;
    } while (!_isNameValid(name));
    *filterId = static_cast<uint32_t>(std::strtoul(name + kExclusivePrefixLength, nullptr, 16));
    std::memcpy(&number, data, sizeof number);
    *type = static_cast<ZxPolFilterPriorityType>(number);
}

bool ZxPolRuleHive::_isNameValid(const char* valueName) {
    if (valueName == nullptr || kr_strnicmp(valueName, kExclusivePrefix, kExclusivePrefixLength) != 0) return false;
    const char* digits = valueName + kExclusivePrefixLength;
    size_t count = 0;
    while (isHexDigit(digits[count]))
        ++count;
    return count == kExclusiveDigits && digits[count] == '\0';
}
