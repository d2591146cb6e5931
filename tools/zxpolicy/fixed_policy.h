// A policy that nobody changes while mails are decided by it.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include "store.h"

namespace tool {

// Tells the location of a store from the path of a file by the engine that it begins with.
bool isStoreLocation(const std::string& locationOrFile);

// A policy in a store in memory.
class FixedPolicy {
public:
    // The policy of the store at `location`, as it stands now. Throws a ToolError.
    explicit FixedPolicy(const std::string& location);

    // The policy that is left when the file is applied to `base`, or to an empty store where that is null. Where
    // `apply` would ask for --allow-dangling, and where a list is empty because its addresses are not in the file, a
    // warning goes to `err`. Throws a ToolError.
    FixedPolicy(const std::string& file, const FixedPolicy* base, std::ostream& err);

    const Store& store() const { return _copy; }
    // Whether the store has changed since it was copied. Throws a StoreError.
    bool isOutdated() const { return _origin && _origin->stamp() != _stamp; }
    // The location or the file.
    const std::string& name() const { return _name; }

private:
    std::string _name;
    Store _copy{"memory:", Store::Missing::Create};
    std::optional<Store> _origin;
    uint64_t _stamp = 0;
};

}  // namespace tool
