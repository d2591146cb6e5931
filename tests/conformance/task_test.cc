// Tasks, their attributes and their outcomes.
#include "support/policy_fixture.h"

namespace {

using zxtest::Handle;
using zxtest::RawKey;
using Lines = std::vector<std::string>;

class Tasks : public zxtest::PolicyTest {
protected:
    int create(const char* name, _ZxPolTaskAttr attr) {
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createTask(rule().get(), name, &attr, &error));
        EXPECT_EQ(error >= 0, made != nullptr);
        return error;
    }
    Handle open(const char* name) {
        int error = ZXPOL_S_OK;
        Handle found(zxpol_openTask(rule().get(), name, &error));
        EXPECT_TRUE(found != nullptr) << zxtest::codeText(error);
        return found;
    }
    RawKey key(const std::string& name) { return raw("Rule\\Mail\\tasks\\" + name); }
};
ZXTEST_ON_BOTH_ENGINES(Tasks);

TEST_P(Tasks, ANewTaskHasItsValuesAndSubkeys) {
    _ZxPolTaskAttr attr = zxtest::taskAttr("shown", {0x1a, 1, 1, 0});
    zxtest::setField(attr.comment, "words");
    EXPECT_CODE(ZXPOL_S_OK, create("t", attr));
    const RawKey task = key("t");
    EXPECT_EQ("shown", task.text("displayName"));
    EXPECT_EQ("words", task.text("comment"));
    EXPECT_EQ(1u, task.number("order"));
    EXPECT_EQ(26u, task.number("filter"));
    EXPECT_EQ(1u, task.number("enable"));
    EXPECT_EQ(1u, task.number("overridable"));
    EXPECT_EQ(6u, task.valueNames().size());
    EXPECT_TRUE(task.hasKey("setting"));
    EXPECT_TRUE(task.hasKey("Classification"));
    EXPECT_EQ(2u, task.subkeys().size());
}

TEST_P(Tasks, FlagsAreZeroOrOneAndElseNothingIsMade) {
    for (const int32_t wrong : {2, -1, 256}) {
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, create("t", zxtest::taskAttr("t", {0, wrong, 0, 0})));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, create("t", zxtest::taskAttr("t", {0, 0, wrong, 0})));
    }
    EXPECT_TRUE(raw("Rule\\Mail\\tasks").subkeys().empty());
    addTask("\\", "t");
    const Handle task = open("t");
    int error = ZXPOL_S_OK;
    const _ZxPolTaskAttr attr = zxtest::taskAttr("changed", {0, 2, 0, 0});
    zxpol_setTaskAttrib(task.get(), &attr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    EXPECT_EQ("t", key("t").text("displayName"));
}

TEST_P(Tasks, MissingArgumentsAreRefused) {
    _ZxPolTaskAttr attr = zxtest::taskAttr("t");
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, create(nullptr, attr));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, create("", attr));
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_createTask(rule().get(), "t", nullptr, &error));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    for (const char* name : {static_cast<const char*>(nullptr), ""}) {
        error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, zxpol_openTask(rule().get(), name, &error));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    }
    addTask("\\", "t");
    const Handle task = open("t");
    error = ZXPOL_S_OK;
    zxpol_getTaskAttrib(task.get(), nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    zxpol_setTaskAttrib(task.get(), nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
}

TEST_P(Tasks, CreatingAnExistingTaskChangesItsAttributes) {
    addTasks("\\", {"a", "b"});
    EXPECT_CODE(ZXPOL_S_OK, create("a", zxtest::taskAttr("changed", {9, 0, 1, 2})));
    EXPECT_EQ("changed", key("a").text("displayName"));
    EXPECT_EQ(9u, key("a").number("filter"));
    EXPECT_EQ("a1 b2", orders("Rule\\Mail\\tasks"));
}

TEST_P(Tasks, AttributesAreReadAndWrittenButNotThePosition) {
    addTasks("\\", {"a", "b"});
    const Handle task = open("a");
    int error = ZXPOL_S_OK;
    _ZxPolTaskAttr attr = zxtest::taskAttr("changed", {7, 0, 1, 2});
    zxpol_setTaskAttrib(task.get(), &attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    attr = {};
    zxpol_getTaskAttrib(task.get(), &attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    const Handle setting(attr.setting);
    EXPECT_STREQ("changed", attr.displayName);
    EXPECT_EQ(1u, attr.order);
    EXPECT_EQ(7u, attr.filter);
    EXPECT_EQ(0, attr.enable);
    EXPECT_EQ(1, attr.overridable);
}

TEST_P(Tasks, TheSettingIsANewOpenKeyEachTime) {
    addTask("\\", "t");
    const Handle task = open("t");
    _ZxPolTaskAttr first = {}, second = {};
    int error = ZXPOL_S_OK;
    zxpol_getTaskAttrib(task.get(), &first, &error);
    zxpol_getTaskAttrib(task.get(), &second, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    const Handle one(first.setting), two(second.setting);
    ASSERT_TRUE(one != nullptr && two != nullptr);
    EXPECT_NE(one.get(), two.get());
    EXPECT_EQ(ZXREG_HANDLE_KEY, one->kind);
    RawKey(one.get()).setText("folder", "/var");
    EXPECT_EQ("/var", key("t\\setting").text("folder"));
    EXPECT_EQ("/var", RawKey(two.get()).text("folder"));
}

TEST_P(Tasks, OnlyTheOpeningOfTheSettingDecidesTheResultOfReading) {
    addTask("\\", "t", {5, 1, 0, 0});
    for (const char* name : {"comment", "displayName", "order", "enable"})
        key("t").removeValue(name);
    const Handle task = open("t");
    _ZxPolTaskAttr attr = {};
    int error = ZXPOL_S_OK;
    zxpol_getTaskAttrib(task.get(), &attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(5u, attr.filter);
    const Handle setting(attr.setting);
    EXPECT_NE(nullptr, setting);
    key("t").removeKey("setting");
    zxpol_getTaskAttrib(task.get(), &attr, &error);
    EXPECT_CODE(ZXREG_E_NOT_FOUND, error);
    EXPECT_EQ(nullptr, attr.setting);
    EXPECT_EQ(5u, attr.filter);
}

TEST_P(Tasks, ATextWithoutItsNulIsRefused) {
    _ZxPolTaskAttr attr = zxtest::taskAttr("t");
    std::memset(attr.displayName, 'n', sizeof attr.displayName);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, create("t", attr));
    EXPECT_TRUE(raw("Rule\\Mail\\tasks").subkeys().empty());
}

class Outcomes : public Tasks {
protected:
    void SetUp() override {
        Tasks::SetUp();
        addTask("\\", "t");
        _task = open("t");
    }
    void TearDown() override {
        _task.reset();
        Tasks::TearDown();
    }
    int add(const char* name, const char* value) {
        int error = ZXPOL_S_OK;
        zxpol_addOutcome(_task.get(), name, value, &error);
        return error;
    }
    int remove(const char* name) {
        int error = ZXPOL_S_OK;
        zxpol_deleteOutcome(_task.get(), name, &error);
        return error;
    }
    int get(const char* name, char* value, uint32_t* size) {
        int error = ZXPOL_S_OK;
        zxpol_getOutcome(_task.get(), name, value, size, &error);
        return error;
    }
    int enumerate(uint32_t index, char* name, uint32_t* nameSize, char* value, uint32_t* valueSize) {
        int error = ZXPOL_S_OK;
        zxpol_enumOutcome(_task.get(), index, name, nameSize, value, valueSize, &error);
        return error;
    }

private:
    Handle _task;
};
ZXTEST_ON_BOTH_ENGINES(Outcomes);

TEST_P(Outcomes, AreStringsOfTheKeyClassification) {
    EXPECT_CODE(ZXPOL_S_OK, add("infected", "Infected"));
    EXPECT_CODE(ZXPOL_S_OK, add("clean", "Clean"));
    EXPECT_CODE(ZXPOL_S_OK, add("infected", "Replaced"));
    const RawKey outcomes = key("t\\Classification");
    EXPECT_EQ((Lines{"infected", "clean"}), outcomes.valueNames());
    EXPECT_EQ("Replaced", outcomes.text("infected"));
}

TEST_P(Outcomes, EmptyOrMissingTextsAreRefused) {
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, add("a", ""));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, add("a", nullptr));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, add("", "b"));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, add(nullptr, "b"));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, remove(""));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, remove(nullptr));
    char value[8];
    uint32_t size = sizeof value;
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, get("", value, &size));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, get(nullptr, value, &size));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, get("a", value, nullptr));
    EXPECT_TRUE(key("t\\Classification").valueNames().empty());
}

TEST_P(Outcomes, AreReadWithTheStoresSizes) {
    add("a", "four");
    char value[8] = {};
    uint32_t size = sizeof value;
    EXPECT_CODE(ZXPOL_S_OK, get("a", value, &size));
    EXPECT_STREQ("four", value);
    EXPECT_EQ(5u, size);
    size = 4;
    EXPECT_EQ(6u, zxtest::reasonOf(get("a", value, &size)));
    EXPECT_EQ(5u, size);
    EXPECT_CODE(ZXREG_E_NOT_FOUND, get("b", value, &size));
}

TEST_P(Outcomes, AreEnumeratedInTheOrderOfTheStore) {
    add("b", "two");
    add("a", "one");
    char name[16], value[16];
    uint32_t nameSize = sizeof name, valueSize = sizeof value;
    EXPECT_CODE(ZXPOL_S_OK, enumerate(0, name, &nameSize, value, &valueSize));
    EXPECT_STREQ("b", name);
    EXPECT_STREQ("two", value);
    EXPECT_EQ(1u, nameSize);
    EXPECT_EQ(4u, valueSize);
    nameSize = valueSize = sizeof name;
    EXPECT_CODE(ZXPOL_S_OK, enumerate(1, name, &nameSize, value, &valueSize));
    EXPECT_STREQ("a", name);
    nameSize = valueSize = sizeof name;
    EXPECT_EQ(12u, zxtest::reasonOf(enumerate(2, name, &nameSize, value, &valueSize)));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, enumerate(0, name, nullptr, value, &valueSize));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, enumerate(0, name, &nameSize, value, nullptr));
}

TEST_P(Outcomes, DeletingOneThatIsNotThereIsTheStoresFailure) {
    add("a", "one");
    EXPECT_CODE(ZXREG_E_NOT_FOUND, remove("b"));
    EXPECT_CODE(ZXPOL_S_OK, remove("a"));
    EXPECT_TRUE(key("t\\Classification").valueNames().empty());
}

}  // namespace
