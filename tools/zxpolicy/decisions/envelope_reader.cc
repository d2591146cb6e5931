#include "decisions/envelope_reader.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "output/text.h"
#include "pattern/ascii.h"
#include "policy/address_text.h"
#include "tool_error.h"

namespace tool {

namespace {

constexpr size_t kMaxLine = size_t{16} << 20;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// What trimming takes away, and what else shows as a blank: it comes from the making of the file.
bool showsAsBlank(char c) {
    return zxpol::isBlank(c) || c == '\r' || c == '\v' || c == '\f';
}

bool hasBlankAround(const std::string& address) {
    return !address.empty() && (showsAsBlank(address.front()) || showsAsBlank(address.back()));
}

// The bytes of a regular file from where it stands.
std::optional<uint64_t> restOf(std::FILE* file) {
    struct stat status {};
    if (fstat(fileno(file), &status) != 0 || !S_ISREG(status.st_mode)) return {};
    const off_t rest = status.st_size - std::max<off_t>(lseek(fileno(file), 0, SEEK_CUR), 0);
    return static_cast<uint64_t>(std::max<off_t>(rest, 0));
}

}  // namespace

EnvelopeReader::EnvelopeReader(const std::string& path)
    : _name(path == "-" ? "standard input" : path),
      _opened(path == "-" ? nullptr : std::fopen(path.c_str(), "rbe")),
      _file(path == "-" ? stdin : _opened.get()) {
    if (_file == nullptr) throw UsageError("cannot open " + inQuotes(path, 4096) + ": " + std::strerror(errno));
    _size = restOf(_file);
}

std::string EnvelopeReader::where() const {
    return oneLine(_name) + ":" + std::to_string(_line);
}

void EnvelopeReader::fail(const std::string& fault) const {
    throw BadLine(where(), _line, fault);
}

// Reads a line to its end, and gives it without that; false when there is none.
bool EnvelopeReader::readLine(std::string& line) {
    line.clear();
    ++_line;
    const char* fault = nullptr;
    int c = 0;
    for (; (c = std::getc(_file)) != EOF && c != '\n'; ++_bytes) {
        if (c == '\0') fault = "a NUL byte cannot stand in an address";
        if (line.size() == kMaxLine) fault = "the line is longer than 16 MiB; split the mail";
        if (fault == nullptr) line.push_back(static_cast<char>(c));
    }
    if (c == '\n') ++_bytes;
    if (std::ferror(_file) != 0) throw UsageError(where() + ": cannot read on: " + std::strerror(errno));
    if (fault != nullptr) fail(fault);
    if (_line == 1 && line.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0) line.erase(0, kByteOrderMark.size());
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return c != EOF || !line.empty();
}

void EnvelopeReader::parse(const std::string& line, Envelope& envelope) const {
    const size_t tab = line.find('\t');
    if (tab == std::string::npos) fail("there is no TAB between sender and receivers");
    if (line.find('\t', tab + 1) != std::string::npos) fail("there is a second TAB; receivers are separated by commas");
    if (tab == 0) fail("the sender is empty; the null sender is <>");
    envelope.sender = senderFromText(line.substr(0, tab));
    if (hasBlankAround(envelope.sender)) fail("a blank stands before or after the sender; remove it");
    envelope.receivers.clear();
    for (size_t begin = tab + 1; begin <= line.size();) {
        const size_t end = std::min(line.find(',', begin), line.size());
        if (end == begin) fail("a receiver is empty");
        envelope.receivers.push_back(line.substr(begin, end - begin));
        if (hasBlankAround(envelope.receivers.back())) fail("a blank stands before or after a receiver; remove it");
        begin = end + 1;
    }
}

bool EnvelopeReader::next(Envelope& envelope) {
    std::string line;
    while (readLine(line)) {
        if (line.find_first_not_of(" \t") == std::string::npos) continue;
        parse(line, envelope);
        return true;
    }
    return false;
}

}  // namespace tool
