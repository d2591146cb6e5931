// How many rules, conditions, tasks, lists, addresses and receivers there may be.
#include "limits/big_policy.h"
#include "support/experiment.h"

using namespace zxtest;

namespace {

class Counts : public limits::BigPolicyTest {};

TEST_P(Counts, OfRulesOnOneLevel) {
    const uint32_t count = shortOrLong(400u, 3000u);
    inOneUpdate(count, [&](uint32_t index) {
        addRule("\\", numbered("r", index), numbered("s", index) + "@*", "*");
        addTask(numbered("\\r", index), "t");
    });
    EXPECT_EQ(count, countOf(&zxpol_enumRule, rule().get()));
    const std::string last = std::to_string(count - 1);
    for (const uint32_t mode : {0u, 1u})
        EXPECT_EQ(std::vector<std::string>{"\\r" + last + ": b@x.example | t"},
                  matched("s" + last + "@x.example", {"b@x.example"}, mode));
}

TEST_P(Counts, OfConditionsOfOneRule) {
    const uint32_t count = shortOrLong(400u, 3000u);
    addRule("\\", "a", "nobody@*", "*");
    inOneUpdate(count, [&](uint32_t index) {
        EXPECT_CODE(ZXPOL_S_OK, addCondition("\\a", numbered("s", index) + "@x.example", "*"));
    });
    EXPECT_EQ(count + 1, conditionsOf("\\a").size());
    EXPECT_EQ(std::vector<std::string>{"\\a: b@x.example |"},
              matched(numbered("s", count - 1) + "@x.example", {"b@x.example"}));
}

TEST_P(Counts, OfTasksOfOneRule) {
    const uint32_t count = shortOrLong(300u, 3000u);
    addRule("\\", "a");
    inOneUpdate(count, [&](uint32_t index) { addTask("\\a", numbered("t", index)); });
    EXPECT_EQ(count, countOf(&zxpol_enumTask, rule("\\a").get()));
    const std::vector<std::string> lines = matched("s@x.example", {"b@x.example"});
    ASSERT_EQ(1u, lines.size());
    EXPECT_EQ(count, std::count(lines[0].begin(), lines[0].end(), 't'));
    EXPECT_NE(std::string::npos, lines[0].find(" t0 t1 t2 "));
}

TEST_P(Counts, OfListsAndReferencesToThem) {
    const uint32_t count = shortOrLong(300u, 3000u);
    addRule("\\", "a", "(L0)", "*");
    inOneUpdate(count, [&](uint32_t index) {
        makeList(numbered("L", index), index == count - 1 ? 3 : 1);
        if (index == 0) return;
        EXPECT_CODE(ZXPOL_S_OK, addCondition("\\a", "(" + numbered("L", index) + ")", "*"));
    });
    EXPECT_EQ(count, countOf(&zxpol_enumAddrList, listHive()));
    EXPECT_EQ(std::vector<std::string>{"\\a: b@x.example |"}, matched("user2@example.com", {"b@x.example"}));
}

// A list's own tests go to a million addresses; here a list is stored, read again and asked.
TEST_P(Counts, OfAddressesOfOneList) {
    const uint32_t count = shortOrLong(20000u, 1000000u);
    Handle list = makeList("Big", count);
    addRule("\\", "a", "(Big)", "*");
    list.reset();
    EXPECT_EQ(std::vector<std::string>{"\\a: b@x.example |"},
              matched("USER" + std::to_string(count - 1) + "@Example.com", {"b@x.example"}));
    EXPECT_EQ(std::vector<std::string>{"\\: b@x.example |"},
              matched("user" + std::to_string(count) + "@example.com", {"b@x.example"}));
}

// The receivers come back grouped by the rules that they met, each rule's in the order in which they were given.
TEST_P(Counts, OfReceiversOfOneCall) {
    constexpr uint32_t kReceivers = 100000;
    addRule("\\", "even", "*", "*@even.example");
    addRule("\\", "odd", "*", "*@odd.example");
    std::vector<std::string> texts;
    std::vector<const char*> receivers;
    for (uint32_t index = 0; index < kReceivers; ++index)
        texts.push_back(numbered("r", index) + (index % 2 == 0 ? "@even.example" : "@odd.example"));
    for (const std::string& text : texts)
        receivers.push_back(text.c_str());
    receivers.push_back(nullptr);
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    int error = ZXPOL_S_OK;
    zxpol_matchRuleByMailInfo(ruleHive(), listHive(), "s@x.example", receivers.data(), &pairs, &count, &error);
    ASSERT_EQ(ZXPOL_S_OK, error);
    ASSERT_EQ(2u, count);
    for (uint32_t which = 0; which < 2; ++which) {
        EXPECT_STREQ(which == 0 ? "\\even" : "\\odd", pairs[which].rulePath);
        for (uint32_t index = which, at = 0; index < kReceivers; index += 2, ++at)
            ASSERT_EQ(receivers[index], pairs[which].receivers[at]);
        EXPECT_EQ(nullptr, pairs[which].receivers[kReceivers / 2]);
    }
    zxpol_freeMatchPair(pairs, count, &error);
}

ZXTEST_ON_BOTH_ENGINES(Counts);

}  // namespace
