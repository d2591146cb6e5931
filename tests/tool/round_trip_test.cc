#include <gmock/gmock.h>

#include "change/apply.h"
#include "policy/policy_reader.h"
#include "policy/policy_references.h"
#include "policy/policy_writer.h"
#include "random_policy.h"
#include "stored/policy_store_reader.h"
#include "tool_fixture.h"

namespace tool {

namespace {

constexpr unsigned int kPolicies = 150;

Policy stored(const Store& store) {
    const StoredPolicy read = readPolicySnapshot(store, Secrets::Read);
    EXPECT_THAT(read.problems, testing::IsEmpty());
    return read.policy;
}

void applyTo(const Store& store, const Policy& policy) {
    applyPolicy(store, "p", policy, false);
}

}  // namespace

TEST(RoundTrip, EveryPolicyIsReadBackFromItsFile) {
    for (unsigned int seed = 0; seed < kPolicies * 4; ++seed) {
        const Policy policy = RandomPolicy(seed).make();
        const std::string text = writePolicy(policy);
        const Policy again = readPolicy("p", text);
        ASSERT_EQ(firstDifference(policy, again), "") << seed << "\n" << text;
        ASSERT_EQ(writePolicy(again), text) << seed;
    }
}

TEST(RoundTrip, EveryPolicyIsReadBackFromAFreshStore) {
    for (unsigned int seed = 0; seed < kPolicies; ++seed) {
        const Policy policy = RandomPolicy(seed).make();
        const Store store("memory:", Store::Missing::Create);
        applyTo(store, policy);
        const Policy again = stored(store);
        ASSERT_EQ(firstDifference(policy, again), "") << seed;
        ASSERT_TRUE(applyPolicy(store, "p", again, false).changes.isEmpty()) << seed;
    }
}

// One store goes from policy to policy, so that every change from one thing to another comes about.
TEST(RoundTrip, EveryPolicyReplacesTheOneBeforeItWholly) {
    const Store store("memory:", Store::Missing::Create);
    for (unsigned int seed = 0; seed < kPolicies; ++seed) {
        const Policy policy = RandomPolicy(seed).make();
        applyTo(store, policy);
        const Policy again = stored(store);
        ASSERT_EQ(firstDifference(policy, again), "") << seed;
        ASSERT_TRUE(applyPolicy(store, "p", policy, false).changes.isEmpty()) << seed;
    }
}

TEST(RoundTrip, TheDumpDoesNotDependOnHowThePolicyCameAbout) {
    const Store wandering("memory:", Store::Missing::Create);
    for (unsigned int seed = 0; seed < 20; ++seed) {
        Policy policy = RandomPolicy(seed).make();
        for (auto& [name, list] : policy.lists) {
            if (auto* directory = std::get_if<DirectoryList>(&list)) directory->password = "p";
            // What a list held before stays where it was in the order.
            auto* normal = std::get_if<NormalList>(&list);
            if (normal != nullptr && normal->addresses->size() > 1) normal->addresses->resize(1);
        }
        // Classifications stay in the order in which they were made.
        if (policy.classifications.size() > 1) policy.classifications.resize(1);
        applyTo(wandering, policy);
        const Store fresh("memory:", Store::Missing::Create);
        applyTo(fresh, policy);
        ASSERT_EQ(writePolicy(stored(wandering)), writePolicy(stored(fresh))) << seed;
    }
}

using RoundTripTest = ToolTest;

TEST_F(RoundTripTest, ApplyOfADumpChangesNothing) {
    const Outcome first = run({"apply", ZX_EXAMPLES "/policy.yaml"});
    ASSERT_EQ(first.status, 0) << first.err;
    EXPECT_EQ(first.err, "") << "the example warns";
    const std::string dumped = dump();
    EXPECT_EQ(apply(dumped), "nothing to change\n");
    EXPECT_EQ(apply(read(ZX_EXAMPLES "/policy.yaml")), "nothing to change\n");
    EXPECT_EQ(dump(), dumped);
}

TEST_F(RoundTripTest, TheExamplesReferencesAreAllThere) {
    const std::string text = read(ZX_EXAMPLES "/policy.yaml");
    const ReferenceFaults faults = findReferenceFaults(YamlSource("p"), readPolicy("p", text));
    EXPECT_THAT(faults.dangling, testing::IsEmpty());
    EXPECT_THAT(faults.notes, testing::IsEmpty());
}

TEST_F(RoundTripTest, TheLongestTextsAreKept) {
    const std::string name(255, 'n');
    const std::string comment(511, 'c');
    const std::string side = std::string(250, 's') + "@" + std::string(260, 'd');
    apply(policyWithRoot("  displayName: " + name + "\n  comment: " + comment + "\n  rules:\n    - name: " + name +
                         "\n      conditions: [{sender: \"" + side + "\", receiver: \"" + side + "\"}]\n" +
                         "  tasks: [{name: " + std::string(254, 't') + "}]\n"));
    const std::string dumped = dump();
    EXPECT_THAT(dumped, testing::HasSubstr(comment));
    EXPECT_THAT(dumped, testing::HasSubstr("- {sender: \"" + side + "\", receiver: \"" + side + "\"}"));
    EXPECT_EQ(apply(dumped), "nothing to change\n");
}

TEST_F(RoundTripTest, TextsThatLookLikeSomethingElseStayTexts) {
    apply(
        policyWithRoot("  displayName: \"5\"\n  comment: \"true\"\n  tasks:\n    - name: \"null\"\n"
                       "      setting: {a: \"7\", b: 7, c: \"\", d: [], e: {}, f: [\"7\"]}\n"));
    const std::string dumped = dump();
    for (const char* line : {"  displayName: \"5\"\n", "  comment: \"true\"\n", "- name: \"null\"\n", " a: \"7\"\n",
                             " b: 7\n", " c: \"\"\n", " d: []\n", " e: {}\n", " f: [\"7\"]\n"})
        EXPECT_THAT(dumped, testing::HasSubstr(line));
    EXPECT_EQ(apply(dumped), "nothing to change\n");
}

}  // namespace tool
