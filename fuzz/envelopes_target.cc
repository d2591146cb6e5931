// The command line's reader of mails beside a slow one. An input is the file.
#include "decisions/envelope_reader.h"

#include <string>
#include <vector>

#include "bytes.h"
#include "fail.h"
#include "memory_file.h"
#include "tool_error.h"

namespace {

using Mail = std::vector<std::string>;  // the sender, and the receivers

// The mails up to the first line that is not right, and that line's number; 0 when all are.
struct Content {
    std::vector<Mail> mails;
    size_t wrongLine = 0;
};

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == separator)
            parts.emplace_back();
        else
            parts.back() += c;
    }
    return parts;
}

bool isRightSide(const std::string& side) {
    const std::string blanks = " \t\r\v\f";
    return !side.empty() && blanks.find(side.front()) == std::string::npos &&
           blanks.find(side.back()) == std::string::npos;
}

bool isRight(const std::string& line) {
    const std::vector<std::string> sides = split(line, '\t');
    if (line.find('\0') != std::string::npos || sides.size() != 2 || !isRightSide(sides[0])) return false;
    for (const std::string& receiver : split(sides[1], ',')) {
        if (!isRightSide(receiver)) return false;
    }
    return true;
}

Mail mailOf(const std::string& line) {
    const std::vector<std::string> sides = split(line, '\t');
    Mail mail{sides[0] == "<>" ? "" : sides[0]};
    for (const std::string& receiver : split(sides[1], ','))
        mail.push_back(receiver);
    return mail;
}

Content slowContent(const std::string& text) {
    Content content;
    std::vector<std::string> lines = split(text, '\n');
    if (lines[0].compare(0, 3, "\xEF\xBB\xBF") == 0) lines[0].erase(0, 3);
    for (size_t i = 0; i < lines.size(); ++i) {
        std::string& line = lines[i];
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.find_first_not_of(" \t") == std::string::npos) continue;
        if (isRight(line)) {
            content.mails.push_back(mailOf(line));
            continue;
        }
        content.wrongLine = i + 1;
        break;
    }
    return content;
}

Content realContent(const std::string& path) {
    Content content;
    tool::EnvelopeReader reader(path);
    tool::Envelope envelope;
    try {
        while (reader.next(envelope)) {
            content.mails.push_back({envelope.sender});
            content.mails.back().insert(content.mails.back().end(), envelope.receivers.begin(),
                                        envelope.receivers.end());
        }
    } catch (const tool::UsageError& error) {
        const std::string text = error.what();
        fuzz::require(text.compare(0, path.size() + 1, path + ":") == 0, "the message does not name the file");
        fuzz::require(text.find('\n') == std::string::npos, "the message is more than a line");
        content.wrongLine = std::stoul(text.substr(path.size() + 1));
    }
    return content;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = fuzz::Bytes(data, size).rest();
    const fuzz::MemoryFile file(text);
    const Content right = slowContent(text), found = realContent(file.path());
    fuzz::requireSame(right.mails, found.mails, "other mails");
    fuzz::requireSame(right.wrongLine, found.wrongLine, "another line is wrong");
    return 0;
}
