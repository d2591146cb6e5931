// Tables of text for a terminal.
#pragma once

#include <iosfwd>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tool {

// The columns in `left` are aligned left, the others right. Where the terminal is too narrow for a row, each row is a
// block instead: its first column, and below it the others behind their headings.
class Table {
public:
    explicit Table(std::vector<std::string> heading, std::set<size_t> left = {0}) : _left(std::move(left)) {
        add(std::move(heading));
    }

    void add(std::vector<std::string> row) { _rows.push_back(std::move(row)); }
    void print(std::ostream& out) const;

private:
    std::vector<size_t> columnWidths() const;
    void printBlocks(std::ostream& out, size_t width) const;

    std::set<size_t> _left;
    std::vector<std::vector<std::string>> _rows;
};

}  // namespace tool
