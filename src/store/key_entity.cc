#include "store/key_entity.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "store/store_key.h"
#include "store/store_value.h"
#include "store/update.h"
#include "zxbase.h"

using namespace zxpol;

namespace {

constexpr const char* kOrderValue = "order";

// Whether a name names no child: a lone backslash designates the container itself, as the empty name does.
bool isMissing(const char* name) {
    return name == nullptr || *name == '\0' || std::strcmp(name, "\\") == 0;
}

bool isNegative(uint32_t number) {
    return static_cast<int32_t>(number) < 0;
}

// Reads the names of all subkeys, up to the first failure, whatever it is.
std::vector<std::string> subkeyNames(_ZxPolComHandle* key) {
    std::vector<std::string> found;
    char name[kNameSize];
    for (uint32_t index = 0;; ++index) {
        int result = ZXPOL_S_OK;
        uint32_t size = sizeof name;
        enumSubkey(key, index, name, &size, &result);
        if (failed(result)) return found;
        found.emplace_back(name);
    }
}

// A key that is being deleted, with those of its subkeys that have not been tried yet, the next one last.
struct DoomedKey {
    DoomedKey(StoreKey opened, const std::string& ownName)
        : key(std::move(opened)), name(ownName), below(subkeyNames(key.get())) {
        std::reverse(below.begin(), below.end());
    }

    StoreKey key;
    std::string name;
    std::vector<std::string> below;
};

void writeOrder(_ZxPolComHandle* container, const char* name, uint32_t order, int* error) {
    StoreKey child = StoreKey::open(container, name, error);
    if (child) writeNumber(child.get(), kOrderValue, order, error);
}

}  // namespace

ZxPolKeyEntity::ZxPolKeyEntity(_ZxPolComHandle* entityKey, int isOrdered, const char* container, int closesKey)
    : valid(1), ownsKey(closesKey), ordered(isOrdered), key(entityKey) {
    const size_t length = container == nullptr ? sizeof containerName : std::strlen(container);
    if (length < sizeof containerName) {
        std::memcpy(containerName, container, length + 1);
    } else {
        containerName[0] = '\0';
        valid = 0;
    }
}

ZxPolKeyEntity::~ZxPolKeyEntity() {
    if (ownsKey != 0) StoreKey(key).close();
}

_ZxPolComHandle* ZxPolKeyEntity::openChild(const char* name, int* error) {
    if (error == nullptr) return nullptr;
    if (isMissing(name)) {
        *error = ZXPOL_E_INVALID_ARG;
        return nullptr;
    }
    StoreKey container = StoreKey::create(key, containerName, error);
    if (!container) return nullptr;
    return StoreKey::open(container.get(), name, error).release();
}

int ZxPolKeyEntity::getChildOrder(_ZxPolComHandle* container, const char* name) {
    int ignored = ZXPOL_S_OK;
    StoreKey child = StoreKey::open(container, name, &ignored);
    if (!child) return -1;
    int32_t order = -1;
    readNumber(child.get(), kOrderValue, &order, &ignored);
    return order;
}

// Reads the children with their positions. Success when the store's enumeration came to its end; when it did not, and
// without memory, the cache is left empty. Without a container it stays as it was.
void ZxPolKeyEntity::_rebuildCache(int* error) {
    try {
        _readChildren(error);
    } catch (...) {
        cleanChildList();
        throw;
    }
}

void ZxPolKeyEntity::_readChildren(int* error) {
    StoreKey container = StoreKey::open(key, containerName, error);
    if (!container) return;
    cleanChildList();
    char name[kNameSize];
    for (uint32_t index = 0;; ++index) {
        uint32_t size = sizeof name;
        enumSubkey(container.get(), index, name, &size, error);
        if (failed(*error)) break;
        const int32_t order = getChildOrder(container.get(), name);
        if (order < 0) continue;
        const auto place =
            std::upper_bound(orderedChildren.begin(), orderedChildren.end(), order,
                             [](int32_t wanted, const _OrderedChild& child) { return wanted < child.order; });
        orderedChildren.insert(place, _OrderedChild{order, name});
    }
    if (!isEnd(*error)) cleanChildList();
}

void ZxPolKeyEntity::enumChildByOrder(uint32_t index, char* buffer, uint32_t* size, int* error) {
    if (error == nullptr) return;
    if (buffer == nullptr || size == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    if (index == 0) {
        _rebuildCache(error);
        if (!isEnd(*error) || orderedChildren.empty()) return;
    } else if (index >= orderedChildren.size()) {
        *error = ZXPOL_E_NO_MORE_ITEMS;
        return;
    }
    const std::string& name = orderedChildren[index].name;
    const auto needed = static_cast<uint32_t>(name.size() + 1);
    const bool fits = *size >= needed;
    if (fits) std::memcpy(buffer, name.c_str(), needed);
    *size = needed;
    *error = fits ? ZXPOL_S_OK : ZXPOL_E_BUFFER_TOO_SMALL;
}

_ZxPolComHandle* ZxPolKeyEntity::createChild(const char* name, int* error, uint32_t* order) {
    if (error == nullptr) return nullptr;
    if (isMissing(name) || (order != nullptr && isNegative(*order)) || (order == nullptr && ordered != 0)) {
        *error = ZXPOL_E_INVALID_ARG;
        return nullptr;
    }
    return inUpdate(key, error,
                    [&]() -> StoreKey {
                        StoreKey container = StoreKey::create(key, containerName, error);
                        if (!container) return StoreKey();
                        StoreKey existing = StoreKey::open(container.get(), name, error);
                        if (existing) return existing;
                        return StoreKey(_createNewChild(name, std::move(container), order, error));
                    })
        .release();
}

// Makes a child that does not exist and, in an ordered entity, gives it its position.
_ZxPolComHandle* ZxPolKeyEntity::_createNewChild(const char* name, StoreKey container, uint32_t* order, int* error) {
    StoreKey child = StoreKey::create(container.get(), name, error);
    if (!child || ordered == 0) return child.release();

    _rebuildCache(error);
    if (!isEnd(*error)) return nullptr;
    const auto count = static_cast<uint32_t>(orderedChildren.size());
    *error = ZXPOL_S_OK;
    if (*order == 0 || *order > count) {
        *order = count + 1;
    } else {
        _makeRoom(container.get(), *order, error);
    }
    if (succeeded(*error)) writeNumber(child.get(), kOrderValue, *order, error);
    return succeeded(*error) ? child.release() : nullptr;
}

// Moves the children from `position` on up by one, as far as the numbering has no gap.
void ZxPolKeyEntity::_makeRoom(_ZxPolComHandle* container, uint32_t position, int* error) {
    auto counter = static_cast<int32_t>(position);
    for (const _OrderedChild& sibling : orderedChildren) {
        const int32_t current = getChildOrder(container, sibling.name.c_str());
        if (current < 1) {
            *error = ZXPOL_E_NOT_FOUND;
            return;
        }
        if (current != counter) continue;
        ++counter;
        writeOrder(container, sibling.name.c_str(), static_cast<uint32_t>(counter), error);
        if (failed(*error)) return;
    }
}

uint32_t ZxPolKeyEntity::setChildOrder(const char* name, uint32_t order, int* error) {
    if (error == nullptr) return 0;
    if (isMissing(name) || order == 0 || isNegative(order)) {
        *error = ZXPOL_E_INVALID_ARG;
        return 0;
    }
    return inUpdate(key, error, [&] { return _moveChild(name, order, error); });
}

uint32_t ZxPolKeyEntity::_moveChild(const char* name, uint32_t order, int* error) {
    StoreKey container = StoreKey::create(key, containerName, error);
    if (!container) return 0;
    StoreKey child = StoreKey::open(container.get(), name, error);
    if (!child) return 0;
    _rebuildCache(error);
    if (!isEnd(*error) || orderedChildren.empty()) return 0;
    order = std::min(order, static_cast<uint32_t>(orderedChildren.size()));

    const int32_t old = getChildOrder(container.get(), name);
    if (old < 1) {
        *error = ZXPOL_E_EXCEPTION;
        return 0;
    }
    writeNumber(child.get(), kOrderValue, order, error);
    child.close();
    if (succeeded(*error)) _shiftBetween(container.get(), name, order, old, error);
    return succeeded(*error) ? order : 0;
}

// Renumbers the children between the new position and the old one, one place towards the old. The cached
// positions are taken to be dense: entry k has position k.
void ZxPolKeyEntity::_shiftBetween(_ZxPolComHandle* container, const char* name, uint32_t order, int32_t old,
                                   int* error) {
    const auto target = static_cast<int32_t>(order);
    const int32_t step = target < old ? 1 : -1;
    auto place = static_cast<size_t>(order - 1);
    for (int32_t number = target + step; number - step != old; number += step) {
        // A numbering with gaps or doubles can lead past either end of the cache: there is nothing to move.
        if (place >= orderedChildren.size()) return;
        const char* sibling = orderedChildren[place].name.c_str();
        if (kr_stricmp(sibling, name) == 0) return;
        writeOrder(container, sibling, static_cast<uint32_t>(number), error);
        if (failed(*error)) return;
        place += static_cast<size_t>(step);
    }
}

void ZxPolKeyEntity::deleteChild(const char* name, int* error) {
    if (error == nullptr) return;
    if (isMissing(name)) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    inUpdate(key, error, [&] {
        StoreKey container = StoreKey::open(key, containerName, error);
        if (!container) return;
        deleteSubkey(container.get(), name, error);
        if (succeeded(*error) && ordered == 1) *error = rescanChildOrder();
    });
}

void ZxPolKeyEntity::deleteSubkey(_ZxPolComHandle* parent, const char* name, int* error) {
    StoreKey opened = StoreKey::open(parent, name, error);
    if (!opened) return;
    // The way down to the key in hand. On the heap, as trees may be deeper than a thread's stack allows.
    std::vector<DoomedKey> way;
    way.emplace_back(std::move(opened), name);
    while (!way.empty()) {
        DoomedKey& last = way.back();
        if (!last.below.empty()) {
            const std::string next = std::move(last.below.back());
            last.below.pop_back();
            if (StoreKey child = StoreKey::open(last.key.get(), next.c_str(), error)) {
                way.emplace_back(std::move(child), next);
            }
            continue;
        }
        const std::string done = std::move(last.name);
        way.pop_back();
        deleteKey(way.empty() ? parent : way.back().key.get(), done.c_str(), error);
    }
}

int ZxPolKeyEntity::rescanChildOrder() {
    int result = ZXPOL_S_OK;
    _rebuildCache(&result);
    if (!isEnd(result)) return result;
    StoreKey container = StoreKey::open(key, containerName, &result);
    int32_t counter = 1;
    for (const _OrderedChild& child : orderedChildren) {
        if (failed(result)) break;
        if (child.order != counter)
            writeOrder(container.get(), child.name.c_str(), static_cast<uint32_t>(counter), &result);
        ++counter;
    }
    return result;
}

void ZxPolKeyEntity::cleanChildList() {
    orderedChildren.clear();
}

void ZxPolKeyEntity::enumChild(uint32_t index, char* buffer, uint32_t* size, int* error) {
    if (error == nullptr) return;
    if (buffer == nullptr || size == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    StoreKey container = StoreKey::open(key, containerName, error);
    if (container) enumSubkey(container.get(), index, buffer, size, error);
}

void ZxPolKeyEntity::getCommonAttrib(_ZxPolCommAttrib* attrib, int* error) {
    if (error == nullptr) return;
    if (attrib == nullptr) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    readText(key, "displayName", attrib->displayName, error);
    if (succeeded(*error)) readText(key, "comment", attrib->comment, error);
}

void ZxPolKeyEntity::setCommonAttrib(const _ZxPolCommAttrib* attrib, int* error) {
    if (error == nullptr) return;
    if (attrib == nullptr || !isTerminated(attrib->displayName) || !isTerminated(attrib->comment)) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    inUpdate(key, error, [&] {
        writeText(key, "displayName", attrib->displayName, error);
        if (succeeded(*error)) writeText(key, "comment", attrib->comment, error);
    });
}
