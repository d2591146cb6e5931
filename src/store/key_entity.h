// ZxPolKeyEntity: a store key with named, possibly ordered, children.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "zxpolicy.h"

namespace zxpol {
class StoreKey;
}

/**
 * The common base of every policy object with named children in the store. The children lie in a
 * container key below the object's own key, or directly below it when the container's name is empty. In an
 * ordered entity every child carries a 1-based position in its value "order"; creating, moving and
 * deleting children keeps the positions dense.
 *
 * Invariants: the cache of ordered children is sorted by position, equal positions in the store's order; it
 * is what the last rebuilding (enumChildByOrder at index 0, createChild, setChildOrder, rescanChildOrder)
 * read, and is never changed in place. Two entities over one key have separate caches. An entity belongs to
 * one thread at a time.
 *
 * All operations report through `error`, last; codes of the store pass through unchanged. Every key that an
 * operation opens and does not return is closed when it returns.
 */
class ZXPOL_API ZxPolKeyEntity {
public:
    /// A child in the cache.
    struct _OrderedChild {
        int32_t order;     ///< its position, as it was read
        std::string name;  ///< its own name
    };

    /// `ordered`: not 0, children have positions; exactly 1, deleting renumbers the rest. `containerName`
    /// is copied; null or 256 characters and more leaves it empty and the entity marked invalid.
    /// `ownsKey`: not 0, the entity closes `key` when destroyed.
    ZxPolKeyEntity(_ZxPolComHandle* key, int ordered, const char* containerName, int ownsKey);
    ~ZxPolKeyEntity();
    ZxPolKeyEntity(const ZxPolKeyEntity&) = delete;
    ZxPolKeyEntity& operator=(const ZxPolKeyEntity&) = delete;

    /// Opens the existing child `name`; the caller closes the key. The container is made when missing.
    /// ZXPOL_E_INVALID_ARG: null or empty name. Null on failure.
    _ZxPolComHandle* openChild(const char* name, int* error);

    /// Opens the child `name`, creating it when missing; the caller closes the key. For an ordered entity
    /// `order` is the wanted position of a new child (0 or past the end appends) and receives the position
    /// given; an existing child keeps its own, and *order is left as it was. `order` may be null for an
    /// unordered entity. ZXPOL_E_INVALID_ARG: null or empty name, a negative *order, null `order` on an
    /// ordered entity. ZXPOL_E_NOT_FOUND: a sibling lost its position meanwhile. Null on failure; a child
    /// created before a later failure stays in the store.
    _ZxPolComHandle* createChild(const char* name, int* error, uint32_t* order);

    /// Deletes the child with everything below it. ZXPOL_E_INVALID_ARG: null or empty name.
    void deleteChild(const char* name, int* error);

    /// The `index`-th child in the store's order; sizes are the store's. ZXPOL_E_INVALID_ARG: null buffer or size.
    void enumChild(uint32_t index, char* buffer, uint32_t* size, int* error);

    /// The `index`-th child by position. Index 0 rebuilds the cache, later ones read it. *size becomes the
    /// name's length with its NUL, on success and with ZXPOL_E_BUFFER_TOO_SMALL. ZXPOL_E_INVALID_ARG: null
    /// buffer or size. Past the end ZXPOL_E_NO_MORE_ITEMS; at index 0 the store's own end code.
    void enumChildByOrder(uint32_t index, char* buffer, uint32_t* size, int* error);

    /// Moves the child to position `order` (past the end is the end) and returns the position given, 0 on
    /// failure. ZXPOL_E_INVALID_ARG: null or empty name, order below 1. ZXPOL_E_EXCEPTION: the child has none.
    uint32_t setChildOrder(const char* name, uint32_t order, int* error);

    /// Numbers the children 1, 2, 3 ... in their present order; returns the result.
    int rescanChildOrder();

    /// The position of the child `name` of `container`, or -1 when it has none that can be read.
    int getChildOrder(_ZxPolComHandle* container, const char* name);

    /// Empties the cache.
    void cleanChildList();

    /// Deletes the key `name` below `parent` with everything below it, depth first. A part that cannot be
    /// deleted does not stop the others from being tried.
    void deleteSubkey(_ZxPolComHandle* parent, const char* name, int* error);

    /// Reads "displayName", then "comment", stopping at the first failure. ZXPOL_E_INVALID_ARG: null record.
    void getCommonAttrib(_ZxPolCommAttrib* attrib, int* error);

    /// Writes "displayName", then "comment", stopping at the first failure. ZXPOL_E_INVALID_ARG: null record, a text
    /// field without NUL; nothing is written.
    void setCommonAttrib(const _ZxPolCommAttrib* attrib, int* error);

protected:
    /// The entity's own key; borrowed.
    _ZxPolComHandle* _entityKey() const { return key; }

private:
    void _rebuildCache(int* error);
    void _readChildren(int* error);
    _ZxPolComHandle* _createNewChild(const char* name, zxpol::StoreKey container, uint32_t* order, int* error);
    void _makeRoom(_ZxPolComHandle* container, uint32_t position, int* error);
    uint32_t _moveChild(const char* name, uint32_t order, int* error);
    void _shiftBetween(_ZxPolComHandle* container, const char* name, uint32_t order, int32_t old, int* error);

    int32_t valid;
    int32_t ownsKey;
    int32_t ordered;
    char containerName[256];
    _ZxPolComHandle* key;
    std::vector<_OrderedChild> orderedChildren;
};
