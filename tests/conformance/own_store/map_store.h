// A store that stands in for the host's: a tree in memory with result codes of its own.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "zxregistry.h"

namespace zxtest {

// This store's codes: another facility, and only the reasons that every store shares.
constexpr int kOwnOk = 0x07770000;
constexpr int kOwnTooSmall = static_cast<int>(0x87770006u);
constexpr int kOwnEnd = static_cast<int>(0x8777000cu);
constexpr int kOwnMissing = static_cast<int>(0x87771804u);

// What the tests steer and read.
struct OwnStore {
    std::map<std::string, int> failingWrites;  // by the value's name, the code that its writing gives
    int openKeys = 0;                          // handles given out and not closed
    int openUpdates = 0;
};
OwnStore& ownStore();

// A new, empty store: its root key, to be closed like every key.
_ZxPolComHandle* newOwnStore();

// The names of the values and of the subkeys at `path`, for comparing.
std::vector<std::string> ownValues(_ZxPolComHandle* root, const char* path);
std::vector<std::string> ownSubkeys(_ZxPolComHandle* root, const char* path);

}  // namespace zxtest
