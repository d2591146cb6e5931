// The commands that look at address lists.
#include <unistd.h>

#include <algorithm>
#include <ostream>

#include "lists/list_commands.h"
#include "output/json.h"
#include "output/output_file.h"
#include "output/table.h"
#include "output/text.h"
#include "policy/address_text.h"
#include "stored/open_list.h"
#include "stored/snapshot.h"

namespace tool {

namespace {

struct ListSummary {
    std::string name;
    _ZxPolAddrListAttr attr{};
    std::optional<uint32_t> count;  // of a normal list
};

_ZxPolAddrListAttr attributesOf(ZxPolAddrList& list, const std::string& name) {
    _ZxPolAddrListAttr attr{};
    int result = ZXPOL_S_OK;
    list.getAttrib(&attr, &result);
    require(result, "cannot read " + listText(name));
    return attr;
}

ListSummary summaryOf(const ListHive& hive, const std::string& name) {
    const std::unique_ptr<ZxPolAddrList> list = hive.open(name);
    ListSummary summary{name, attributesOf(*list, name), {}};
    if (summary.attr.type == ZXPOL_ADDRLIST_NORMAL)
        summary.count = countAddresses(enumerationOf(*list), listText(name));
    return summary;
}

// All lists as they stood at one moment.
std::vector<ListSummary> summariesIn(const Store& store, const ListHive& hive) {
    return readAtOneMoment(store, [&] {
        std::vector<ListSummary> summaries;
        for (const std::string& name : hive.names())
            summaries.push_back(summaryOf(hive, name));
        return summaries;
    });
}

const char* kindOf(const ListSummary& summary) {
    return summary.count ? "normal" : "directory";
}

Json jsonOf(const ListSummary& summary) {
    Json json = Json::object({{"name", summary.name}, {"type", kindOf(summary)}});
    json.add("addresses", summary.count ? Json(*summary.count) : Json::null());
    return json.add("displayName", summary.attr.displayName).add("comment", summary.attr.comment);
}

std::vector<std::string> addressesOf(ZxPolNormalAddrList& list, const std::string& name, ListOrder order) {
    const AddressOrder asked = order == ListOrder::User ? AddressOrder::User : AddressOrder::Ascending;
    std::vector<std::string> addresses = readAddresses(enumerationOf(list), asked, listText(name));
    // The library's own descending order leaves an address out.
    if (order == ListOrder::Descending) std::reverse(addresses.begin(), addresses.end());
    return addresses;
}

// No line of a file may say an address with a line break, and no terminal be steered by one with control characters.
void requirePlainLines(const std::vector<std::string>& addresses, const std::string& name, bool isForTerminal) {
    for (const std::string& address : addresses) {
        if (address.find('\n') != std::string::npos)
            throw PolicyError("cannot export " + listText(name) + ": its address " + inQuotes(address) +
                              " holds a line break; use dump");
        if (isForTerminal && oneLine(address) != address)
            throw UsageError("cannot export " + listText(name) + " to a terminal: its address " + inQuotes(address) +
                             " holds control characters; name a file, or use list show");
    }
}

void writeLines(const std::vector<std::string>& addresses, std::ostream& out) {
    for (const std::string& address : addresses)
        out << address << '\n';
}

}  // namespace

ExitStatus runListOverview(const ListOverviewOptions& options, std::ostream& out) {
    const Store store(options.store, Store::Missing::Refuse);
    const ListHive hive(store);
    Json lists = Json::array();
    Table table({"list", "kind", "addresses", "display name"}, {0, 1, 3});
    if (options.onlyNames) {
        for (const std::string& name : readAtOneMoment(store, [&] { return hive.names(); }))
            out << oneLine(name) << '\n';
        return kSuccess;
    }
    const std::vector<ListSummary> summaries = summariesIn(store, hive);
    for (const ListSummary& summary : summaries) {
        lists.add(jsonOf(summary));
        table.add({oneLine(summary.name), kindOf(summary), summary.count ? grouped(*summary.count) : "-",
                   oneLine(summary.attr.displayName)});
    }
    if (options.format == OutputFormat::Json)
        out << Json::report({{"lists", lists}}).line();
    else if (summaries.empty())
        out << "there are no address lists\n";
    else
        table.print(out);
    return kSuccess;
}

ExitStatus runListShow(const ListShowOptions& options, std::ostream& out) {
    const Store store(options.store, Store::Missing::Refuse);
    const auto [attr, addresses] = readAtOneMoment(store, [&] {
        const std::unique_ptr<ZxPolNormalAddrList> list = ListHive(store).openNormal(options.name);
        return std::pair(attributesOf(*list, options.name), addressesOf(*list, options.name, options.order));
    });
    if (options.format == OutputFormat::Json) {
        out << Json::report({{"name", options.name},
                             {"type", "normal"},
                             {"displayName", attr.displayName},
                             {"comment", attr.comment},
                             {"addresses", addresses}})
                   .line();
        return kSuccess;
    }
    for (const std::string& address : addresses)
        out << oneLine(address) << '\n';
    return kSuccess;
}

ExitStatus runListCheck(const ListCheckOptions& options, std::ostream& out) {
    const Store store(options.store, Store::Missing::Refuse);
    const std::unique_ptr<ZxPolNormalAddrList> list = ListHive(store).openNormal(options.name);
    const std::string address = senderFromText(options.address);
    uint32_t weight = 0;
    int result = ZXPOL_S_OK;
    const bool isMatch = list->matchAddress(address.c_str(), &weight, options.weight, &result);
    require(result, "cannot check " + inQuotes(address) + " against " + listText(options.name));
    const std::string entry = isMatch ? list->findMatch(address.c_str(), options.weight) : "";
    if (options.format == OutputFormat::Json) {
        Json json = Json::report({{"list", options.name}, {"address", address}, {"matches", isMatch}});
        json.add("entry", isMatch ? Json(entry) : Json::null()).add("weight", isMatch ? Json(weight) : Json::null());
        out << json.line();
    } else if (isMatch) {
        out << inQuotes(address, 511) << " is matched by " << inQuotes(entry, 511) << ", weight " << weight << '\n';
    } else {
        out << "no entry of " << listText(options.name) << " matches " << inQuotes(address, 511) << '\n';
    }
    return isMatch ? kSuccess : kAnswerIsNo;
}

ExitStatus runListExport(const ListExportOptions& options, std::ostream& out) {
    const Store store(options.store, Store::Missing::Refuse);
    const std::unique_ptr<ZxPolNormalAddrList> list = ListHive(store).openNormal(options.name);
    const std::vector<std::string> addresses = addressesOf(*list, options.name, ListOrder::User);
    const bool isToOutput = !options.file || *options.file == "-";
    requirePlainLines(addresses, options.name, isToOutput && isatty(STDOUT_FILENO) != 0);
    if (isToOutput) {
        writeLines(addresses, out);
        return kSuccess;
    }
    OutputFile file(*options.file, filesOf(options.store));
    writeLines(addresses, file.stream());
    file.keep();
    return kSuccess;
}

}  // namespace tool
