// Explanations for a person at a terminal.
#include <algorithm>
#include <ostream>

#include "decisions/match_report.h"
#include "explanation/explanation_report.h"
#include "output/statements.h"
#include "output/text.h"
#include "result_names.h"

namespace tool {

namespace {

using Statements = std::vector<Statement>;

constexpr size_t kIndent = 2;

size_t depthOf(const std::string& path) {
    return path == "\\" ? 0 : static_cast<size_t>(std::count(path.begin(), path.end(), '\\'));
}

void addSides(Statements& statements, const ConditionTest& condition, size_t indent) {
    for (const SideTest& test : condition.sides) {
        const bool isReceiver = test.side == ZXPOL_SIDE_RECEIVER;
        // Every condition begins with the receiver's side.
        const std::string number = std::to_string(condition.index + 1);
        const std::string lead = isReceiver ? number : std::string(number.size(), ' ');
        const std::string thing = lead + (isReceiver ? " receiver " : " sender   ") + oneLine(test.pattern);
        if (ZX_FAILURE(test.result)) {
            statements.push_back({indent, thing, "cannot be asked: " + describeResult(test.result), Tone::Bad});
        } else if (!test.isMatched) {
            statements.push_back({indent, thing, "does not match", Tone::Faint});
        } else {
            const std::string by = test.entry ? " by " + oneLine(*test.entry) : "";
            statements.push_back({indent, thing, "matches" + by + ", weight " + std::to_string(test.weight)});
        }
    }
}

std::string choiceText(const RuleVisit& visit) {
    if (visit.fate == ZXPOL_FATE_UNBEATABLE) return "names both sides exactly: the search ends here";
    if (!visit.other) return "the first that applies here";
    return (visit.fate == ZXPOL_FATE_BETTER ? "better than " : "not better than ") + oneLine(*visit.other);
}

Statement verdict(const RuleVisit& visit, bool isBest, size_t indent) {
    const std::string path = oneLine(visit.path);
    const std::string failure = describeResult(visit.result);
    if (visit.kind == RuleVisit::Kind::Unopened)
        return {indent, path, "cannot be opened, and is passed over: " + failure, Tone::Bad};
    if (visit.kind == RuleVisit::Kind::UnknownChildren)
        return {indent, path, "the rules below it cannot be listed: " + failure, Tone::Bad};
    if (ZX_FAILURE(visit.result)) return {indent, path, "cannot be checked: " + failure, Tone::Bad};
    if (!visit.isMatched) return {indent, path, "does not apply", Tone::Faint};
    std::string text = "applies by condition " + std::to_string(visit.decisive + 1);
    if (isBest)
        text += ", sender " + std::to_string(visit.weights.sender) + " and receiver " +
                std::to_string(visit.weights.receiver);
    return {indent, path, text, Tone::Good};
}

void addVisit(Statements& statements, const RuleVisit& visit, bool isBest) {
    const size_t indent = kIndent * (1 + depthOf(visit.path));
    statements.push_back(verdict(visit, isBest, indent));
    if (visit.kind != RuleVisit::Kind::Checked) return;
    for (const ConditionTest& condition : visit.conditions)
        addSides(statements, condition, indent + kIndent);
    if (ZX_FAILURE(visit.unread))
        statements.push_back(
            {indent + kIndent, "", "no further conditions can be read: " + describeResult(visit.unread), Tone::Bad});
    else if (visit.conditions.empty())
        statements.push_back({indent + kIndent, "", "has no conditions", Tone::Faint});
    if (visit.fate != ZXPOL_FATE_NONE) statements.push_back({indent + kIndent, "", choiceText(visit)});
}

// What the conditions were held against on one side; nothing where none was asked.
std::optional<std::string> comparedAddress(const Walk& walk, ZxPolMatchSide side) {
    for (const RuleVisit& visit : walk.rules)
        for (const ConditionTest& condition : visit.conditions)
            for (const SideTest& test : condition.sides)
                if (test.side == side) return test.address;
    return {};
}

// "receiver ADDRESS", and what was compared where that is not the whole address.
std::string addressHeading(const char* side, const std::string& address, const std::optional<std::string>& compared) {
    const std::string heading = std::string(side) + ' ' + oneLine(address);
    return !compared || *compared == address ? heading : heading + ", compared as " + inQuotes(*compared, 255);
}

// One for a sender of which not all is compared; empty for another.
std::string senderHeading(const Explanation& explanation) {
    const std::string& sender = explanation.envelope.sender;
    for (const Walk& walk : explanation.walks) {
        const std::optional<std::string> compared = comparedAddress(walk, ZXPOL_SIDE_SENDER);
        if (compared) return *compared == sender ? "" : addressHeading("sender", sender, compared);
    }
    return "";
}

Statements statementsOf(const Walk& walk, bool isBest) {
    Statements statements;
    for (const RuleVisit& visit : walk.rules)
        addVisit(statements, visit, isBest);
    if (ZX_FAILURE(walk.result))
        statements.push_back({kIndent, "", "the match ends here: " + describeResult(walk.result), Tone::Bad});
    else if (walk.rule)
        statements.push_back({kIndent, "", "taken by " + oneLine(*walk.rule), Tone::Strong});
    else
        statements.push_back({kIndent, "", "no rule takes it", Tone::Strong});
    return statements;
}

std::string fateText(const TaskVisit& task) {
    const std::string filter = "exclusive filter " + std::to_string(task.filter);
    const std::string other = oneLine(task.other.value_or(""));
    switch (task.fate) {
        case ZXPOL_FATE_TAKEN:
            return "taken";
        case ZXPOL_FATE_REPLACES:
            return "taken in place of " + other + ", which has " + filter + " too";
        case ZXPOL_FATE_DISABLED:
            return "disabled";
        case ZXPOL_FATE_INACTIVE:
            if (!task.mark) return "left out: its full name is too long";
            return "switched off by the mark " + oneLine(task.mark.value_or("")) + " in rule " +
                   oneLine(task.markRule.value_or(""));
        case ZXPOL_FATE_HELD:
            return task.other ? "left out: " + other + " holds " + filter
                              : "left out: " + filter + " is of an unknown type";
        case ZXPOL_FATE_NONE:
        case ZXPOL_FATE_BETTER:
        case ZXPOL_FATE_NOT_BETTER:
        case ZXPOL_FATE_UNBEATABLE:
            break;
    }
    return "of an unknown fate";
}

Statements statementsOf(const Collection& collection) {
    Statements statements;
    for (const TaskVisit& task : collection.tasks) {
        const bool isTaken = task.fate == ZXPOL_FATE_TAKEN || task.fate == ZXPOL_FATE_REPLACES;
        const std::string later = task.replacedBy ? ", then replaced by " + oneLine(*task.replacedBy) : "";
        const Tone tone = isTaken && !task.replacedBy ? Tone::Good : Tone::Faint;
        statements.push_back({kIndent, oneLine(task.path), fateText(task) + later, tone});
    }
    if (statements.empty()) statements.push_back({kIndent, "", "none", Tone::Faint});
    for (const UnreadMarks& marks : collection.unreadMarks)
        statements.push_back({kIndent, oneLine(marks.rule),
                              "its marks cannot be read, and switch nothing off: " + describeResult(marks.result),
                              Tone::Bad});
    return statements;
}

std::string wayText(const MatchOptions& options) {
    if (!options.isBest) return "first match";
    const char* priority = options.priority == ZXPOL_PRIORITY_SENDER_FIRST     ? "the sender first"
                           : options.priority == ZXPOL_PRIORITY_RECEIVER_FIRST ? "the receiver first"
                                                                               : "both sides together";
    const char* weight = options.weight == ZXPOL_WEIGHT_NAME_FIRST ? "names before domains" : "domains before names";
    return std::string("best match, ") + priority + ", " + weight;
}

}  // namespace

void printText(std::ostream& out, const Explanation& explanation, const Colours& colours, size_t width) {
    const auto heading = [&](const std::string& text) { out << colours.paint(text, Tone::Strong) << '\n'; };
    heading("the road of a mail: " + wayText(explanation.options));
    const std::string sender = senderHeading(explanation);
    if (!sender.empty()) heading(sender);
    if (explanation.restarts != 0) heading("the policy changed meanwhile, and the match was begun anew");
    if (ZX_FAILURE(explanation.unreadFilters))
        heading("no further exclusive filters can be read: " + describeResult(explanation.unreadFilters));
    for (const Walk& walk : explanation.walks) {
        out << '\n';
        heading(addressHeading("receiver", walk.receiver, comparedAddress(walk, ZXPOL_SIDE_RECEIVER)));
        printStatements(out, statementsOf(walk, explanation.options.isBest), width, colours);
    }
    for (const Collection& collection : explanation.collections) {
        out << '\n';
        heading("tasks of rule " + oneLine(collection.rule));
        printStatements(out, statementsOf(collection), width, colours);
    }
    out << '\n';
    if (ZX_SUCCESS(explanation.result)) printText(out, explanation.envelope, explanation.decision);
}

}  // namespace tool
