#include "decisions/fixed_policy.h"

#include <ostream>

#include "change/apply.h"
#include "output/remarks.h"
#include "output/text.h"
#include "policy/policy_reader.h"
#include "policy/policy_references.h"
#include "stored/list_store_reader.h"
#include "stored/policy_store_reader.h"
#include "stored/store_copy.h"

namespace tool {

namespace {

// Visits each list that the policy names without its addresses.
template <class AnyPolicy, class Visit>
void forEachListWithoutAddresses(AnyPolicy& policy, const Visit& visit) {
    for (auto& [name, list] : policy.lists) {
        auto* normal = std::get_if<NormalList>(&list);
        if (normal != nullptr && !normal->addresses) visit(name, *normal);
    }
}

bool saysAllAddresses(const Policy& policy) {
    bool saysAll = true;
    forEachListWithoutAddresses(policy, [&](const std::string&, const NormalList&) { saysAll = false; });
    return saysAll;
}

// The list of that name where it is one of addresses, or null.
const NormalList* normalListIn(const Policy& policy, const std::string& name) {
    const auto found = policy.lists.find(name);
    return found == policy.lists.end() ? nullptr : std::get_if<NormalList>(&found->second);
}

void warnOfEmptyLists(std::ostream& err, const std::string& file, const Policy& policy, const Policy& base) {
    forEachListWithoutAddresses(policy, [&](const std::string& name, const NormalList&) {
        if (normalListIn(base, name) == nullptr)
            err << "zxpolicy: warning: " << oneLine(file) << ": " << listText(name)
                << " has no addresses in the file, and is empty here\n";
    });
}

}  // namespace

void takeAddresses(Policy& policy, const Policy& other) {
    forEachListWithoutAddresses(policy, [&](const std::string& name, NormalList& list) {
        const NormalList* normal = normalListIn(other, name);
        if (normal != nullptr) list.addresses = normal->addresses;
    });
}

bool isStoreLocation(const std::string& locationOrFile) {
    return locationOrFile.rfind("sqlite:", 0) == 0 || locationOrFile.rfind("memory:", 0) == 0;
}

// A change between the stamp and the copy makes the copy look outdated, which is no harm.
FixedPolicy::FixedPolicy(const std::string& location) : _name(location) {
    _origin.emplace(location, Store::Missing::Refuse);
    _origin->requirePolicy();
    _stamp = _origin->stamp();
    copyStore(*_origin, _copy);
}

FixedPolicy::FixedPolicy(const std::string& file, const FixedPolicy* base, std::ostream& err) : _name(fileTitle(file)) {
    const Policy policy = readPolicy(_name, readFile(file));
    hold(policy, base == nullptr ? nullptr : &base->store(), base == nullptr ? "" : base->name(), err);
}

FixedPolicy::FixedPolicy(const std::string& file, const std::string& location, std::ostream& err)
    : _name(fileTitle(file)) {
    const Policy policy = readPolicy(_name, readFile(file));
    std::optional<Store> base;
    if (!saysAllAddresses(policy) && !isMissingFile(location)) base.emplace(location, Store::Missing::Refuse);
    hold(policy, base && base->holdsPolicy() ? &*base : nullptr, location, err);
}

FixedPolicy::FixedPolicy(const std::string& file, const Policy& policy, std::ostream& err) : _name(fileTitle(file)) {
    hold(policy, nullptr, "", err);
}

void FixedPolicy::noteIfOutdated(std::ostream& err) const {
    if (isOutdated())
        err << "zxpolicy: note: " << oneLine(_name)
            << " has changed meanwhile; the report is of the policy that it held at the beginning\n";
}

void FixedPolicy::hold(const Policy& policy, const Store* base, const std::string& baseName, std::ostream& err) {
    printRemarks(err, "warning", findReferenceFaults(YamlSource(_name), policy).dangling,
                 " more sides of conditions name no list");
    StoredPolicy stored;
    if (base != nullptr && !saysAllAddresses(policy)) {
        copyStore(*base, _copy);
        stored = readStoredPolicy(_copy, Secrets::Leave);
        requireNoProblems(stored.problems, "cannot apply " + oneLine(_name) + " to " + oneLine(baseName));
    }
    warnOfEmptyLists(err, _name, policy, stored.policy);
    applyPolicy(_copy, _name, policy, false);
}

}  // namespace tool
