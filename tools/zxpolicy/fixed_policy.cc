#include "fixed_policy.h"

#include <ostream>

#include "apply.h"
#include "list_store_reader.h"
#include "policy_reader.h"
#include "policy_references.h"
#include "remarks.h"
#include "store_copy.h"
#include "text.h"

namespace tool {

namespace {

void warnOfListsWithoutAddresses(std::ostream& err, const Policy& policy) {
    for (const auto& [name, list] : policy.lists) {
        const auto* normal = std::get_if<NormalList>(&list);
        if (normal != nullptr && !normal->addresses)
            err << "zxpolicy: warning: " << listText(name) << " has no addresses in the file, and is empty here\n";
    }
}

}  // namespace

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

FixedPolicy::FixedPolicy(const std::string& file, const FixedPolicy* base, std::ostream& err)
    : _name(file == "-" ? "standard input" : file) {
    const Policy policy = readPolicy(_name, readFile(file));
    printRemarks(err, "warning", findReferenceFaults(YamlSource(_name), policy).dangling,
                 " more sides of conditions name no list");
    if (base != nullptr)
        copyStore(base->store(), _copy);
    else
        warnOfListsWithoutAddresses(err, policy);
    applyPolicy(_copy, _name, policy, false);
}

}  // namespace tool
