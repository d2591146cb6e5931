// Changes of a part of the policy in a store: it is read, changed as data, and what differs is written as apply does
// it.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>

#include "output/output_format.h"
#include "policy/policy_file.h"
#include "stored/store.h"

namespace tool {

struct EditOptions {
    std::string store;
    OutputFormat format = OutputFormat::Text;
    bool isDryRun = false;
    bool allowsDangling = false;   // what names something that is not there is a warning only
    bool allowsUncovered = false;  // so are conditions that no condition of the rule above covers
    std::string moved = {};        // the full name of what the change moves among its siblings
};

// Changes the policy that it is given. What it throws leaves the store as it was.
using PolicyChange = std::function<void(Policy& policy)>;
// Looks at the store before the change, in the same update, and throws when it does not allow that.
using StoreCheck = std::function<void(const Store& store)>;

// Makes the change in one update: all of it or, when anything fails, nothing. What it breaks is refused: conditions
// that name no list, and such that are not covered any more; those that were so before do not count. The addresses of
// lists, and their passwords, are neither read nor written, and a change of nothing writes nothing. The report goes to
// `out`, warnings to `err`. Throws a ToolError.
void editPolicy(const EditOptions& options, const PolicyChange& change, std::ostream& out, std::ostream& err,
                const StoreCheck& check = {});

}  // namespace tool
