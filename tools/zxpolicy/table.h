// Tables of text for a terminal.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace tool {

// The first column is aligned left, the others right.
class Table {
public:
    explicit Table(std::vector<std::string> heading) { add(std::move(heading)); }

    void add(std::vector<std::string> row) { _rows.push_back(std::move(row)); }
    void print(std::ostream& out) const;

private:
    std::vector<std::vector<std::string>> _rows;
};

}  // namespace tool
