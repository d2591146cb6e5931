// ZxPolAddrSubList: the addresses of one stored value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "zxpolicy.h"

/**
 * The image in memory of one numbered value of a normal address list: it is loaded, changed and written back. Which
 * value an address belongs to, and whether it may be stored at all, is the list's business.
 *
 * In the store the value is a multi-string: the addresses one behind the other, each with its NUL, and one more NUL;
 * 2048 bytes at most. Positions count the addresses from 0, those that were loaded before those that were added.
 *
 * Invariants: the image's length is that of all addresses with their NULs, and one more; what was loaded is written
 * back only after a change. Not copied, as it points into its own buffer. One thread at a time.
 */
class ZXPOL_API ZxPolAddrSubList {
public:
    /// The largest image that is written, in bytes.
    static constexpr uint32_t maxImage = 2048;

    /// The position that has `remove` look for the address.
    static constexpr int anyPosition = -1;

    /// Loads the value `valueName` of the list's key. A value that does not exist gives an empty sub-list. Any other
    /// failure of the store is reported, and the sub-list is empty, too. ZXPOL_E_INVALID_FORMAT: the value is no
    /// multi-string. Texts without NUL at the end of an image count as if they had it.
    ZxPolAddrSubList(_ZxPolComHandle* key, const char* valueName, int* error);
    ~ZxPolAddrSubList();
    ZxPolAddrSubList(const ZxPolAddrSubList&) = delete;
    ZxPolAddrSubList& operator=(const ZxPolAddrSubList&) = delete;

    /// Appends a copy of the address. Not null; nothing is checked.
    void insert(const char* address, int* error);

    /// Removes the address at `position`, whatever `address` is, or with `anyPosition` the first one that equals
    /// `address`. ZXPOL_E_NOT_FOUND.
    void remove(const char* address, int* error, int position = anyPosition);

    /// Whether the sub-list holds `address`, letter case ignored, and at which position (behind the last when it does
    /// not).
    bool match(const char* address, int& position) const;

    /// The address at `index`. *size is the buffer's capacity on entry, and with success or BUFFER_TOO_SMALL the
    /// address's length with NUL on return. ZXPOL_E_INVALID_ARG: null buffer or size, or a size of 0.
    /// ZXPOL_E_NO_MORE_ITEMS. ZXPOL_E_BUFFER_TOO_SMALL.
    void enumerate(uint32_t index, char* buffer, uint32_t* size, int* error) const;

    /// Writes the image when it was changed since it was loaded, also when it was written already; else *error stays as
    /// it was. ZXPOL_E_BUFFER_TOO_SMALL: the image has grown beyond 2048 bytes, and nothing is written.
    void flush(_ZxPolComHandle* key, int* error) const;

    /// The length in bytes of the image that flush would write.
    uint32_t multiStrLen() const { return _imageLength; }

    /// The number of addresses.
    uint32_t count() const { return static_cast<uint32_t>(_addresses.size()); }

    /// The address at a position below count(); valid until that address is removed.
    const char* at(uint32_t position) const { return _addresses[position]; }

    /// All addresses by position; valid until the next change.
    const std::vector<const char*>& addresses() const { return _addresses; }

private:
    void _load(_ZxPolComHandle* key, int* error);
    char* _roomFor(size_t size);

    std::string _valueName;
    std::vector<const char*> _addresses;  // the loaded ones, then the added ones
    char _buffer[maxImage + 1];           // the image as loaded, with what was added as long as nothing was removed
    bool _isImage = true;                 // the buffer is the image
    std::vector<std::unique_ptr<char[]>> _copies;  // of what was added later
    bool _isDirty = false;
    uint32_t _imageLength = 1;
};
