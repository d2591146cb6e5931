// What cannot be read is not taken for absent where that would change the policy: a root rule would let every mail
// through, rules would lose conditions that are covered, and marks would be doubled or left behind.
#include <gtest/gtest.h>

#include <set>

#include "fault/world.h"

namespace {

using namespace zxtest;

constexpr int kCodes[] = {ZXREG_E_IO, ZXREG_E_NOT_FOUND, ZXREG_E_BUFFER_TOO_SMALL, ZXREG_E_NO_MORE_ITEMS,
                          ZXREG_E_OUT_OF_MEMORY};

class UnreadPolicy : public testing::Test {
protected:
    void SetUp() override { resetFaultStore(); }

    // Has each call of this kind fail once with each code, each time in a world of its own: check(world, result, code)
    // looks at what use(world) came to. Names that are too long are read with more room and the end of an enumeration
    // is the end: these codes are left out there.
    template <class Prepare, class Use, class Check>
    static void failEach(StoreOp op, Prepare prepare, Use use, Check check) {
        for (const int code : kCodes) {
            const bool isAnswer = code == ZXREG_E_NO_MORE_ITEMS || code == ZXREG_E_BUFFER_TOO_SMALL;
            if (op == StoreOp::enumValue && isAnswer) continue;
            for (uint64_t call = 1;; ++call) {
                SCOPED_TRACE("call " + std::to_string(call) + ", code " + std::to_string(code));
                World world(Start::policy);
                prepare(world);
                failStoreCall(call, code, op);
                const int result = use(world);
                const bool failed = storeCallFailed();
                failNoStoreCall();
                check(world, result, failed ? code : ZXPOL_S_OK);
                if (!failed) break;
            }
        }
    }

    static bool contains(const World& world, const std::string& line) {
        return world.content().find(line) != std::string::npos;
    }

    static void nothing(World&) {}
};

int openHive(World& world) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* hive = lib(zxpol_openRuleHive, world.store, 0, &error);
    int closed = ZXPOL_S_OK;
    zxpol_closeRuleHive(hive, &closed);
    return error;
}

// Makes the root look new in part: its comment is gone, its conditions are not.
void takeComment(World& world) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* root = zxreg_openKey(world.store, "Rule\\Mail", &error);
    zxreg_deleteValue(root, "comment", &error);
    zxreg_setValue(root, "condition1", ZXREG_STRING, "*@a.example,*", 14, &error);
    zxreg_closeKey(root, &error);
    ASSERT_EQ(ZXREG_S_OK, error);
}

TEST_F(UnreadPolicy, ARootThatHasConditionsNeverGetsTheOneOfANewRoot) {
    const auto check = [](const World& world, int, int) {
        EXPECT_FALSE(contains(world, "\\Rule\\Mail\\condition2")) << world.content();
        EXPECT_TRUE(contains(world, "\\Rule\\Mail\\condition1 1 *@a.example,*<0>\n"));
    };
    failEach(StoreOp::enumValue, takeComment, openHive, check);
    failEach(StoreOp::queryValue, takeComment, openHive, check);
}

int removeFromParent(World& world) {
    int error = ZXPOL_S_OK;
    CondList conditions{pairOf("bob@b.example", "*@x.example")};
    lib(zxpol_removeConditionEx, world.a, conditions.get(), ZXPOL_COND_CHECK_HIERARCHY,
        static_cast<_ZxPolErrorCond***>(nullptr), &error);
    return error;
}

// The rules below \A stay covered by its other condition.
TEST_F(UnreadPolicy, RulesBelowKeepTheirConditionsWhenThoseOfTheirParentCannotBeRead) {
    const auto check = [](const World& world, int, int) {
        EXPECT_TRUE(contains(world, "\\A\\rules\\B\\condition1 1 bob@a.example,*<0>\n"));
        EXPECT_TRUE(contains(world, "\\A\\rules\\C\\condition1 1 *@a.example,*@y.example<0>\n"));
    };
    failEach(StoreOp::enumValue, nothing, removeFromParent, check);
}

int addBelow(World& world) {
    int error = ZXPOL_S_OK;
    _ZxPolComHandle* rule = zxpol_openRule(world.a, "B", &error);
    CondList conditions{pairOf("carol@a.example", "*")};
    lib(zxpol_addConditionEx, rule, conditions.get(), ZXPOL_COND_CHECK_HIERARCHY,
        static_cast<_ZxPolErrorCond***>(nullptr), &error);
    int closed = ZXPOL_S_OK;
    zxpol_closeRule(rule, &closed);
    return error;
}

TEST_F(UnreadPolicy, ACoveredConditionIsNotRefusedBecauseTheParentsCannotBeRead) {
    failEach(StoreOp::enumValue, nothing, addBelow,
             [](const World&, int result, int) { EXPECT_NE(ZXPOL_E_CONDITION_CHECK, result); });
}

int ask(World& world) {
    int error = ZXPOL_S_OK;
    EXPECT_TRUE(lib(zxpol_isTaskActive, world.a, "\\A\\none", &error));
    return error;
}

TEST_F(UnreadPolicy, WhetherATaskIsActiveIsToldWithTheFailureToReadTheMarks) {
    const auto check = [](const World&, int result, int code) { EXPECT_EQ(code, result); };
    failEach(StoreOp::enumValue, nothing, ask, check);
    failEach(StoreOp::queryValue, nothing, ask, check);
}

int inactivateAgain(World& world) {
    int error = ZXPOL_S_OK;
    lib(zxpol_inactivateTask, world.a, "\\A\\u", 0, &error);
    return error;
}

TEST_F(UnreadPolicy, ATaskThatIsInactiveGetsNoSecondMark) {
    const auto check = [](const World& world, int result, int code) {
        EXPECT_FALSE(contains(world, "\\A\\inactive\\inactive3"));
        EXPECT_TRUE(result == code || result == ZXPOL_S_OK) << std::hex << result;
    };
    failEach(StoreOp::enumValue, nothing, inactivateAgain, check);
    failEach(StoreOp::queryValue, nothing, inactivateAgain, check);
}

int activate(World& world) {
    int error = ZXPOL_S_OK;
    lib(zxpol_inactivateTask, world.a, "\\A\\u", 1, &error);
    return error;
}

TEST_F(UnreadPolicy, AMarkThatStaysIsReported) {
    const auto check = [](const World& world, int result, int code) {
        EXPECT_EQ(ZX_FAILURE(result) != 0, contains(world, "\\A\\inactive\\inactive2"));
        EXPECT_TRUE(result == code || result == ZXPOL_S_OK) << std::hex << result;
    };
    failEach(StoreOp::enumValue, nothing, activate, check);
    failEach(StoreOp::queryValue, nothing, activate, check);
}

int deleteTask(World& world) {
    int error = ZXPOL_S_OK;
    lib(zxpol_deleteTask, world.a, "u", &error);
    return error;
}

TEST_F(UnreadPolicy, AMarkOfADeletedTaskDoesNotStayUnnoticed) {
    failEach(StoreOp::enumValue, nothing, deleteTask, [](const World& world, int result, int) {
        EXPECT_FALSE(ZX_SUCCESS(result) != 0 && contains(world, "1 \\A\\u<0>"));
    });
}

// The rule that a mail matches and its tasks, all by their names; the result in *error.
std::set<std::string> matchedNames(World& world, int* error) {
    const char* receivers[] = {"r@elsewhere.example", nullptr};
    _ZxPolMatchPair* pairs = nullptr;
    uint32_t count = 0;
    lib(zxpol_matchRuleByMailInfo, world.ruleHive, world.listHive, "bob@a.example", receivers, &pairs, &count, error);
    std::set<std::string> names;
    if (count != 0) names.insert(pairs->rulePath);
    for (uint32_t i = 0; i < (count == 0 ? 0 : pairs->taskCount); ++i) {
        int result = ZXPOL_S_OK;
        _ZxPolTaskAttr attr{};
        zxpol_getTaskAttrib(pairs->tasks[i], &attr, &result);
        zxreg_closeKey(attr.setting, &result);
        names.insert(attr.displayName);
    }
    int freed = ZXPOL_S_OK;
    lib(zxpol_freeMatchPair, pairs, count, &freed);
    return names;
}

// With marks, flags or exclusive filters unread there may be more tasks, never fewer; a task whose position cannot be
// read is not listed, as everywhere.
TEST_F(UnreadPolicy, NoTaskOfTheMatchedRuleIsLostBecauseSomethingCannotBeRead) {
    for (uint64_t call = 1;; ++call) {
        World world(Start::policy);
        failStoreCall(call, ZXREG_E_IO);
        int error = ZXPOL_S_OK;
        const std::set<std::string> names = matchedNames(world, &error);
        const bool failed = storeCallFailed();
        const std::string which = failedStoreCall();
        failNoStoreCall();
        if (!failed) break;
        const bool isPosition = which == "queryValue order" || which.rfind("openKey ", 0) == 0;
        if (ZX_FAILURE(error) != 0 || isPosition) continue;
        const bool isBelow = names.count("\\") == 0;
        EXPECT_EQ(1u, names.count("\\A\\B") + names.count("\\A") + names.count("\\")) << which;
        EXPECT_EQ(names.count("\\A\\B"), names.count("deep")) << which;
        EXPECT_EQ(1u, names.count(isBelow ? "v" : "stamp")) << which;
        EXPECT_EQ(1u, names.count(names.count("\\A") == 1 ? "t" : "scan")) << which;
    }
}

}  // namespace
