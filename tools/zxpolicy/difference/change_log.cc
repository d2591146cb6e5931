#include "difference/change_log.h"

#include <algorithm>
#include <array>
#include <ostream>

#include "output/text.h"

namespace tool {

namespace {

constexpr std::array kKinds{Change::Kind::Created, Change::Kind::Changed, Change::Kind::Moved, Change::Kind::Deleted};

std::string line(const Change& change) {
    std::string text = std::string(kindName(change.kind)) + " " + change.what;
    if (!change.name.empty()) text += " " + oneLine(change.name);
    for (size_t i = 0; i < change.details.size(); ++i)
        text += (i == 0 ? " (" : "; ") + oneLine(change.details[i]);
    return change.details.empty() ? text : text + ")";
}

// Where two different texts begin to differ, at the beginning of a character.
size_t firstDifference(const std::string& before, const std::string& after) {
    const auto isContinued = [](char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; };
    const auto place = std::mismatch(before.begin(), before.end(), after.begin(), after.end()).first;
    auto at = static_cast<size_t>(place - before.begin());
    while (at > 0 && (isContinued(before[at]) || isContinued(after[at])))
        --at;
    return at;
}

}  // namespace

std::string differenceText(const std::string& before, const std::string& after) {
    constexpr size_t kShown = 60;
    const size_t begin = firstDifference(before, after);
    const std::string lead = begin < kShown ? "" : "...";
    const size_t from = begin < kShown ? 0 : begin;
    return inQuotes(lead + before.substr(from), kShown) + " -> " + inQuotes(lead + after.substr(from), kShown);
}

const char* kindName(Change::Kind kind) {
    switch (kind) {
        case Change::Kind::Created:
            return "created";
        case Change::Kind::Changed:
            return "changed";
        case Change::Kind::Moved:
            return "moved";
        case Change::Kind::Deleted:
            break;
    }
    return "deleted";
}

size_t ChangeLog::count(Change::Kind kind) const {
    return static_cast<size_t>(
        std::count_if(_changes.begin(), _changes.end(), [&](const Change& change) { return change.kind == kind; }));
}

void ChangeLog::print(std::ostream& out, OutputFormat format, bool isDryRun) const {
    if (format == OutputFormat::Json)
        printJson(out, isDryRun);
    else
        printText(out, isDryRun);
}

void ChangeLog::printText(std::ostream& out, bool isDryRun) const {
    for (const Change& change : _changes)
        out << line(change) << '\n';
    if (_changes.empty()) {
        out << "nothing to change\n";
        return;
    }
    out << numbers() << (isDryRun ? "; dry run: nothing was written\n" : "\n");
}

std::string ChangeLog::numbers() const {
    std::string text;
    for (Change::Kind kind : kKinds) {
        if (count(kind) == 0) continue;
        text += (text.empty() ? "" : ", ") + grouped(count(kind)) + " " + kindName(kind);
    }
    return text;
}

void ChangeLog::printJson(std::ostream& out, bool isDryRun) const {
    Json document = Json::report({{"dryRun", isDryRun}});
    addTo(document);
    out << document.line();
}

void ChangeLog::addTo(Json& document) const {
    Json changes = Json::array();
    for (const Change& change : _changes)
        changes.add(Json::object({{"change", kindName(change.kind)},
                                  {"what", change.what},
                                  {"name", change.name},
                                  {"details", change.details}}));
    document.add("changes", changes);
    for (Change::Kind kind : kKinds)
        document.add(kindName(kind), count(kind));
}

void compare(std::vector<std::string>& details, const char* label, const std::string& before,
             const std::string& after) {
    if (before != after) details.push_back(std::string(label) + ": " + differenceText(before, after));
}

void compare(std::vector<std::string>& details, const char* label, uint32_t before, uint32_t after) {
    if (before != after)
        details.push_back(std::string(label) + ": " + std::to_string(before) + " -> " + std::to_string(after));
}

void compare(std::vector<std::string>& details, const char* label, bool before, bool after) {
    const auto word = [](bool value) { return value ? "true" : "false"; };
    if (before != after) details.push_back(std::string(label) + ": " + word(before) + " -> " + word(after));
}

void countChanges(std::vector<std::string>& details, const char* label, size_t added, size_t removed) {
    if (added == 0 && removed == 0) return;
    std::string text = std::string(label) + ": ";
    if (added != 0) text += "added " + std::to_string(added);
    if (added != 0 && removed != 0) text += ", ";
    if (removed != 0) text += "removed " + std::to_string(removed);
    details.push_back(text);
}

}  // namespace tool
