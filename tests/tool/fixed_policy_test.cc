#include "decisions/fixed_policy.h"

#include <gtest/gtest.h>

#include <sstream>

#include "change/apply.h"
#include "random_policy.h"
#include "stored/policy_store_reader.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using FixedPolicyTest = ToolTest;

Policy storedIn(const Store& store) {
    return readPolicySnapshot(store, Secrets::Leave).policy;
}

}  // namespace

TEST_F(FixedPolicyTest, ACopyHoldsTheWholePolicy) {
    for (unsigned int seed = 1; seed <= 20; ++seed) {
        const std::string location = seed % 4 == 0 ? "sqlite:" + path(std::to_string(seed)) : "memory:copied";
        const Store store(location, Store::Missing::Create);
        const Policy policy = RandomPolicy(seed).make();
        applyPolicy(store, "p", policy, false);
        const FixedPolicy copy(location);
        EXPECT_EQ(firstDifference(storedIn(copy.store()), policy), "") << seed;
        EXPECT_FALSE(copy.isOutdated());
    }
}

TEST_F(FixedPolicyTest, ACopyStaysAsItIsAndKnowsThatTheStoreChanged) {
    const Store store("memory:copied", Store::Missing::Create);
    const Policy first = RandomPolicy(1).make();
    applyPolicy(store, "p", first, false);
    const FixedPolicy copy("memory:copied");
    applyPolicy(store, "p", RandomPolicy(2).make(), false);
    EXPECT_EQ(firstDifference(storedIn(copy.store()), first), "");
    EXPECT_TRUE(copy.isOutdated());
}

TEST_F(FixedPolicyTest, AFileOnABaseIsWhatApplyMakesOfIt) {
    const Store store("memory:copied", Store::Missing::Create);
    const std::string list = "zxpolicy: 1\nlists: [{name: L";
    const std::string root = "}]\nroot: {conditions: [{sender: \"*\", receiver: (L)}]}\n";
    apply(list + ", addresses: [a@b]" + root);
    const FixedPolicy base(location());
    const std::string file = write("p.yaml", list + root);
    std::ostringstream err;
    const FixedPolicy onBase(file, &base, err);
    EXPECT_EQ(err.str(), "");
    const Policy kept = storedIn(onBase.store());
    EXPECT_EQ(std::get<NormalList>(kept.lists.at("L")).addresses, std::vector<std::string>{"a@b"});
    const FixedPolicy alone(file, nullptr, err);
    const Policy empty = storedIn(alone.store());
    EXPECT_EQ(std::get<NormalList>(empty.lists.at("L")).addresses, std::vector<std::string>());
    EXPECT_EQ(err.str(),
              "zxpolicy: warning: " + file + ": address list \"L\" has no addresses in the file, and is empty here\n");
}

}  // namespace tool
