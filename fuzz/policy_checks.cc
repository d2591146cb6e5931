#include "policy_checks.h"

#include "addrlist/normal_addr_list.h"
#include "change/apply.h"
#include "fail.h"
#include "policy/policy_reader.h"
#include "policy/policy_writer.h"
#include "stored/policy_store_reader.h"
#include "support/store_dump.h"

namespace fuzz {

std::string contentOf(const tool::Store& store) {
    return zxtest::describe(zxtest::readStore(store.key()));
}

void requireOneLine(const tool::ToolError& error) {
    const std::string text = error.what();
    require(!text.empty() && text.find('\n') == std::string::npos, "a message is not one line");
}

void requireSamePolicy(const tool::Policy& right, const tool::Policy& found, const char* when) {
    const std::string difference = tool::firstDifference(right, found);
    if (!difference.empty()) fail(std::string(when) + ": " + difference);
}

bool apply(const tool::Store& store, const tool::Policy& policy, bool isDryRun) {
    const std::string before = contentOf(store);
    bool isTaken = true;
    try {
        tool::applyPolicy(store, "p", policy, isDryRun);
    } catch (const tool::ToolError& error) {
        requireOneLine(error);
        isTaken = false;
    }
    if (!isTaken || isDryRun) requireSame(before, contentOf(store), "a dry run or a refused policy changed the store");
    return isTaken;
}

void checkStored(const tool::Store& store, const tool::Policy& policy) {
    const tool::StoredPolicy stored = tool::readPolicySnapshot(store, tool::Secrets::Read);
    require(stored.problems.empty(), "the store holds what no file can say");
    requireSamePolicy(policy, stored.policy, "applied and read");
    const tool::Policy dumped = tool::readPolicy("the dump", tool::writePolicy(stored.policy));
    const std::string before = contentOf(store);
    require(tool::applyPolicy(store, "p", dumped, false).changes.isEmpty(), "applying the dump changes something");
    requireSame(before, contentOf(store), "applying the dump changed the store");
}

void forgetLists(const tool::Policy& policy) {
    int ignored = ZXPOL_S_OK;
    for (const auto& entry : policy.lists)
        ZxPolNormalAddrList::clearAddrCacheByName(entry.first.c_str(), &ignored);
}

}  // namespace fuzz
