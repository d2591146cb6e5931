// Which tasks a matched rule asks for: those of the rules on its path, filtered.
#include "support/policy_fixture.h"

namespace {

using Lines = std::vector<std::string>;

class TaskCollection : public zxtest::PolicyTest {
protected:
    static constexpr ZxPolFilterPriorityType asc = ZXPOL_FILTER_ASC_EXCLUSIVE;
    static constexpr ZxPolFilterPriorityType desc = ZXPOL_FILTER_DESC_EXCLUSIVE;

    void SetUp() override {
        PolicyTest::SetUp();
        addRule("\\", "A", "*", "*@a.z");
        addRule("\\A", "B", "*", "*@a.z");
        rawRule("\\A\\B").setText("condition1", "*,x@b.a.z");
    }
    // The tasks for a mail that matches the root, \A or \A\B.
    std::string tasksOf(const std::string& path) {
        const char* receiver = path == "\\" ? "x@root.z" : path == "\\A" ? "x@a.z" : "x@b.a.z";
        const MatchResult result = match("s@t.u", {receiver});
        EXPECT_CODE(ZXPOL_S_OK, result.code);
        const std::string start = path + ": " + receiver + " |";
        if (result.lines.size() != 1 || result.lines[0].compare(0, start.size(), start) != 0) {
            ADD_FAILURE() << "not matched by " << path << " alone";
            return "";
        }
        return result.lines[0].size() == start.size() ? "" : result.lines[0].substr(start.size() + 1);
    }
    int matchCode(const char* receiver) {
        const MatchResult result = match("s@t.u", {receiver});
        EXPECT_TRUE(result.code >= 0 || result.lines.empty());
        return result.code;
    }
};
ZXTEST_ON_BOTH_ENGINES(TaskCollection);

TEST_P(TaskCollection, AncestorsTasksComeFirst) {
    addTasks("\\A\\B", {"b1"});
    addTasks("\\A", {"a1", "a2"});
    addTasks("\\", {"r1"});
    EXPECT_EQ("r1 a1 a2 b1", tasksOf("\\A\\B"));
    EXPECT_EQ("r1 a1 a2", tasksOf("\\A"));
    EXPECT_EQ("r1", tasksOf("\\"));
}

TEST_P(TaskCollection, TasksComeInTheirOrder) {
    addTasks("\\", {"a", "b", "c"});
    int error = ZXPOL_S_OK;
    zxpol_setTaskOrder(rule().get(), "c", 1, &error);
    EXPECT_EQ("c a b", tasksOf("\\"));
}

TEST_P(TaskCollection, AncestorsNeedNotMatchTheMail) {
    addTask("\\A", "a");
    rawRule("\\A").setText("condition1", "*,nobody@y.z");
    EXPECT_EQ("a", tasksOf("\\A\\B"));
}

TEST_P(TaskCollection, DisabledTasksAreNeverCollected) {
    addTask("\\", "off", {0, 0, 0, 0});
    addTask("\\", "on", {0, 1, 0, 0});
    EXPECT_EQ("on", tasksOf("\\"));
}

TEST_P(TaskCollection, ADisabledTaskHoldsNoFilter) {
    setExclusive(5, asc);
    setExclusive(6, desc);
    addTask("\\", "off", {5, 0, 0, 0});
    addTask("\\", "on", {5, 1, 0, 0});
    addTask("\\", "first", {6, 1, 0, 0});
    addTask("\\A", "last", {6, 0, 0, 0});
    EXPECT_EQ("on first", tasksOf("\\A"));
}

TEST_P(TaskCollection, AnInactiveTaskHoldsNoFilter) {
    setExclusive(5, asc);
    addTask("\\", "marked", {5, 1, 0, 0});
    addTask("\\", "other", {5, 1, 0, 0});
    inactivate("\\", "\\marked");
    EXPECT_EQ("other", tasksOf("\\"));
}

TEST_P(TaskCollection, ATaskThatMayNotBeOverriddenAsksItsOwnRule) {
    addTask("\\", "t", {0, 1, 0, 0});
    inactivate("\\A", "\\t");
    EXPECT_EQ("t", tasksOf("\\A"));
    EXPECT_EQ("t", tasksOf("\\"));
    inactivate("\\", "\\t");
    EXPECT_EQ("", tasksOf("\\A"));
    EXPECT_EQ("", tasksOf("\\"));
}

TEST_P(TaskCollection, AnOverridableTaskAsksTheMatchedRule) {
    addTask("\\", "t", {0, 1, 1, 0});
    inactivate("\\A", "\\t");
    EXPECT_EQ("", tasksOf("\\A"));
    EXPECT_EQ("t", tasksOf("\\A\\B"));  // a mark between the two does not count
    EXPECT_EQ("t", tasksOf("\\"));
    inactivate("\\", "\\t");
    EXPECT_EQ("", tasksOf("\\"));
    EXPECT_EQ("t", tasksOf("\\A\\B"));
}

TEST_P(TaskCollection, MarksNameTheTaskByTheFullPathOfItsRule) {
    addTask("\\A", "t", {0, 1, 1, 0});
    inactivate("\\A\\B", "\\t");
    EXPECT_EQ("t", tasksOf("\\A\\B"));
    inactivate("\\A\\B", "\\a\\T");
    EXPECT_EQ("", tasksOf("\\A\\B"));
    addTask("\\A\\B", "u", {0, 1, 0, 0});
    inactivate("\\A\\B", "\\A\\B\\u\\");
    EXPECT_EQ("", tasksOf("\\A\\B"));
}

TEST_P(TaskCollection, AnAscendingFilterKeepsTheFirst) {
    setExclusive(5, asc);
    addTask("\\", "root1", {5, 1, 0, 0});
    addTask("\\", "root2", {5, 1, 0, 0});
    addTask("\\A", "a", {5, 1, 0, 0});
    addTask("\\A", "free", {9, 1, 0, 0});
    EXPECT_EQ("root1 free", tasksOf("\\A"));
}

TEST_P(TaskCollection, ADescendingFilterKeepsTheLastBehindTheOthers) {
    setExclusive(5, desc);
    addTask("\\", "root", {5, 1, 0, 0});
    addTask("\\", "free", {9, 1, 0, 0});
    addTask("\\A", "a", {5, 1, 0, 0});
    addTask("\\A", "later", {9, 1, 0, 0});
    EXPECT_EQ("free a later", tasksOf("\\A"));
    EXPECT_EQ("free a later", tasksOf("\\A\\B"));
    addTask("\\A\\B", "b", {5, 1, 0, 0});
    EXPECT_EQ("free later b", tasksOf("\\A\\B"));
    EXPECT_EQ("root free", tasksOf("\\"));
}

TEST_P(TaskCollection, WithinOneRuleADescendingFilterKeepsTheLatest) {
    setExclusive(5, desc);
    addTask("\\", "one", {5, 1, 0, 0});
    addTask("\\", "free", {9, 1, 0, 0});
    addTask("\\", "two", {5, 1, 0, 0});
    EXPECT_EQ("free two", tasksOf("\\"));
}

TEST_P(TaskCollection, EachFilterIsKeptByItself) {
    setExclusive(5, asc);
    setExclusive(6, asc);
    setExclusive(7, desc);
    addTask("\\", "five", {5, 1, 0, 0});
    addTask("\\", "seven", {7, 1, 0, 0});
    addTask("\\", "six", {6, 1, 0, 0});
    addTask("\\A", "six2", {6, 1, 0, 0});
    addTask("\\A", "seven2", {7, 1, 0, 0});
    EXPECT_EQ("five six seven2", tasksOf("\\A"));
}

TEST_P(TaskCollection, FiltersThatAreNotExclusiveKeepAll) {
    setExclusive(5, asc);
    addTask("\\", "a", {9, 1, 0, 0});
    addTask("\\", "b", {9, 1, 0, 0});
    addTask("\\A", "c", {9, 1, 0, 0});
    EXPECT_EQ("a b c", tasksOf("\\A"));
}

TEST_P(TaskCollection, EachMatchedRuleIsFilteredOnItsOwn) {
    setExclusive(5, asc);
    setExclusive(6, desc);
    addTask("\\", "root", {5, 1, 0, 0});
    addTask("\\", "root6", {6, 1, 0, 0});
    addTask("\\A", "a", {5, 1, 0, 0});
    addTask("\\A", "a6", {6, 1, 0, 0});
    EXPECT_EQ((Lines{"\\A: x@a.z | root a6", "\\: x@root.z | root root6"}), matched("s@t.u", {"x@a.z", "x@root.z"}));
}

TEST_P(TaskCollection, OfAFilterStoredTwiceTheFirstCounts) {
    raw("Rule").setNumber("ExcluId0000000a", 1);
    raw("Rule").setNumber("EXCLUID0000000A", 0);
    addTask("\\", "root", {10, 1, 0, 0});
    addTask("\\A", "a", {10, 1, 0, 0});
    EXPECT_EQ("a", tasksOf("\\A"));
}

TEST_P(TaskCollection, AFilterOfAnUnknownKindKeepsNone) {
    raw("Rule").setNumber("ExcluId0000000a", 2);
    addTask("\\", "root", {10, 1, 0, 0});
    addTask("\\", "free", {9, 1, 0, 0});
    const zxtest::DebugMessages messages;
    EXPECT_EQ("free", tasksOf("\\"));
    EXPECT_EQ(1, messages.count("Ignoring ASC-exclusive task \\root"));
}

TEST_P(TaskCollection, ATaskWithoutItsSettingFailsTheMatch) {
    addTask("\\", "t");
    raw("Rule\\Mail\\tasks\\t").removeKey("setting");
    EXPECT_CODE(ZXREG_E_NOT_FOUND, matchCode("x@root.z"));
    EXPECT_CODE(ZXREG_E_NOT_FOUND, matchCode("x@a.z"));
}

TEST_P(TaskCollection, MarksThatCannotBeReadCountAsNone) {
    addTask("\\", "t", {0, 1, 1, 0});
    addTask("\\", "u", {0, 1, 0, 0});
    rawRule("\\A").removeKey("inactive");
    EXPECT_EQ("t u", tasksOf("\\A"));
}

TEST_P(TaskCollection, WithoutATaskContainerThereAreNoTasks) {
    rawRule("\\A").removeKey("tasks");
    addTask("\\", "t");
    EXPECT_EQ("t", tasksOf("\\A"));
}

TEST_P(TaskCollection, TheBestMatchCollectsAlike) {
    setExclusive(5, desc);
    addTask("\\", "root", {5, 1, 0, 0});
    addTask("\\A\\B", "b", {5, 1, 0, 0});
    EXPECT_EQ(Lines{"\\A: x@a.z | root"}, matched("s@t.u", {"x@a.z"}, 1));
}

}  // namespace
