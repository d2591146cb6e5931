// The command apply.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "difference/change_log.h"
#include "policy/policy_file.h"
#include "policy/policy_references.h"
#include "stored/store.h"

namespace tool {

struct ApplyResult {
    ChangeLog changes;
    std::vector<std::string> warnings;
};

// Makes the store hold exactly the policy, in one update: all of it or, when anything fails, nothing. `fileName` names
// the policy's file in messages. With `isDryRun` everything is done and taken back. Throws a ToolError.
ApplyResult applyPolicy(const Store& store, const std::string& fileName, const Policy& policy, bool isDryRun);

struct ApplyOptions {
    std::string store;
    std::string file;
    OutputFormat format = OutputFormat::Text;
    bool isDryRun = false;
    bool allowsDangling = false;  // conditions that name no list are a warning only
};

// Runs the command: changes to `out`, warnings and notes to `err`. Throws a ToolError.
void runApply(const ApplyOptions& options, std::ostream& out, std::ostream& err);

}  // namespace tool
