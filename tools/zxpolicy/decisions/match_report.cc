#include "decisions/match_report.h"

#include <ostream>

#include "output/json.h"
#include "output/text.h"
#include "policy/address_text.h"

namespace tool {

namespace {

// Prints lines of which the first has a heading and the others are indented alike.
template <class Lines>
void printBlock(std::ostream& out, const std::string& heading, const Lines& lines) {
    std::string indent = heading;
    for (const std::string& line : lines) {
        out << indent << line << '\n';
        indent.assign(displayWidth(heading), ' ');
    }
}

std::vector<std::string> shown(const std::vector<std::string>& texts, bool isNumbered) {
    std::vector<std::string> lines;
    lines.reserve(texts.size());
    for (const std::string& text : texts)
        lines.push_back((isNumbered ? std::to_string(lines.size() + 1) + ". " : "") + oneLine(text));
    return lines;
}

}  // namespace

void addDecision(Json& json, const Decision& decision) {
    Json matches = Json::array();
    for (const MatchedRule& rule : decision.matches)
        matches.add(Json::object({{"rule", rule.path}, {"receivers", rule.receivers}, {"tasks", rule.tasks}}));
    json.add("matches", matches).add("unmatched", decision.unmatched);
}

void printJson(std::ostream& out, const Envelope& envelope, const Decision& decision) {
    Json json = Json::report({{"sender", envelope.sender}});
    addDecision(json, decision);
    out << json.line();
}

void printText(std::ostream& out, const Envelope& envelope, const Decision& decision) {
    out << "mail from " << senderToText(envelope.sender) << '\n';
    for (const MatchedRule& rule : decision.matches) {
        out << "\nrule " << oneLine(rule.path) << '\n';
        printBlock(out, "  receivers  ", shown(rule.receivers, false));
        if (rule.tasks.empty())
            out << "  tasks      none\n";
        else
            printBlock(out, "  tasks      ", shown(rule.tasks, true));
    }
    if (decision.unmatched.empty()) return;
    out << "\nno rule\n";
    printBlock(out, "  receivers  ", shown(decision.unmatched, false));
}

}  // namespace tool
