// AddressFile: the addresses in a text file, one by one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

namespace zxpol {

/*
 * Two formats. Plain: each line that is not blank is an address. Directory export: the lines of the attributes "mail"
 * and "rfc822mailbox" are, behind the attribute's name and any blanks and colons; lines are neither joined nor decoded.
 * Blanks, tabs and line ends around an address do not belong to it. Of a line 511 characters are kept.
 */
class AddressFile {
public:
    enum Format : uint32_t { plain = 0, directoryExport = 1 };

    static constexpr size_t maxLine = 511;
    // Room for a line with its newline and NUL.
    static constexpr size_t lineSize = maxLine + 2;

    // Opens the file; see isOpen.
    AddressFile(const char* path, Format format);

    bool isOpen() const { return _file != nullptr; }

    // Whether there is a line that is not blank before the file ends; passes over the blank ones.
    bool hasLine();

    // Reads the next address into `address`, which has room for lineSize characters. False at the end of the file, and
    // when reading failed or a line was too long: `result` tells.
    bool next(char* address);

    // ZXPOL_E_FILE_READ: reading failed. ZXPOL_E_PARSE: a line is longer than 511 characters. Else success.
    int result() const { return _result; }

    // The number of the line that the last address was in.
    size_t line() const { return _addressLine; }

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    int get();
    bool refill();
    int skip(const char* characters);
    bool readLine(char* text, size_t& length);
    bool takeValue(char* text, size_t& length);
    void skipRestOfLine();
    bool isCutClean();

    const Format _format;
    const std::unique_ptr<std::FILE, Close> _file;
    std::array<char, size_t{64} << 10> _buffer;
    const char* _position = _buffer.data();  // of the next character, up to `_end`
    const char* _end = _buffer.data();
    int _next = 0;  // the character behind the ones that were taken, while `_hasNext`
    bool _hasNext = false;
    size_t _line = 1;
    size_t _addressLine = 0;
    int _result;
};

}  // namespace zxpol
