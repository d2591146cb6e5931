// The commands on address lists.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "output/output_format.h"
#include "tool_error.h"
#include "zxpolicy.h"

namespace tool {

struct ListOptions {
    std::string store;
    std::string name;
    OutputFormat format = OutputFormat::Text;
};

struct ListOverviewOptions : ListOptions {
    bool onlyNames = false;  // in a report of text
};

enum class ListOrder { User, Ascending, Descending };

struct ListShowOptions : ListOptions {
    ListOrder order = ListOrder::User;
};

struct ListCheckOptions : ListOptions {
    std::string address;
    ZxPolMatchWeightType weight = ZXPOL_WEIGHT_DOMAIN_FIRST;
};

struct ListEditOptions : ListOptions {
    std::vector<std::string> addresses;
    bool isDryRun = false;
};

enum class AddressFileFormat : uint32_t { Plain = 0, Directory = 1 };

struct ListImportOptions : ListOptions {
    std::string file;  // - is standard input
    AddressFileFormat fileFormat = AddressFileFormat::Plain;
    bool isReplacing = false;
    bool mayCreate = false;
    bool isDryRun = false;
};

struct ListExportOptions : ListOptions {
    std::optional<std::string> file;  // else standard output
};

// Each runs a command and returns the exit status. Reports go to `out`; what was asked for and could not be done with
// some of the addresses is one line to `err`, and the status kAnswerIsNo. All throw a ToolError, and then nothing was
// changed.

// All lists: kind, number of addresses, display name; or the names alone.
ExitStatus runListOverview(const ListOverviewOptions& options, std::ostream& out);
// The addresses of one list.
ExitStatus runListShow(const ListShowOptions& options, std::ostream& out);
// The entry that decides about an address, and its weight; kAnswerIsNo when there is none.
ExitStatus runListCheck(const ListCheckOptions& options, std::ostream& out);
// Writes the addresses as a plain file, one a line in user order.
ExitStatus runListExport(const ListExportOptions& options, std::ostream& out);
ExitStatus runListAdd(const ListEditOptions& options, std::ostream& out, std::ostream& err);
ExitStatus runListRemove(const ListEditOptions& options, std::ostream& out, std::ostream& err);
ExitStatus runListImport(const ListImportOptions& options, std::ostream& out, std::ostream& err);

}  // namespace tool
