#include <cmath>
#include <cstdio>
#include <ostream>
#include <set>

#include "decisions/match_summary.h"
#include "output/table.h"
#include "output/text.h"

namespace tool {

namespace {

// Visits the rules in the order of the tree, with what stands before each name.
template <class Visit>
void walkTree(const RuleNode& node, const std::string& lead, const std::string& belowLead, const Visit& visit) {
    visit(node, lead);
    for (const RuleNode& child : node.rules) {
        const bool isLast = &child == &node.rules.back();
        walkTree(child, belowLead + (isLast ? "└─ " : "├─ "), belowLead + (isLast ? "   " : "│  "), visit);
    }
}

// A number with one decimal below `least`, and none from there on.
std::string rounded(double value, double least) {
    char text[32];
    if (value >= least) return grouped(static_cast<uint64_t>(std::llround(value)));
    std::snprintf(text, sizeof text, "%.1f", value);
    return text;
}

std::string countText(uint64_t count) {
    return count == 0 ? "-" : grouped(count);
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

void MatchSummary::print(std::ostream& out, const RuleNode& root) const {
    out << counted(_mails, "mail") << ", " << counted(_receivers, "receiver") << "\n\n";
    printRules(out, root);
    if (_countsConditions) printConditions(out, root);
    printTasks(out, root);
    printDurations(out);
}

void MatchSummary::printRules(std::ostream& out, const RuleNode& root) const {
    Table table({"rule", "receivers", "mails"});
    std::set<std::string> seen;
    const auto addRow = [&](const std::string& label, const Count& count) {
        table.add({label, countText(count.receivers), countText(count.mails)});
    };
    walkTree(root, "", "", [&](const RuleNode& node, const std::string& lead) {
        addRow(lead + (node.name.empty() ? "\\" : oneLine(node.name)), ofRule(node.path));
        seen.insert(node.path);
    });
    // Rules that went away while the mails were matched.
    for (const auto& [path, count] : _rules)
        if (seen.count(path) == 0) addRow(oneLine(path), count);
    addRow("no rule", _unmatched);
    if (_failed.mails() != 0) addRow("cannot be matched", {_failed.receivers(), _failed.mails()});
    table.print(out);
}

void MatchSummary::printConditions(std::ostream& out, const RuleNode& root) const {
    Table table({"condition", "receivers", "mails", "sender", "receiver"}, {0, 3, 4});
    forEachRule(root, [&](const RuleNode& node) {
        for (uint32_t i = 0; i < node.conditions.size(); ++i) {
            const Condition& condition = node.conditions[i];
            const Count count = ofCondition(node.path, i);
            table.add({std::to_string(i + 1) + " of " + oneLine(node.path), countText(count.receivers),
                       countText(count.mails), oneLine(condition.sender), oneLine(condition.receiver)});
        }
    });
    out << '\n';
    table.print(out);
}

void MatchSummary::printTasks(std::ostream& out, const RuleNode& root) const {
    Table table({"task", "receivers", "mails"});
    std::set<std::string> seen;
    const auto addRow = [&](const std::string& task) {
        const Count count = ofTask(task);
        if (seen.insert(task).second) table.add({oneLine(task), countText(count.receivers), countText(count.mails)});
    };
    forEachRule(root, [&](const RuleNode& node) {
        for (const std::string& task : node.tasks)
            addRow(task);
    });
    for (const auto& [task, count] : _tasks)
        addRow(task);
    if (seen.empty()) return;
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
