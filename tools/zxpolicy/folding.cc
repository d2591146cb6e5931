#include "folding.h"

#include <algorithm>
#include <ostream>
#include <string>

#include "text.h"

namespace tool {

void printFolded(std::ostream& out, std::string_view text, size_t width, size_t indent, size_t begun) {
    size_t column = begun;
    bool isLineBegin = true;
    while (!text.empty()) {
        const size_t end = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, end);
        const size_t needed = displayWidth(word) + (isLineBegin ? 0 : 1);
        if (!isLineBegin && width != 0 && column + needed > width) {
            out << '\n' << std::string(indent, ' ');
            column = indent;
            isLineBegin = true;
        }
        if (!isLineBegin) out << ' ';
        out << word;
        column += displayWidth(word) + (isLineBegin ? 0 : 1);
        isLineBegin = false;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    out << '\n';
}

}  // namespace tool
