#include "policy/policy_references.h"

#include "output/text.h"
#include "policy/policy_check.h"

namespace tool {

namespace {

// An outcome text that names no classification, where it stands first, and in how many outcomes more.
struct FreeText {
    std::string text;
    std::string subject;  // such as: outcome "infected" of task \scan
    Place place;
    size_t others = 0;
};

class ReferenceFinder {
public:
    ReferenceFinder(const YamlSource& source, const Policy& policy) : _source(source), _policy(policy) {
        for (const auto& [name, list] : policy.lists)
            _lists.emplace(lowerCase(name), name);
        for (const Classification& classification : policy.classifications)
            _classifications.emplace(lowerCase(classification.name), classification.name);
    }

    ReferenceFaults run() {
        lookAtRule(_policy.root, "\\");
        writeNotes();
        return std::move(_faults);
    }

private:
    using Names = std::map<std::string, std::string>;  // by lower case

    static std::string otherCaseOf(const std::string& name, const Names& names) {
        const auto found = names.find(lowerCase(name));
        return found == names.end() ? "" : found->second;
    }

    void lookAtRule(const Rule& rule, const std::string& path) {
        for (const Condition& condition : rule.conditions) {
            lookAtSide(condition.sender, "sender", condition.senderPlace, rule, path);
            lookAtSide(condition.receiver, "receiver", condition.receiverPlace, rule, path);
        }
        for (const Task& task : rule.tasks)
            for (const auto& [name, outcome] : task.outcomes)
                lookAtOutcome(name, outcome, childName(path, task.name));
        for (const Rule& child : rule.rules)
            lookAtRule(child, childName(path, child.name));
    }

    // Matching opens the list by exactly this name; in other letter case it is another list.
    void lookAtSide(const std::string& side, const char* which, const Place& place, const Rule& rule,
                    const std::string& path) {
        const std::optional<std::string> name = referredList(side);
        // One without the closing parenthesis is no reference that apply takes.
        if (!name || side.back() != ')' || _policy.lists.count(*name) != 0) return;
        const std::string similar = otherCaseOf(*name, _lists);
        const std::string subject =
            _source.at(place) + ": the " + which + " " + inQuotes(side) + " of a condition of rule " + oneLine(path);
        _faults.dangling.push_back(
            subject +
            (similar.empty()
                 ? " names no list of the policy"
                 : " names list " + inQuotes(similar) + " in another letter case, in which matching does not find it") +
            (&rule == &_policy.root ? ": a mail that gets to this condition cannot be matched at all"
                                    : ": a mail that gets to this condition passes over the rule"));
    }

    void lookAtOutcome(const std::string& name, const OutcomeText& outcome, const std::string& task) {
        if (otherCaseOf(outcome.text, _classifications) == outcome.text) return;
        const auto [found, isNew] = _index.emplace(outcome.text, _texts.size());
        if (isNew)
            _texts.push_back({outcome.text, "outcome " + inQuotes(name) + " of task " + oneLine(task), outcome.place});
        else
            ++_texts[found->second].others;
    }

    void writeNotes() {
        if (_texts.empty()) return;
        if (_policy.classifications.empty()) {
            _faults.notes.push_back(
                _source.at(_texts.front().place) +
                ": the policy has no classification that a text of an outcome could name" +
                (_texts.size() == 1 ? "" : " (" + grouped(_texts.size()) + " texts, the first one here)"));
            return;
        }
        for (const FreeText& text : _texts)
            _faults.notes.push_back(noteOn(text));
    }

    std::string noteOn(const FreeText& text) const {
        const std::string similar = otherCaseOf(text.text, _classifications);
        std::string note = _source.at(text.place) + ": the text " + inQuotes(text.text) + " of " + text.subject +
                           (similar.empty() ? " names no classification"
                                            : " names classification " + inQuotes(similar) +
                                                  " in another letter case: the reference checker takes it for that "
                                                  "one, but it cannot be opened by this text");
        if (text.others != 0) note += " (the same text in " + grouped(text.others) + " more outcomes)";
        return note;
    }

    const YamlSource& _source;
    const Policy& _policy;
    Names _lists;
    Names _classifications;
    std::map<std::string, size_t> _index;
    std::vector<FreeText> _texts;
    ReferenceFaults _faults;
};

}  // namespace

std::optional<std::string> referredList(const std::string& side) {
    if (side.size() <= 2 || side.front() != '(') return std::nullopt;
    return side.substr(1, side.size() - 2);
}

ReferenceFaults findReferenceFaults(const YamlSource& source, const Policy& policy) {
    return ReferenceFinder(source, policy).run();
}

}  // namespace tool
