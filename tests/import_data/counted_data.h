// What importing the files of tests/data must come to, told by tests/data/count_lists: with awk, and none of the
// library's code. The sorted orders are made here, from that script's keys with the standard library's sort.
#pragma once

#include <string>
#include <vector>

namespace importdata {

using Texts = std::vector<std::string>;

// A row of the table of counts: a file, how it is made into one to import, and what must come of it.
struct Case {
    std::string file;
    std::string format;
    std::string recipe;
    size_t offered;  // the sum of accepted, duplicates and invalid
    size_t accepted;
    size_t duplicates;
    size_t invalid;
    size_t wildcards;  // of the accepted ones

    std::string name() const { return file + " as " + format + " " + recipe; }
    // The result code of importing it. A file without any address counts as an invalid one.
    int result() const;
};

std::vector<Case> allCases();

// The first row of the table for a file.
Case caseOf(const std::string& file);

// An accepted entry, and the key by which it is found and sorted.
struct Entry {
    std::string key;
    std::string text;
    bool isWildcard() const { return text.find('*') != std::string::npos; }
};

// What must be accepted of a file, in its order.
std::vector<Entry> countedEntries(const Case& row);

Texts textsOf(const std::vector<Entry>& entries);

// A list's addresses in the three orders of enumeration.
struct Orders {
    Texts user, ascending, descending;
};

// Ascending: entries with a star before those without, each group by key. Descending: each group turned round, the one
// with stars still first, and the last entry of the other one is never listed.
Orders ordersOf(std::vector<Entry> entries);

// The same for what must be accepted of a file; worked out once.
const Orders& expectedOrders(const Case& row);

// The file to import, gone with this object.
class ImportFile {
public:
    explicit ImportFile(const Case& row);
    ~ImportFile();
    ImportFile(const ImportFile&) = delete;
    ImportFile& operator=(const ImportFile&) = delete;

    const char* path() const { return _path.c_str(); }

private:
    std::string _path;
};

}  // namespace importdata
