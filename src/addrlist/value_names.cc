#include "addrlist/value_names.h"

#include "store/result.h"
#include "store/store_value.h"

namespace zxpol {

namespace {

std::string numberedName(uint32_t number) {
    return ValueNames::stem + std::to_string(number);
}

}  // namespace

ValueNames::ValueNames(_ZxPolComHandle* key, std::optional<uint32_t> denseCount) : _denseCount(denseCount) {
    if (_denseCount) return;
    _read = std::make_unique<ZxPolMultiValue>(key, stem);
    if (!isDense()) return;
    _denseCount = _read->count();
    _read.reset();
}

bool ValueNames::isDense() const {
    int error = _read->result();
    for (uint32_t index = 0; index < _read->count() && succeeded(error); ++index) {
        if (at(index, &error) != numberedName(index + 1)) return false;
    }
    return succeeded(error);
}

std::string ValueNames::at(uint32_t index, int* error) const {
    *error = ZXPOL_S_OK;
    if (_read == nullptr) return numberedName(index + 1);
    char name[kNameSize] = "";
    uint32_t size = sizeof name;
    _read->enumValueName(index, name, &size, error);
    return succeeded(*error) ? name : "";
}

std::string ValueNames::next(int* error) {
    *error = ZXPOL_S_OK;
    if (_read == nullptr) return numberedName(++*_denseCount);
    char name[kNameSize] = "";
    uint32_t size = sizeof name;
    _read->createValueName(name, &size, error);
    return succeeded(*error) ? name : "";
}

}  // namespace zxpol
