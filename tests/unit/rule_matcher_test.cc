// ZxPolRuleMatcher: options, single rules, walks and grouping, where the flat interface does not reach.
#include <pthread.h>

#include <functional>

#include "unit/match_fixture.h"

namespace {

using namespace zxtest;

class RuleMatcher : public MatchTest {
protected:
    // A chain of `levels` rules below the root, each named "r", all with one condition * to *. Returns the path of
    // the last one.
    std::string addChain(int levels) const {
        std::string path;
        int error = ZXPOL_S_OK;
        std::unique_ptr<ZxPolRule> parent(hive().openRootRule(&error));
        for (int level = 0; level < levels; ++level) {
            const _ZxPolRuleAttr attr = ruleAttr();
            std::unique_ptr<ZxPolRule> child(parent->createChildRule("r", &attr, &error));
            EXPECT_NE(nullptr, child) << codeText(error);
            addCondition(*child, "*", "*");
            parent = std::move(child);
            path += "\\r";
        }
        return path;
    }
};

// ---- options ----------------------------------------------------------------------------------------------

TEST_F(RuleMatcher, BeginsWithBestMatchForAGlobalOption) {
    EXPECT_EQ(1u, ZxPolRuleMatcher::mGlobalOption.matchMode);
    EXPECT_EQ(ZXPOL_PRIORITY_TOTAL, ZxPolRuleMatcher::mGlobalOption.priorityType);
    EXPECT_EQ(ZXPOL_WEIGHT_DOMAIN_FIRST, ZxPolRuleMatcher::mGlobalOption.weightType);
    messages().clear();
    const ZxPolRuleMatcher byDefault(&lists(), &hive(), nullptr);
    EXPECT_EQ(std::vector<std::string>({"Using Best match."}), messages());
}

TEST_F(RuleMatcher, KeepsOnlyKnownTypesInTheGlobalOption) {
    ZxPolRuleMatcher::setGlobalOption({0, 2, 1, 8, 9});
    const _ZxPolMatchOption& kept = ZxPolRuleMatcher::mGlobalOption;
    EXPECT_EQ(1u, kept.matchMode);
    EXPECT_EQ(2u, kept.priorityType);
    EXPECT_EQ(1u, kept.weightType);
    EXPECT_EQ(8u, kept.reserved1);
    EXPECT_EQ(9u, kept.reserved2);
    ZxPolRuleMatcher::setGlobalOption({7, 3, 2, 0, 0});
    EXPECT_EQ(1u, kept.matchMode);
    EXPECT_EQ(0u, kept.priorityType);
    EXPECT_EQ(0u, kept.weightType);
}

// ---- one rule ---------------------------------------------------------------------------------------------

TEST_F(RuleMatcher, FindsTheHighestPriorityOfARule) {
    addChild("\\", "A", "*@example.com", "*");
    addCondition(*rule("\\A"), "a@example.com", "*");
    addCondition(*rule("\\A"), "*", "r@example.com");
    int error = ZXPOL_E_EXCEPTION;
    ZxPolPriority priority(1, 1);
    EXPECT_TRUE(
        matcher(kBest)->matchInThisRule(rule("\\A").get(), "a@example.com", "x@example.com", &priority, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(5000u, priority.senderWeight());
    EXPECT_EQ(0u, priority.receiverWeight());
    // A sum of 5000 on both sides: the earlier condition is kept.
    EXPECT_TRUE(
        matcher(kBest)->matchInThisRule(rule("\\A").get(), "a@example.com", "r@example.com", &priority, &error));
    EXPECT_EQ(5000u, priority.senderWeight());
    const _ZxPolMatchOption receiverFirst = {1, ZXPOL_PRIORITY_RECEIVER_FIRST, 0, 0, 0};
    EXPECT_TRUE(matcher(receiverFirst)
                    ->matchInThisRule(rule("\\A").get(), "a@example.com", "r@example.com", &priority, &error));
    EXPECT_EQ(5000u, priority.receiverWeight());
}

TEST_F(RuleMatcher, StopsAtTheFirstConditionThatDecides) {
    addChild("\\", "A", "*", "*");
    addCondition(*rule("\\A"), "(Nowhere)", "*");
    int error = ZXPOL_S_OK;
    EXPECT_TRUE(matcher()->matchInThisRule(rule("\\A").get(), "a@b.example", "c@d.example", nullptr, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    // Looking for the priority, all conditions are compared.
    ZxPolPriority priority;
    EXPECT_FALSE(matcher()->matchInThisRule(rule("\\A").get(), "a@b.example", "c@d.example", &priority, &error));
    EXPECT_EQ(0x1804u, reasonOf(error));
}

TEST_F(RuleMatcher, ComparesTheSenderOnlyAfterTheReceiver) {
    addChild("\\", "A", "(Nowhere)", "r@example.com");
    const std::unique_ptr<ZxPolRuleMatcher> asked = matcher();
    messages().clear();
    int error = ZXPOL_S_OK;
    EXPECT_FALSE(asked->matchInThisRule(rule("\\A").get(), "a@b.example", "x@example.com", nullptr, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(std::vector<std::string>({"receiver: x@example.com, pattern: r@example.com, result: 0"}), messages());
}

TEST_F(RuleMatcher, NeverMatchesARuleThatIsNotForMails) {
    addChild("\\", "A");
    raw("Rule\\Mail\\rules\\A").setNumber("matchType", 1);
    int error = ZXPOL_S_OK;
    EXPECT_FALSE(matcher()->matchInThisRule(rule("\\A").get(), "a@b.example", "c@d.example", nullptr, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
}

// ---- walks ------------------------------------------------------------------------------------------------

TEST_F(RuleMatcher, WalksFromAnyRule) {
    addChild("\\", "A", "*", "a@example.com");
    addChild("\\A", "B", "*", "*");
    std::string found;
    int error = ZXPOL_S_OK;
    EXPECT_TRUE(
        matcher()->matchInRuleTreeFirst(rule("\\A").get(), "\\A", "s@x.example", "a@example.com", found, &error));
    EXPECT_EQ("\\A\\B", found);
    EXPECT_TRUE(
        matcher(kBest)->matchInRuleTreeBest(rule("\\A").get(), "\\A", "s@x.example", "a@example.com", found, &error));
    EXPECT_EQ("\\A\\B", found);
    found = "untouched";
    EXPECT_FALSE(
        matcher(kBest)->matchInRuleTreeBest(rule("\\A").get(), "\\A", "s@x.example", "b@example.com", found, &error));
    EXPECT_EQ("untouched", found);
    EXPECT_CODE(ZXPOL_S_OK, error);
}

TEST_F(RuleMatcher, ReportsChildrenThatCannotBeEnumerated) {
    addChild("\\", "A");
    addChild("\\A", "B");
    raw("Rule\\Mail\\rules\\A\\rules\\B").removeKey("rules");
    std::string found;
    int error = ZXPOL_S_OK;
    const auto walk = [&](auto operation, const char* path) {
        found = "untouched";
        return (matcher(kBest).get()->*operation)(rule(path).get(), path, "s@x.example", "r@x.example", found, &error);
    };
    EXPECT_FALSE(walk(&ZxPolRuleMatcher::matchInRuleTreeFirst, "\\"));
    EXPECT_EQ(0x1804u, reasonOf(error));
    EXPECT_FALSE(walk(&ZxPolRuleMatcher::matchInChildRuleBest, "\\A\\B"));
    EXPECT_EQ(0x1804u, reasonOf(error));
    EXPECT_EQ("untouched", found);
    // Further down, a match that was found stands.
    EXPECT_TRUE(walk(&ZxPolRuleMatcher::matchInChildRuleBest, "\\A"));
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ("\\A\\B", found);
    EXPECT_TRUE(walk(&ZxPolRuleMatcher::matchInRuleTreeBest, "\\A\\B"));
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ("\\A\\B", found);
}

TEST_F(RuleMatcher, FindsNothingBelowARuleWithoutMatchingChildren) {
    addChild("\\", "A", "*", "a@example.com");
    std::string found = "untouched";
    int error = ZXPOL_E_EXCEPTION;
    EXPECT_FALSE(
        matcher(kBest)->matchInChildRuleBest(rule("\\").get(), "\\", "s@x.example", "b@x.example", found, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ("untouched", found);
}

// Runs `body` in a thread with a stack of `size` bytes.
void runOnStack(size_t size, std::function<void()> body) {
    pthread_attr_t attr;
    ASSERT_EQ(0, pthread_attr_init(&attr));
    ASSERT_EQ(0, pthread_attr_setstacksize(&attr, size));
    const auto start = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    pthread_t thread{};
    ASSERT_EQ(0, pthread_create(&thread, &attr, start, &body));
    ASSERT_EQ(0, pthread_join(thread, nullptr));
    pthread_attr_destroy(&attr);
}

#if defined(__SANITIZE_ADDRESS__)
constexpr size_t kSmallStack = 8u << 20;
#else
constexpr size_t kSmallStack = 1u << 20;
#endif

TEST_F(RuleMatcher, WalksDeepTreesOnASmallStack) {
    ZxRegDebug::setDebugFunction(nullptr);
    const std::string deepest = addChain(1000);
    runOnStack(kSmallStack, [&] {
        for (const _ZxPolMatchOption& option : {kFirst, kBest}) {
            const char* receivers[] = {"r@x.example", nullptr};
            _ZxPolMatchPair* pairs = nullptr;
            uint32_t count = 0;
            int error = ZXPOL_S_OK;
            EXPECT_TRUE(matcher(option)->match("s@x.example", receivers, &pairs, &count, &error)) << codeText(error);
            ASSERT_EQ(1u, count);
            EXPECT_EQ(deepest, pairs[0].rulePath);
            ZxPolRuleMatcher::freeMatchPair(pairs, count, &error);
        }
    });
}

// ---- grouping ---------------------------------------------------------------------------------------------

TEST_F(RuleMatcher, RefusesMissingArgumentsWithoutTouchingTheOthers) {
    const char* receivers[] = {"r@x.example", nullptr};
    _ZxPolMatchPair mark{};
    _ZxPolMatchPair* pairs = &mark;
    uint32_t count = 77;
    const std::unique_ptr<ZxPolRuleMatcher> asked = matcher();
    for (int missing = 0; missing < 4; ++missing) {
        int error = ZXPOL_S_OK;
        EXPECT_FALSE(asked->match(missing == 0 ? nullptr : "s@x.example", missing == 1 ? nullptr : receivers,
                                  missing == 2 ? nullptr : &pairs, missing == 3 ? nullptr : &count, &error));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error) << missing;
        EXPECT_EQ(&mark, pairs);
        EXPECT_EQ(77u, count);
    }
    EXPECT_FALSE(asked->match("s@x.example", receivers, &pairs, &count, nullptr));
    EXPECT_EQ(77u, count);
}

TEST_F(RuleMatcher, AnswersAgainAfterAFailure) {
    addTask("\\", "t", taskAttr("t", 26));
    int error = ZXPOL_S_OK;
    hive().setExclusiveFilterType(26, ZXPOL_FILTER_DESC_EXCLUSIVE, &error);
    addChild("\\", "A");
    addTask("\\A", "u", taskAttr("u", 26));
    raw("Rule\\Mail\\rules\\A\\tasks\\u").removeKey("setting");
    const std::unique_ptr<ZxPolRuleMatcher> asked = matcher();
    const char* receivers[] = {"r@x.example", nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 77;
    EXPECT_FALSE(asked->match("s@x.example", receivers, &pairs, &count, &error));
    EXPECT_EQ(0x1804u, reasonOf(error));
    EXPECT_EQ(nullptr, pairs);
    EXPECT_EQ(0u, count);

    raw("Rule\\Mail\\rules\\A\\tasks\\u").makeKey("setting");
    EXPECT_TRUE(asked->match("s@x.example", receivers, &pairs, &count, &error)) << codeText(error);
    ASSERT_EQ(1u, count);
    EXPECT_EQ(1u, pairs[0].taskCount);
    ZxPolRuleMatcher::freeMatchPair(pairs, count, &error);
}

TEST(MatchedRules, KeepTheOrderOfFirstMatchAmongManyReceivers) {
    constexpr size_t kRules = 50000;
    zxpol::MatchedRules matched;
    const char* early = "early@x.example";
    const char* late = "late@x.example";
    for (size_t number = 0; number < kRules; ++number)
        matched.add("\\r" + std::to_string(number), early);
    for (size_t number = kRules; number-- > 0;)
        matched.add("\\r" + std::to_string(number), late);
    ASSERT_EQ(kRules, matched.pairs().size());
    for (size_t number = 0; number < kRules; ++number) {
        ASSERT_EQ("\\r" + std::to_string(number), matched.pairs()[number].rulePath);
        ASSERT_EQ(std::vector<const char*>({early, late}), matched.pairs()[number].receivers);
    }
}

}  // namespace
