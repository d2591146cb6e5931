#include "output/statements.h"

#include <algorithm>
#include <ostream>

#include "output/text.h"

namespace tool {

namespace {

// Longer things do not push the texts of all others to the right.
constexpr size_t kWidestThing = 48;
constexpr size_t kHanging = 4;

size_t endOf(const Statement& statement) {
    return statement.indent + displayWidth(statement.thing);
}

std::string blanks(size_t count) {
    return std::string(count, ' ');
}

void printOne(std::ostream& out, const Statement& statement, size_t column, size_t width, const Colours& colours) {
    const std::string begin = blanks(statement.indent) + statement.thing;
    const size_t behind = statement.thing.empty() ? statement.indent : endOf(statement) + 2;
    const auto painted = [&](const std::string& text) { return colours.paint(text, statement.tone); };
    if (statement.text.empty()) {
        out << begin << '\n';
        return;
    }
    const size_t room = width - std::min(width, displayWidth(statement.text));
    if (behind <= room) {
        const size_t wanted = statement.thing.empty() ? behind : std::max(behind, column);
        out << begin << blanks((wanted <= room ? wanted : behind) - endOf(statement)) << painted(statement.text)
            << '\n';
        return;
    }
    if (!statement.thing.empty()) out << begin << '\n';
    const size_t hanging = statement.indent + (statement.thing.empty() ? 0 : kHanging);
    out << blanks(hanging) << painted(statement.text) << '\n';
}

}  // namespace

void printStatements(std::ostream& out, const std::vector<Statement>& statements, size_t width,
                     const Colours& colours) {
    size_t column = 0;
    for (const Statement& statement : statements) {
        const size_t end = endOf(statement);
        if (!statement.thing.empty() && !statement.text.empty() && end <= kWidestThing)
            column = std::max(column, end + 2);
    }
    for (const Statement& statement : statements)
        printOne(out, statement, column, width, colours);
}

}  // namespace tool
