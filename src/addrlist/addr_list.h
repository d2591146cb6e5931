// ZxPolAddrList: what every list of addresses can do, wherever its members are.
#pragma once

#include <cstdint>

#include "store/store_key.h"
#include "zxpolicy.h"

namespace zxpol {

// The head of the record, which is the record of the attributes that all objects have.
inline _ZxPolCommAttrib* commonOf(_ZxPolAddrListAttr* attr) {
    return reinterpret_cast<_ZxPolCommAttrib*>(attr);
}
inline const _ZxPolCommAttrib* commonOf(const _ZxPolAddrListAttr* attr) {
    return reinterpret_cast<const _ZxPolCommAttrib*>(attr);
}

}  // namespace zxpol

/**
 * One open address list. The object owns the list's key and does not need the hive that it came from. Two
 * objects on one list share the store. Invariant: the key is open as long as the object lives. One thread at a time.
 *
 * All operations report through `error`, last; with a null `error` nothing is done. Codes of the store pass
 * through unchanged.
 */
class ZXPOL_API ZxPolAddrList {
public:
    virtual ~ZxPolAddrList();

    /// Reads the attributes. ZXPOL_E_INVALID_ARG: null record.
    virtual void getAttrib(_ZxPolAddrListAttr* attr, int* error) = 0;

    /// Writes the attributes. ZXPOL_E_INVALID_ARG: null record, or a text without NUL.
    virtual void setAttrib(const _ZxPolAddrListAttr* attr, int* error) = 0;

    /// Inserts the addresses of an array closed by a null pointer.
    virtual void insertAddresses(const char** addresses, int* error) = 0;

    /// Removes the addresses of an array closed by a null pointer.
    virtual void removeAddresses(const char** addresses, int* error) = 0;

    /// The `index`-th address; *size is the buffer's capacity on entry.
    virtual void enumAddress(uint32_t index, char* buffer, uint32_t* size, int* error) = 0;

    /// Imports the addresses of a file, in place of the present ones when `replace` is 1.
    virtual void importAddresses(uint32_t format, uint32_t replace, const char* path, int* error) = 0;

    /// Whether the list holds `address`. Where `weight` is not null it receives the weight of the best entry that
    /// matches. The answer counts for nothing when *error holds a failure.
    virtual bool matchAddress(const char* address, uint32_t* weight, ZxPolMatchWeightType weightType, int* error) = 0;

    ZxPolAddrList(const ZxPolAddrList&) = delete;
    ZxPolAddrList& operator=(const ZxPolAddrList&) = delete;

protected:
    /// Takes `listKey` over.
    explicit ZxPolAddrList(_ZxPolComHandle* listKey);
    /// @overload
    explicit ZxPolAddrList(zxpol::StoreKey listKey);

    /// Reads the display name and then, when that succeeded, the comment.
    void _getCommonAttrib(_ZxPolCommAttrib* attr, int* error);

    /// Writes the display name and then, when that succeeded, the comment.
    void _setCommonAttrib(const _ZxPolCommAttrib* attr, int* error);

    /// The list's own key; borrowed.
    _ZxPolComHandle* _listKey() const { return _key.get(); }

private:
    zxpol::StoreKey _key;
};
