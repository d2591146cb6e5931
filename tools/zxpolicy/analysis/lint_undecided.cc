// That it was not decided which mails get to the rules, and what stands in the way.
#include <algorithm>

#include "analysis/lint.h"
#include "analysis/lint_text.h"
#include "output/text.h"
#include "stored/list_store_reader.h"

namespace tool {

namespace {

// Whether a local part, or what is taken for one where the quotes of an address are left out, is that of a text.
bool hasLocalPart(const std::string& text, const std::string& localPart) {
    const std::string key = partsOf(text).sortKey, wanted = lowerCase(localPart);
    return key.compare(0, wanted.size(), wanted) == 0 && (key.size() == wanted.size() || key[wanted.size()] == '@');
}

}  // namespace

Finding undecidedRules(const StoredRules& rules, const AnalysisLimit& limit) {
    Finding finding{Severity::Error,
                    "undecided",
                    "the rules",
                    std::string("which mails get to the rules was not decided: ") + limit.what(),
                    "make the patterns fewer or plainer",
                    {}};
    if (limit.localPart().empty()) return finding;
    finding.remedy = "remove it, or write it with fewer quotes and backslashes";
    const auto isAtFault = [&](const std::string& text) { return hasLocalPart(text, limit.localPart()); };
    for (const auto& [name, list] : rules.lists) {
        const auto entry = std::find_if(list.entries.begin(), list.entries.end(), isAtFault);
        if (entry == list.entries.end()) continue;
        finding.place = listText(name) + ", entry " + inQuotes(*entry, 255);
        return finding;
    }
    for (const StoredRule& rule : rules.rules) {
        for (size_t i = 0; i < rule.conditions.size(); ++i) {
            if (!isAtFault(rule.conditions[i].sender) && !isAtFault(rule.conditions[i].receiver)) continue;
            finding.place = conditionText(rule.path, i);
            finding.rules = {rule.path};
            return finding;
        }
    }
    return finding;
}

}  // namespace tool
