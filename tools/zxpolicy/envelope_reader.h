// Envelope files: one mail a line, sender TAB receivers by comma.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace tool {

struct Envelope {
    std::string sender;  // empty for the null sender
    std::vector<std::string> receivers;
};

// Takes <> for the null sender, the empty text.
std::string senderFromText(const std::string& text);

// Reads one line at a time, so that files of any size take little memory. Blank lines and a byte
// order mark at the start are skipped, CR LF is taken for a line end.
class EnvelopeReader {
public:
    // - is standard input. Throws a UsageError when the file cannot be opened.
    explicit EnvelopeReader(const std::string& path);

    // Reads the next mail; false at the end. Throws a UsageError "FILE:LINE: ..." for a malformed line.
    bool next(Envelope& envelope);

private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    bool readLine(std::string& line);
    [[noreturn]] void fail(const std::string& text) const;
    void parse(const std::string& line, Envelope& envelope) const;

    std::string _name;
    std::unique_ptr<std::FILE, Closer> _opened;
    std::FILE* _file;
    uint64_t _line = 0;
};

}  // namespace tool
