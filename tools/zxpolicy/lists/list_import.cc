// The command that imports a file into a list.
#include <array>
#include <chrono>
#include <optional>
#include <ostream>

#include "lists/list_report.h"
#include "lists/spooled_input.h"
#include "output/json.h"
#include "output/progress.h"
#include "output/text.h"
#include "result_names.h"
#include "stored/open_list.h"

namespace tool {

namespace {

constexpr size_t kShown = 10;
constexpr size_t kMaxPath = 259;

// Counts what becomes of the addresses of the file.
class ImportWatch : public ZxPolInsertWatch {
public:
    void onAddress(size_t line, const char* address, Fate fate) override {
        ++_counts[static_cast<size_t>(fate)];
        if (fate == Fate::invalid && invalid.size() < kShown) invalid.push_back({line, address});
        progress.step();
    }

    // The first failure is the one that counts: the library goes on with the addresses behind it.
    void onFailure(size_t line, int result) override {
        if (ZX_FAILURE(failure)) return;
        failureLine = line;
        failure = result;
    }

    uint64_t count(Fate fate) const { return _counts[static_cast<size_t>(fate)]; }

    std::vector<PassedOver> invalid;  // the first ones
    uint64_t failureLine = 0;
    int failure = ZXPOL_S_OK;
    Progress progress{"addresses"};

private:
    std::array<uint64_t, 3> _counts{};
};

using Fate = ZxPolInsertWatch::Fate;

struct ImportResult {
    uint64_t accepted = 0;
    uint64_t duplicate = 0;
    uint64_t invalid = 0;
    std::vector<PassedOver> firstInvalid;
    uint32_t before = 0;  // addresses in the list before and after
    uint32_t after = 0;
    double seconds = 0;
};

std::string fileText(const ListImportOptions& options) {
    return options.file == "-" ? "standard input" : inQuotes(options.file, 4096);
}

// Says why nothing is kept of an import. Trouble with the file is wrong usage.
void requireImport(const ListImportOptions& options, const ImportWatch& watch, int result) {
    constexpr const char* kUnchanged = "; nothing was changed";
    const int failure = ZX_FAILURE(watch.failure) ? watch.failure : result;
    if (failure == ZXPOL_E_PARSE)
        throw UsageError(fileText(options) + ", line " + std::to_string(watch.failureLine) +
                         ": longer than 511 characters: " + describeResult(failure) + kUnchanged);
    if (failure == ZXPOL_E_FILE_OPEN || failure == ZXPOL_E_FILE_READ)
        throw UsageError("cannot " + std::string(failure == ZXPOL_E_FILE_OPEN ? "open " : "read ") + fileText(options) +
                         ": " + describeResult(failure) + kUnchanged);
    if (failure != ZXPOL_E_INVALID_FORMAT)
        require(failure, "cannot import " + fileText(options) + " into " + listText(options.name));
    if (watch.count(Fate::stored) + watch.count(Fate::present) != 0) return;
    // A list that was replaced would be left empty.
    std::string found = " holds no address";
    if (!watch.invalid.empty())
        found = " holds no valid address; line " + std::to_string(watch.invalid.front().line) + " is " +
                inQuotes(watch.invalid.front().address);
    throw UsageError(fileText(options) + found + ": " + describeResult(ZXPOL_E_INVALID_FORMAT) +
                     ", or give another --format" + kUnchanged);
}

ImportResult import(const ListImportOptions& options) {
    const Store store(options.store, Store::Missing::Refuse);
    const ListHive hive(store);
    std::optional<SpooledInput> input;
    if (options.file == "-") input.emplace();
    const auto begin = std::chrono::steady_clock::now();
    StoreUpdate update(store);
    if (options.mayCreate && !hive.has(options.name)) hive.create(options.name);
    const std::unique_ptr<ZxPolNormalAddrList> list =
        hive.openNormal(options.name, "give --create to make it, or add it to the policy file and apply that");
    ImportResult import;
    import.before = countAddresses(enumerationOf(*list), listText(options.name));
    ImportWatch watch;
    list->watchInserts(&watch);
    int result = ZXPOL_S_OK;
    const char* path = input ? input->path().c_str() : options.file.c_str();
    list->importAddresses(static_cast<uint32_t>(options.fileFormat), options.isReplacing ? 1 : 0, path, &result);
    list->watchInserts(nullptr);
    watch.progress.clear();
    requireImport(options, watch, result);
    import.after = countAddresses(enumerationOf(*list), listText(options.name));
    if (options.isDryRun)
        update.cancel();
    else
        update.keep();
    import.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    import.accepted = watch.count(Fate::stored);
    import.duplicate = watch.count(Fate::present);
    import.invalid = watch.count(Fate::invalid);
    import.firstInvalid = std::move(watch.invalid);
    return import;
}

void printText(std::ostream& out, const ListImportOptions& options, const ImportResult& import) {
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.2f", import.seconds);
    out << fileText(options) << ": " << grouped(import.accepted) << " accepted, " << grouped(import.duplicate)
        << " duplicate, " << grouped(import.invalid) << " invalid, in " << seconds << " s\n";
    printPassedOver(out, import.firstInvalid, import.invalid, "is invalid");
    out << listText(options.name) << (options.isDryRun ? " would hold " : " holds ") << grouped(import.after)
        << (options.isReplacing ? " in place of " : ", before ") << grouped(import.before) << '\n';
    if (options.isDryRun) out << "dry run: nothing was written\n";
}

void printJson(std::ostream& out, const ListImportOptions& options, const ImportResult& import) {
    Json first = Json::array();
    for (const PassedOver& entry : import.firstInvalid)
        first.add(Json::object({{"line", entry.line}, {"address", entry.address}}));
    out << Json::report({{"list", options.name},
                         {"file", options.file},
                         {"dryRun", options.isDryRun},
                         {"accepted", import.accepted},
                         {"duplicate", import.duplicate},
                         {"invalid", import.invalid},
                         {"firstInvalid", first},
                         {"before", import.before},
                         {"addresses", import.after},
                         {"seconds", import.seconds}})
               .line();
}

}  // namespace

ExitStatus runListImport(const ListImportOptions& options, std::ostream& out, std::ostream& err) {
    if (options.file.empty()) throw UsageError("the path of the file to import is empty");
    if (options.file.size() > kMaxPath)
        throw UsageError("the path of the file to import is longer than 259 bytes; import it as standard input (-)");
    const ImportResult result = import(options);
    if (options.format == OutputFormat::Json)
        printJson(out, options, result);
    else
        printText(out, options, result);
    requireReport(out, options, options.isDryRun);
    return closeReport(err, "some lines of " + fileText(options) + " are not in " + listText(options.name),
                       result.invalid, ZXPOL_E_INVALID_FORMAT);
}

}  // namespace tool
