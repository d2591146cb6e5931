#include "import_data/counted_data.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>

#include "support/data_file.h"
#include "zxpolicy.h"

using zxtest::linesOf;
using zxtest::splitAt;

namespace importdata {

namespace {

std::string quoted(const std::string& word) {
    return "'" + word + "'";
}

// A word of a recipe with `line` in place of each "&".
std::string filled(std::string word, const std::string& line) {
    for (size_t at = word.find('&'); at != std::string::npos; at = word.find('&', at + line.size()))
        word.replace(at, 1, line);
    return word;
}

}  // namespace

int Case::result() const {
    return invalid > 0 || offered == 0 ? ZXPOL_E_INVALID_FORMAT : ZXPOL_S_OK;
}

std::vector<Case> allCases() {
    std::vector<Case> cases;
    for (const auto& fields : zxtest::tableOf(ZX_DATA "/expected_counts.tsv", 8)) {
        const auto number = [&](size_t column) { return std::strtoul(fields[column].c_str(), nullptr, 10); };
        cases.push_back({fields[0], fields[1], fields[2], number(3), number(4), number(5), number(6), number(7)});
    }
    return cases;
}

Case caseOf(const std::string& file) {
    for (const Case& row : allCases()) {
        if (row.file == file) return row;
    }
    ADD_FAILURE() << "not in the table: " << file;
    return {};
}

std::vector<Entry> countedEntries(const Case& row) {
    const std::string command =
        quoted(ZX_COUNT_LISTS) + " --entries " + quoted(row.file) + " " + row.format + " " + quoted(row.recipe);
    std::vector<Entry> entries;
    FILE* pipe = popen(command.c_str(), "r");
    EXPECT_NE(nullptr, pipe) << command;
    if (pipe == nullptr) return entries;
    char line[1200];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        const Texts fields = splitAt(line, '\t');
        if (fields.size() == 2) entries.push_back({fields[0], fields[1].substr(0, fields[1].size() - 1)});
    }
    EXPECT_EQ(0, pclose(pipe)) << command;
    return entries;
}

Texts textsOf(const std::vector<Entry>& entries) {
    Texts texts;
    for (const Entry& entry : entries)
        texts.push_back(entry.text);
    return texts;
}

Orders ordersOf(std::vector<Entry> entries) {
    Orders orders;
    orders.user = textsOf(entries);
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        return a.isWildcard() != b.isWildcard() ? a.isWildcard() : a.key < b.key;
    });
    orders.ascending = textsOf(entries);
    const auto exact = std::find_if(entries.begin(), entries.end(), [](const Entry& e) { return !e.isWildcard(); });
    std::reverse(entries.begin(), exact);
    std::reverse(exact, entries.end());
    if (exact != entries.end()) entries.erase(exact);
    orders.descending = textsOf(entries);
    return orders;
}

const Orders& expectedOrders(const Case& row) {
    static std::map<std::string, Orders> known;
    const auto found = known.find(row.name());
    if (found != known.end()) return found->second;
    return known[row.name()] = ordersOf(countedEntries(row));
}

ImportFile::ImportFile(const Case& row) : _path(::testing::TempDir() + "zxpolicy-import-XXXXXX") {
    const int descriptor = mkstemp(_path.data());
    EXPECT_GE(descriptor, 0) << _path;
    if (FILE* made = fdopen(descriptor, "w")) std::fclose(made);
    std::ofstream file(_path, std::ios::binary);
    const Texts words = splitAt(row.recipe, ' ');
    for (const std::string& line : linesOf(ZX_DATA "/" + row.file)) {
        for (const std::string& word : words)
            file << filled(word, line) << '\n';
    }
    file.close();
    EXPECT_TRUE(file.good()) << _path;
}

ImportFile::~ImportFile() {
    std::remove(_path.c_str());
}

}  // namespace importdata
