// Mails that a policy cannot match, counted.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "decisions/envelope_reader.h"
#include "output/json.h"

namespace tool {

// Counts the mails, and keeps the first of them.
class FailedMails {
public:
    // `code`: why the mail cannot be matched.
    void add(const Envelope& envelope, int code);

    uint64_t mails() const { return _mails; }
    uint64_t receivers() const { return _receivers; }

    // A block of lines, nothing without any mail: the number behind which `when` stands, such as " before", and the
    // first ones.
    void print(std::ostream& out, const std::string& when = "") const;
    Json json() const;

private:
    struct FailedMail {
        std::string sender;
        int code;
    };

    uint64_t _mails = 0;
    uint64_t _receivers = 0;
    std::vector<FailedMail> _first;
};

}  // namespace tool
