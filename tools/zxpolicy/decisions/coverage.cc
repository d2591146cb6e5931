#include "decisions/coverage.h"

#include <algorithm>
#include <ostream>

#include "output/text.h"

namespace tool {

namespace {

template <class Share>
std::string shareText(const Share& share, const char* what) {
    return grouped(share.covered()) + " of " + grouped(share.total) + ' ' + what;
}

template <class Share>
Json shareJson(const Share& share, const Json& missing) {
    return Json::object(
        {{"total", uint64_t{share.total}}, {"covered", uint64_t{share.covered()}}, {"missing", missing}});
}

uint32_t percentOf(size_t covered, size_t total) {
    return total == 0 ? 100 : static_cast<uint32_t>(uint64_t{covered} * 100 / total);
}

}  // namespace

void Coverage::add(const Decision& decision) {
    for (const MatchedRule& rule : decision.matches) {
        _rules.insert(rule.path);
        for (const uint32_t condition : rule.conditions)
            _conditions.emplace(rule.path, condition);
        _tasks.insert(rule.tasks.begin(), rule.tasks.end());
    }
}

bool Coverage::hasRule(const std::string& path) const {
    bool isFound = false;
    forEachRule(_root, [&](const RuleNode& node) { isFound = isFound || node.path == path; });
    return isFound;
}

Coverage::Shares Coverage::shares() const {
    Shares shares;
    forEachRule(_root, [&](const RuleNode& node) {
        ++shares.rules.total;
        if (_rules.count(node.path) == 0) shares.rules.missing.push_back(node.path);
        shares.conditions.total += node.conditions.size();
        for (uint32_t i = 0; i < node.conditions.size(); ++i)
            if (_conditions.count({node.path, i}) == 0)
                shares.conditions.missing.push_back({node.path, i, node.conditions[i]});
        shares.tasks.total += node.tasks.size();
        for (const std::string& task : node.tasks)
            if (_tasks.count(task) == 0) shares.tasks.missing.push_back(task);
    });
    return shares;
}

uint32_t Coverage::percent() const {
    const Shares parts = shares();
    return percentOf(parts.rules.covered() + parts.conditions.covered() + parts.tasks.covered(),
                     parts.rules.total + parts.conditions.total + parts.tasks.total);
}

void Coverage::printMissing(std::ostream& out) const {
    const Shares parts = shares();
    for (const std::string& rule : parts.rules.missing)
        out << "no test: rule " << oneLine(rule) << '\n';
    for (const ConditionPlace& place : parts.conditions.missing)
        out << "no test: condition " << place.position + 1 << " of " << oneLine(place.rule) << ": "
            << oneLine(place.condition.sender) << " to " << oneLine(place.condition.receiver) << '\n';
    for (const std::string& task : parts.tasks.missing)
        out << "no test: task " << oneLine(task) << '\n';
    if (percent() != 100) out << '\n';
}

void Coverage::printShares(std::ostream& out) const {
    const Shares parts = shares();
    out << "coverage " << percent() << "%: " << shareText(parts.rules, "rules") << ", "
        << shareText(parts.conditions, "conditions") << ", " << shareText(parts.tasks, "tasks") << '\n';
}

Json Coverage::json() const {
    const Shares parts = shares();
    Json conditions = Json::array();
    for (const ConditionPlace& place : parts.conditions.missing)
        conditions.add(Json::object({{"rule", place.rule},
                                     {"condition", place.position + 1},
                                     {"senderPattern", place.condition.sender},
                                     {"receiverPattern", place.condition.receiver}}));
    return Json::object({{"percent", percent()},
                         {"rules", shareJson(parts.rules, parts.rules.missing)},
                         {"conditions", shareJson(parts.conditions, conditions)},
                         {"tasks", shareJson(parts.tasks, parts.tasks.missing)}});
}

}  // namespace tool
