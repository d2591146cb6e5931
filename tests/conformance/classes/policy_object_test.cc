// What objects behind the handles keep or answer that no flat function shows.
#include "addrlist/ldap_addr_list.h"
#include "match/rule_matcher.h"
#include "rules/rule.h"
#include "rules/rule_hive.h"
#include "support/policy_fixture.h"

namespace {

class PolicyObject : public zxtest::PolicyTest {
protected:
    ZxPolRuleHive& hive() const { return *static_cast<ZxPolRuleHive*>(ruleHive()->object); }
};
ZXTEST_ON_BOTH_ENGINES(PolicyObject);

TEST_P(PolicyObject, ADirectoryListMatchesEverythingTogetherWithAFailure) {
    addDirectoryList("L");
    int error = ZXPOL_S_OK;
    ZxPolLdapAddrList list(zxreg_openKey(raw("AddressList\\L").handle(), "", &error));
    EXPECT_TRUE(list.matchAddress("a@b.c", nullptr, ZXPOL_WEIGHT_DOMAIN_FIRST, &error));
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
    uint32_t weight = 77;
    error = ZXPOL_S_OK;
    EXPECT_TRUE(list.matchAddress(nullptr, &weight, ZXPOL_WEIGHT_NAME_FIRST, &error));
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, error);
    EXPECT_EQ(0u, weight);
}

TEST_P(PolicyObject, TheStoredMatchOptionIsSane) {
    const _ZxPolMatchOption given = {0, 9, 7, 5, 6};
    int error = ZXPOL_S_OK;
    zxpol_setMatchOption(&given, &error);
    const _ZxPolMatchOption& kept = ZxPolRuleMatcher::mGlobalOption;
    EXPECT_EQ(1u, kept.matchMode);
    EXPECT_EQ(0u, kept.priorityType);
    EXPECT_EQ(0u, kept.weightType);
    EXPECT_EQ(5u, kept.reserved1);
    EXPECT_EQ(6u, kept.reserved2);
    const _ZxPolMatchOption known = {7, 2, 1, 0, 0};
    zxpol_setMatchOption(&known, &error);
    EXPECT_EQ(1u, kept.matchMode);
    EXPECT_EQ(2u, kept.priorityType);
    EXPECT_EQ(1u, kept.weightType);
}

TEST_P(PolicyObject, RulePathsBecomeKeyPaths) {
    const auto keyPath = [&](const char* path) {
        std::string key = "untouched";
        return hive().transRulePathToKeyPath(path, key) ? key : "refused";
    };
    EXPECT_EQ("Mail", keyPath("\\"));
    EXPECT_EQ("Mail\\rules\\A", keyPath("\\A"));
    EXPECT_EQ("Mail\\rules\\A\\rules\\B", keyPath("\\A\\B"));
    EXPECT_EQ("Mail\\rules\\A\\rules\\B\\", keyPath("\\A\\B\\"));
    EXPECT_EQ("refused", keyPath("A"));
    EXPECT_EQ("refused", keyPath(""));
    EXPECT_EQ("refused", keyPath(nullptr));
}

TEST_P(PolicyObject, ExclusiveFilterNamesHaveEightDigits) {
    for (const char* name : {"ExcluId0000001a", "EXCLUIDABCDEFab", "excluid12345678"})
        EXPECT_TRUE(ZxPolRuleHive::_isNameValid(name)) << name;
    for (const char* name : {"ExcluId1234567", "ExcluId123456789", "ExcluId1234567g", "ExcluId", "", "Excluid "})
        EXPECT_FALSE(ZxPolRuleHive::_isNameValid(name)) << name;
}

TEST_P(PolicyObject, ARuleKnowsTheMarksOfTheTimeItWasOpened) {
    inactivate("\\", "\\a");
    int error = ZXPOL_S_OK;
    const std::unique_ptr<ZxPolRule> root(hive().openRootRule(&error));
    ASSERT_NE(nullptr, root);
    EXPECT_EQ("", root->name());
    EXPECT_EQ(std::list<std::string>{"\\a"}, root->inactiveTasks());
    root->inactivateTask("\\b", &error, 0);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(std::list<std::string>{"\\a"}, root->inactiveTasks());
    EXPECT_FALSE(root->isTaskActive("\\b", &error, nullptr));
    char mark[256] = "";
    EXPECT_FALSE(root->isTaskActive("\\B", &error, mark));
    EXPECT_STREQ("inactive2", mark);
    root->cleanInactiveTasks();
    EXPECT_TRUE(root->inactiveTasks().empty());
    root->loadInactiveTasks();
    EXPECT_EQ(2u, root->inactiveTasks().size());
}

TEST_P(PolicyObject, ARuleAtAPathIsNamedByItWithoutATrailingBackslash) {
    addRule("\\", "A");
    int error = ZXPOL_S_OK;
    const std::unique_ptr<ZxPolRule> a(hive().openRuleByFullPath("\\A\\", &error));
    ASSERT_NE(nullptr, a);
    EXPECT_EQ("\\A", a->name());
    const std::unique_ptr<ZxPolRule> root(hive().openRuleByFullPath("\\", &error));
    EXPECT_EQ("", root->name());
}

}  // namespace
