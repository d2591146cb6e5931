// Commands that look at a policy file: they answer for the policy that apply would leave in the store.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "stored/raw_key.h"
#include "stored/store.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using nlohmann::json;
using testing::HasSubstr;

// A policy with a list, whose addresses are in the file or not, and a rule that takes its receivers.
std::string listPolicy(const std::string& list, const std::string& task) {
    return "zxpolicy: 1\nlists: [{name: L" + list + "}]\n" +
           policyWithRoot("  tasks: [{name: " + task +
                          "}]\n  rules: [{name: A, conditions: [{sender: \"*\", receiver: (L)}]}]\n")
               .substr(12);
}

std::string warningOf(const std::string& file) {
    return "zxpolicy: warning: " + file + ": address list \"L\" has no addresses in the file, and is empty here\n";
}

const char* const kWithAddresses = ", addresses: [a@b.example]";

// One question, asked of the policy file and of a store that the file was applied to.
struct AppliedFile {
    const char* name;
    std::vector<std::string> ofFile;
    std::vector<std::string> ofStore;
    bool isOfDecisions = true;  // not of what is written alone
};

void PrintTo(const AppliedFile& question, std::ostream* out) {
    *out << question.name;
}

class AppliedFileTest : public ToolTest, public testing::WithParamInterface<AppliedFile> {
protected:
    AppliedFileTest() {
        write("mails.tsv", "x@y.example\ta@b.example,c@d.example\n");
        write("tests.yaml",
              "zxpolicyTest: 1\ntests: [{name: t, sender: x@y.example, expect: [{receiver: a@b.example, rule: '\\A', "
              "tasks: "
              "['\\check']}]}]\n");
    }

    // Runs the command with the names of the test's files in the place of FILE, MAILS, TESTS, STORE and APPLIED.
    Outcome ask(std::vector<std::string> words) {
        const std::map<std::string, std::string> places{{"FILE", path("new.yaml")},
                                                        {"MAILS", path("mails.tsv")},
                                                        {"TESTS", path("tests.yaml")},
                                                        {"STORE", location()},
                                                        {"APPLIED", appliedTo()}};
        for (std::string& word : words) {
            const auto found = places.find(word);
            if (found != places.end()) word = found->second;
        }
        return words.front() == "--store" ? runPlain(words) : run(words);
    }

    std::string appliedTo() const { return "sqlite:" + path("applied.db"); }

    // Applies a policy to the store and to a second one, then the file to that one only.
    void prepare(const std::string& stored, const std::string& file) {
        write("old.yaml", stored);
        write("new.yaml", file);
        for (const std::string& store : {location(), appliedTo()})
            ASSERT_EQ(runPlain({"--store", store, "apply", path("old.yaml")}).status, 0);
        ASSERT_EQ(runPlain({"--store", appliedTo(), "apply", path("new.yaml")}).status, 0);
    }

    // The report without what names the policy and what differs from run to run.
    static json comparable(const Outcome& outcome) {
        json report = json::parse(outcome.out);
        if (report.contains("diff")) report["diff"].erase("after");
        return report;
    }
};

}  // namespace

TEST_P(AppliedFileTest, KeepsTheAddressesThatTheFileLeavesToTheStore) {
    prepare(listPolicy(kWithAddresses, "scan"), listPolicy("", "check"));
    const Outcome ofFile = ask(GetParam().ofFile);
    EXPECT_EQ(ofFile.err, "");
    const Outcome ofStore = ask(GetParam().ofStore);
    EXPECT_EQ(ofFile.status, ofStore.status);
    EXPECT_EQ(comparable(ofFile), comparable(ofStore));
}

// A directory list becomes one without addresses, and so does a list that is new.
TEST_P(AppliedFileTest, LeavesAListEmptyWhereThereAreNoAddressesToKeep) {
    for (const char* old : {", type: directory, server: s", "ater"}) {
        SCOPED_TRACE(old);
        prepare(
            "zxpolicy: 1\nlists: [{name: L" + std::string(old) + "}]\n" + policyWithRoot("  rules: []\n").substr(12),
            listPolicy("", "check"));
        const Outcome ofFile = ask(GetParam().ofFile);
        const Outcome ofStore = ask(GetParam().ofStore);
        EXPECT_EQ(ofFile.err, GetParam().isOfDecisions ? warningOf(path("new.yaml")) : std::string());
        EXPECT_EQ(ofFile.status, ofStore.status);
        EXPECT_EQ(comparable(ofFile), comparable(ofStore));
        std::remove(path("applied.db").c_str());
        std::remove(path("policy.db").c_str());
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, AppliedFileTest,
    testing::Values(
        AppliedFile{
            "Test", {"test", "TESTS", "--policy", "FILE", "--json"}, {"--store", "APPLIED", "test", "TESTS", "--json"}},
        AppliedFile{"Lint", {"lint", "FILE", "--json"}, {"lint", "APPLIED", "--json"}},
        AppliedFile{"Replay",
                    {"replay", "--envelopes", "MAILS", "--against", "FILE", "--json"},
                    {"replay", "--envelopes", "MAILS", "--against", "APPLIED", "--json"}},
        AppliedFile{"Diff", {"diff", "STORE", "FILE", "--json"}, {"diff", "STORE", "APPLIED", "--json"}, false},
        AppliedFile{"DiffDecisions",
                    {"diff", "--decisions", "STORE", "FILE", "--json"},
                    {"diff", "--decisions", "STORE", "APPLIED", "--json"}},
        AppliedFile{"DiffDecisionsBackwards",
                    {"diff", "--decisions", "FILE", "STORE", "--json"},
                    {"diff", "--decisions", "APPLIED", "STORE", "--json"}}),
    [](const auto& test) { return std::string(test.param.name); });

using PolicyFileTest = ToolTest;

TEST_F(PolicyFileTest, OfAListWithoutAddressesIsWarnedWhereThereIsNoStore) {
    const std::string file = write("new.yaml", listPolicy("", "check"));
    const std::string tests = write(
        "tests.yaml",
        "zxpolicyTest: 1\ntests: [{name: t, sender: a@b.example, expect: [{receiver: c@d.example, rule: '\\'}]}]\n");
    const std::string warning = warningOf(file);
    EXPECT_EQ(run({"test", tests, "--policy", file}).err, warning);
    EXPECT_EQ(run({"lint", file}).err, warning);
    EXPECT_EQ(run({"diff", "--decisions", file, file}).err, warning + warning);
}

TEST_F(PolicyFileTest, ThatSaysAllAddressesNeedsNoStore) {
    write("policy.db", "no store");
    const std::string file = write("new.yaml", listPolicy(kWithAddresses, "check"));
    const std::string tests = write(
        "tests.yaml",
        "zxpolicyTest: 1\ntests: [{name: t, sender: a@b.example, expect: [{receiver: c@d.example, rule: '\\'}]}]\n");
    EXPECT_EQ(run({"test", tests, "--policy", file}).status, 0);
    EXPECT_EQ(run({"lint", file}).err, "");
    write("new.yaml", listPolicy("", "check"));
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"test", tests, "--policy", file}, {"lint", file}}) {
        const Outcome outcome = run(words);
        EXPECT_EQ(outcome.status, 3);
        EXPECT_THAT(outcome.err, HasSubstr("cannot open the store"));
    }
}

// Two files: what one leaves out is that of the other, in both directions.
TEST_F(PolicyFileTest, IsComparedWithAnotherAsIfItHadItsAddresses) {
    const std::string with = write("with.yaml", listPolicy(kWithAddresses, "scan"));
    const std::string without = write("without.yaml", listPolicy("", "scan"));
    for (const auto& [before, after] : {std::pair(with, without), std::pair(without, with)}) {
        const Outcome outcome = run({"diff", "--decisions", before, after});
        EXPECT_EQ(outcome.status, 0) << outcome.out;
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(run({"diff", before, after}).status, 0);
    }
}

// Apply would refuse that store.
TEST_F(PolicyFileTest, CannotLeaveAddressesToAStoreThatApplyRefuses) {
    apply(listPolicy(kWithAddresses, "scan"));
    {
        const Store store(location(), Store::Missing::Refuse);
        int result = ZXREG_S_OK;
        const KeyHandle rule = openRawKey(store.key(), kRootRuleKey);
        zxreg_setValue(rule.get(), "surplus", ZXREG_STRING, "x", 2, &result);
        ASSERT_EQ(result, ZXREG_S_OK);
    }
    const std::string file = write("new.yaml", listPolicy("", "check"));
    ASSERT_EQ(run({"apply", file}).status, 3);
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"diff", "--decisions", location(), file}, {"lint", file}}) {
        const Outcome outcome = run(words);
        EXPECT_EQ(outcome.status, 3);
        EXPECT_THAT(outcome.err, HasSubstr("zxpolicy: cannot apply " + file + " to " + location() +
                                           ": rule \\ has a value \"surplus\""));
    }
    write("new.yaml", listPolicy(kWithAddresses, "scan"));
    EXPECT_EQ(run({"diff", "--decisions", location(), file}).status, 0);
}

}  // namespace tool
