// Collecting tasks: exclusive filters by themselves, and what a rule's tasks may lack.
#include "unit/match_fixture.h"

namespace {

using namespace zxtest;
using zxpol::ExcluTable;
using zxpol::pushTask;
using zxpol::TaskList;

std::string pathsOf(const TaskList& tasks) {
    std::string paths;
    for (const auto& entry : tasks)
        paths += (paths.empty() ? "" : " ") + entry.path;
    return paths;
}

// ---- exclusive filters ------------------------------------------------------------------------------------

class ExclusiveFilters : public ::testing::Test {
protected:
    void push(const std::string& path, uint32_t filter) {
        pushTask(_tasks, _table, zxpol::_TaskListEntry{nullptr, path}, filter);
    }
    void exclude(uint32_t filter, ZxPolFilterPriorityType type) {
        _table.emplace(filter, zxpol::_ExcluFilterField{type, zxpol::_ExcluFilterField::l_end});
    }
    std::string paths() const { return pathsOf(_tasks); }

private:
    TaskList _tasks;
    ExcluTable _table;
};

TEST_F(ExclusiveFilters, LeaveOtherTasksAlone) {
    exclude(1, ZXPOL_FILTER_ASC_EXCLUSIVE);
    push("a", 0);
    push("b", 0);
    EXPECT_EQ("a b", paths());
}

TEST_F(ExclusiveFilters, KeepTheFirstOrTheLast) {
    exclude(1, ZXPOL_FILTER_ASC_EXCLUSIVE);
    exclude(2, ZXPOL_FILTER_DESC_EXCLUSIVE);
    push("a1", 1);
    push("a2", 2);
    push("b0", 0);
    push("b1", 1);
    push("b2", 2);
    push("c2", 2);
    push("c1", 1);
    EXPECT_EQ("a1 b0 c2", paths());
}

TEST_F(ExclusiveFilters, LetNothingPassThatIsOfAnUnknownType) {
    exclude(1, static_cast<ZxPolFilterPriorityType>(7));
    push("a", 1);
    EXPECT_EQ("", paths());
}

// ---- the tasks of a rule ----------------------------------------------------------------------------------

class TaskCollection : public MatchTest {
protected:
    // The full names of the tasks of the rule at `path` for mails that match the rule at `matched`.
    std::string collect(const std::string& matched, const std::string& path, int* error) const {
        TaskList tasks;
        matcher()->getTasksInRule(rule(matched).get(), path.c_str(), tasks, error);
        return pathsOf(tasks);
    }
    std::string collect(const std::string& path) const {
        int error = ZXPOL_E_EXCEPTION;
        const std::string found = collect(path, path, &error);
        EXPECT_CODE(ZXPOL_S_OK, error);
        return found;
    }
};

TEST_F(TaskCollection, ReadsExclusiveTypesOnceWhereTheyAreStoredTwice) {
    raw("Rule").setNumber("ExcluID0000001A", ZXPOL_FILTER_DESC_EXCLUSIVE);
    raw("Rule").setNumber("ExcluId0000001a", ZXPOL_FILTER_ASC_EXCLUSIVE);
    raw("Rule").setNumber("ExcluId00000002", 9);
    const ExcluTable table = zxpol::readExcluTable(hive());
    ASSERT_EQ(2u, table.size());
    EXPECT_EQ(ZXPOL_FILTER_DESC_EXCLUSIVE, table.at(26).type);
    EXPECT_EQ(zxpol::_ExcluFilterField::l_end, table.at(26).position);
    EXPECT_EQ(static_cast<ZxPolFilterPriorityType>(9), table.at(2).type);
}

TEST_F(TaskCollection, NamesTasksByTheirRulesPath) {
    addChild("\\", "A");
    addTask("\\", "t", taskAttr("t"));
    addTask("\\A", "u", taskAttr("u"));
    EXPECT_EQ("\\t", collect("\\"));
    EXPECT_EQ("\\A\\u", collect("\\A"));
    EXPECT_EQ("\\A\\u", collect("\\A\\"));
}

TEST_F(TaskCollection, FindsNoTasksWhereThereIsNoPlaceForThem) {
    raw("Rule\\Mail").removeKey("tasks");
    EXPECT_EQ("", collect("\\"));
}

TEST_F(TaskCollection, KeepsATaskWhoseFlagsCannotBeRead) {
    addChild("\\", "A");
    addTask("\\", "t", taskAttr("t"));
    for (const char* flag : {"enable", "overridable", "filter"})
        raw("Rule\\Mail\\tasks\\t").removeValue(flag);
    int error = ZXPOL_S_OK;
    rule("\\A")->inactivateTask("\\t", &error, 0);
    EXPECT_EQ("\\t", collect("\\A", "\\", &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
}

TEST_F(TaskCollection, KeepsATaskWhoseMarksCannotBeRead) {
    addTask("\\", "t", taskAttr("t"));
    raw("Rule\\Mail").removeKey("inactive");
    EXPECT_EQ("\\t", collect("\\"));
}

TEST_F(TaskCollection, FailsWhereATaskCannotBeReadWhole) {
    addTask("\\", "s", taskAttr("s"));
    addTask("\\", "t", taskAttr("t"));
    raw("Rule\\Mail\\tasks\\t").removeKey("setting");
    int error = ZXPOL_S_OK;
    EXPECT_EQ("\\s", collect("\\", "\\", &error));
    EXPECT_EQ(0x1804u, reasonOf(error));
}

TEST_F(TaskCollection, FailsWhereTheRuleCannotBeOpened) {
    int error = ZXPOL_S_OK;
    EXPECT_EQ("", collect("\\", "\\Nowhere", &error));
    EXPECT_EQ(0x1804u, reasonOf(error));
    TaskList tasks;
    matcher()->getTasksInRule(rule("\\").get(), nullptr, tasks, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
}

TEST_F(TaskCollection, IsFreeAgainAfterAReset) {
    int error = ZXPOL_S_OK;
    hive().setExclusiveFilterType(26, ZXPOL_FILTER_ASC_EXCLUSIVE, &error);
    addTask("\\", "t", taskAttr("t", 26));
    const std::unique_ptr<ZxPolRuleMatcher> asked = matcher();
    TaskList tasks;
    asked->getTasksInRule(rule("\\").get(), "\\", tasks, &error);
    asked->getTasksInRule(rule("\\").get(), "\\", tasks, &error);
    EXPECT_EQ("\\t", pathsOf(tasks));
    tasks.clear();
    asked->_resetExcluTable();
    asked->getTasksInRule(rule("\\").get(), "\\", tasks, &error);
    EXPECT_EQ("\\t", pathsOf(tasks));
}

}  // namespace
