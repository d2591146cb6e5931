// Positions, numbers and forms of what is stored.
#include <algorithm>
#include <map>

#include "analysis/lint.h"
#include "output/text.h"
#include "stored/classification_store_reader.h"
#include "stored/list_store_reader.h"
#include "stored/raw_key.h"
#include "stored/store_audit.h"

namespace tool {

namespace {

constexpr const char* kApply = "dump the policy, look it over and apply it: that numbers everything anew";

// Numbers that should be 1, 2, 3 and so on, whatever their order.
struct Sequence {
    std::map<uint32_t, size_t> counts;

    void add(uint32_t number) { ++counts[number]; }

    std::string doubled() const {
        for (const auto& [number, count] : counts)
            if (count > 1) return std::to_string(number);
        return "";
    }
    // The first number from 1 on that is not there although a larger one is.
    std::string gap() const {
        uint32_t expected = 1;
        for (auto place = counts.lower_bound(expected); place != counts.end(); ++place, ++expected)
            if (place->first != expected) return std::to_string(expected);
        return "";
    }
};

class StoredForms {
public:
    StoredForms(const Store& store, std::vector<Finding>& findings) : _store(store), _findings(findings) {}

    void lookAtPositions(const std::string& key, const std::string& what, const std::string& rule) {
        const KeyHandle container = openRawKey(_store.key(), key);
        if (!container) return;
        Sequence positions;
        for (const std::string& name : rawSubkeys(container.get())) {
            const std::vector<RawValue> values = rawValues(openRawKey(container.get(), name).get());
            const auto order = std::find_if(values.begin(), values.end(), [](const RawValue& value) {
                return value.name == "order" && value.type == ZXREG_NUMBER;
            });
            // A position of 31 bits and more is a negative number.
            if (order == values.end() || numberOf(*order) > INT32_MAX) {
                add(Severity::Error, "missing-position", what, inQuotes(name) + " has no position: nothing sees it",
                    "write its value \"order\", or delete its key", rule);
                continue;
            }
            positions.add(numberOf(*order));
            if (numberOf(*order) == 0)
                add(Severity::Note, "bad-position", what,
                    inQuotes(name) + " has position 0: it comes first, and positions begin with 1", kApply, rule);
        }
        if (const std::string number = positions.doubled(); !number.empty())
            add(Severity::Warning, "doubled-position", what,
                "more than one has position " + number + ", so that the order between them is the store's", kApply,
                rule);
        if (const std::string number = positions.gap(); !number.empty())
            add(Severity::Note, "position-gap", what, "none has position " + number, kApply, rule);
    }

    void lookAtNumbers(const std::string& key, const std::string& prefix, const std::string& what,
                       const std::string& rule) {
        const KeyHandle opened = openRawKey(_store.key(), key);
        if (!opened) return;
        Sequence numbers;
        for (const std::string& name : rawValueNames(opened.get())) {
            if (!isNumbered(name, prefix)) continue;
            const std::string digits = name.substr(prefix.size());
            const unsigned long number = digits.empty() || digits.size() > 9 ? 0 : std::stoul(digits);
            if (number == 0)
                add(Severity::Warning, "bad-number", what,
                    "the value " + inQuotes(name) + " has no usable number: numbers begin with 1", kApply, rule);
            else
                numbers.add(static_cast<uint32_t>(number));
        }
        if (const std::string number = numbers.doubled(); !number.empty())
            add(Severity::Warning, "doubled-number", what, "number " + number + " is there more than once", kApply,
                rule);
        if (const std::string number = numbers.gap(); !number.empty())
            add(Severity::Note, "number-gap", what, "number " + number + " is missing", kApply, rule);
    }

    void lookAtForms() {
        for (const std::string& sentence : auditStore(_store.key(), ListParts::All)) {
            // Positions have findings of their own.
            if (sentence.find("lacks its value \"order\"") != std::string::npos) continue;
            add(Severity::Error, "stored-form", "the store", sentence,
                "what it is for may not see it, or not as it is meant: correct or delete it", "");
        }
    }

private:
    void add(Severity severity, const char* id, const std::string& place, const std::string& text,
             const std::string& remedy, const std::string& rule) {
        _findings.push_back({severity, id, place, text, remedy,
                             rule.empty() ? std::vector<std::string>{} : std::vector<std::string>{rule}});
    }

    const Store& _store;
    std::vector<Finding>& _findings;
};

}  // namespace

void lintStoredForms(const Store& store, const StoredRules& rules, std::vector<Finding>& findings) {
    StoredForms forms(store, findings);
    forms.lookAtForms();
    for (const StoredRule& rule : rules.rules) {
        const std::string where = "rule " + oneLine(rule.path);
        forms.lookAtPositions(rule.key + "\\rules", "the rules below " + where, rule.path);
        forms.lookAtPositions(rule.key + "\\tasks", "the tasks of " + where, rule.path);
        forms.lookAtNumbers(rule.key, "condition", "the conditions of " + where, rule.path);
        forms.lookAtNumbers(rule.key + "\\inactive", "inactive", "the inactive marks of " + where, rule.path);
    }
    for (const std::string& name : readClassificationNames(store))
        forms.lookAtPositions("Classification\\" + name + "\\actions", "the actions of " + classificationText(name),
                              "");
    for (const std::string& name : readListNames(store))
        forms.lookAtNumbers("AddressList\\" + name, "address", listText(name), "");
}

}  // namespace tool
