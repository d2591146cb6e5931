#include "show/classification_show.h"

#include <ostream>

#include "output/fact_lines.h"
#include "output/json.h"
#include "output/table.h"
#include "output/terminal_width.h"
#include "policy/policy_items.h"
#include "stored/classification_store_reader.h"
#include "stored/policy_path.h"
#include "stored/stored_part.h"

namespace tool {

namespace {

void showAll(const Policy& policy, OutputFormat format, std::ostream& out) {
    Json all = Json::array();
    Table table({"classification", "actions", "display name"}, {0, 2});
    for (const Classification& classification : policy.classifications) {
        all.add(jsonOf(classification));
        table.add({oneLine(classification.name), grouped(classification.actions.size()),
                   oneLine(classification.displayName)});
    }
    if (format == OutputFormat::Json)
        out << Json::report({{"classifications", all}}).line();
    else if (policy.classifications.empty())
        out << "there are no classifications\n";
    else
        table.print(out);
}

void showOne(const Classification& classification, OutputFormat format, std::ostream& out) {
    if (format == OutputFormat::Json) {
        out << Json::report({{"classification", jsonOf(classification)}}).line();
        return;
    }
    out << classificationText(classification.name) << '\n';
    printFacts(out, "  ", factsOf(classification), terminalWidth());
}

void showAction(const Classification& classification, const Action& action, OutputFormat format, std::ostream& out) {
    const auto index = static_cast<uint32_t>(&action - classification.actions.data());
    const Position position{index + 1, static_cast<uint32_t>(classification.actions.size())};
    if (format == OutputFormat::Json) {
        Json json = jsonOf(action).add("classification", classification.name).add("position", position.number);
        out << Json::report({{"action", json}}).line();
        return;
    }
    out << actionText(classification.name, action.name) << '\n';
    printFacts(out, "  ", factsOf(action, position), terminalWidth());
}

}  // namespace

void runClassificationShow(const ClassificationShowOptions& options, std::ostream& out) {
    Policy policy = readPolicyWithoutLists(options.store);
    if (!options.name) return showAll(policy, options.format, out);
    const auto [name, action] = splitActionName(*options.name);
    const Classification& classification = findClassification(policy, name);
    if (action.empty()) return showOne(classification, options.format, out);
    showAction(classification, findAction(policy, name, action), options.format, out);
}

}  // namespace tool
