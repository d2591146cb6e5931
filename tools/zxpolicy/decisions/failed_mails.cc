#include "decisions/failed_mails.h"

#include <ostream>

#include "decisions/match_failure.h"
#include "output/text.h"
#include "policy/address_text.h"
#include "result_names.h"

namespace tool {

namespace {

constexpr size_t kKeptFailures = 10;

}  // namespace

void FailedMails::add(const Envelope& envelope, int code) {
    ++_mails;
    _receivers += envelope.receivers.size();
    if (_first.size() < kKeptFailures) _first.push_back({envelope.sender, code});
}

void FailedMails::print(std::ostream& out, const std::string& when) const {
    if (_mails == 0) return;
    out << '\n' << counted(_mails, "mail") << " cannot be matched" << when << '\n';
    for (const FailedMail& mail : _first)
        out << "  from " << senderToText(mail.sender) << ": " << describeResult(mail.code) << '\n';
    if (_mails > _first.size()) out << "  and " << grouped(_mails - _first.size()) << " more\n";
}

Json FailedMails::json() const {
    Json first = Json::array();
    for (const FailedMail& mail : _first)
        first.add(Json::object({{"sender", mail.sender}, {"failure", failureJson(mail.code)}}));
    return Json::object({{"receivers", _receivers}, {"mails", _mails}, {"first", first}});
}

}  // namespace tool
