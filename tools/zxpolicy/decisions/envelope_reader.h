// Envelope files: one mail a line, sender TAB receivers by comma.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tool_error.h"

namespace tool {

struct Envelope {
    std::string sender;  // empty for the null sender
    std::vector<std::string> receivers;
};

// A line that is no mail: a UsageError "FILE:LINE: ...". Reading may go on with the next line.
class BadLine : public UsageError {
public:
    BadLine(const std::string& where, uint64_t line, const std::string& fault)
        : UsageError(where + ": " + fault), _line(line), _fault(fault) {}

    uint64_t line() const { return _line; }
    const std::string& fault() const { return _fault; }

private:
    uint64_t _line;
    std::string _fault;
};

// Reads one line at a time, so that files of any size take little memory. Blank lines and a byte
// order mark at the start are skipped, CR LF is taken for a line end.
class EnvelopeReader {
public:
    // - is standard input. Throws a UsageError when the file cannot be opened.
    explicit EnvelopeReader(const std::string& path);

    // Reads the next mail; false at the end. Throws a BadLine for a malformed line, another UsageError when the file
    // cannot be read on.
    bool next(Envelope& envelope);

    const std::string& name() const { return _name; }
    // The number of the line that was read last.
    uint64_t line() const { return _line; }
    // The bytes that there were to read at the beginning; none for a pipe or a terminal.
    std::optional<uint64_t> size() const { return _size; }
    // The bytes that were read.
    uint64_t bytes() const { return _bytes; }

private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    bool readLine(std::string& line);
    std::string where() const;
    [[noreturn]] void fail(const std::string& fault) const;
    void parse(const std::string& line, Envelope& envelope) const;

    std::string _name;
    std::unique_ptr<std::FILE, Closer> _opened;
    std::FILE* _file;
    std::optional<uint64_t> _size;
    uint64_t _line = 0;
    uint64_t _bytes = 0;
};

}  // namespace tool
