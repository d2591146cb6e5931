#include "policy_life.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "map_store.h"
#include "support/records.h"

namespace zxtest {

namespace {

struct Hives {
    _ZxPolComHandle* rules = nullptr;
    _ZxPolComHandle* lists = nullptr;
    _ZxPolComHandle* root = nullptr;
};

Hives openHives(_ZxPolComHandle* store) {
    int error = ZXPOL_S_OK;
    Hives hives;
    hives.rules = zxpol_openRuleHive(store, 0, &error);
    hives.lists = zxpol_openAddrListHive(store, &error);
    hives.root = zxpol_openRootRule(hives.rules, &error);
    EXPECT_TRUE(ZX_SUCCESS(error)) << std::hex << error;
    return hives;
}

void closeHives(const Hives& hives) {
    int error = ZXPOL_S_OK;
    zxpol_closeRule(hives.root, &error);
    zxpol_closeAddrListHive(hives.lists, &error);
    zxpol_closeRuleHive(hives.rules, &error);
    EXPECT_EQ(ZXPOL_S_OK, error);
}

_ZxPolComHandle* makeRule(_ZxPolComHandle* parent, const char* name, uint32_t order, CondList conditions) {
    int error = ZXPOL_S_OK;
    _ZxPolRuleAttr attr = ruleAttr(name, order);
    _ZxPolComHandle* rule = zxpol_createRule(parent, name, &attr, conditions.get(), &error);
    EXPECT_TRUE(ZX_SUCCESS(error)) << name << " " << std::hex << error;
    return rule;
}

void closeRule(_ZxPolComHandle* rule) {
    int error = ZXPOL_S_OK;
    zxpol_closeRule(rule, &error);
}

void makeTask(_ZxPolComHandle* rule, const char* name, uint32_t filter) {
    int error = ZXPOL_S_OK;
    _ZxPolTaskAttr attr = taskAttr(name, filter, 1);
    _ZxPolComHandle* task = zxpol_createTask(rule, name, &attr, &error);
    zxpol_addOutcome(task, "clean", "Clean", &error);
    EXPECT_TRUE(ZX_SUCCESS(error)) << name << " " << std::hex << error;
    zxpol_closeTask(task, &error);
}

std::vector<std::string> childNames(_ZxPolComHandle* rule) {
    std::vector<std::string> names;
    int error = ZXPOL_S_OK;
    for (uint32_t index = 0;; ++index) {
        char name[ZXPOL_NAME_SIZE];
        uint32_t size = sizeof name;
        zxpol_enumRule(rule, index, name, &size, &error);
        if (ZX_FAILURE(error)) break;
        names.push_back(name);
    }
    EXPECT_EQ(0xcu, static_cast<uint32_t>(error) & 0xffffu);
    return names;
}

void makePolicy(const Hives& hives) {
    int error = ZXPOL_S_OK;
    const _ZxPolAddrListAttr directory = directoryAttr("Staff");
    zxpol_closeAddrList(zxpol_createAddrList(hives.lists, "Staff", &directory, &error), &error);
    zxpol_setExclusiveFilterType(hives.rules, 26, ZXPOL_FILTER_DESC_EXCLUSIVE, &error);
    makeTask(hives.root, "scan", 26);
    makeTask(hives.root, "archive", 1);
    // Positions, not the store's alphabet, order the children.
    closeRule(makeRule(hives.root, "zeta", 0, {pairOf("*@z.example", "*")}));
    _ZxPolComHandle* alpha = makeRule(hives.root, "Alpha", 0, {pairOf("*@a.example", "*")});
    makeTask(alpha, "scan harder", 26);
    closeRule(makeRule(alpha, "inner", 0, {pairOf("bob@a.example", "*@x.example")}));
    zxpol_inactivateTask(alpha, "\\archive", 0, &error);
    closeRule(makeRule(hives.root, "first", 1, {pairOf("*@first.example", "*")}));
    EXPECT_TRUE(ZX_SUCCESS(error)) << std::hex << error;
    closeRule(alpha);
    EXPECT_EQ((std::vector<std::string>{"first", "zeta", "Alpha"}), childNames(hives.root));
}

// The rule that one receiver is given, with the number of its tasks.
std::string match(const Hives& hives, uint32_t mode, const char* sender, const char* receiver) {
    int error = ZXPOL_S_OK;
    const char* receivers[] = {receiver, nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    zxpol_matchRuleByMailInfoEx(hives.rules, hives.lists, mode, sender, receivers, &pairs, &count, &error);
    EXPECT_TRUE(ZX_SUCCESS(error)) << std::hex << error;
    std::string answer;
    for (uint32_t i = 0; i < count; ++i)
        answer += pairs[i].rulePath + (" " + std::to_string(pairs[i].taskCount));
    zxpol_freeMatchPair(pairs, count, &error);
    return answer;
}

void matchPolicy(const Hives& hives) {
    for (const uint32_t mode : {0u, 1u}) {
        EXPECT_EQ("\\Alpha\\inner 2", match(hives, mode, "bob@a.example", "q@x.example"));
        EXPECT_EQ("\\Alpha 1", match(hives, mode, "bob@a.example", "q@y.example"));
        EXPECT_EQ("\\zeta 2", match(hives, mode, "q@z.example", "q@y.example"));
        EXPECT_EQ("\\ 2", match(hives, mode, "", "q@y.example"));
    }
}

// Numbered values stay in the order of their numbers in a store that enumerates 1, 10, 11, 2.
void changeConditions(const Hives& hives) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* rule = zxpol_openRule(hives.root, "ZETA", &error);
    ASSERT_TRUE(ZX_SUCCESS(error)) << std::hex << error;
    for (int number = 2; number <= 12; ++number) {
        const _ZxPolAddrPairCond pair = pairOf("n" + std::to_string(number) + "@z.example", "*");
        zxpol_addCondition(rule, bytesOf(pair), &error);
    }
    const _ZxPolAddrPairCond third = pairOf("n3@z.example", "*");
    zxpol_removeCondition(rule, bytesOf(third), &error);
    std::vector<std::string> senders;
    for (uint32_t index = 0; ZX_SUCCESS(error); ++index) {
        _ZxPolAddrPairCond pair{};
        uint32_t size = sizeof pair;
        zxpol_enumCondition(rule, index, reinterpret_cast<unsigned char*>(&pair), &size, &error);
        if (ZX_SUCCESS(error)) senders.push_back(pair.sender);
    }
    EXPECT_EQ(ZXPOL_E_NO_MORE_ITEMS, error);
    EXPECT_EQ((std::vector<std::string>{"*@z.example", "n2@z.example", "n4@z.example", "n5@z.example", "n6@z.example",
                                        "n7@z.example", "n8@z.example", "n9@z.example", "n10@z.example",
                                        "n11@z.example", "n12@z.example"}),
              senders);
    closeRule(rule);
}

// The codes of the host's store come through as they are.
void seeHostCodes(const Hives& hives) {
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openRule(hives.root, "nobody", &error));
    EXPECT_EQ(kHostNotFound, error);
    error = ZXPOL_S_OK;
    zxpol_removeExclusiveFilterType(hives.rules, 4711, &error);
    EXPECT_EQ(kHostNotFound, error);
    error = ZXPOL_S_OK;
    char name[2];
    uint32_t size = sizeof name;
    zxpol_enumAddrList(hives.lists, 0, name, &size, &error);
    EXPECT_EQ(kHostTooSmall, error);
    EXPECT_EQ(5u, size);
}

void deletePolicy(const Hives& hives) {
    int error = ZXPOL_S_OK;
    zxpol_setRuleOrder(hives.root, "alpha", 1, &error);
    EXPECT_EQ((std::vector<std::string>{"Alpha", "first", "zeta"}), childNames(hives.root));
    for (const char* name : {"Alpha", "first", "zeta"})
        zxpol_deleteRule(hives.root, name, &error);
    for (const char* name : {"scan", "archive"})
        zxpol_deleteTask(hives.root, name, &error);
    zxpol_deleteAddrList(hives.lists, "Staff", &error);
    EXPECT_TRUE(ZX_SUCCESS(error)) << std::hex << error;
    EXPECT_EQ(std::vector<std::string>(), childNames(hives.root));
    zxpol_refreshLdapCache(hives.lists, &error);
    EXPECT_EQ(kHostEnd, error);
}

}  // namespace

void livePolicyLife(_ZxPolComHandle* store) {
    const Hives hives = openHives(store);
    if (testing::Test::HasFailure()) return;
    makePolicy(hives);
    matchPolicy(hives);
    changeConditions(hives);
    seeHostCodes(hives);
    deletePolicy(hives);
    closeHives(hives);
}

}  // namespace zxtest
