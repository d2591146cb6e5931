#include "addrlist/address_file.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "zxbase.h"
#include "zxpolicy.h"

namespace zxpol {

namespace {

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
    : _format(format), _file(std::fopen(path, "re")), _result(ZXPOL_S_OK) {}

// Reads on when everything has been taken. False at the end of the file; a failure is noted.
bool AddressFile::refill() {
    if (_position != _end) return true;
    const size_t size = std::fread(_buffer.data(), 1, _buffer.size(), _file.get());
    _position = _buffer.data();
    _end = _position + size;
    if (size == 0 && std::ferror(_file.get()) != 0) _result = ZXPOL_E_FILE_READ;
    return size != 0;
}

// The next character, or EOF.
int AddressFile::get() {
    if (!refill()) return EOF;
    const auto c = static_cast<unsigned char>(*_position++);
    if (c == '\n') ++_line;
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
    text[0] = static_cast<char>(_next);
    length = 1;
    while (refill()) {
        const size_t most = std::min(maxLine - length, static_cast<size_t>(_end - _position));
        const auto* newline = static_cast<const char*>(std::memchr(_position, '\n', most));
        const size_t size = newline != nullptr ? static_cast<size_t>(newline - _position) : most;
        std::memcpy(text + length, _position, size);
        _position += size;
        length += size;
        if (newline == nullptr && length < maxLine) continue;
        if (get() == '\n') {
            if (text[length - 1] == '\r') --length;
            text[length++] = '\n';
        }
        break;
    }
    text[length] = '\0';
    return _result == ZXPOL_S_OK;
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
