#include "output/fact_lines.h"

#include <algorithm>
#include <map>
#include <ostream>

#include "output/text.h"

namespace tool {

namespace {

std::string padded(const std::string& text, size_t columns) {
    return text + std::string(columns - std::min(columns, displayWidth(text)), ' ');
}

}  // namespace

void printFacts(std::ostream& out, const std::string& lead, const std::vector<Fact>& facts, size_t width) {
    size_t labelColumns = 0;
    std::map<std::string, size_t> whatColumns;  // facts with the same label stand in columns of their own
    for (const Fact& fact : facts) {
        labelColumns = std::max(labelColumns, displayWidth(fact.label));
        if (!fact.more.empty())
            whatColumns[fact.label] = std::max(whatColumns[fact.label], displayWidth(oneLine(fact.what)));
    }
    const std::string further = lead + padded("", labelColumns) + "    ";
    const auto below = [&](const std::string& more) {
        return displayWidth(further) + displayWidth(more) <= width ? further : lead + "  ";
    };
    for (const Fact& fact : facts) {
        const std::string begin = lead + padded(fact.label, labelColumns) + "  ";
        const std::string more = oneLine(fact.more);
        std::string line = begin;
        line.append(padded(oneLine(fact.what), whatColumns[fact.label])).append("  ").append(more);
        if (more.empty())
            out << begin << oneLine(fact.what) << '\n';
        else if (displayWidth(line) <= width)
            out << line << '\n';
        else
            out << begin << oneLine(fact.what) << '\n' << below(more) << more << '\n';
    }
}

}  // namespace tool
