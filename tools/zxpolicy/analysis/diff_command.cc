#include "analysis/diff_command.h"

#include <ostream>

#include "decisions/fixed_policy.h"
#include "difference/policy_diff.h"
#include "output/text.h"
#include "policy/policy_items.h"
#include "policy/policy_reader.h"
#include "stored/policy_store_reader.h"

namespace tool {

namespace {

Policy readPolicyFrom(const std::string& text) {
    if (!isStoreLocation(text)) return readPolicy(fileTitle(text), readFile(text));
    const Store store(text, Store::Missing::Refuse);
    store.requirePolicy();
    StoredPolicy stored = readPolicySnapshot(store, Secrets::Read);
    requireNoProblems(stored.problems, "cannot compare the store " + oneLine(text));
    return std::move(stored.policy);
}

void printSamples(std::ostream& out, const char* sign, const AddressSamples& addresses) {
    for (const std::string& address : addresses.first)
        out << "  " << sign << ' ' << oneLine(address) << '\n';
    const size_t others = addresses.count - addresses.first.size();
    if (others == 0) return;
    out << "  " << sign << ' ';
    if (addresses.first.empty())
        out << grouped(others) << (others == 1 ? " address\n" : " addresses\n");
    else
        out << "and " << grouped(others) << " more\n";
}

void printText(std::ostream& out, const PolicyDiff& diff) {
    for (const Change& change : diff.changes.changes()) {
        out << kindName(change.kind) << ' ' << change.what << ' ' << oneLine(change.name) << '\n';
        for (const std::string& detail : change.details)
            out << "  " << oneLine(detail) << '\n';
        const auto list = diff.lists.find(change.name);
        if (change.what != kListWord || list == diff.lists.end()) continue;
        printSamples(out, "+", list->second.added);
        printSamples(out, "-", list->second.removed);
    }
    if (diff.changes.isEmpty())
        out << "the policies are the same\n";
    else
        out << diff.changes.numbers() << '\n';
}

void printJson(std::ostream& out, const DiffOptions& options, const PolicyDiff& diff) {
    Json lists = Json::array();
    for (const auto& [name, list] : diff.lists)
        lists.add(Json::object({{"name", name},
                                {"added", list.added.count},
                                {"removed", list.removed.count},
                                {"addedSamples", list.added.first},
                                {"removedSamples", list.removed.first}}));
    Json json = Json::object({{"before", options.before}, {"after", options.after}, {"same", diff.changes.isEmpty()}});
    diff.changes.addTo(json);
    out << Json::report({{"diff", json.add("lists", lists)}}).line();
}

}  // namespace

void requireSeparateFiles(const DiffOptions& options) {
    if (options.before == "-" && options.after == "-")
        throw UsageError("the two policies cannot both be read from standard input");
}

ExitStatus runDiff(const DiffOptions& options, std::ostream& out) {
    requireSeparateFiles(options);
    const Policy before = readPolicyFrom(options.before);
    const PolicyDiff diff = differencesOf(before, readPolicyFrom(options.after), options.samples);
    if (options.format == OutputFormat::Json)
        printJson(out, options, diff);
    else
        printText(out, diff);
    return diff.changes.isEmpty() ? kSuccess : kAnswerIsNo;
}

}  // namespace tool
