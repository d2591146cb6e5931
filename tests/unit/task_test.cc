#include "rules/task.h"

#include "unit/rules_fixture.h"

namespace {

using namespace zxtest;

class Task : public RulesTest {
protected:
    void SetUp() override {
        RulesTest::SetUp();
        int error = ZXPOL_S_OK;
        root.reset(hive().openRootRule(&error));
    }

    std::unique_ptr<ZxPolTask> addTask(const char* name, uint32_t order = 0) {
        _ZxPolTaskAttr attr = taskAttr(name, 26, 1, order);
        int error = ZXPOL_S_OK;
        std::unique_ptr<ZxPolTask> task(root->createTask(name, &attr, &error));
        EXPECT_NE(nullptr, task) << codeText(error);
        return task;
    }

    // Whether the root lets a task act; the name of the mark's value where it does not.
    std::string activity(const std::string& taskFullName) {
        char name[256] = "";
        int error = ZXPOL_S_OK;
        const bool isActive = root->isTaskActive(taskFullName.c_str(), &error, name);
        if (error < 0) return (isActive ? "active " : "inactive ") + codeText(error);
        return isActive ? "active" : name;
    }
    int mark(const std::string& taskFullName, int activate) {
        int error = ZXPOL_S_OK;
        root->inactivateTask(taskFullName.c_str(), &error, activate);
        return error;
    }
    RawKey marks() const { return raw("Rule\\Mail\\inactive"); }

    std::unique_ptr<ZxPolRule> root;
};

TEST_F(Task, ANewTaskHasItsValuesAndSubkeys) {
    const auto task = addTask("scan");
    const RawKey key = raw("Rule\\Mail\\tasks\\scan");
    EXPECT_EQ("scan", key.text("displayName"));
    EXPECT_EQ("of scan", key.text("comment"));
    EXPECT_EQ(1u, key.number("order"));
    EXPECT_EQ(26u, key.number("filter"));
    EXPECT_EQ(1u, key.number("enable"));
    EXPECT_EQ(1u, key.number("overridable"));
    EXPECT_EQ((std::vector<std::string>{"Classification", "setting"}), key.subkeys());
}

TEST_F(Task, ThePositionGivenIsWrittenBack) {
    addTask("a");
    _ZxPolTaskAttr attr = taskAttr("b", 0, 0, 9);
    int error = ZXPOL_S_OK;
    const std::unique_ptr<ZxPolTask> task(root->createTask("b", &attr, &error));
    EXPECT_EQ(2u, attr.order);
}

TEST_F(Task, BadRecordsCreateAndWriteNothing) {
    const auto task = addTask("there");
    _ZxPolTaskAttr enabled = taskAttr("x");
    enabled.enable = 2;
    _ZxPolTaskAttr overridable = taskAttr("x");
    overridable.overridable = -1;
    _ZxPolTaskAttr endless = taskAttr("x");
    std::memset(endless.comment, 'c', sizeof endless.comment);
    for (_ZxPolTaskAttr* attr : {&enabled, &overridable, &endless, static_cast<_ZxPolTaskAttr*>(nullptr)}) {
        int error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, root->createTask("new", attr, &error));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
        error = ZXPOL_S_OK;
        task->setAttribute(attr, &error);
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    }
    EXPECT_FALSE(raw("Rule\\Mail\\tasks").hasKey("new"));
    EXPECT_EQ("there", raw("Rule\\Mail\\tasks\\there").text("displayName"));
}

TEST_F(Task, ReadingGoesOnToTheSettingWhichGivesTheResult) {
    const auto task = addTask("scan");
    RawKey key = raw("Rule\\Mail\\tasks\\scan");
    key.removeValue("comment");
    key.removeValue("enable");
    _ZxPolTaskAttr attr = taskAttr("before");
    int error = ZXPOL_S_OK;
    task->getAttribute(&attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("", attr.comment);
    EXPECT_STREQ("scan", attr.displayName);
    EXPECT_EQ(1, attr.enable) << "what cannot be read keeps what was preset";
    ASSERT_NE(nullptr, attr.setting);
    const Handle setting(attr.setting);
    task->getAttribute(&attr, &error);
    EXPECT_NE(setting.get(), attr.setting);
    Handle(attr.setting).reset();

    key.removeKey("setting");
    task->getAttribute(&attr, &error);
    EXPECT_EQ(0x1804u, reasonOf(error));
    EXPECT_EQ(nullptr, attr.setting);
}

TEST_F(Task, OutcomesAreNamedTexts) {
    const auto task = addTask("scan");
    int error = ZXPOL_S_OK;
    task->addOutcome("infected", "Infected", &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    char value[16];
    uint32_t size = sizeof value;
    task->getOutcome("infected", value, &size, &error);
    EXPECT_STREQ("Infected", value);
    EXPECT_EQ(9u, size);
    size = 8;
    task->getOutcome("infected", value, &size, &error);
    EXPECT_EQ(6u, reasonOf(error));
    task->getOutcome("clean", value, &size, &error);
    EXPECT_EQ(0x1804u, reasonOf(error));

    char name[16];
    uint32_t nameSize = sizeof name;
    size = sizeof value;
    task->enumOutcome(0, name, &nameSize, value, &size, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("infected", name);
    EXPECT_EQ(8u, nameSize);
    EXPECT_EQ(9u, size);
    task->enumOutcome(0, nullptr, &nameSize, value, &size, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    task->deleteOutcome("infected", &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_TRUE(raw("Rule\\Mail\\tasks\\scan\\Classification").valueNames().empty());
}

TEST_F(Task, OutcomesNeedNamesAndTexts) {
    const auto task = addTask("scan");
    for (const char* missing : {static_cast<const char*>(nullptr), ""}) {
        int error = ZXPOL_S_OK;
        task->addOutcome(missing, "x", &error);
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
        error = ZXPOL_S_OK;
        task->addOutcome("x", missing, &error);
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
        error = ZXPOL_S_OK;
        task->deleteOutcome(missing, &error);
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    }
}

TEST_F(Task, AMarkIsFoundWhateverItsLetterCaseAndTrailingBackslash) {
    EXPECT_EQ("active", activity("\\A\\t"));
    marks().setText("inactive1", "\\a\\T\\");
    EXPECT_EQ("inactive1", activity("\\A\\t"));
    EXPECT_EQ("inactive1", activity("\\A\\t\\"));
    marks().setText("inactive1", "\\A\\t");
    EXPECT_EQ("inactive1", activity("\\A\\t\\"));
    EXPECT_EQ("active", activity("\\A\\t2"));
    EXPECT_EQ("active", activity("\\A\\t\\\\"));
    EXPECT_EQ("active", activity("\\A"));
}

TEST_F(Task, TheLongestMarksAreComparedInFull) {
    const std::string longest = "\\" + std::string(254, 'x');
    marks().setText("inactive1", longest);
    EXPECT_EQ("inactive1", activity(longest));
    EXPECT_EQ("active", activity(longest.substr(0, 254) + "\\"));
    EXPECT_EQ("active", activity(longest.substr(0, 254)));
    marks().setText("inactive1", longest.substr(0, 254));
    EXPECT_EQ("inactive1", activity(longest.substr(0, 254) + "\\"));
    EXPECT_EQ("inactive 0x81020008", activity(longest + "x"));
    EXPECT_EQ("inactive 0x81020008", activity(""));
}

TEST_F(Task, AMarkThatCannotBeReadEndsTheSearch) {
    marks().setText("inactive1", std::string(256, 'x'));
    marks().setText("inactive2", "\\t");
    EXPECT_EQ("active 0x81020006", activity("\\t"));
    EXPECT_EQ(6u, reasonOf(mark("\\t", 1)));
    EXPECT_EQ(6u, reasonOf(mark("\\u", 0)));
    EXPECT_EQ(2u, marks().valueNames().size());
}

TEST_F(Task, WithoutTheKeyOfTheMarksEveryTaskIsActive) {
    raw("Rule\\Mail").removeKey("inactive");
    EXPECT_EQ("active 0x81021804", activity("\\t"));
    EXPECT_EQ(0x1804u, reasonOf(mark("\\t", 0)));
}

TEST_F(Task, MarksAreMadeAndRemovedOnce) {
    EXPECT_CODE(ZXPOL_S_OK, mark("\\t", 1));
    EXPECT_CODE(ZXPOL_S_OK, mark("\\t", 0));
    EXPECT_CODE(ZXPOL_S_OK, mark("\\T\\", 2));
    EXPECT_CODE(ZXPOL_S_OK, mark("\\u", 0));
    EXPECT_EQ((std::vector<std::string>{"inactive1", "inactive2"}), marks().valueNames());
    EXPECT_CODE(ZXPOL_S_OK, mark("\\t", 1));
    EXPECT_EQ((std::vector<std::string>{"inactive1"}), marks().valueNames());
    EXPECT_EQ("\\u", marks().text("inactive1"));
}

TEST_F(Task, DeletingATaskRemovesAllItsMarksFromItsRuleDown) {
    const auto a = addRule(*root, "A", "*", "*");
    const auto b = addRule(*a, "B", "*", "*");
    _ZxPolTaskAttr attr = taskAttr("t");
    int error = ZXPOL_S_OK;
    delete a->createTask("t", &attr, &error);
    RawKey atA = raw("Rule\\Mail\\rules\\A\\inactive");
    RawKey atB = raw("Rule\\Mail\\rules\\A\\rules\\B\\inactive");
    marks().setText("inactive1", "\\A\\t");
    atA.setText("inactive1", "\\A\\t");
    atA.setText("inactive2", "\\A\\other");
    atA.setText("inactive3", "\\a\\T\\");
    b->inactivateTask("\\A\\t", &error, 0);
    a->deleteTask("t", &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ((std::vector<std::string>{"inactive1"}), atA.valueNames());
    EXPECT_EQ("\\A\\other", atA.text("inactive1"));
    EXPECT_TRUE(atB.valueNames().empty());
    EXPECT_EQ(1u, marks().valueNames().size()) << "rules above are not looked at";
    a->deleteTask("t", &error);
    EXPECT_EQ(0x1804u, reasonOf(error));
    a->deleteTask(nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
}

}  // namespace
