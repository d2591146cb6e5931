#include "stored/dump_command.h"

#include <ostream>

#include "output/text.h"
#include "policy/policy_reader.h"
#include "policy/policy_writer.h"
#include "stored/policy_store_reader.h"
#include "tool_error.h"

namespace tool {

void runDump(const DumpOptions& options, std::ostream& out) {
    const Store store(options.store, Store::Missing::Refuse);
    store.requirePolicy();
    const StoredPolicy stored = readPolicySnapshot(store, options.withSecrets ? Secrets::Read : Secrets::Leave);
    requireNoProblems(stored.problems, "cannot dump the store " + oneLine(options.store));
    const std::string text = writePolicy(stored.policy);
    // The text is worth something only if apply makes the same policy of it.
    const std::string difference = firstDifference(readPolicy("the dump", text), stored.policy);
    if (!difference.empty())
        throw PolicyError("cannot dump the store " + oneLine(options.store) + ": no policy file can say " +
                          oneLine(difference));
    out << text;
}

}  // namespace tool
