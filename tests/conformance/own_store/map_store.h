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
constexpr int kOwnFailure = static_cast<int>(0x87774711u);  // any other

// What the tests steer and read.
struct OwnStore {
    std::map<std::string, int> failingWrites;  // by the value's name, the code that its writing gives
    std::map<std::string, int> failingReads;   // the same for its reading
    std::map<std::string, int> failingOpens;   // by the name asked for, the code that opening the key gives
    std::map<std::string, int> failingMakes;   // the same for creating it
    std::map<std::string, int> spared;         // by the name, how many planned failures of any kind do not happen yet
    bool givesKeysWithFailures = false;  // a failing opening or creation of an existing key returns it all the same
    std::vector<std::string> calls;      // reads, writes, openings and creations in their order: "set comment"
    int openKeys = 0;                    // handles given out and not closed
    int openUpdates = 0;
};
OwnStore& ownStore();

// A new, empty store: its root key, to be closed like every key.
_ZxPolComHandle* newOwnStore();

// The names of the values and of the subkeys at `path`, for comparing.
std::vector<std::string> ownValues(_ZxPolComHandle* root, const char* path);
std::vector<std::string> ownSubkeys(_ZxPolComHandle* root, const char* path);

}  // namespace zxtest
