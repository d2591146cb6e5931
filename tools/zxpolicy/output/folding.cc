#include "output/folding.h"

#include <algorithm>
#include <array>

#include "output/text.h"

namespace tool {

namespace {

// What may stand before the text of a line, and what of it goes on below.
struct LeadPart {
    std::string_view here;
    std::string_view below;
};

constexpr std::array<LeadPart, 5> kLeadParts{{{" ", " "}, {"│", "│"}, {"├", "│"}, {"└", " "}, {"─", " "}}};

// The bytes before the text of a line. Adds to `below`, unless that is null, what goes on.
size_t leadSize(std::string_view line, std::string* below) {
    size_t size = 0;
    for (;;) {
        const auto* part = std::find_if(kLeadParts.begin(), kLeadParts.end(), [&](const LeadPart& known) {
            return line.compare(size, known.here.size(), known.here) == 0;
        });
        if (part == kLeadParts.end()) return size;
        if (below != nullptr) *below += part->below;
        size += part->here.size();
    }
}

// The first columns of a lead.
std::string_view firstColumns(std::string_view lead, size_t columns) {
    uint32_t codePoint = 0;
    size_t position = 0;
    for (; columns > 0 && nextCodePoint(lead, position, codePoint); --columns) {
    }
    return lead.substr(0, position);
}

std::string_view withoutBlanksBehind(std::string_view line) {
    return line.substr(0, line.find_last_not_of(' ') + 1);
}

}  // namespace

std::string leadBelow(std::string_view line) {
    std::string below;
    leadSize(line, &below);
    return below;
}

LineFolder::~LineFolder() {
    finish();
}

void LineFolder::finish() {
    printLine();
    _line.clear();
}

LineFolder::int_type LineFolder::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    const char text = traits_type::to_char_type(c);
    if (text != '\n') {
        _line += text;
        return c;
    }
    finish();
    _out << '\n';
    return _out ? c : traits_type::eof();
}

int LineFolder::sync() {
    return _out.flush() ? 0 : -1;
}

void LineFolder::printLine() const {
    if (displayWidth(_line) <= _width)
        _out << _line;
    else
        printParts();
}

void LineFolder::printParts() const {
    const std::string below = leadBelow(_line) + "  ";
    const size_t text = leadSize(_line, nullptr);
    std::string part = _line.substr(0, text);
    for (size_t begin = text; begin < _line.size();) {
        const size_t word = std::min(_line.find_first_not_of(' ', begin), _line.size());
        const size_t end = std::min(_line.find(' ', word), _line.size());
        const size_t columns = displayWidth(std::string_view(_line).substr(word, end - word));
        if (displayWidth(part) + (word - begin) + columns <= _width) {
            part.append(_line, begin, end - begin);
        } else if (columns == 0) {
            part.append(_line, word, end - word);  // the end behind the last blanks, or of a colour
        } else {
            const std::string_view done = withoutBlanksBehind(part);
            if (!done.empty()) _out << done << '\n';
            part = firstColumns(below, _width - std::min(_width, columns));
            part.append(_line, word, end - word);
        }
        begin = end;
    }
    _out << withoutBlanksBehind(part);
}

}  // namespace tool
