// The fixture of the tests of the rules' classes: a store in memory, and the hive and its rules as objects.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "rules/rule.h"
#include "rules/rule_hive.h"
#include "support/raw_store.h"
#include "support/records.h"

namespace zxtest {

class RulesTest : public ::testing::Test {
protected:
    void SetUp() override {
        int error = ZXREG_S_OK;
        _store.reset(zxreg_openStore("memory:", &error));
        ASSERT_NE(nullptr, _store) << codeText(error);
        _hive.reset(ZxPolRuleHive::open(_store.get(), 0, &error));
        ASSERT_NE(nullptr, _hive) << codeText(error);
    }

    _ZxPolComHandle* store() const { return _store.get(); }
    ZxPolRuleHive& hive() const { return *_hive; }
    void closeHive() { _hive.reset(); }

    RawKey raw(const std::string& path) const { return RawKey(store(), path); }

    std::unique_ptr<ZxPolRule> rule(const std::string& path) const {
        int error = ZXPOL_S_OK;
        std::unique_ptr<ZxPolRule> found(hive().openRuleByFullPath(path.c_str(), &error));
        EXPECT_NE(nullptr, found) << path << ": " << codeText(error);
        return found;
    }

    // Creates the child `name` of `parent` with one condition.
    static std::unique_ptr<ZxPolRule> addRule(ZxPolRule& parent, const std::string& name, const std::string& sender,
                                              const std::string& receiver) {
        _ZxPolRuleAttr attr = ruleAttr(name);
        CondList conditions({pairOf(sender, receiver)});
        int error = ZXPOL_S_OK;
        std::unique_ptr<ZxPolRule> child(parent.createChildRule(name.c_str(), &attr, conditions.get(), &error));
        EXPECT_NE(nullptr, child) << name << ": " << codeText(error);
        return child;
    }

    // A rule's conditions as "sender,receiver".
    static std::vector<std::string> conditionsOf(ZxPolRule& rule) {
        std::vector<std::string> found;
        for (uint32_t index = 0;; ++index) {
            _ZxPolAddrPairCond pair{};
            uint32_t size = sizeof pair;
            int error = ZXPOL_S_OK;
            rule.enumCondition(index, reinterpret_cast<unsigned char*>(&pair), &size, &error);
            if (error < 0) {
                EXPECT_EQ(12u, reasonOf(error)) << codeText(error);
                return found;
            }
            found.push_back(std::string(pair.sender) + "," + pair.receiver);
        }
    }

    // The entries of an error list as "rule: pair pair"; the list is released, its entry records too, which the
    // interface leaves to the process.
    static std::vector<std::string> takeErrorList(_ZxPolErrorCond** list) {
        std::vector<std::string> lines;
        std::vector<_ZxPolErrorCond*> entries;
        for (_ZxPolErrorCond** entry = list; entry != nullptr && *entry != nullptr; ++entry) {
            std::string line = std::string((*entry)->ruleName) + ":";
            for (unsigned char** pair = (*entry)->conds; *pair != nullptr; ++pair) {
                const _ZxPolAddrPairCond& read = zxpol::asPair(*pair);
                line += std::string(" ") + read.sender + "," + read.receiver;
            }
            lines.push_back(line);
            entries.push_back(*entry);
        }
        int error = ZXPOL_S_OK;
        ZxPolRule::freeErrorConds(list, &error);
        for (_ZxPolErrorCond* entry : entries)
            delete entry;
        return lines;
    }

private:
    Handle _store;
    std::unique_ptr<ZxPolRuleHive> _hive;
};

}  // namespace zxtest
