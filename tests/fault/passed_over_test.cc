// The list of what is passed over by design: complete, and nothing in it without use.
#include <gtest/gtest.h>

#include <set>

#include "fault/scenario.h"

namespace {

using namespace zxtest;

std::set<std::string> usedReasons() {
    std::set<std::string> used{kAbsent};
    for (const Scenario& scenario : allScenarios()) {
        for (const Site& site : scenario.passedOver)
            used.insert(site.reason);
    }
    return used;
}

TEST(PassedOver, EveryReasonIsInTheTableAndEveryOneThereIsUsed) {
    std::set<std::string> listed;
    for (const auto& reason : passedOver())
        listed.insert(reason.first);
    EXPECT_EQ(listed, usedReasons());
}

TEST(PassedOver, EveryReasonIsTold) {
    for (const auto& [name, sentence] : passedOver()) {
        EXPECT_TRUE(sentence.size() > 30 && sentence.back() == '.') << name;
        EXPECT_EQ(std::string::npos, sentence.find('\t')) << name;
    }
}

TEST(PassedOver, ScenariosHaveNamesOfTheirOwn) {
    std::set<std::string> names;
    for (const Scenario& scenario : allScenarios())
        EXPECT_TRUE(names.insert(scenario.name).second) << scenario.name;
    EXPECT_GE(names.size(), 150u);
}

}  // namespace
