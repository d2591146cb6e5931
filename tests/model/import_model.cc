// The import of a text, character by character.
#include <cstdio>

#include "model/list_model.h"

namespace model {
namespace {

constexpr size_t kLineLimit = 511;
constexpr size_t kBatchLimit = 2047;
constexpr size_t kTextArea = 51200;
constexpr size_t kMargin = 512;

bool isIn(const char* set, int c) {
    return c > 0 && std::string(set).find(static_cast<char>(c)) != std::string::npos;
}

// A file that is read from its beginning.
class Text {
public:
    explicit Text(const std::string& text) : _text(text) {}

    int get() {
        if (_at < _text.size()) return static_cast<unsigned char>(_text[_at++]);
        _isAtEnd = true;
        return EOF;
    }
    bool isAtEnd() const { return _isAtEnd; }

private:
    const std::string& _text;
    size_t _at = 0;
    bool _isAtEnd = false;
};

bool endsLine(const std::string& line) {
    return !line.empty() && line.back() == '\n';
}

bool isCut(const std::string& line) {
    return line.size() == kLineLimit && !endsLine(line);
}

// The line that begins with `c`; it ends in a line feed unless it was cut or the text ended.
std::string readLine(Text& text, int c) {
    std::string line;
    for (;;) {
        line += static_cast<char>(c);
        c = text.get();
        if (c == '\n') {
            if (line.back() == '\r') line.pop_back();
            return line + '\n';
        }
        if (line.size() == kLineLimit || c == EOF) return line;
    }
}

void skipRest(Text& text, const std::string& line) {
    if (!isCut(line)) return;
    for (int c = text.get(); c != '\n' && c != EOF;)
        c = text.get();
}

// Leaves of a line of a directory export its address. False when it has none; the line is then gone.
bool takeAttribute(Text& text, std::string& line) {
    const size_t end = line.find_first_of(" :\t");
    const size_t begin = end == std::string::npos ? end : line.find_first_not_of(" :\t", end);
    const std::string name = line.substr(0, end);
    if (begin == std::string::npos || (compareFolded(name, "mail") != 0 && compareFolded(name, "rfc822mailbox") != 0) ||
        line[begin] == '\n') {
        skipRest(text, line);
        return false;
    }
    line.erase(0, begin);
    for (size_t i = 0; i < begin && !endsLine(line) && !text.isAtEnd(); ++i) {
        const int c = text.get();
        if (c != EOF) line += static_cast<char>(c);
    }
    return true;
}

// Whether nothing but blanks follows in a line that was cut.
bool isWholeButForBlanks(Text& text, const std::string& line) {
    if (!isCut(line)) return true;
    int c = text.get();
    while (isIn(" \t\r", c))
        c = text.get();
    return c == EOF || c == '\n';
}

}  // namespace

int ListModel::importText(const std::string& content, uint32_t format, uint32_t replace) {
    if (format > 1 || replace > 1) return ZXPOL_E_INVALID_ARG;
    Text text(content);
    Addresses batch;
    size_t used = 0;
    bool isCleared = false, isAnyInvalid = false, isAnyBatch = false;
    int result = ZXPOL_S_OK;
    const auto handOver = [&] {
        result = insert(batch);
        isAnyBatch = true;
        isAnyInvalid = isAnyInvalid || result == ZXPOL_E_INVALID_FORMAT;
        batch.clear();
        used = 0;
    };
    for (;;) {
        int c = text.get();
        while (isIn(" \n\r\t", c))
            c = text.get();
        if (c == EOF) break;
        std::string line = readLine(text, c);
        if (format == 1 && !takeAttribute(text, line)) continue;
        if (!isWholeButForBlanks(text, line)) return ZXPOL_E_PARSE;
        line.erase(line.find_last_not_of("\n \t") + 1);
        used += line.size() + 1;
        batch.push_back(line);
        if (replace == 1 && !isCleared) deleteAll();
        isCleared = true;
        if (batch.size() == kBatchLimit || kTextArea - used <= kMargin) handOver();
    }
    if (!batch.empty()) handOver();
    return isAnyInvalid || !isAnyBatch ? ZXPOL_E_INVALID_FORMAT : result;
}

}  // namespace model
