// An open policy store.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "stored/handles.h"

namespace tool {

// The key of the root rule, seen from the store's.
constexpr const char* kRootRuleKey = "Rule\\Mail";

class Store {
public:
    enum class Missing {
        Create,  // make the store
        Refuse,  // a store that is not there is an error: an empty policy lets everything through
    };

    // Opens the store at `location`. Throws a ToolError.
    Store(const std::string& location, Missing missing);

    _ZxPolComHandle* key() const { return _key.get(); }
    const std::string& location() const { return _location; }

    // Whether the store holds a policy, that is, a root rule. Throws a StoreError.
    bool holdsPolicy() const;
    // Throws a PolicyError when it does not.
    void requirePolicy() const;

    // A number that changes with every change of the store, from any process. Throws a StoreError.
    uint64_t stamp() const;

private:
    std::string _location;
    KeyHandle _key;
};

// Whether `location` is a file that does not exist.
bool isMissingFile(const std::string& location);
// Whether it is one that can be made: its folder exists.
bool isMissingFileInFolder(const std::string& location);

// The files that are read by a command that is given this store, or this policy file; "-" is standard input.
std::vector<std::string> filesOf(const std::string& locationOrFile);

// One update of a store: all writes while it is open are kept together, or taken back. Other writers wait.
class StoreUpdate {
public:
    // Throws a StoreError.
    explicit StoreUpdate(const Store& store);
    // Takes everything back, unless keep() was called.
    ~StoreUpdate();
    StoreUpdate(const StoreUpdate&) = delete;
    StoreUpdate& operator=(const StoreUpdate&) = delete;

    // Keeps everything. Throws a StoreError; nothing is kept then.
    void keep();
    // Takes everything back. Throws a StoreError.
    void cancel();

private:
    const Store& _store;
    bool _isOpen = true;
};

}  // namespace tool
