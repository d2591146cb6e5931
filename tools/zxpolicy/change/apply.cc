#include "change/apply.h"

#include <algorithm>

#include "addrlist/normal_addr_list.h"
#include "change/apply_context.h"
#include "output/remarks.h"
#include "output/text.h"
#include "policy/policy_reader.h"
#include "stored/policy_store_reader.h"
#include "tool_error.h"

namespace tool {

namespace {

// Passwords are unlocked only where the file names one to compare with.
Secrets secretsFor(const Policy& policy) {
    const bool hasPassword = std::any_of(policy.lists.begin(), policy.lists.end(), [](const auto& entry) {
        const auto* directory = std::get_if<DirectoryList>(&entry.second);
        return directory != nullptr && directory->password.has_value();
    });
    return hasPassword ? Secrets::Read : Secrets::Leave;
}

// Makes the key of the lists, before that of the rules, which reading them makes.
void makeListsKey(const Store& store) {
    int result = ZXPOL_S_OK;
    const ListHiveHandle lists(zxpol_openAddrListHive(store.key(), &result));
    require(result, "cannot open the policy in " + oneLine(store.location()));
}

void requireNoneDangling(const std::vector<std::string>& dangling) {
    if (dangling.empty()) return;
    const std::string others =
        dangling.size() == 1 ? "" : " (and " + std::to_string(dangling.size() - 1) + " more such sides)";
    throw PolicyError(dangling.front() + others +
                      "; correct it, or give --allow-dangling to apply it as it is, such as the dump of a store that "
                      "has it");
}

}  // namespace

void applyDifferences(ApplyContext& context, const Policy& current, const Policy& wanted) {
    int result = ZXPOL_S_OK;
    const ListHiveHandle lists(zxpol_openAddrListHive(context.store.key(), &result));
    const RuleHiveHandle rules(zxpol_openRuleHive(context.store.key(), 0, &result));
    const RuleHandle root(zxpol_openRootRule(rules.get(), &result));
    require(result, "cannot open the policy in " + oneLine(context.store.location()));
    applyLists(context, lists, current, wanted);
    applyClassifications(context, current, wanted);
    applyExclusiveFilters(context, rules, current, wanted);
    applyRootRule(context, root, current.root, wanted.root);
    warnOfUncovered(context, root, wanted.root);
}

void requireStored(const Store& store, const Policy& wanted, Secrets secrets, ListParts parts) {
    // The library answers for lists from memory; what counts is what can be read from the store again.
    int ignored = ZXPOL_S_OK;
    if (parts == ListParts::All)
        for (const auto& entry : wanted.lists)
            ZxPolNormalAddrList::clearAddrCacheByName(entry.first.c_str(), &ignored);
    const StoredPolicy stored = readStoredPolicy(store, secrets, parts);
    requireNoProblems(stored.problems, "the store " + oneLine(store.location()) + " did not take the policy");
    const std::string difference = firstDifference(stored.policy, wanted);
    if (!difference.empty())
        throw PolicyError("the store " + oneLine(store.location()) + " did not take " + oneLine(difference) +
                          " as wanted; nothing was changed");
}

ApplyResult applyPolicy(const Store& store, const std::string& fileName, const Policy& policy, bool isDryRun) {
    const YamlSource source(fileName);
    const Secrets secrets = secretsFor(policy);
    ApplyContext context{store, source, {}, {}, Progress("rules"), {}};
    StoreUpdate update(store);
    makeListsKey(store);
    const StoredPolicy stored = readStoredPolicy(store, secrets);
    requireNoProblems(stored.problems, "cannot change the store " + oneLine(store.location()));
    applyDifferences(context, stored.policy, policy);
    requireStored(store, policy, secrets, ListParts::All);
    if (isDryRun)
        update.cancel();
    else
        update.keep();
    context.progress.clear();
    return {std::move(context.changes), std::move(context.warnings)};
}

void runApply(const ApplyOptions& options, std::ostream& out, std::ostream& err) {
    const std::string fileName = fileTitle(options.file);
    const Policy policy = readPolicy(fileName, readFile(options.file));
    const ReferenceFaults faults = findReferenceFaults(YamlSource(fileName), policy);
    if (!options.allowsDangling) requireNoneDangling(faults.dangling);
    // A dry run must not even make an empty store.
    const bool isNew = options.isDryRun && isMissingFileInFolder(options.store);
    const Store store(isNew ? "memory:" : options.store, Store::Missing::Create);
    const ApplyResult result = applyPolicy(store, fileName, policy, options.isDryRun);
    printRemarks(err, "warning", faults.dangling, " more sides of conditions name no list");
    printRemarks(err, "warning", result.warnings, " more conditions are not covered");
    printRemarks(err, "note", faults.notes, " more texts of outcomes name no classification");
    result.changes.print(out, options.format, options.isDryRun);
    requireReported(out, "the policy was applied to " + oneLine(options.store), options.isDryRun);
}

}  // namespace tool
