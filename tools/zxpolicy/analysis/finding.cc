#include "analysis/finding.h"

#include "analysis/address_spelling.h"

namespace tool {

bool isWellFormed(const SampleMail& mail) {
    return isWellFormed(mail.sender) && isWellFormed(mail.receiver);
}

const char* severityText(Severity severity) {
    switch (severity) {
        case Severity::Error:
            return "error";
        case Severity::Warning:
            return "warning";
        case Severity::Note:
            break;
    }
    return "note";
}

}  // namespace tool
