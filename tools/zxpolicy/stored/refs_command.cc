#include "stored/refs_command.h"

#include <algorithm>
#include <optional>
#include <ostream>

#include "output/json.h"
#include "output/table.h"
#include "output/text.h"
#include "policy/policy_references.h"
#include "stored/classification_store_reader.h"
#include "stored/list_store_reader.h"
#include "stored/reference_finder.h"
#include "stored/snapshot.h"

namespace tool {

namespace {

struct Answer {
    References references;
    std::vector<std::string> names;  // the lists or classifications that there are
};

bool isList(const RefsOptions& options) {
    return options.entity == ZXPOL_REF_ADDRLIST;
}

std::string entityText(const RefsOptions& options, const std::string& name) {
    return isList(options) ? listText(name) : classificationText(name);
}

std::vector<std::string> namesIn(const Store& store, const RefsOptions& options) {
    return isList(options) ? readListNames(store) : readClassificationNames(store);
}

bool contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::string placeText(const ReferringPlace& place) {
    if (place.condition != 0) return place.side + " of condition " + std::to_string(place.condition);
    return "outcome " + inQuotes(place.outcome, 255) + " of task " + oneLine(place.task);
}

// Whether the place names something that is there: in another letter case it is not.
bool isFound(const Answer& answer, const ReferringPlace& place) {
    return contains(answer.names, place.referred);
}

Json placeJson(const Answer& answer, const ReferringPlace& place) {
    const Json json = place.condition != 0 ? Json::object({{"condition", place.condition}, {"side", place.side}})
                                           : Json::object({{"task", place.task}, {"outcome", place.outcome}});
    return Json(json).add("text", place.text).add("found", isFound(answer, place));
}

void printJson(std::ostream& out, const RefsOptions& options, const Answer& answer) {
    Json rules = Json::array();
    for (const ReferringRule& rule : answer.references.rules) {
        Json places = Json::array();
        for (const ReferringPlace& place : rule.places)
            places.add(placeJson(answer, place));
        rules.add(Json::object({{"rule", rule.path}, {"places", places}}));
    }
    const std::optional<std::string>& checker = answer.references.checker;
    out << Json::report({{"entity", isList(options) ? "list" : "classification"},
                         {"name", options.name},
                         {"exists", contains(answer.names, options.name)},
                         {"checker", checker ? Json(*checker) : Json::null()},
                         {"rules", rules}})
               .line();
}

// Says that there is no such list or classification, and what may be meant.
void printMissing(std::ostream& out, const RefsOptions& options, const Answer& answer) {
    if (contains(answer.names, options.name)) return;
    out << "there is no " << entityText(options, options.name);
    const std::optional<std::string> bare = referredList(options.name);
    const auto similar = std::find_if(answer.names.begin(), answer.names.end(), [&](const std::string& name) {
        return lowerCase(name) == lowerCase(options.name) ||
               (isList(options) && bare && lowerCase(name) == lowerCase(*bare));
    });
    if (similar != answer.names.end()) out << "; there is " << inQuotes(*similar, 255);
    out << '\n';
}

void printText(std::ostream& out, const RefsOptions& options, const Answer& answer) {
    const std::vector<ReferringRule>& rules = answer.references.rules;
    Table table({"rule", "place", "text"}, {0, 1, 2});
    size_t dangling = 0;
    for (const ReferringRule& rule : rules)
        for (const ReferringPlace& place : rule.places) {
            table.add({oneLine(rule.path), placeText(place), oneLine(place.text)});
            if (!isFound(answer, place)) ++dangling;
        }
    if (!rules.empty()) {
        table.print(out);
        out << '\n';
    }
    if (rules.size() == 1)
        out << "one rule refers";
    else if (rules.empty())
        out << "no rule refers";
    else
        out << grouped(rules.size()) << " rules refer";
    out << " to " << entityText(options, options.name) << '\n';
    if (dangling != 0)
        out << grouped(dangling) << (dangling == 1 ? " place names" : " places name") << " no "
            << (isList(options) ? "list" : "classification") << " (letter case counts)\n";
    if (!rules.empty() && answer.references.checker != rules.front().path)
        out << "the library's reference checker finds none of them\n";
    printMissing(out, options, answer);
}

}  // namespace

ExitStatus runRefs(const RefsOptions& options, std::ostream& out) {
    const Store store(options.store, Store::Missing::Refuse);
    store.requirePolicy();
    const Answer answer = readAtOneMoment(store, [&] {
        return Answer{findReferences(store, options.entity, options.name), namesIn(store, options)};
    });
    if (options.format == OutputFormat::Json)
        printJson(out, options, answer);
    else
        printText(out, options, answer);
    return answer.references.rules.empty() ? kAnswerIsNo : kSuccess;
}

}  // namespace tool
