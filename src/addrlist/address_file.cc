#include "addrlist/address_file.h"

#include <cstring>
#include <string_view>

#include "zxbase.h"
#include "zxpolicy.h"

namespace zxpol {

namespace {

constexpr size_t kReadAhead = size_t{64} << 10;

bool isOneOf(int c, const char* characters) {
    return c > 0 && std::strchr(characters, c) != nullptr;
}

bool isAddressAttribute(const char* name, size_t length) {
    const auto is = [&](std::string_view attribute) {
        return length == attribute.size() && kr_strnicmp(name, attribute.data(), length) == 0;
    };
    return is("mail") || is("rfc822mailbox");
}

// Whether a line was longer than what was kept of it.
bool isCut(const char* text, size_t length) {
    return length == AddressFile::maxLine && text[length - 1] != '\n';
}

}  // namespace

AddressFile::AddressFile(const char* path, Format format)
    : _format(format), _file(std::fopen(path, "re")), _result(ZXPOL_S_OK) {
    if (_file != nullptr) std::setvbuf(_file.get(), nullptr, _IOFBF, kReadAhead);
}

// The next character, or EOF; a failure is noted.
int AddressFile::get() {
    const int c = getc_unlocked(_file.get());
    if (c == '\n') ++_line;
    if (c == EOF && std::ferror(_file.get()) != 0) _result = ZXPOL_E_FILE_READ;
    return c;
}

// Passes over the given characters and returns the one behind them.
int AddressFile::skip(const char* characters) {
    int c = get();
    while (isOneOf(c, characters))
        c = get();
    return c;
}

bool AddressFile::hasLine() {
    if (!_hasNext) _next = skip(" \n\r\t");
    _hasNext = _next != EOF;
    return _hasNext;
}

bool AddressFile::next(char* address) {
    while (hasLine()) {
        _hasNext = false;
        _addressLine = _line;
        size_t length = 0;
        if (!readLine(address, length)) return false;
        if (_format == directoryExport && !takeValue(address, length)) {
            if (_result != ZXPOL_S_OK) return false;
            continue;
        }
        if (isCut(address, length) && !isCutClean()) return false;
        // A NUL in the file ends its line.
        length = std::strlen(address);
        while (length > 0 && isOneOf(address[length - 1], "\n \t"))
            --length;
        address[length] = '\0';
        return true;
    }
    return false;
}

// Reads a line, whose first character is known, with its newline. Of a carriage return before it nothing is kept. The
// character at which a long line is cut is lost.
bool AddressFile::readLine(char* text, size_t& length) {
    int c = _next;
    for (length = 0; length < maxLine && c != EOF;) {
        text[length++] = static_cast<char>(c);
        c = get();
        if (_result != ZXPOL_S_OK) return false;
        if (c != '\n') continue;
        if (text[length - 1] == '\r') --length;
        text[length++] = '\n';
        break;
    }
    text[length] = '\0';
    return true;
}

// Leaves only the value of an attribute that holds addresses in `text`. False when it is another line.
bool AddressFile::takeValue(char* text, size_t& length) {
    const size_t nameLength = std::strcspn(text, " :\t");
    const size_t offset = nameLength + std::strspn(text + nameLength, " :\t");
    const char first = text[offset];
    if (!isAddressAttribute(text, nameLength) || first == '\n' || first == '\0') {
        if (isCut(text, length)) skipRestOfLine();
        return false;
    }
    const bool mayGoOn = text[length - 1] != '\n';
    length -= offset;
    std::memmove(text, text + offset, length + 1);
    // What the name took of a line that was cut is there for more of the value.
    for (size_t room = offset; mayGoOn && room > 0; --room) {
        const int c = get();
        if (c == EOF) break;
        text[length++] = static_cast<char>(c);
        if (c == '\n') break;
    }
    text[length] = '\0';
    return _result == ZXPOL_S_OK;
}

void AddressFile::skipRestOfLine() {
    int c = get();
    while (c != '\n' && c != EOF)
        c = get();
}

// Whether only blanks were cut off a line.
bool AddressFile::isCutClean() {
    const int c = skip(" \t\r");
    if (_result == ZXPOL_S_OK && c != '\n' && c != EOF) _result = ZXPOL_E_PARSE;
    return _result == ZXPOL_S_OK;
}

}  // namespace zxpol
