// ZxPolNormalAddrList: importing the addresses of a file.
#include <array>
#include <cstring>

#include "addrlist/address_file.h"
#include "addrlist/normal_addr_list.h"
#include "addrlist/value_names.h"
#include "store/multi_value.h"
#include "store/result.h"

using namespace zxpol;

namespace {

constexpr size_t kPathSize = 260;

bool isPathValid(const char* path) {
    return path != nullptr && *path != '\0' && strnlen(path, kPathSize) < kPathSize;
}

}  // namespace

// One import: addresses are gathered in fixed room and handed over in batches.
class ZxPolNormalAddrList::_Import {
public:
    _Import(ZxPolNormalAddrList& list, const char* path, AddressFile::Format format, bool isReplacing)
        : _list(list), _file(path, format), _isToBeCleared(isReplacing) {}
    ~_Import() { _list._lines = nullptr; }
    _Import(const _Import&) = delete;
    _Import& operator=(const _Import&) = delete;

    // Whether the file holds anything. Nobody is kept from writing while a pipe has nothing to say yet.
    bool begin(int* error) {
        if (!_file.isOpen()) {
            *error = ZXPOL_E_FILE_OPEN;
        } else if (!_file.hasLine()) {
            *error = ZXPOL_E_INVALID_FORMAT;
            _takeFailure(error);
        } else {
            *error = ZXPOL_S_OK;
        }
        return succeeded(*error);
    }

    void run(int* error) {
        while (_file.next(_free())) {
            if (_isToBeCleared) {
                _list._removeAll(error);
                if (failed(*error)) return;
            }
            _isToBeCleared = false;
            _keep();
            if (_isFull() && !_handOver(error)) return;
        }
        if (_takeFailure(error) || (_count > 0 && !_handOver(error))) return;
        if (_hasInvalid || !_hasHandedOver) *error = ZXPOL_E_INVALID_FORMAT;
    }

private:
    static constexpr size_t maxCount = 2047;
    static constexpr size_t textSize = 51200;

    char* _free() { return _texts.data() + _used; }
    bool _isFull() const { return _count == maxCount || textSize - _used < AddressFile::lineSize; }

    void _keep() {
        _addresses[_count] = _free();
        _lines[_count++] = _file.line();
        _used += std::strlen(_free()) + 1;
    }

    // Whether the file has failed.
    bool _takeFailure(int* error) const {
        if (succeeded(_file.result())) return false;
        *error = _file.result();
        if (_list._watch != nullptr) _list._watch->onFailure(_file.line(), *error);
        return true;
    }

    // False when no more addresses are to be handed over.
    bool _handOver(int* error) {
        _addresses[_count] = nullptr;
        _list._lines = _lines.data();
        _list.insertAddresses(_addresses.data(), error);
        _list._lines = nullptr;
        _hasHandedOver = true;
        _count = _used = 0;
        if (hasReason(*error, kReasonInvalidFormat)) _hasInvalid = true;
        return *error != ZXPOL_E_NOT_SUPPORTED;
    }

    ZxPolNormalAddrList& _list;
    AddressFile _file;
    bool _isToBeCleared;
    bool _hasInvalid = false;
    bool _hasHandedOver = false;
    std::array<char, textSize> _texts;
    size_t _used = 0;
    std::array<const char*, maxCount + 1> _addresses;
    std::array<size_t, maxCount> _lines;
    size_t _count = 0;
};

void ZxPolNormalAddrList::importAddresses(uint32_t format, uint32_t replace, const char* path, int* error) {
    if (error == nullptr) return;
    if (!isPathValid(path) || format > AddressFile::directoryExport || replace > 1) {
        *error = ZXPOL_E_INVALID_ARG;
        return;
    }
    const auto import = std::make_unique<_Import>(*this, path, static_cast<AddressFile::Format>(format), replace == 1);
    if (import->begin(error)) _change(error, [&] { import->run(error); });
}

// When that fails a part of the addresses is gone, of which the cache knows nothing.
void ZxPolNormalAddrList::_removeAll(int* error) {
    _cache->valueCount.reset();
    ZxPolMultiValue names(_listKey(), ValueNames::stem);
    names.deleteAll(error);
    if (failed(*error)) {
        _cache->doubt();
    } else {
        _cache->addresses.clear();
        _cache->mayHaveDoubles = false;
    }
}
