// What is wrong with a policy, or looks as if.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tool {

enum class Severity {
    Error,    // mails are not treated as the policy says, or cannot be
    Warning,  // something has no effect, or another one than it seems
    Note      // worth a look
};

struct SampleMail {
    std::string sender;
    std::string receiver;
};

struct Finding {
    Severity severity;
    const char* id;                                 // the same in every version
    std::string place;                              // what is concerned, such as "rule \Sales, condition 2"
    std::string text;                               // what is wrong with it, as a sentence without a full stop
    std::string remedy;                             // what to do
    std::vector<std::string> rules = {};            // the rules concerned, the one at fault first
    std::optional<SampleMail> mail = std::nullopt;  // one that shows it
    bool isOfWellFormed = false;                    // so for mails with well-formed addresses, and not for all
};

// Whether both addresses are well-formed.
bool isWellFormed(const SampleMail& mail);

const char* severityText(Severity severity);

}  // namespace tool
