#include <gmock/gmock.h>

#include "change/apply.h"
#include "policy/policy_reader.h"
#include "stored/handles.h"
#include "stored/policy_store_reader.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using ClassificationPolicyTest = ToolTest;

std::string policyWith(const std::string& classifications, const std::string& rest = "") {
    return "zxpolicy: 1\nclassifications:\n" + classifications + policyWithRoot(rest).substr(12);
}

const std::string kClassifications = policyWith(R"(  - name: Infected
    displayName: Infected mail
    actions:
      - {name: quarantine, actionType: 3, setting: {folder: /q, limits: {days: 30}}}
      - {name: report, comment: by mail}
      - {name: tag}
  - {name: Gone, actions: [{name: a}, {name: b}]}
  - {name: Kept}
)");

const std::string kOtherClassifications = policyWith(R"(  - {name: Kept}
  - name: Infected
    displayName: Infected
    comment: changed
    actions:
      - {name: tag, displayName: Tag}
      - {name: new}
      - {name: quarantine, actionType: 4, setting: {folder: "/r", limits: 5, more: [a, b]}}
  - {name: Made}
)");

}  // namespace

TEST_F(ClassificationPolicyTest, ApplySaysWhatItDid) {
    EXPECT_EQ(apply(kClassifications),
              "created classification Infected\n"
              "created action Infected\\quarantine\n"
              "created action Infected\\report\n"
              "created action Infected\\tag\n"
              "created classification Gone\n"
              "created action Gone\\a\n"
              "created action Gone\\b\n"
              "created classification Kept\n"
              "8 created\n");
    EXPECT_EQ(apply(kOtherClassifications),
              "deleted classification Gone (with actions: 2)\n"
              "changed classification Infected (displayName: \"Infected mail\" -> \"Infected\"; comment: \"\" -> "
              "\"changed\")\n"
              "deleted action Infected\\report\n"
              "created action Infected\\new\n"
              "moved action Infected\\quarantine (to position 3)\n"
              "changed action Infected\\tag (displayName: \"\" -> \"Tag\")\n"
              "changed action Infected\\quarantine (actionType: 3 -> 4; deleted setting \"limits\\\\days\"; changed "
              "setting \"folder\"; changed setting \"limits\"; created setting \"more\")\n"
              "created classification Made\n"
              "2 created, 3 changed, 1 moved, 2 deleted\n");
    EXPECT_EQ(apply(kOtherClassifications), "nothing to change\n");
    EXPECT_EQ(apply(policyWithRoot("")),
              "deleted classification Infected (with actions: 3)\ndeleted classification Kept\n"
              "deleted classification Made\n3 deleted\n")
        << "a file without the key has no classifications";
    EXPECT_THAT(dump(), Not(HasSubstr("classifications")));
}

TEST_F(ClassificationPolicyTest, ReportsAsJson) {
    const Outcome outcome =
        run({"apply", "--json", "-"}, policyWith("  - {name: \"A \\\"B\\\"\", actions: [{name: c}]}\n"));
    EXPECT_EQ(outcome.out, R"({"version":1,"dryRun":false,"changes":[)"
                           R"({"change":"created","what":"classification","name":"A \"B\"","details":[]},)"
                           R"({"change":"created","what":"action","name":"A \"B\"\\c","details":[]}],)"
                           R"("created":2,"changed":0,"moved":0,"deleted":0})"
                           "\n");
}

TEST_F(ClassificationPolicyTest, TheDumpIsTheFile) {
    apply(kClassifications);
    EXPECT_EQ(dump(), R"(zxpolicy: 1
classifications:
  - name: Infected
    displayName: Infected mail
    actions:
      - name: quarantine
        actionType: 3
        setting:
          folder: "/q"
          limits:
            days: 30
      - name: report
        comment: by mail
      - name: tag
  - name: Gone
    actions:
      - name: a
      - name: b
  - name: Kept
root:
  conditions:
    - {sender: "*", receiver: "*"}
)");
    EXPECT_EQ(apply(dump()), "nothing to change\n");
}

TEST_F(ClassificationPolicyTest, TheirOrderIsKeptWhenTheyAreMadeAndIsNoDifference) {
    apply(policyWith("  - {name: C}\n  - {name: A}\n  - {name: B}\n"));
    EXPECT_THAT(dump(), HasSubstr("  - name: C\n  - name: A\n  - name: B\n"));
    EXPECT_EQ(apply(policyWith("  - {name: A}\n  - {name: B}\n  - {name: C}\n")), "nothing to change\n");
    EXPECT_EQ(apply(policyWith("  - {name: D}\n  - {name: B}\n  - {name: C}\n")),
              "deleted classification A\ncreated classification D\n1 created, 1 deleted\n");
    EXPECT_THAT(dump(), HasSubstr("  - name: C\n  - name: B\n  - name: D\n"));
}

TEST_F(ClassificationPolicyTest, NamesThatChangeInLetterCaseAloneAreOthers) {
    apply(policyWith("  - {name: infected, actions: [{name: tag, setting: {a: 1}}]}\n"));
    EXPECT_EQ(apply(policyWith("  - {name: Infected, actions: [{name: tag, setting: {a: 1}}]}\n")),
              "deleted classification infected (with actions: 1)\ncreated classification Infected\n"
              "created action Infected\\tag\n2 created, 1 deleted\n");
    EXPECT_EQ(apply(policyWith("  - {name: Infected, actions: [{name: Tag, setting: {A: 1}}]}\n")),
              "deleted action Infected\\tag\ncreated action Infected\\Tag\n1 created, 1 deleted\n");
}

TEST_F(ClassificationPolicyTest, ADryRunOrAFailureChangesNothing) {
    apply(kClassifications);
    const std::string before = dump();
    EXPECT_THAT(run({"apply", "--dry-run", "-"}, kOtherClassifications).out,
                HasSubstr("2 created, 3 changed, 1 moved, 2 deleted; dry"));
    EXPECT_EQ(dump(), before);
    const Outcome failed = run({"apply", "-"}, kOtherClassifications +
                                                   "  rules: [{name: R, conditions: [{sender: \"jo*@a.b\", "
                                                   "receiver: \"*\"}]}]\n");
    EXPECT_EQ(failed.status, 3);
    EXPECT_EQ(failed.out, "");
    EXPECT_THAT(failed.err, HasSubstr("ZXPOL_E_INVALID_FORMAT"));
    EXPECT_EQ(dump(), before);
}

TEST_F(ClassificationPolicyTest, LargeSettingsAndManyActionsAreKept) {
    std::string many;
    for (int i = 0; i < 300; ++i)
        many.append(i == 0 ? "" : ", ").append("{name: a" + std::to_string(i) + "}");
    apply(policyWith("  - name: " + std::string(255, 'n') + "\n    comment: " + std::string(511, 'c') +
                     "\n    actions: [" + many + "]\n  - {name: Large, actions: [{name: a, setting: {text: \"" +
                     std::string(1 << 20, 'x') + "\"}}]}\n"));
    EXPECT_EQ(apply(dump()), "nothing to change\n");
    EXPECT_THAT(dump(), HasSubstr("- name: a299\n"));
}

TEST_F(ClassificationPolicyTest, LookingAtAStoreWithoutThemMakesNoKey) {
    apply(policyWithRoot(""));
    dump();
    run({"refs", "classification", "A"});
    int result = ZXREG_S_OK;
    const KeyHandle store(zxreg_openStore(location().c_str(), &result));
    const KeyHandle key(zxreg_openKey(store.get(), "Classification", &result));
    EXPECT_FALSE(key);
}

// ---- what refers to what is not there -----------------------------------------------------------------------------

TEST_F(ClassificationPolicyTest, TextsThatNameNoClassificationAreANoteEach) {
    const std::string file =
        write("p.yaml", policyWith("  - {name: Infected}\n",
                                   "  tasks:\n    - name: scan\n      outcomes:\n        a: Infected\n"
                                   "        b: infected\n        c: Free\n        d: Free\n"));
    const Outcome outcome = run({"apply", file});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err,
              "zxpolicy: note: " + file +
                  ":10:12: the text \"infected\" of outcome \"b\" of task \\scan names classification \"Infected\" in "
                  "another letter case: the reference checker takes it for that one, but it cannot be opened by this "
                  "text\n"
                  "zxpolicy: note: " +
                  file +
                  ":11:12: the text \"Free\" of outcome \"c\" of task \\scan names no classification (the same text in "
                  "1 more outcomes)\n");
}

TEST_F(ClassificationPolicyTest, NotesAreFew) {
    std::string outcomes;
    for (int i = 0; i < 40; ++i)
        outcomes.append(i == 0 ? "" : ", ").append("o" + std::to_string(i) + ": t" + std::to_string(i));
    const std::string rest = "  tasks: [{name: scan, outcomes: {" + outcomes + "}}]\n";
    const Outcome without = run({"apply", "-"}, policyWithRoot(rest));
    EXPECT_EQ(without.status, 0);
    EXPECT_EQ(without.err,
              "zxpolicy: note: standard input:4:39: the policy has no classification that a text of an outcome could "
              "name (40 texts, the first one here)\n");
    const Outcome with = run({"apply", "-"}, policyWith("  - {name: A}\n", rest));
    EXPECT_EQ(std::count(with.err.begin(), with.err.end(), '\n'), 11);
    EXPECT_THAT(with.err, testing::EndsWith("note: 30 more texts of outcomes name no classification\n"));
}

TEST_F(ClassificationPolicyTest, AConditionThatNamesNoListIsAnErrorUnlessAllowed) {
    const std::string lists = "zxpolicy: 1\nlists: [{name: Staff}]\n";
    const std::string file =
        write("p.yaml", lists + policyWithRoot("  comment: new\n  rules:\n    - name: A\n      conditions:\n"
                                               "        - {sender: (Staff), receiver: a@b}\n"
                                               "        - {sender: a@b, receiver: (staff)}\n"
                                               "        - {sender: (Nosuch), receiver: a@b}\n")
                                    .substr(12));
    apply(policyWithRoot(""));
    const std::string before = dump();
    const std::string inCase = file +
                               ":10:35: the receiver \"(staff)\" of a condition of rule \\A names list \"Staff\" in "
                               "another letter case, in which matching does not find it: a mail that gets to this "
                               "condition passes over the rule";
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"apply", file}, {"apply", "--dry-run", file}}) {
        const Outcome refused = run(command);
        EXPECT_EQ(refused.status, 3);
        EXPECT_EQ(refused.out, "");
        EXPECT_EQ(refused.err, "zxpolicy: " + inCase +
                                   " (and 1 more such sides); correct it, or give --allow-dangling to apply it as it "
                                   "is, such as the dump of a store that has it\n");
        EXPECT_EQ(dump(), before);
    }
    const Outcome allowed = run({"apply", "--allow-dangling", file});
    EXPECT_EQ(allowed.status, 0);
    EXPECT_EQ(allowed.err,
              "zxpolicy: warning: " + inCase + "\nzxpolicy: warning: " + file +
                  ":11:20: the sender \"(Nosuch)\" of a condition of rule \\A names no list of the policy: "
                  "a mail that gets to this condition passes over the rule\n");
    const Outcome dumped = run({"apply", "-"}, dump());
    EXPECT_EQ(dumped.status, 3);
    EXPECT_THAT(dumped.err, HasSubstr("--allow-dangling"));
    EXPECT_EQ(run({"apply", "--allow-dangling", "-"}, dump()).out, "nothing to change\n");
    // What the messages say is so.
    const auto ruleOf = [&](const char* sender, const char* receiver) {
        return run({"match", "--json", "--sender", sender, "--receiver", receiver}).out;
    };
    run({"list", "add", "Staff", "s@x"});
    EXPECT_THAT(ruleOf("s@x", "a@b"), HasSubstr(R"("rule":"\\A")"));
    EXPECT_THAT(ruleOf("a@b", "s@x"), HasSubstr(R"("rule":"\\")"));
}

TEST_F(ClassificationPolicyTest, AConditionOfTheRootRuleThatNamesNoListStopsMatching) {
    const std::string policy = "zxpolicy: 1\nroot:\n  conditions: [{sender: (Nosuch), receiver: \"*\"}]\n";
    const Outcome refused = run({"apply", "-"}, policy);
    EXPECT_EQ(refused.status, 3);
    EXPECT_THAT(refused.err,
                HasSubstr("the sender \"(Nosuch)\" of a condition of rule \\ names no list of the policy: a "
                          "mail that gets to this condition cannot be matched at all; correct it"));
    EXPECT_EQ(run({"apply", "--allow-dangling", "-"}, policy).status, 0);
    EXPECT_EQ(run({"match", "--sender", "a@b", "--receiver", "c@d"}).status, 3);
}

TEST_F(ClassificationPolicyTest, ASideThatIsNoReferenceIsSaidToBeMalformed) {
    for (const char* side : {"(P)x", "(P", "(P]"}) {
        const std::string policy =
            std::string("  rules: [{name: A, conditions: [{sender: \"") + side + "\", receiver: \"*\"}]}]\n";
        for (const std::vector<std::string>& command :
             {std::vector<std::string>{"apply", "-"}, {"apply", "--allow-dangling", "-"}}) {
            const Outcome refused = run(command, policyWithRoot(policy));
            EXPECT_EQ(refused.status, 3);
            EXPECT_THAT(refused.err, HasSubstr("ZXPOL_E_INVALID_FORMAT"));
            EXPECT_THAT(refused.err, testing::Not(HasSubstr("--allow-dangling")));
        }
    }
}

TEST_F(ClassificationPolicyTest, WarningsAreFew) {
    std::string conditions;
    for (int i = 0; i < 40; ++i)
        conditions += std::string(i == 0 ? "" : ", ") + "{sender: (L" + std::to_string(i) + "), receiver: \"*\"}";
    const Outcome outcome = run({"apply", "--allow-dangling", "-"},
                                policyWithRoot("  rules: [{name: A, conditions: [" + conditions + "]}]\n"));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 11);
    EXPECT_THAT(outcome.err, testing::EndsWith("warning: 30 more sides of conditions name no list\n"));
}

TEST_F(ClassificationPolicyTest, AStoreInMemoryTakesThemToo) {
    const Store store("memory:classifications", Store::Missing::Create);
    for (const std::string& text : {kClassifications, kOtherClassifications}) {
        const Policy wanted = readPolicy("p", text);
        EXPECT_FALSE(applyPolicy(store, "p", wanted, false).changes.isEmpty());
        EXPECT_TRUE(applyPolicy(store, "p", wanted, false).changes.isEmpty());
        const StoredPolicy stored = readPolicySnapshot(store, Secrets::Leave);
        EXPECT_THAT(stored.problems, IsEmpty());
        EXPECT_EQ(firstDifference(stored.policy, wanted), "");
    }
    const StoredPolicy stored = readPolicySnapshot(store, Secrets::Leave);
    std::vector<std::string> names;
    for (const Action& action : stored.policy.classifications[0].actions)
        names.push_back(action.name);
    EXPECT_THAT(names, ElementsAre("tag", "new", "quarantine"));
}

}  // namespace tool
