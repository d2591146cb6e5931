#include "addrlist/addr_sub_list.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "addrlist/folded_text.h"
#include "pattern/ascii.h"
#include "store/result.h"
#include "store/store_value.h"
#include "zxregistry.h"

using namespace zxpol;

ZxPolAddrSubList::ZxPolAddrSubList(_ZxPolComHandle* key, const char* valueName, int* error) : _valueName(valueName) {
    _load(key, error);
}

ZxPolAddrSubList::~ZxPolAddrSubList() = default;

void ZxPolAddrSubList::_load(_ZxPolComHandle* key, int* error) {
    _buffer[0] = '\0';
    uint32_t type = ZXREG_MULTI_STRING;
    uint32_t size = maxImage;
    queryValue(key, _valueName.c_str(), &type, _buffer, &size, error);
    if (hasReason(*error, kReasonNotFound)) {
        *error = ZXPOL_S_OK;  // a value that is about to be begun
        return;
    }
    if (failed(*error)) return;
    if (type != ZXREG_MULTI_STRING || size > maxImage) {
        *error = ZXPOL_E_INVALID_FORMAT;
        return;
    }
    constexpr size_t shortAddress = 20;
    _addresses.reserve(size / shortAddress);
    // Whatever the store held, the last address ends within the buffer. Behind an address that lacked its NUL there is
    // nothing, which must not be looked at.
    _buffer[size] = '\0';
    for (const char* at = _buffer; at < _buffer + size && *at != '\0';) {
        const auto length = static_cast<uint32_t>(std::strlen(at) + 1);
        _addresses.push_back(at);
        _imageLength += length;
        at += length;
    }
}

void ZxPolAddrSubList::insert(const char* address, int* error) {
    if (error == nullptr || address == nullptr) return;
    const size_t size = std::strlen(address) + 1;
    if (_addresses.size() == _addresses.capacity()) _addresses.reserve(_addresses.size() * 2 + 8);
    char* copy = _roomFor(size);
    std::memcpy(copy, address, size);
    _addresses.push_back(copy);
    _imageLength += static_cast<uint32_t>(size);
    if (_isImage) _buffer[_imageLength - 1] = '\0';
    _isDirty = true;
    *error = ZXPOL_S_OK;
}

// Room for an address behind the others: in the image as long as it is one.
char* ZxPolAddrSubList::_roomFor(size_t size) {
    _isImage = _isImage && _imageLength + size <= maxImage;
    if (_isImage) return _buffer + _imageLength - 1;
    _copies.push_back(std::make_unique<char[]>(size));
    return _copies.back().get();
}

void ZxPolAddrSubList::remove(const char* address, int* error, int position) {
    if (error == nullptr) return;
    *error = ZXPOL_S_OK;
    if ((position == anyPosition && !match(address, position)) || static_cast<uint32_t>(position) >= count()) {
        *error = ZXPOL_E_NOT_FOUND;
        return;
    }
    _imageLength -= static_cast<uint32_t>(std::strlen(_addresses[static_cast<uint32_t>(position)]) + 1);
    _addresses.erase(_addresses.begin() + position);
    _isImage = false;
    _isDirty = true;
}

bool ZxPolAddrSubList::match(const char* address, int& position) const {
    position = 0;
    if (address == nullptr) return false;
    const size_t length = std::strlen(address);
    const auto isSame = [&](const char* own) {
        return lowerCase(*own) == lowerCase(*address) && std::strlen(own) == length &&
               equalsFolded(own, address, length);
    };
    for (const char* own : _addresses) {
        if (isSame(own)) return true;
        ++position;
    }
    return false;
}

void ZxPolAddrSubList::enumerate(uint32_t index, char* buffer, uint32_t* size, int* error) const {
    if (error == nullptr) return;
    if (buffer == nullptr || size == nullptr || *size == 0) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    if (index >= count()) {
        *error = ZXPOL_E_NO_MORE_ITEMS;
        return;
    }
    const char* address = at(index);
    const auto needed = static_cast<uint32_t>(std::strlen(address) + 1);
    const bool fits = *size >= needed;
    if (fits) std::memcpy(buffer, address, needed);
    *size = needed;
    *error = fits ? ZXPOL_S_OK : ZXPOL_E_BUFFER_TOO_SMALL;
}

void ZxPolAddrSubList::flush(_ZxPolComHandle* key, int* error) const {
    if (error == nullptr || !_isDirty) return;
    if (_imageLength > maxImage) {
        *error = ZXPOL_E_BUFFER_TOO_SMALL;
        return;
    }
    if (_isImage) {
        setValue(key, _valueName.c_str(), ZXREG_MULTI_STRING, _buffer, _imageLength, error);
        return;
    }
    char image[maxImage];
    char* end = image;
    for (const char* address : _addresses) {
        const size_t size = std::strlen(address) + 1;
        std::memcpy(end, address, size);
        end += size;
    }
    *end = '\0';
    setValue(key, _valueName.c_str(), ZXREG_MULTI_STRING, image, _imageLength, error);
}
