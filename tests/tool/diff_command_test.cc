// Comparing two policies.
#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "change/apply.h"
#include "difference/policy_diff.h"
#include "edit_fixture.h"
#include "random_policy.h"

namespace tool {

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class DiffCommandTest : public EditTest {
protected:
    // What the policy file after the changes differs by from the store.
    std::string diff(const std::string& after, int status = 1, const std::vector<std::string>& options = {}) {
        std::vector<std::string> command{"diff", location(), write("after.yaml", after)};
        command.insert(command.end(), options.begin(), options.end());
        const Outcome outcome = run(command);
        EXPECT_EQ(outcome.status, status) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        return outcome.out;
    }
    json diffJson(const std::string& after, int status = 1, std::vector<std::string> options = {}) {
        options.emplace_back("--json");
        return json::parse(diff(after, status, options));
    }
};

// What apply would print, from the changes or from the report of a comparison.
std::vector<std::string> changesOf(const ChangeLog& log) {
    std::vector<std::string> lines;
    for (const Change& change : log.changes())
        lines.push_back(std::string(kindName(change.kind)) + " " + change.what + " " + change.name);
    std::sort(lines.begin(), lines.end());
    return lines;
}

std::vector<std::string> changesOf(const json& report) {
    std::vector<std::string> lines;
    for (const json& change : report["changes"])
        lines.push_back(change["change"].get<std::string>() + " " + change["what"].get<std::string>() + " " +
                        change["name"].get<std::string>());
    std::sort(lines.begin(), lines.end());
    return lines;
}

}  // namespace

TEST_F(DiffCommandTest, APolicyIsTheSameAsItself) {
    EXPECT_EQ(diff(policy(), 0), "the policies are the same\n");
    EXPECT_EQ(run({"diff", location(), location()}).status, 0);
    const json same = diffJson(policy(), 0);
    EXPECT_EQ(same["version"], 1);
    EXPECT_EQ(same["diff"]["same"], true);
    EXPECT_EQ(same["diff"]["before"], location());
    EXPECT_EQ(same["diff"]["after"], path("after.yaml"));
    EXPECT_EQ(same["diff"]["changes"].size() + same["diff"]["lists"].size(), 0U);
}

TEST_F(DiffCommandTest, RulesWithConditionsAndMarksAreCompared) {
    EXPECT_EQ(diff(policyWith("receiver: n@sales.example}]\n          inactive: [\"\\\\Sales\\\\footer\"]",
                              "receiver: m@sales.example}]\n          inactive: [\"\\\\scan\"]\n          comment: x")),
              "changed rule \\Sales\\North\n"
              "  comment: \"\" -> \"x\"\n"
              "  removed condition * -> n@sales.example\n"
              "  added condition * -> m@sales.example\n"
              "  removed inactive mark \\Sales\\footer\n"
              "  added inactive mark \\scan\n"
              "1 changed\n");
    EXPECT_EQ(diff(policyWith("{sender: \"*\", receiver: \"*@sales.example\"}, {sender: (Partners), receiver: "
                              "\"*@sales.example\"}",
                              "{sender: (Partners), receiver: \"*@sales.example\"}, {sender: \"*\", receiver: "
                              "\"*@sales.example\"}")),
              "changed rule \\Sales\n  conditions: another order or number\n1 changed\n");
}

TEST_F(DiffCommandTest, AnotherOrderOfConditionsIsToldBesideOtherChanges) {
    EXPECT_EQ(diff(policyWith("      displayName: Sales department\n      conditions: [{sender: \"*\", receiver: "
                              "\"*@sales.example\"}, {sender: (Partners), receiver: \"*@sales.example\"}]",
                              "      conditions: [{sender: (Partners), receiver: \"*@sales.example\"}, {sender: "
                              "\"*\", receiver: \"*@sales.example\"}]")),
              "changed rule \\Sales\n"
              "  displayName: \"Sales department\" -> \"\"\n"
              "  conditions: another order or number\n"
              "1 changed\n");
}

TEST_F(DiffCommandTest, LongTextsAreShownWhereTheyDiffer) {
    const std::string same(59, 'x');
    apply(policyWith("comment: c", "comment: " + same + "éa-" + same + "A"));
    EXPECT_EQ(diff(policyWith("comment: c", "comment: " + same + "éa-" + same + "B")),
              "changed rule \\Labs\n  comment: \"...A\" -> \"...B\"\n1 changed\n");
    EXPECT_EQ(diff(policyWith("comment: c", "comment: " + same + "è")),
              "changed rule \\Labs\n  comment: \"" + same + "é...\" -> \"" + same + "è\"\n1 changed\n");
    EXPECT_EQ(diff(policyWith("comment: c", "comment: " + same + "éb")),
              "changed rule \\Labs\n  comment: \"...a-" + same.substr(4) + "...\" -> \"...b\"\n1 changed\n");
}

TEST_F(DiffCommandTest, RulesThatCameWentAndMovedAreTold) {
    std::string after = policyWith("    - name: Sales\n",
                                   "    - name: First\n      tasks: [{name: t, filter: 3}]\n"
                                   "    - name: Sales\n");
    const std::string labs = after.substr(after.find("    - name: Labs\n"));
    after.erase(after.find(labs));
    after.insert(after.find("    - name: Sales\n"), labs);
    const std::string south = "        - {name: South}\n";
    after.erase(after.find(south), south.size());
    EXPECT_EQ(diff(after),
              "created rule \\First\n"
              "created task \\First\\t\n"
              "  filter: 0 -> 3\n"
              "moved rule \\Sales\n"
              "  to position 3\n"
              "deleted rule \\Sales\\South\n"
              "2 created, 1 moved, 1 deleted\n");
    EXPECT_EQ(diff(policyWithRoot("  displayName: Everything\n"))
                      .find("deleted rule \\Sales\n  with rules below it: 2\n"
                            "  with tasks: 1\n") == std::string::npos,
              false);
}

TEST_F(DiffCommandTest, TasksAreComparedWithOutcomesAndSettings) {
    EXPECT_EQ(diff(policyWith("outcomes: {infected: Infected, old: Old}, setting: {level: 2, sub: {x: 1, y: \"2\"}}}",
                              "enable: false, outcomes: {infected: Odd, new: Odd}, setting: {level: \"2\", sub: 5, "
                              "w: [a, b]}}")),
              "changed task \\scan\n"
              "  enable: true -> false\n"
              "  deleted outcome \"old\"\n"
              "  outcome \"infected\": \"Infected\" -> \"Odd\"\n"
              "  outcome \"new\": \"Odd\"\n"
              "  deleted setting \"sub\\\\x\"\n"
              "  deleted setting \"sub\\\\y\"\n"
              "  setting \"level\": 2 -> \"2\"\n"
              "  setting \"sub\": {} -> 5\n"
              "  setting \"w\": [\"a\", \"b\"]\n"
              "1 changed\n");
}

TEST_F(DiffCommandTest, FiltersClassificationsAndActionsAreCompared) {
    std::string after =
        policyWith("[{filter: 26, priority: asc}]", "[{filter: 26, priority: desc}, {filter: 9, priority: asc}]");
    const std::string quarantine =
        "      - {name: quarantine, actionType: 3, setting: {folder: /q, limits: {days: 30}}}\n";
    after.erase(after.find(quarantine), quarantine.size());
    after.replace(after.find("{name: report, actionType: 5}"), 29, "{name: report, actionType: 6}");
    after.replace(after.find("  - {name: Odd}\n"), 16, "  - {name: Even, comment: c, actions: [{name: a}]}\n");
    EXPECT_EQ(diff(after),
              "deleted classification Odd\n"
              "deleted action Infected\\quarantine\n"
              "changed action Infected\\report\n"
              "  actionType: 5 -> 6\n"
              "created classification Even\n"
              "  comment: \"\" -> \"c\"\n"
              "created action Even\\a\n"
              "created exclusive filter 9\n"
              "  priority: asc\n"
              "changed exclusive filter 26\n"
              "  priority: asc -> desc\n"
              "3 created, 2 changed, 2 deleted\n");
}

TEST_F(DiffCommandTest, AddressesAreToldByNumberWithSamples) {
    run({"list", "add", "Partners", "b@x", "c@x", "d@x"});
    const std::string after =
        policyWith("addresses: [ann@partner.example]", "addresses: [D@X, \"e@x\", f@x, ANN@partner.example, g@x]");
    EXPECT_EQ(diff(after, 1, {"--samples", "2"}),
              "changed address list Partners\n"
              "  addresses: added 3, removed 2\n"
              "  + e@x\n"
              "  + f@x\n"
              "  + and 1 more\n"
              "  - b@x\n"
              "  - c@x\n"
              "1 changed\n");
    EXPECT_EQ(diffJson(after)["diff"]["lists"],
              json::parse(R"([{"name":"Partners","added":3,"removed":2,"addedSamples":["e@x","f@x","g@x"],
                               "removedSamples":["b@x","c@x"]}])"));
    EXPECT_EQ(diff(after, 1, {"--samples", "0"}),
              "changed address list Partners\n"
              "  addresses: added 3, removed 2\n"
              "  + 3 addresses\n"
              "  - 2 addresses\n"
              "1 changed\n");
    EXPECT_EQ(diffJson(after, 1, {"--samples", "0"})["diff"]["lists"],
              json::parse(R"([{"name":"Partners","added":3,"removed":2,"addedSamples":[],"removedSamples":[]}])"));
    // What a file does not say is not compared.
    EXPECT_EQ(diff(policyWith(", addresses: [ann@partner.example]", ""), 0), "the policies are the same\n");
}

TEST_F(DiffCommandTest, ListsAreComparedByTheirAttributesAndPasswordsNeverShown) {
    const std::string staff = "{name: Staff, type: directory, server: s, password: secret}";
    EXPECT_EQ(diff(policyWith(staff, "{name: Staff, type: directory, server: t, password: other}")),
              "changed address list Staff\n  server: \"s\" -> \"t\"\n  password\n1 changed\n");
    EXPECT_EQ(diff(policyWith("password: secret", "port: 0"), 0), "the policies are the same\n");
    EXPECT_EQ(diff(policyWith(staff, "{name: Staff, displayName: S, addresses: [a@b]}\n  - {name: New}")),
              "created address list New\n"
              "changed address list Staff\n"
              "  type: directory -> normal\n"
              "  displayName: \"\" -> \"S\"\n"
              "  addresses: added 1\n"
              "  + a@b\n"
              "1 created, 1 changed\n");
    const std::string one = write("one.yaml", policy());
    const Outcome files = run({"diff", one, write("two.yaml", policyWith("password: secret", "password: other"))});
    EXPECT_EQ(files.out, "changed address list Staff\n  password\n1 changed\n");
    EXPECT_EQ(files.status, 1);
    const std::string other = "sqlite:" + path("other.db");
    EXPECT_EQ(runShell("$zxpolicy --store sqlite:other.db apply two.yaml").status, 0);
    EXPECT_EQ(run({"diff", location(), other}).out, files.out);
    // What cannot be compared is not the same.
    std::filesystem::remove(path("other.db.key"));
    EXPECT_THAT(refuse({"diff", location(), other}), HasSubstr("The key file is missing"));
}

TEST_F(DiffCommandTest, WhatCannotBeReadIsAnError) {
    const std::string good = write("good.yaml", policy());
    EXPECT_THAT(refuse({"diff", good, path("none.yaml")}, 2), HasSubstr("cannot open"));
    EXPECT_THAT(refuse({"diff", good, write("bad.yaml", "zxpolicy: 1\nroot: {x: 1}\n")}), HasSubstr("bad.yaml:2:8"));
    EXPECT_THAT(run({"diff", "-", good}, "root: 1\n").err, HasSubstr("zxpolicy: standard input:1:1: "));
    EXPECT_THAT(refuse({"diff", "memory:", good}), HasSubstr("holds no policy"));
    EXPECT_THAT(refuse({"diff", good}, 2), HasSubstr("B is required"));
    EXPECT_THAT(refuse({"diff", good, good, "--samples", "-1"}, 2), HasSubstr("--samples"));
}

TEST_F(DiffCommandTest, HostileTextsSteerNoTerminal) {
    const std::string out =
        diff(policyWithRoot("  rules: [{name: \"a\\e[31m\", comment: \"\\e]0;\", tasks: [{name: \"\\r\", setting: "
                            "{\"\\e\": \"\\e\"}, outcomes: {\"\\e\": \"\\e\"}}]}]\n"));
    EXPECT_THAT(out, AllOf(HasSubstr("created rule \\a\\x1B[31m\n"), Not(HasSubstr("\x1b")), Not(HasSubstr("\r"))));
}

TEST_F(DiffCommandTest, TellsTheSameChangesAsApplyMakes) {
    const Store store("memory:", Store::Missing::Create);
    for (unsigned int seed = 0; seed < 150; ++seed) {
        RandomPolicy random(seed);
        const Policy before = random.make();
        const Policy after = seed % 3 == 0 ? before : random.make();
        EXPECT_TRUE(differencesOf(before, before, 5).changes.isEmpty()) << seed;
        EXPECT_EQ(differencesOf(before, after, 5).changes.isEmpty(), firstDifference(before, after).empty()) << seed;
        applyPolicy(store, "before", before, false);
        EXPECT_EQ(changesOf(differencesOf(before, after, 5).changes),
                  changesOf(applyPolicy(store, "after", after, true).changes))
            << seed;
    }
    const std::string after = policyWith("    - name: Labs\n      comment: c\n",
                                         "    - name: Library\n      tasks: [{name: t}, {name: u}]\n");
    const Outcome applied = run({"apply", "--dry-run", "--json", "-"}, after);
    EXPECT_EQ(changesOf(diffJson(after)["diff"]), changesOf(json::parse(applied.out)));
}

}  // namespace tool
