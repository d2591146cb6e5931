// The positions of tasks and rules among their siblings.
#include "support/policy_fixture.h"

namespace {

using zxtest::Handle;
using zxtest::RawKey;

class OrderedChildren : public zxtest::PolicyTest {
protected:
    static constexpr const char* tasks = "Rule\\Mail\\tasks";

    // Creates a task at the wanted position; returns the code, and the position given in `order`.
    int createAt(const char* name, uint32_t* order) {
        _ZxPolTaskAttr attr = zxtest::taskAttr(name);
        attr.order = *order;
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createTask(rule().get(), name, &attr, &error));
        EXPECT_EQ(error >= 0, made != nullptr);
        *order = attr.order;
        return error;
    }
    int createAt(const char* name, uint32_t order) { return createAt(name, &order); }

    int move(const char* name, uint32_t position) {
        int error = ZXPOL_S_OK;
        zxpol_setTaskOrder(rule().get(), name, position, &error);
        return error;
    }
    int remove(const char* name) {
        int error = ZXPOL_S_OK;
        zxpol_deleteTask(rule().get(), name, &error);
        return error;
    }
    void setOrder(const std::string& name, uint32_t order) { raw(tasks + ("\\" + name)).setNumber("order", order); }
    std::string order() { return orders(tasks); }
    std::string enumerated() { return names(zxpol_enumTask, rule().get()); }
};
ZXTEST_ON_BOTH_ENGINES(OrderedChildren);

TEST_P(OrderedChildren, PositionZeroAppends) {
    addTasks("\\", {"a", "b", "c"});
    EXPECT_EQ("a1 b2 c3", order());
}

TEST_P(OrderedChildren, CreatingInTheMiddleMovesTheLaterOnes) {
    addTasks("\\", {"a", "b", "c"});
    EXPECT_CODE(ZXPOL_S_OK, createAt("d", 2));
    EXPECT_EQ("a1 d2 b3 c4", order());
    EXPECT_EQ("a d b c", enumerated());
}

TEST_P(OrderedChildren, CreatingAtTheFrontMovesAll) {
    addTasks("\\", {"a", "b"});
    EXPECT_CODE(ZXPOL_S_OK, createAt("c", 1));
    EXPECT_EQ("c1 a2 b3", order());
}

TEST_P(OrderedChildren, CreatingAtTheLastPositionMovesTheLastOne) {
    addTasks("\\", {"a", "b", "c"});
    EXPECT_CODE(ZXPOL_S_OK, createAt("d", 3));
    EXPECT_EQ("a1 b2 d3 c4", order());
}

TEST_P(OrderedChildren, CreatingPastTheEndAppendsAndTellsThePosition) {
    addTasks("\\", {"a", "b", "c"});
    uint32_t position = 7;
    EXPECT_CODE(ZXPOL_S_OK, createAt("d", &position));
    EXPECT_EQ(4u, position);
    EXPECT_EQ("a1 b2 c3 d4", order());
    position = 0;
    EXPECT_CODE(ZXPOL_S_OK, createAt("e", &position));
    EXPECT_EQ(5u, position);
}

TEST_P(OrderedChildren, CreatingARuleTellsItsPositionToo) {
    addRule("\\", "A");
    _ZxPolRuleAttr attr = {};
    attr.order = 9;
    const zxtest::Conditions conditions{{"*", "*"}};
    int error = ZXPOL_S_OK;
    const Handle b(zxpol_createRule(rule().get(), "B", &attr, conditions.list(), &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(2u, attr.order);
    EXPECT_EQ("A1 B2", orders("Rule\\Mail\\rules"));
}

TEST_P(OrderedChildren, ANegativePositionIsRefusedAndNothingIsMade) {
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, createAt("a", 0x80000000u));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, createAt("a", 0xffffffffu));
    EXPECT_TRUE(raw(tasks).subkeys().empty());
}

TEST_P(OrderedChildren, CreatingAnExistingOneKeepsAllPositions) {
    addTasks("\\", {"a", "b", "c"});
    EXPECT_CODE(ZXPOL_S_OK, createAt("c", 1));
    EXPECT_EQ("a1 b2 c3", order());
}

TEST_P(OrderedChildren, MakingRoomStopsAtTheFirstGap) {
    addTasks("\\", {"a", "b", "c", "d"});
    setOrder("c", 4);
    setOrder("d", 5);
    EXPECT_CODE(ZXPOL_S_OK, createAt("x", 1));
    EXPECT_EQ("x1 a2 b3 c4 d5", order());
}

TEST_P(OrderedChildren, AFreePositionMovesNobody) {
    addTasks("\\", {"a", "b", "c"});
    setOrder("b", 3);
    setOrder("c", 4);
    EXPECT_CODE(ZXPOL_S_OK, createAt("x", 2));
    EXPECT_EQ("a1 x2 b3 c4", order());
}

TEST_P(OrderedChildren, AppendingCountsTheChildrenNotTheirPositions) {
    addTasks("\\", {"a", "b"});
    setOrder("b", 9);
    EXPECT_CODE(ZXPOL_S_OK, createAt("c", 0u));
    EXPECT_EQ("a1 c3 b9", order());
}

TEST_P(OrderedChildren, ASiblingAtPositionZeroStopsTheInsertion) {
    addTasks("\\", {"a", "b"});
    setOrder("a", 0);
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, createAt("x", 1));
    EXPECT_EQ("a0 b2 x-", order());
}

TEST_P(OrderedChildren, EqualPositionsKeepTheOrderOfTheStore) {
    addTasks("\\", {"a", "b", "c", "d"});
    setOrder("a", 2);
    setOrder("b", 1);
    setOrder("c", 2);
    setOrder("d", 1);
    EXPECT_EQ("b d a c", enumerated());
}

TEST_P(OrderedChildren, OnesWithoutAPositionAreNotEnumerated) {
    addTasks("\\", {"a", "b", "c"});
    raw("Rule\\Mail\\tasks\\b").removeValue("order");
    setOrder("c", 0xfffffff0u);  // negative
    EXPECT_EQ("a", enumerated());
}

TEST_P(OrderedChildren, MovingUpShiftsThoseBetweenDown) {
    addTasks("\\", {"a", "b", "c", "d"});
    EXPECT_CODE(ZXPOL_S_OK, move("c", 1));
    EXPECT_EQ("c1 a2 b3 d4", order());
}

TEST_P(OrderedChildren, MovingDownShiftsThoseBetweenUp) {
    addTasks("\\", {"a", "b", "c", "d"});
    EXPECT_CODE(ZXPOL_S_OK, move("a", 3));
    EXPECT_EQ("b1 c2 a3 d4", order());
}

TEST_P(OrderedChildren, MovingPastTheEndIsMovingToTheEnd) {
    addTasks("\\", {"a", "b", "c", "d"});
    EXPECT_CODE(ZXPOL_S_OK, move("b", 9));
    EXPECT_EQ("a1 c2 d3 b4", order());
}

TEST_P(OrderedChildren, MovingToPositionZeroOrBelowIsRefused) {
    addTasks("\\", {"a", "b"});
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, move("b", 0));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, move("b", 0x80000001u));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, move("", 1));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, move(nullptr, 1));
    EXPECT_EQ("a1 b2", order());
}

TEST_P(OrderedChildren, MovingToTheOwnPositionChangesNothing) {
    addTasks("\\", {"a", "b", "c"});
    for (uint32_t position = 1; position <= 3; ++position) {
        const char name[2] = {static_cast<char>('a' + position - 1), '\0'};
        EXPECT_CODE(ZXPOL_S_OK, move(name, position));
        EXPECT_EQ("a1 b2 c3", order());
    }
}

TEST_P(OrderedChildren, MovingUpInASparseSetNumbersTheWalkedOnes) {
    addTasks("\\", {"a", "b", "c"});
    setOrder("b", 5);
    setOrder("c", 9);
    EXPECT_CODE(ZXPOL_S_OK, move("c", 1));
    EXPECT_EQ("c1 a2 b3", order());
}

TEST_P(OrderedChildren, MovingWithinASparseSetStopsAtTheMovedOne) {
    addTasks("\\", {"a", "b", "c"});
    setOrder("b", 5);
    setOrder("c", 9);
    EXPECT_CODE(ZXPOL_S_OK, move("b", 2));
    EXPECT_EQ("a1 b2 c9", order());
}

TEST_P(OrderedChildren, MovingOneWithoutAPositionIsAnInternalFailure) {
    addTasks("\\", {"a", "b"});
    raw("Rule\\Mail\\tasks\\b").removeValue("order");
    EXPECT_CODE(ZXPOL_E_EXCEPTION, move("b", 1));
    EXPECT_EQ("a1 b-", order());
    setOrder("b", 0);
    EXPECT_CODE(ZXPOL_E_EXCEPTION, move("b", 1));
}

TEST_P(OrderedChildren, WithoutAnyPositionsNothingCanBeMoved) {
    addTasks("\\", {"a"});
    raw("Rule\\Mail\\tasks\\a").removeValue("order");
    EXPECT_CODE(ZXREG_E_NO_MORE_ITEMS, move("a", 1));
}

TEST_P(OrderedChildren, MovingAMissingOneIsTheStoresFailure) {
    addTasks("\\", {"a"});
    EXPECT_CODE(ZXREG_E_NOT_FOUND, move("x", 1));
}

TEST_P(OrderedChildren, DeletingRenumbersTheRest) {
    addTasks("\\", {"a", "b", "c", "d"});
    EXPECT_CODE(ZXPOL_S_OK, remove("b"));
    EXPECT_EQ("a1 c2 d3", order());
}

TEST_P(OrderedChildren, DeletingMakesASparseSetDense) {
    addTasks("\\", {"a", "b", "c", "d"});
    setOrder("a", 4);
    setOrder("c", 70);
    setOrder("d", 7);
    EXPECT_CODE(ZXPOL_S_OK, remove("b"));
    EXPECT_EQ("a1 d2 c3", order());
}

TEST_P(OrderedChildren, DeletingTheLastOneIsASuccess) {
    addTasks("\\", {"a"});
    EXPECT_CODE(ZXPOL_S_OK, remove("a"));
    EXPECT_EQ("", order());
}

TEST_P(OrderedChildren, DeletingAMissingOneIsTheStoresFailure) {
    addTasks("\\", {"a"});
    EXPECT_CODE(ZXREG_E_NOT_FOUND, remove("x"));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, remove(""));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, remove(nullptr));
    EXPECT_EQ("a1", order());
    EXPECT_CODE(ZXPOL_S_OK, remove("a"));
    rawRule().removeKey("tasks");
    EXPECT_CODE(ZXREG_E_NOT_FOUND, remove("x"));
    EXPECT_FALSE(rawRule().hasKey("tasks"));
}

TEST_P(OrderedChildren, DeletingARuleDeletesTheWholeTreeBelow) {
    addRule("\\", "A");
    addRule("\\A", "B");
    addRule("\\A\\B", "C");
    addRule("\\", "D");
    addTask("\\A\\B", "t");
    int error = ZXPOL_S_OK;
    zxpol_deleteRule(rule().get(), "A", &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ("D1", orders("Rule\\Mail\\rules"));
    EXPECT_FALSE(raw().hasKey("Rule\\Mail\\rules\\A"));
}

TEST_P(OrderedChildren, OpeningMakesTheContainerButNotTheChild) {
    rawRule().removeKey("tasks");
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openTask(rule().get(), "x", &error));
    EXPECT_CODE(ZXREG_E_NOT_FOUND, error);
    EXPECT_TRUE(raw(tasks).subkeys().empty());
}

}  // namespace
