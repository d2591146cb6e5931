#include "table.h"

#include <algorithm>
#include <ostream>

#include "text.h"

namespace tool {

void Table::print(std::ostream& out) const {
    std::vector<size_t> widths;
    for (const auto& row : _rows) {
        widths.resize(std::max(widths.size(), row.size()), 0);
        for (size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], displayWidth(row[i]));
    }
    for (const auto& row : _rows) {
        std::string line;
        for (size_t i = 0; i < row.size(); ++i) {
            const std::string padding(widths[i] - displayWidth(row[i]), ' ');
            const bool isLeft = _left.count(i) != 0;
            line.append(i == 0 ? "" : "  ").append(isLeft ? row[i] + padding : padding + row[i]);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
}

}  // namespace tool
