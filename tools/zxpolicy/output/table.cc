#include "output/table.h"

#include <algorithm>
#include <numeric>
#include <ostream>
#include <utility>

#include "output/folding.h"
#include "output/terminal_width.h"
#include "output/text.h"

namespace tool {

namespace {

constexpr size_t kGap = 2;  // between columns

}  // namespace

std::vector<size_t> Table::columnWidths() const {
    std::vector<size_t> widths;
    for (const auto& row : _rows) {
        widths.resize(std::max(widths.size(), row.size()), 0);
        for (size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], displayWidth(row[i]));
    }
    return widths;
}

void Table::print(std::ostream& out) const {
    const std::vector<size_t> widths = columnWidths();
    const size_t terminal = terminalWidth();
    if (std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1)) > terminal)
        return printBlocks(out, terminal);
    for (const auto& row : _rows) {
        std::string line;
        for (size_t i = 0; i < row.size(); ++i) {
            const std::string padding(widths[i] - displayWidth(row[i]), ' ');
            const bool isLeft = _left.count(i) != 0;
            line.append(i == 0 ? 0 : kGap, ' ').append(isLeft ? row[i] + padding : padding + row[i]);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
}

void Table::printBlocks(std::ostream& out, size_t width) const {
    const std::vector<std::string>& heading = _rows.front();
    out << heading.front() << '\n';
    for (auto row = _rows.begin() + 1; row != _rows.end(); ++row) {
        const std::string lead = leadBelow(row->front()) + std::string(kGap, ' ');
        out << row->front() << '\n';
        std::string line;
        for (size_t i = 1; i < row->size(); ++i) {
            if ((*row)[i].empty()) continue;
            const std::string part = heading[i] + ": " + (*row)[i];
            const bool isFull = displayWidth(lead) + displayWidth(line) + kGap + displayWidth(part) > width;
            if (isFull && !line.empty()) out << lead << std::exchange(line, "") << '\n';
            line.append(line.empty() ? 0 : kGap, ' ').append(part);
        }
        if (!line.empty()) out << lead << line << '\n';
    }
}

}  // namespace tool
