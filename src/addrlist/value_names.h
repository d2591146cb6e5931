// ValueNames: the names of the values that a list is spread over.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "store/multi_value.h"

namespace zxpol {

// The names are those of a ZxPolMultiValue. Where it is known that they are "address1" to "addressN", which they are
// unless other programs had a hand in it, they are not read from the store: a list of a million addresses has ten
// thousand.
class ValueNames {
public:
    // `key` is borrowed. `denseCount` is N, if it is known; else the names are read.
    ValueNames(_ZxPolComHandle* key, std::optional<uint32_t> denseCount);

    // Why there may be more names than `count`: the failure that ended their reading, or success.
    int result() const { return _read != nullptr ? _read->result() : ZXPOL_S_OK; }
    uint32_t count() const { return _read != nullptr ? _read->count() : *_denseCount; }

    // The name at `index`, and the next name, which counts from now on. Codes are those of ZxPolMultiValue.
    std::string at(uint32_t index, int* error) const;
    std::string next(int* error);

    // N, when the names are "address1" to "addressN".
    std::optional<uint32_t> denseCount() const { return _denseCount; }

    static constexpr const char* stem = "address";

private:
    bool isDense() const;

    std::optional<uint32_t> _denseCount;
    std::unique_ptr<ZxPolMultiValue> _read;  // where they are others
};

}  // namespace zxpol
