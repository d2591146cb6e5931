// The commands that add addresses to a list and remove them.
#include <ostream>

#include "lists/list_report.h"
#include "output/json.h"
#include "output/text.h"
#include "policy/address_text.h"
#include "stored/open_list.h"
#include "stored/text_array.h"

namespace tool {

namespace {

struct EditResult {
    uint64_t done = 0;
    uint64_t present = 0;              // already there, or given twice
    std::vector<PassedOver> leftOver;  // invalid, or not there
    uint32_t total = 0;                // addresses in the list now
};

class EditWatch : public ZxPolInsertWatch {
public:
    explicit EditWatch(EditResult& result) : _result(result) {}

    void onAddress(size_t /*place*/, const char* address, Fate fate) override {
        if (fate == Fate::stored) ++_result.done;
        if (fate == Fate::present) ++_result.present;
        if (fate == Fate::invalid) _result.leftOver.push_back({0, address});
    }

private:
    EditResult& _result;
};

void add(ZxPolNormalAddrList& list, const ListEditOptions& options, EditResult& edit) {
    EditWatch watch(edit);
    list.watchInserts(&watch);
    int result = ZXPOL_S_OK;
    list.insertAddresses(textArray(options.addresses).data(), &result);
    list.watchInserts(nullptr);
    if (result != ZXPOL_E_INVALID_FORMAT) require(result, "cannot add to " + listText(options.name));
}

// Removes each address in the spelling that it is stored in: the library does not pass over quotes here.
void remove(ZxPolNormalAddrList& list, const ListEditOptions& options, EditResult& edit) {
    const std::string where = listText(options.name);
    AddressKeys asked = keysOf(options.addresses);
    edit.present = options.addresses.size() - asked.size();
    std::vector<std::string> stored;
    for (const std::string& address : readAddresses(enumerationOf(list), AddressOrder::User, where))
        if (asked.erase(addressKey(address)) != 0) stored.push_back(address);
    for (const std::string& address : options.addresses)
        if (asked.erase(addressKey(address)) != 0) edit.leftOver.push_back({0, address});
    edit.done = stored.size();
    int result = ZXPOL_S_OK;
    if (!stored.empty()) list.removeAddresses(textArray(stored).data(), &result);
    require(result, "cannot remove from " + where);
}

// Runs a change of a list as one update.
template <class Body>
EditResult edit(const ListEditOptions& options, Body body) {
    const Store store(options.store, Store::Missing::Refuse);
    const ListHive hive(store);
    StoreUpdate update(store);
    const std::unique_ptr<ZxPolNormalAddrList> list = hive.openNormal(options.name);
    EditResult result;
    body(*list, options, result);
    result.total = countAddresses(enumerationOf(*list), listText(options.name));
    if (options.isDryRun)
        update.cancel();
    else
        update.keep();
    return result;
}

// The words of a report.
struct EditWords {
    const char* done;
    const char* present;
    const char* leftOver;    // as the name of a number
    const char* isLeftOver;  // as the rest of a sentence
};

void print(std::ostream& out, const ListEditOptions& options, const EditResult& edit, const EditWords& words) {
    if (options.format == OutputFormat::Json) {
        Json leftOver = Json::array();
        for (const PassedOver& entry : edit.leftOver)
            leftOver.add(entry.address);
        out << Json::report({{"list", options.name},
                             {"dryRun", options.isDryRun},
                             {words.done, edit.done},
                             {words.present, edit.present},
                             {words.leftOver, edit.leftOver.size()},
                             {"passedOver", leftOver},
                             {"addresses", edit.total}})
                   .line();
        return;
    }
    out << listText(options.name) << ": " << grouped(edit.done) << ' ' << words.done << ", " << grouped(edit.present)
        << ' ' << words.present << ", " << grouped(edit.leftOver.size()) << ' ' << words.leftOver << "; it "
        << (options.isDryRun ? "would hold " : "holds ") << grouped(edit.total) << '\n';
    printPassedOver(out, edit.leftOver, edit.leftOver.size(), words.isLeftOver);
    if (options.isDryRun) out << "dry run: nothing was written\n";
}

}  // namespace

ExitStatus runListAdd(const ListEditOptions& options, std::ostream& out, std::ostream& err) {
    const EditResult result = edit(options, add);
    print(out, options, result, {"added", "duplicate", "invalid", "is invalid"});
    requireReport(out, options, options.isDryRun);
    return closeReport(err, "some addresses cannot be added to " + listText(options.name), result.leftOver.size(),
                       ZXPOL_E_INVALID_FORMAT);
}

ExitStatus runListRemove(const ListEditOptions& options, std::ostream& out, std::ostream& err) {
    const EditResult result = edit(options, remove);
    print(out, options, result, {"removed", "duplicate", "missing", "is not in the list"});
    requireReport(out, options, options.isDryRun);
    return closeReport(err, "some addresses cannot be removed from " + listText(options.name), result.leftOver.size(),
                       ZXPOL_E_NOT_FOUND);
}

}  // namespace tool
