// A policy that nobody changes while mails are decided by it.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include "policy/policy_file.h"
#include "stored/store.h"

namespace tool {

// Tells the location of a store from the path of a file by the engine that it begins with.
bool isStoreLocation(const std::string& locationOrFile);

// Gives the lists that `policy` names without their addresses those that lists of the same name have in `other`.
void takeAddresses(Policy& policy, const Policy& other);

// A policy in a store in memory.
class FixedPolicy {
public:
    // The policy of the store at `location`, as it stands now. Throws a ToolError.
    explicit FixedPolicy(const std::string& location);

    // The policy that is left when the file is applied to `base`, or to an empty store where that is null. Where
    // `apply` would ask for --allow-dangling, and where a list is empty because its addresses are not in the file, a
    // warning goes to `err`. The base counts only where the file leaves addresses of lists to it. Throws a ToolError.
    FixedPolicy(const std::string& file, const FixedPolicy* base, std::ostream& err);

    // The same, applied to the store at `location`, or to an empty one where there is none or it holds no policy.
    FixedPolicy(const std::string& file, const std::string& location, std::ostream& err);

    // The same, applied to an empty store, with the policy that the file was read for.
    FixedPolicy(const std::string& file, const Policy& policy, std::ostream& err);

    const Store& store() const { return _copy; }
    // Whether the store has changed since it was copied. Throws a StoreError.
    bool isOutdated() const { return _origin && _origin->stamp() != _stamp; }
    // Says on `err` when it has. Throws a StoreError.
    void noteIfOutdated(std::ostream& err) const;
    // The location or the file.
    const std::string& name() const { return _name; }

private:
    // Applies the policy to a copy of the base, or to an empty store where that is null or not needed.
    void hold(const Policy& policy, const Store* base, const std::string& baseName, std::ostream& err);

    std::string _name;
    Store _copy{"memory:", Store::Missing::Create};
    std::optional<Store> _origin;
    uint64_t _stamp = 0;
};

}  // namespace tool
