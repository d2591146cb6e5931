// The content of a store below a key: as a text to compare, and as something to fill another store with.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zxregistry.h"

namespace zxtest {

struct StoredValue {
    std::string name;
    uint32_t type = 0;
    std::string data;
};

struct StoredKey {
    std::string name;
    std::vector<StoredValue> values;
    std::vector<StoredKey> keys;
};

// Everything below `key`; throws std::runtime_error when the store fails.
StoredKey readStore(_ZxPolComHandle* key);

// Makes the keys and values of `content` below `key`; throws as above.
void writeStore(_ZxPolComHandle* key, const StoredKey& content);

// One line for each key and value, in the store's order.
std::string describe(const StoredKey& content);

}  // namespace zxtest
