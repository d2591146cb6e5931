#include "change/policy_edit.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "change/apply_context.h"
#include "output/remarks.h"
#include "output/text.h"
#include "policy/policy_references.h"
#include "tool_error.h"

namespace tool {

namespace {

using Lines = std::vector<std::string>;

// Those of the lines that were not there before.
Lines newLines(const Lines& before, const Lines& after) {
    const std::set<std::string> known(before.begin(), before.end());
    Lines found;
    std::copy_if(after.begin(), after.end(), std::back_inserter(found),
                 [&](const std::string& line) { return known.count(line) == 0; });
    return found;
}

// The conditions of the stored policy that are not covered.
Lines uncoveredNow(const ApplyContext& context, const Policy& stored) {
    ApplyContext look{context.store, context.source, {}, {}, Progress("rules", {}, false), {}};
    int result = ZXPOL_S_OK;
    const RuleHiveHandle rules(zxpol_openRuleHive(context.store.key(), 0, &result));
    const RuleHandle root(zxpol_openRootRule(rules.get(), &result));
    require(result, "cannot open the policy in " + oneLine(context.store.location()));
    warnOfUncovered(look, root, stored.root);
    return look.warnings;
}

// One line on all that is refused.
std::string refusal(const Lines& lines, const std::string& option) {
    const std::string others = lines.size() == 1 ? "" : " (and " + grouped(lines.size() - 1) + " more)";
    return lines.front() + others + "; nothing was changed; " + option + " takes it";
}

struct Remarks {
    Lines dangling;
    Lines uncovered;
};

void requireAllowed(const EditOptions& options, const Remarks& remarks) {
    if (!remarks.dangling.empty() && !options.allowsDangling)
        throw StoreError(refusal(remarks.dangling, "--allow-dangling"), ZXPOL_E_NOT_FOUND);
    if (!remarks.uncovered.empty() && !options.allowsUncovered)
        throw StoreError(refusal(remarks.uncovered, "--allow-uncovered"), ZXPOL_E_CONDITION_CHECK);
}

// Makes the change within an open update.
Remarks makeChange(ApplyContext& context, const EditOptions& options, const PolicyChange& change) {
    const StoredPolicy stored = readStoredPolicy(context.store, Secrets::Leave, ListParts::Names);
    requireNoProblems(stored.problems, "cannot change the store " + oneLine(options.store));
    Policy wanted = stored.policy;
    change(wanted);
    Remarks remarks;
    remarks.dangling = newLines(findReferenceFaults(context.source, stored.policy).dangling,
                                findReferenceFaults(context.source, wanted).dangling);
    const Lines uncovered = uncoveredNow(context, stored.policy);
    applyDifferences(context, stored.policy, wanted);
    remarks.uncovered = newLines(uncovered, context.warnings);
    requireAllowed(options, remarks);
    requireStored(context.store, wanted, Secrets::Leave, ListParts::Names);
    return remarks;
}

}  // namespace

void editPolicy(const EditOptions& options, const PolicyChange& change, std::ostream& out, std::ostream& err,
                const StoreCheck& check) {
    const Store store(options.store, Store::Missing::Refuse);
    store.requirePolicy();
    const YamlSource source(options.store);
    ApplyContext context{store, source, {}, {}, Progress("rules"), options.moved};
    StoreUpdate update(store);
    if (check) check(store);
    const Remarks remarks = makeChange(context, options, change);
    if (options.isDryRun || context.changes.isEmpty())
        update.cancel();
    else
        update.keep();
    context.progress.clear();
    printRemarks(err, "warning", remarks.dangling, " more sides of conditions name no list");
    printRemarks(err, "warning", remarks.uncovered, " more conditions are not covered");
    context.changes.print(out, options.format, options.isDryRun);
    requireReported(out, "the policy in " + oneLine(options.store) + " was changed", options.isDryRun);
}

}  // namespace tool
