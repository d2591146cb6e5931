#include "edit_fixture.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace tool {

namespace {

using nlohmann::json;

const std::string kEdited = R"(zxpolicy: 1
lists:
  - {name: Partners, displayName: Partner companies, addresses: [ann@partner.example]}
  - {name: Staff, type: directory, server: s, password: secret}
classifications:
  - name: Infected
    displayName: Infected mail
    actions:
      - {name: quarantine, actionType: 3, setting: {folder: /q, limits: {days: 30}}}
      - {name: report, actionType: 5}
  - {name: Odd}
exclusiveFilters: [{filter: 26, priority: asc}]
root:
  displayName: Everything
  conditions: [{sender: "*", receiver: "*"}]
  tasks:
    - {name: scan, filter: 26, outcomes: {infected: Infected, old: Old}, setting: {level: 2, sub: {x: 1, y: "2"}}}
    - {name: spam, filter: 12, overridable: true}
  rules:
    - name: Sales
      displayName: Sales department
      conditions: [{sender: "*", receiver: "*@sales.example"}, {sender: (Partners), receiver: "*@sales.example"}]
      inactive: ["\\spam"]
      tasks: [{name: footer, filter: 7, overridable: true}]
      rules:
        - name: North
          conditions: [{sender: "*", receiver: n@sales.example}]
          inactive: ["\\Sales\\footer"]
        - {name: South}
    - name: Labs
      comment: c
      conditions: [{sender: "*@labs.example", receiver: "*"}]
)";

// The report of changes as its text has it.
std::string textOf(const json& report) {
    std::string text;
    for (const json& change : report["changes"]) {
        std::string details;
        for (const std::string detail : change["details"])
            details += (details.empty() ? " (" : "; ") + detail;
        const std::string name = change["name"];
        text += change["change"].get<std::string>() + " " + change["what"].get<std::string>() + " " + name + details +
                (details.empty() ? "\n" : ")\n");
    }
    return text.empty() ? "nothing to change\n" : text;
}

// The changes by kind, thing and name. Of several that may move, each way tells others: these are by kind and thing.
std::vector<std::string> changedThings(const json& report) {
    std::vector<std::string> changes;
    for (const json& change : report["changes"]) {
        const std::string kind = change["change"];
        const std::string name = kind == "moved" ? "" : change["name"];
        changes.push_back(kind + " " + change["what"].get<std::string>() + " " + name);
    }
    std::sort(changes.begin(), changes.end());
    return changes;
}

// The lines without the last one, which has the numbers.
std::string withoutNumbers(const std::string& report) {
    if (report == "nothing to change\n") return report;
    return report.substr(0, report.rfind('\n', report.size() - 2) + 1);
}

}  // namespace

EditTest::EditTest() {
    apply(kEdited);
}

const std::string& EditTest::policy() {
    return kEdited;
}

std::string EditTest::policyWith(const std::string& before, const std::string& after) {
    std::string policy = kEdited;
    const size_t at = policy.find(before);
    if (at == std::string::npos) throw std::logic_error("there is no " + before);
    return policy.replace(at, before.size(), after);
}

std::string EditTest::change(const std::vector<std::string>& arguments) {
    const std::string before = dump();
    std::vector<std::string> dry = arguments;
    dry.emplace_back("--dry-run");
    const Outcome dryText = run(dry);
    EXPECT_EQ(dryText.status, 0) << dryText.err;
    const bool isNothing = dryText.out == "nothing to change\n";
    EXPECT_TRUE(isNothing || dryText.out.find("; dry run: nothing was written\n") != std::string::npos) << dryText.out;
    dry.emplace_back("--json");
    const json dryJson = json::parse(run(dry).out);
    EXPECT_EQ(dryJson["dryRun"], true);
    EXPECT_EQ(textOf(dryJson), withoutNumbers(dryText.out));
    EXPECT_EQ(dump(), before);
    const Outcome real = run(arguments);
    err = real.err;
    EXPECT_EQ(real.status, 0) << err;
    EXPECT_EQ(err, dryText.err);
    EXPECT_EQ(withoutNumbers(real.out), withoutNumbers(dryText.out));
    EXPECT_EQ(dump() == before, isNothing);
    const Outcome difference = run({"diff", "--json", write("before.yaml", before), location()});
    EXPECT_EQ(changedThings(json::parse(difference.out)["diff"]), changedThings(dryJson));
    return withoutNumbers(real.out);
}

std::string EditTest::refuse(const std::vector<std::string>& arguments, int status) {
    const std::string before = dump();
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.status, status) << outcome.err;
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    EXPECT_EQ(dump(), before);
    return outcome.err;
}

bool EditTest::holds(const std::string& policy) {
    const Outcome outcome = run({"apply", "--dry-run", "--allow-dangling", "-"}, policy);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "nothing to change\n");
    return outcome.out == "nothing to change\n";
}

}  // namespace tool
