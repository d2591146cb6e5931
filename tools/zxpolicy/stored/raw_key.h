// Reading keys of the store directly: what the policy interface has no question for.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "stored/handles.h"

namespace tool {

struct RawValue {
    std::string name;
    uint32_t type = 0;
    std::string data;  // as stored, a string with its NUL; empty for a protected string, which is not unlocked
};

// Opens a key; an empty handle when it does not exist. Throws a StoreError for any other failure.
KeyHandle openRawKey(_ZxPolComHandle* parent, const std::string& path);

// All values, and the names of all subkeys, in the store's order. Throw a StoreError.
std::vector<RawValue> rawValues(_ZxPolComHandle* key);
std::vector<std::string> rawSubkeys(_ZxPolComHandle* key);

// The names of all values, in the store's order. Throws a StoreError.
std::vector<std::string> rawValueNames(_ZxPolComHandle* key);

// The bytes of a value, a protected one too. `where` names the key in the StoreError that is thrown.
std::string rawData(_ZxPolComHandle* key, const std::string& name, const std::string& where);
// The same for a value that is known to be a text or a number.
std::string rawText(_ZxPolComHandle* key, const std::string& name, const std::string& where);
uint32_t rawNumber(_ZxPolComHandle* key, const std::string& name, const std::string& where);

// Whether a name is a prefix, in any letter case, followed by nothing but digits.
bool isNumbered(const std::string& name, const std::string& prefix);

// Whether the data is one text with its NUL.
bool isText(const RawValue& value);
// The text of such a value; the number of a value of 4 bytes.
std::string textOf(const RawValue& value);
uint32_t numberOf(const RawValue& value);
// Whether the data is a list of texts closed by one more NUL, and the texts.
bool splitTexts(const RawValue& value, std::vector<std::string>& texts);

}  // namespace tool
