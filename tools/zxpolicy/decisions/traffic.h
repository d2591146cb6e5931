// Recorded traffic: a file of mails of which some lines may be bad.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "decisions/envelope_reader.h"
#include "output/json.h"

namespace tool {

// Reads the mails of a file. Bad lines are counted, and the first of them kept.
class Traffic {
public:
    // Keeps at most `keptLines` bad lines. Throws a UsageError when the file cannot be opened.
    Traffic(const std::string& path, uint32_t keptLines) : _reader(path), _keptLines(keptLines) {}

    // Reads the next mail; false at the end. Throws a UsageError when the file cannot be read on.
    bool next(Envelope& envelope);

    // The number of the line of the mail that was read last.
    uint64_t line() const { return _reader.line(); }
    // How much there is to read, where that is known, and how much was read.
    std::optional<uint64_t> size() const { return _reader.size(); }
    uint64_t bytes() const { return _reader.bytes(); }
    uint64_t badLines() const { return _badLines; }

    // The bad lines: a block of lines, nothing without any; their number and the first ones.
    void printBadLines(std::ostream& out) const;
    Json badLinesJson() const;

private:
    EnvelopeReader _reader;
    uint32_t _keptLines;
    uint64_t _badLines = 0;
    std::vector<BadLine> _first;
};

}  // namespace tool
