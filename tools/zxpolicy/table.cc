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
        for (size_t i = 0; i < row.size(); ++i) {
            const std::string padding(widths[i] - displayWidth(row[i]), ' ');
            if (i == 0)
                out << row[i] << padding;
            else
                out << "  " << padding << row[i];
        }
        out << '\n';
    }
}

}  // namespace tool
