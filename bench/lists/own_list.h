// A normal address list in a store, as a host's program uses it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "addrlist/addr_list.h"
#include "addrlist/addr_list_hive.h"
#include "contestant.h"
#include "zxpolicy.h"
#include "zxregistry.h"

namespace bench {

// Closes a handle as its kind asks for.
struct HandleCloser {
    void operator()(_ZxPolComHandle* handle) const;
};
using Handle = std::unique_ptr<_ZxPolComHandle, HandleCloser>;

Handle openStore(const std::string& location);

// The list "list" of a store, made when missing.
class OwnList {
public:
    explicit OwnList(const std::string& location);

    // Each of these must succeed.
    void import(const std::string& path) const;
    void insert(const Entries& entries) const;
    void remove(const Entries& entries) const;

    // Walks all addresses in the order that the environment variable "order" says, and counts them.
    size_t enumerate() const;

    // All of them.
    Entries addresses() const;

    // Whether the address, which must not match a wildcard entry, is in the list.
    bool has(const std::string& address) const;

    // The list as another object that answers queries.
    std::unique_ptr<Contestant> contestant() const;

    // The key of all lists, and the hive on another such key.
    _ZxPolComHandle* hiveKey() const { return _hiveKey.get(); }
    ZxPolAddrListHive& hive() const { return *_hive; }

    static constexpr const char* name = "list";

private:
    Handle _store;
    Handle _hiveHandle;
    Handle _list;
    Handle _hiveKey;
    std::unique_ptr<ZxPolAddrListHive> _hive;
};

}  // namespace bench
