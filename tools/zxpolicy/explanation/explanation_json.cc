// Explanations as JSON.
#include <ostream>

#include "decisions/match_failure.h"
#include "decisions/match_report.h"
#include "decisions/match_words.h"
#include "explanation/explanation_report.h"
#include "output/json.h"

namespace tool {

namespace {

const char* nameOf(ZxPolMatchFate fate) {
    switch (fate) {
        case ZXPOL_FATE_BETTER:
            return "better";
        case ZXPOL_FATE_NOT_BETTER:
            return "notBetter";
        case ZXPOL_FATE_UNBEATABLE:
            return "unbeatable";
        case ZXPOL_FATE_TAKEN:
            return "taken";
        case ZXPOL_FATE_REPLACES:
            return "replaces";
        case ZXPOL_FATE_DISABLED:
            return "disabled";
        case ZXPOL_FATE_INACTIVE:
            return "inactive";
        case ZXPOL_FATE_HELD:
            return "held";
        case ZXPOL_FATE_NONE:
            break;
    }
    return "none";
}

const char* nameOf(RuleVisit::Kind kind) {
    switch (kind) {
        case RuleVisit::Kind::Checked:
            return "checked";
        case RuleVisit::Kind::Unopened:
            return "unopened";
        case RuleVisit::Kind::UnknownChildren:
            break;
    }
    return "unknownChildren";
}

Json optionalJson(const std::optional<std::string>& text) {
    return text ? Json(*text) : Json::null();
}

Json sideJson(const ConditionTest& condition, ZxPolMatchSide side) {
    for (const SideTest& test : condition.sides) {
        if (test.side != side) continue;
        Json json = Json::object({{"pattern", test.pattern}, {"address", test.address}, {"matched", test.isMatched}});
        json.add("weight", test.isMatched ? Json(test.weight) : Json::null());
        return json.add("entry", optionalJson(test.entry)).add("failure", failureJson(test.result));
    }
    return Json::null();
}

Json visitJson(const RuleVisit& visit) {
    Json json = Json::object({{"rule", visit.path}, {"step", nameOf(visit.kind)}});
    if (visit.kind != RuleVisit::Kind::Checked) return json.add("failure", failureJson(visit.result));
    Json conditions = Json::array();
    for (const ConditionTest& condition : visit.conditions)
        conditions.add(Json::object({{"condition", condition.index + 1},
                                     {"receiver", sideJson(condition, ZXPOL_SIDE_RECEIVER)},
                                     {"sender", sideJson(condition, ZXPOL_SIDE_SENDER)}}));
    json.add("conditions", conditions).add("matched", visit.isMatched);
    json.add("condition", visit.isMatched ? Json(visit.decisive + 1) : Json::null());
    json.add("senderWeight", visit.isMatched ? Json(visit.weights.sender) : Json::null());
    json.add("receiverWeight", visit.isMatched ? Json(visit.weights.receiver) : Json::null());
    json.add("choice", visit.fate == ZXPOL_FATE_NONE ? Json::null() : Json(nameOf(visit.fate)));
    json.add("against", optionalJson(visit.other));
    return json.add("unreadConditions", failureJson(visit.unread)).add("failure", failureJson(visit.result));
}

Json walkJson(const Walk& walk) {
    Json rules = Json::array();
    for (const RuleVisit& visit : walk.rules)
        rules.add(visitJson(visit));
    return Json::object({{"receiver", walk.receiver},
                         {"rules", rules},
                         {"rule", optionalJson(walk.rule)},
                         {"failure", failureJson(walk.result)}});
}

Json collectionJson(const Collection& collection) {
    Json tasks = Json::array();
    for (const TaskVisit& task : collection.tasks)
        tasks.add(Json::object({{"task", task.path},
                                {"fate", nameOf(task.fate)},
                                {"filter", task.filter},
                                {"enable", task.isEnabled},
                                {"overridable", task.isOverridable},
                                {"other", optionalJson(task.other)},
                                {"replacedBy", optionalJson(task.replacedBy)},
                                {"mark", optionalJson(task.mark)},
                                {"markRule", optionalJson(task.markRule)}}));
    Json unread = Json::array();
    for (const UnreadMarks& marks : collection.unreadMarks)
        unread.add(Json::object({{"rule", marks.rule}, {"failure", failureJson(marks.result)}}));
    return Json::object({{"rule", collection.rule}, {"tasks", tasks}, {"unreadMarks", unread}});
}

}  // namespace

void printJson(std::ostream& out, const Explanation& explanation) {
    Json receivers = Json::array();
    for (const Walk& walk : explanation.walks)
        receivers.add(walkJson(walk));
    Json collections = Json::array();
    for (const Collection& collection : explanation.collections)
        collections.add(collectionJson(collection));
    const MatchOptions& options = explanation.options;
    Json json =
        Json::report({{"sender", explanation.envelope.sender},
                      {"mode", options.isBest ? "best" : "first"},
                      {"priority", options.isBest ? Json(wordFor(kPriorities, options.priority)) : Json::null()},
                      {"weight", wordFor(kWeights, options.weight)},
                      {"restarts", explanation.restarts},
                      {"unreadFilters", failureJson(explanation.unreadFilters)},
                      {"receivers", receivers},
                      {"collections", collections}});
    addDecision(json, explanation.decision);
    out << json.add("failure", failureJson(explanation.result)).line();
}

}  // namespace tool
