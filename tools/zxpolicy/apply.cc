#include "apply.h"

#include <algorithm>
#include <ostream>

#include "addrlist/normal_addr_list.h"
#include "apply_context.h"
#include "policy_reader.h"
#include "policy_store_reader.h"
#include "text.h"
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

void applyAll(ApplyContext& context, const Policy& current, const Policy& wanted) {
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

// Reads the store back: what it holds now must be what was wanted, and nothing else.
void verify(const Store& store, const Policy& wanted, Secrets secrets) {
    // The library answers for lists from memory; what counts is what can be read from the store again.
    int ignored = ZXPOL_S_OK;
    for (const auto& entry : wanted.lists)
        ZxPolNormalAddrList::clearAddrCacheByName(entry.first.c_str(), &ignored);
    const StoredPolicy stored = readStoredPolicy(store, secrets);
    requireNoProblems(stored.problems, "the store " + oneLine(store.location()) + " did not take the policy");
    const std::string difference = firstDifference(stored.policy, wanted);
    if (!difference.empty())
        throw PolicyError("the store " + oneLine(store.location()) + " did not take " + oneLine(difference) +
                          " as the file has them; nothing was changed");
}

void requireNoneDangling(const std::vector<std::string>& dangling) {
    if (dangling.empty()) return;
    const std::string others =
        dangling.size() == 1 ? "" : " (and " + std::to_string(dangling.size() - 1) + " more such sides)";
    throw PolicyError(dangling.front() + others +
                      "; correct it, or give --allow-dangling to apply it as it is, such as the dump of a store that "
                      "has it");
}

// Prints the first lines, and how many there are more.
void printLines(std::ostream& out, const char* kind, const std::vector<std::string>& lines, const char* more) {
    constexpr size_t kMost = 10;
    for (size_t i = 0; i < lines.size() && i < kMost; ++i)
        out << "zxpolicy: " << kind << ": " << oneLine(lines[i]) << '\n';
    if (lines.size() > kMost) out << "zxpolicy: " << kind << ": " << grouped(lines.size() - kMost) << more << '\n';
}

}  // namespace

void printDangling(std::ostream& err, const ReferenceFaults& faults) {
    printLines(err, "warning", faults.dangling, " more sides of conditions name no list");
}

ApplyResult applyPolicy(const Store& store, const std::string& fileName, const Policy& policy, bool isDryRun) {
    const YamlSource source(fileName);
    const Secrets secrets = secretsFor(policy);
    ApplyContext context{store, source, {}, {}, Progress("rules")};
    StoreUpdate update(store);
    makeListsKey(store);
    const StoredPolicy stored = readStoredPolicy(store, secrets);
    requireNoProblems(stored.problems, "cannot change the store " + oneLine(store.location()));
    applyAll(context, stored.policy, policy);
    verify(store, policy, secrets);
    if (isDryRun)
        update.cancel();
    else
        update.keep();
    context.progress.clear();
    return {std::move(context.changes), std::move(context.warnings)};
}

void runApply(const ApplyOptions& options, std::ostream& out, std::ostream& err) {
    const std::string fileName = options.file == "-" ? "standard input" : options.file;
    const Policy policy = readPolicy(fileName, readFile(options.file));
    const ReferenceFaults faults = findReferenceFaults(YamlSource(fileName), policy);
    if (!options.allowsDangling) requireNoneDangling(faults.dangling);
    // A dry run must not even make an empty store.
    const bool isNew = options.isDryRun && isMissingFileInFolder(options.store);
    const Store store(isNew ? "memory:" : options.store, Store::Missing::Create);
    const ApplyResult result = applyPolicy(store, fileName, policy, options.isDryRun);
    printDangling(err, faults);
    printLines(err, "warning", result.warnings, " more conditions are not covered");
    printLines(err, "note", faults.notes, " more texts of outcomes name no classification");
    result.changes.print(out, options.format, options.isDryRun);
    if (out.flush() || options.isDryRun) return;
    throw ToolError(kFailed,
                    "the policy was applied to " + oneLine(options.store) +
                        ", but the report could not be written to standard output: check the disk's free space");
}

}  // namespace tool
