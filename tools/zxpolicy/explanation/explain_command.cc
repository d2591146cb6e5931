#include "explanation/explain_command.h"

#include <algorithm>

#include "decisions/match_failure.h"
#include "explanation/explainer.h"
#include "explanation/explanation_report.h"
#include "output/terminal_width.h"
#include "policy/address_text.h"
#include "tool_error.h"

namespace tool {

void runExplain(const ExplainOptions& options, std::ostream& out) {
    if (std::any_of(options.receivers.begin(), options.receivers.end(), [](const auto& text) { return text.empty(); }))
        throw UsageError("a receiver is empty");
    const Store store(options.store, Store::Missing::Refuse);
    store.requirePolicy();
    const Explanation explanation = explain(store, options.match, {senderFromText(options.sender), options.receivers});
    if (options.format == OutputFormat::Json)
        printJson(out, explanation);
    else
        printText(out, explanation, Colours::ofOutput(), terminalWidth());
    require(explanation.result, cannotMatch(explanation.envelope));
}

}  // namespace tool
