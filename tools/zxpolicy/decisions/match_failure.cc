#include "decisions/match_failure.h"

#include <cstdio>

#include "output/text.h"
#include "result_names.h"
#include "zxpolicy.h"

namespace tool {

namespace {

constexpr size_t kShownReceivers = 3;

}  // namespace

bool isFailureOfPolicy(int code) {
    return code == ZXPOL_E_NOT_SUPPORTED || code == ZXPOL_E_NOT_FOUND || code == ZXPOL_E_INVALID_ARG;
}

Json failureJson(int code) {
    if (ZX_SUCCESS(code)) return Json::null();
    char number[16];
    std::snprintf(number, sizeof number, "0x%08x", static_cast<unsigned int>(code));
    return Json::object({{"name", resultName(code)}, {"code", number}});
}

std::string cannotMatch(const Envelope& envelope) {
    std::string text = "cannot match a mail from " + inQuotes(envelope.sender) + " to ";
    const size_t count = envelope.receivers.size();
    for (size_t i = 0; i < count && i < kShownReceivers; ++i)
        text += (i == 0 ? "" : ", ") + inQuotes(envelope.receivers[i]);
    if (count > kShownReceivers) text += " and " + grouped(count - kShownReceivers) + " more";
    return text;
}

}  // namespace tool
