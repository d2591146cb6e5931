#include "match_report.h"

#include <cmath>
#include <cstdio>
#include <ostream>
#include <set>

#include "json.h"
#include "table.h"
#include "text.h"

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

// Visits the rules in the order of the tree, with what stands before each name.
template <class Visit>
void walk(const RuleNode& node, const std::string& lead, const std::string& belowLead, const Visit& visit) {
    visit(node, lead);
    for (const RuleNode& child : node.rules) {
        const bool isLast = &child == &node.rules.back();
        walk(child, belowLead + (isLast ? "└─ " : "├─ "), belowLead + (isLast ? "   " : "│  "), visit);
    }
}

// A number with one decimal below `least`, and none from there on.
std::string rounded(double value, double least) {
    char text[32];
    if (value >= least) return grouped(static_cast<uint64_t>(std::llround(value)));
    std::snprintf(text, sizeof text, "%.1f", value);
    return text;
}

}  // namespace

std::string durationText(std::chrono::nanoseconds duration) {
    constexpr double kLargest = 10000;
    double value = static_cast<double>(duration.count()) / 1000;
    if (value <= kLargest) return rounded(value, 100) + " µs";
    value /= 1000;
    if (value <= kLargest) return rounded(value, 100) + " ms";
    return rounded(value / 1000, 100) + " s";
}

void addDecision(Json& json, const Decision& decision) {
    Json matches = Json::array();
    for (const MatchedRule& rule : decision.matches)
        matches.add(Json::object({{"rule", rule.path}, {"receivers", rule.receivers}, {"tasks", rule.tasks}}));
    json.add("matches", matches).add("unmatched", decision.unmatched);
}

void printJson(std::ostream& out, const Envelope& envelope, const Decision& decision) {
    Json json = Json::object({{"sender", envelope.sender}});
    addDecision(json, decision);
    out << json.line();
}

void printText(std::ostream& out, const Envelope& envelope, const Decision& decision) {
    out << "mail from " << (envelope.sender.empty() ? "<>" : oneLine(envelope.sender)) << '\n';
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

void MatchSummary::add(const Envelope& envelope, const Decision& decision) {
    ++_mails;
    _receivers += envelope.receivers.size();
    _unmatched.receivers += decision.unmatched.size();
    if (!decision.unmatched.empty()) ++_unmatched.mails;
    _latency.add(decision.duration);
    std::set<std::string> tasksOfMail;
    for (const MatchedRule& rule : decision.matches) {
        Count& count = _rules[rule.path];
        count.receivers += rule.receivers.size();
        ++count.mails;
        for (const std::string& task : rule.tasks) {
            _tasks[task].receivers += rule.receivers.size();
            if (tasksOfMail.insert(task).second) ++_tasks[task].mails;
        }
    }
}

void MatchSummary::print(std::ostream& out, const RuleNode& root) const {
    out << grouped(_mails) << " mails, " << grouped(_receivers) << " receivers\n\n";
    printRules(out, root);
    printTasks(out, root);
    printDurations(out);
}

void MatchSummary::printRules(std::ostream& out, const RuleNode& root) const {
    Table table({"rule", "receivers", "mails"});
    std::set<std::string> seen;
    const auto addRow = [&](const std::string& label, const Count& count) {
        table.add({label, count.receivers == 0 ? "-" : grouped(count.receivers),
                   count.mails == 0 ? "-" : grouped(count.mails)});
    };
    walk(root, "", "", [&](const RuleNode& node, const std::string& lead) {
        const auto found = _rules.find(node.path);
        addRow(lead + (node.name.empty() ? "\\" : oneLine(node.name)), found == _rules.end() ? Count{} : found->second);
        seen.insert(node.path);
    });
    // Rules that went away while the mails were matched.
    for (const auto& [path, count] : _rules)
        if (seen.count(path) == 0) addRow(oneLine(path), count);
    addRow("no rule", _unmatched);
    table.print(out);
}

void MatchSummary::printTasks(std::ostream& out, const RuleNode& root) const {
    if (_tasks.empty()) return;
    Table table({"task", "receivers", "mails"});
    std::set<std::string> seen;
    const auto addRow = [&](const std::string& task) {
        const auto found = _tasks.find(task);
        if (found == _tasks.end() || !seen.insert(task).second) return;
        table.add({oneLine(task), grouped(found->second.receivers), grouped(found->second.mails)});
    };
    walk(root, "", "", [&](const RuleNode& node, const std::string&) {
        for (const std::string& task : node.tasks)
            addRow(task);
    });
    for (const auto& [task, count] : _tasks)
        addRow(task);
    out << '\n';
    table.print(out);
}

void MatchSummary::printDurations(std::ostream& out) const {
    if (_latency.count() == 0) return;
    out << "\na decision took " << durationText(_latency.quantile(0.5)) << " (median), "
        << durationText(_latency.quantile(0.99)) << " (99 of 100): " << rounded(_latency.perSecond(), 10)
        << " mails/s\n";
}

}  // namespace tool
