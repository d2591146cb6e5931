// The fixture of the tests of matching: the rules' fixture with an address-list hive, a matcher at hand, and the debug
// messages on record.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "addrlist/addr_list.h"
#include "addrlist/addr_list_hive.h"
#include "frame/reg_debug.h"
#include "match/rule_matcher.h"
#include "unit/rules_fixture.h"

namespace zxtest {

constexpr _ZxPolMatchOption kFirst = {0, 0, 0, 0, 0};
constexpr _ZxPolMatchOption kBest = {1, 0, 0, 0, 0};

class MatchTest : public RulesTest {
protected:
    void SetUp() override {
        RulesTest::SetUp();
        int error = ZXPOL_S_OK;
        _lists.reset(ZxPolAddrListHive::open(store(), &error));
        ASSERT_NE(nullptr, _lists) << codeText(error);
        messages().clear();
        ZxRegDebug::setDebugFunction([](const char* message) { messages().emplace_back(message); });
    }

    void TearDown() override {
        ZxRegDebug::setDebugFunction(nullptr);
        ZxPolRuleMatcher::mGlobalOption = kBest;
    }

    ZxPolAddrListHive& lists() const { return *_lists; }

    std::unique_ptr<ZxPolRuleMatcher> matcher(const _ZxPolMatchOption& option = kFirst) const {
        return std::make_unique<ZxPolRuleMatcher>(&lists(), &hive(), &option);
    }

    void addDirectoryList(const std::string& name) const {
        const _ZxPolAddrListAttr attr = directoryAttr(name);
        int error = ZXPOL_S_OK;
        const std::unique_ptr<ZxPolAddrList> list(lists().createAddrList(name.c_str(), &attr, &error));
        EXPECT_NE(nullptr, list) << codeText(error);
    }

    static void addCondition(ZxPolRule& rule, const std::string& sender, const std::string& receiver) {
        CondList conditions({pairOf(sender, receiver)});
        int error = ZXPOL_S_OK;
        rule.addCondition(conditions.get(), ZXPOL_COND_CHECK_NONE, nullptr, &error);
        EXPECT_GE(error, 0) << codeText(error);
    }

    // Creates the child `name` of the rule at `parent`, with one condition that nothing is said about.
    void addChild(const std::string& parent, const std::string& name, const std::string& sender = "*",
                  const std::string& receiver = "*") const {
        _ZxPolRuleAttr attr = ruleAttr(name);
        int error = ZXPOL_S_OK;
        const std::unique_ptr<ZxPolRule> child(rule(parent)->createChildRule(name.c_str(), &attr, &error));
        ASSERT_NE(nullptr, child) << codeText(error);
        addCondition(*child, sender, receiver);
    }

    void addTask(const std::string& path, const std::string& name, const _ZxPolTaskAttr& attr) const {
        int error = ZXPOL_S_OK;
        const std::unique_ptr<ZxPolTask> task(rule(path)->createTask(name.c_str(), &attr, &error));
        EXPECT_NE(nullptr, task) << codeText(error);
    }

    static std::vector<std::string>& messages() {
        static std::vector<std::string> recorded;
        return recorded;
    }

private:
    std::unique_ptr<ZxPolAddrListHive> _lists;
};

}  // namespace zxtest
