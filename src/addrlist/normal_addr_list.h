// ZxPolNormalAddrList: an address list whose addresses are in the store.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "addrlist/addr_cache.h"
#include "addrlist/addr_list.h"
#include "addrlist/addr_sub_list.h"
#include "addrlist/cache_list.h"
#include "zxbase.h"

namespace zxpol {
class SubListSearch;
class ValueNames;
}  // namespace zxpol

/// Is told what becomes of each address that a list is given, during the call and in its thread. It must not use the
/// list.
class ZXPOL_API ZxPolInsertWatch {
public:
    /// What became of an address.
    enum class Fate {
        stored,   ///< it is in the list now
        present,  ///< the list had it already
        invalid   ///< it is no address
    };

    virtual ~ZxPolInsertWatch();

    /// `place` is the address's index in the array, or the number of its line in the file that is imported.
    virtual void onAddress(size_t place, const char* address, Fate fate) = 0;

    /// The call ends at this place without success; what comes behind it is not looked at. Invalid addresses are no
    /// reason.
    virtual void onFailure(size_t place, int result);
};

/**
 * An address list whose addresses are in the store.
 *
 * The addresses are spread over the values "address1", "address2", ... of the list's key, each the image of a
 * ZxPolAddrSubList, and mirrored in a ZxPolAddrCache that all objects on the list share. Membership, matching and
 * enumeration are answered by the cache alone. An address is stored once in the whole list.
 *
 * Every change is in the store when the call returns, as one update; a call that fails half-way keeps what it did
 * before. When the update itself cannot be made durable, nothing of the call is kept, and the cache is dropped.
 *
 * Invariant: the cache holds what the store held at the stamp that the cache remembers. An object that is about to
 * change the list and finds it changed by another process takes a fresh cache first; for answers an object keeps the
 * cache that it was opened with. Objects keep their cache also when the list is deleted.
 *
 * One object belongs to one thread at a time. Objects on one list may be used by several threads at once: changes are
 * made one after the other, and answers are given meanwhile.
 */
class ZXPOL_API ZxPolNormalAddrList : public ZxPolAddrList {
public:
    /// Room for one address.
    static constexpr size_t kAddressSize = 512;

    /// The caches by the names of their lists.
    using CacheList = zxpol::CacheList;

    /// Takes `listKey` over and takes part in the list's cache, which is filled from the store where that has not been
    /// done yet. On failure the object is of no use but to be destroyed.
    ZxPolNormalAddrList(_ZxPolComHandle* listKey, const char* name, int* error);
    /// @overload
    ZxPolNormalAddrList(zxpol::StoreKey listKey, const char* name, int* error);
    ~ZxPolNormalAddrList() override;

    /// Reads display name and comment; the type is 0. The fields of directory lists stay as they are.
    void getAttrib(_ZxPolAddrListAttr* attr, int* error) override;

    /// Writes the type, then display name and comment, up to the first failure. ZXPOL_E_INVALID_ARG: also a type other
    /// than 0.
    void setAttrib(const _ZxPolAddrListAttr* attr, int* error) override;

    /// Inserts the addresses of an array closed by a null pointer. Addresses that the list holds already (letter case
    /// and quotes ignored) are passed over. ZXPOL_E_INVALID_ARG: null or empty array. ZXPOL_E_INVALID_FORMAT: some were
    /// invalid, the others are in. A store failure ends the call.
    void insertAddresses(const char** addresses, int* error) override;

    /// Removes the addresses of an array closed by a null pointer, compared as stored, letter case ignored. When a
    /// value gets sparse, later addresses move forward and empty values vanish. ZXPOL_E_INVALID_ARG: null or empty
    /// array. ZXPOL_E_NOT_FOUND: some were not there, the others are gone. A store failure ends the call.
    void removeAddresses(const char** addresses, int* error) override;

    /// The `index`-th address in the order that the environment variable "order" asks for: see
    /// ZxPolAddrCache::enumAddress. ZXPOL_E_INVALID_ARG: null buffer or size.
    void enumAddress(uint32_t index, char* buffer, uint32_t* size, int* error) override;

    /// Inserts the addresses of a text file, in batches. `format` 0: one address a line; 1: a directory export, where
    /// lines of the attributes "mail" and "rfc822mailbox" hold the addresses. `replace` 1: all present addresses go
    /// when the first address has been read. Lines of more than 511 characters end the import, ZXPOL_E_PARSE, unless
    /// blanks only are cut off. ZXPOL_E_INVALID_ARG: null or empty path, a path of 260 bytes or more, another format or
    /// replace. ZXPOL_E_FILE_OPEN. ZXPOL_E_FILE_READ: reading failed, or the path is a directory.
    /// ZXPOL_E_INVALID_FORMAT: some addresses were invalid, the others are in; or there were none. What was inserted
    /// before a failure stays.
    void importAddresses(uint32_t format, uint32_t replace, const char* path, int* error) override;

    /// Whether the list holds `address` or a pattern that matches it. The weight is the largest of all entries that
    /// match; 0 without any. *error is not touched.
    bool matchAddress(const char* address, uint32_t* weight, ZxPolMatchWeightType weightType, int* error) override;

    /// The entry that decides about `address`: an exact one, else the pattern of the largest weight. Empty when the
    /// list does not match it.
    std::string findMatch(const char* address, ZxPolMatchWeightType weightType) const;

    /// Has `watch` told of what insertAddresses and importAddresses do; null for nobody. Borrowed.
    void watchInserts(ZxPolInsertWatch* watch) { _watch = watch; }

    /// Drops the cache of the lists called `name`; the next object on such a list fills another. *error is not touched.
    static void clearAddrCacheByName(const char* name, int* error);

    /// Whether `attr` may be written: not null, of type 0, its texts with NUL.
    static bool isValidAttrib(const _ZxPolAddrListAttr* attr);

    /// Whether an address may be stored: a valid condition pattern of at most 511 characters.
    static bool _isAddressValid(const char* address);

    /// Inserts the addresses that the store holds into the cache.
    void _cacheAllAddresses(int* error);

    /// Forgets the sub-lists that were loaded for a change.
    void _refreshSubListCache();

    /// Moves addresses from later loaded sub-lists into earlier ones, from the sub-list `from` on, and deletes the
    /// values that end up empty.
    void _shiftAddresses(uint32_t from, int* error);

    /// The caches of all lists in the process, behind gmRWLock.
    static CacheList gmAddrCacheMap;

    /// Guards gmAddrCacheMap, and not what is in the caches; taken before a cache's own lock.
    static KR::CRWLock gmRWLock;

private:
    void _joinCache(int* error);
    bool _tryToJoin(zxpol::CacheList::Shared& torn, int* error);
    void _fill(zxpol::ListCache& cache, int* error) const;
    void _change(int* error, const std::function<void()>& body);
    void _joinChangedList(int* error);
    void _doubt(zxpol::ListCache& changing);

    void _insert(const char** addresses, int* error);
    void _append(const char* address, std::optional<zxpol::ValueNames>& names, int* error);
    void _loadTail(const zxpol::ValueNames& names, int* error);
    std::optional<uint32_t> _knownValueCount() const;
    void _loadSubList(const std::string& valueName, int* error);
    void _tell(size_t index, const char* address, ZxPolInsertWatch::Fate fate) const;
    void _tellFailure(size_t index, int result) const;

    void _remove(const char** addresses, int* error);
    bool _loadNext(const zxpol::ValueNames& names, int* error);
    uint32_t _findHolder(const char* address, int& position, zxpol::SubListSearch& search,
                         const zxpol::ValueNames& names, int* error);
    void _removeFrom(uint32_t subList, int position, const char* address, int* error);
    void _closeGaps(uint32_t lowest, const zxpol::ValueNames& names);
    void _deleteEmptied();
    bool _moveForward(uint32_t to, int* error);
    bool _findFirst(uint32_t& source, char* address, int* error) const;
    void _flush(uint32_t to, uint32_t begin, uint32_t end, int* error);

    class _Import;
    void _removeAll(int* error);

    const std::string _name;
    zxpol::CacheList::Shared _cache;
    std::vector<std::unique_ptr<ZxPolAddrSubList>> _subLists;
    bool _isExact = false;  // the store says what changes, and lets one change at a time
    ZxPolInsertWatch* _watch = nullptr;
    const size_t* _lines = nullptr;  // of the addresses that are imported
};
