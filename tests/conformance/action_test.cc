// The actions of a classification: their positions, attributes and settings.
#include "support/policy_fixture.h"

namespace {

using zxtest::Handle;
using zxtest::RawKey;
using Lines = std::vector<std::string>;

class Actions : public zxtest::PolicyTest {
protected:
    static constexpr const char* actions = "Classification\\C\\actions";

    void SetUp() override {
        PolicyTest::SetUp();
        if (HasFatalFailure()) return;
        int error = ZXPOL_S_OK;
        const _ZxPolCommAttrib attr = {};
        const Handle hive(zxpol_openClassificationHive(store(), &error));
        _owner.reset(zxpol_createClassification(hive.get(), "C", &attr, &error));
        ASSERT_GE(error, 0) << zxtest::codeText(error);
    }
    void TearDown() override {
        _owner.reset();
        PolicyTest::TearDown();
    }
    _ZxPolComHandle* owner() const { return _owner.get(); }

    // Another handle to the same classification.
    Handle otherOwner() const {
        int error = ZXPOL_S_OK;
        const Handle hive(zxpol_openClassificationHive(store(), &error));
        Handle other(zxpol_openClassification(hive.get(), "C", &error));
        EXPECT_CODE(ZXPOL_S_OK, error);
        return other;
    }

    static _ZxPolActionAttr attributes(const std::string& displayName, uint32_t order = 0, uint32_t type = 0) {
        _ZxPolActionAttr attr = {};
        zxtest::setField(attr.displayName, displayName);
        zxtest::setField(attr.comment, "of " + displayName);
        attr.order = order;
        attr.actionType = type;
        return attr;
    }
    int create(const char* name, _ZxPolActionAttr* attr) const {
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createAction(owner(), name, attr, &error));
        EXPECT_EQ(error >= 0, made != nullptr);
        return error;
    }
    // Creates an action at a position; returns the code and the position that is in the record then.
    int createAt(const char* name, uint32_t* order) const {
        _ZxPolActionAttr attr = attributes(name, *order);
        const int error = create(name, &attr);
        *order = attr.order;
        return error;
    }
    void add(std::initializer_list<const char*> names) const {
        for (const char* name : names) {
            uint32_t order = 0;
            EXPECT_CODE(ZXPOL_S_OK, createAt(name, &order));
        }
    }
    Handle open(const char* name) const {
        int error = ZXPOL_S_OK;
        Handle found(zxpol_openAction(owner(), name, &error));
        EXPECT_TRUE(found != nullptr) << name << ": " << zxtest::codeText(error);
        return found;
    }
    int codeOfOpening(const char* name) const {
        int error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, Handle(zxpol_openAction(owner(), name, &error)));
        return error;
    }
    int remove(const char* name) const {
        int error = ZXPOL_S_OK;
        zxpol_deleteAction(owner(), name, &error);
        return error;
    }
    // Moves an action; returns the position given, or the failure, which must come with position 0.
    std::string move(const char* name, uint32_t position) const {
        int error = ZXPOL_S_OK;
        const uint32_t given = zxpol_setActionOrder(owner(), name, position, &error);
        if (error >= 0) return std::to_string(given);
        EXPECT_EQ(0u, given);
        return zxtest::codeText(error);
    }
    static int read(const Handle& action, _ZxPolActionAttr* attr) {
        int error = ZXPOL_S_OK;
        zxpol_getActionAttrib(action.get(), attr, &error);
        return error;
    }
    static int write(const Handle& action, const _ZxPolActionAttr* attr) {
        int error = ZXPOL_S_OK;
        zxpol_setActionAttrib(action.get(), attr, &error);
        return error;
    }
    std::string order() const { return orders(actions); }
    std::string enumerated() const { return names(zxpol_enumAction, owner()); }
    RawKey key(const std::string& name) const { return raw(actions + ("\\" + name)); }

private:
    Handle _owner;
};
ZXTEST_ON_BOTH_ENGINES(Actions);

// ---- creating and positions -----------------------------------------------------------------------------------

TEST_P(Actions, ANewOneHasItsValuesAndAnEmptySetting) {
    _ZxPolActionAttr attr = attributes("shown", 0, 0xfffffff0u);
    int error = ZXPOL_S_OK;
    const Handle made(zxpol_createAction(owner(), "a", &attr, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    ASSERT_NE(nullptr, made);
    EXPECT_EQ(ZXPOL_HANDLE_ACTION, made->kind);
    EXPECT_EQ("shown", key("a").text("displayName"));
    EXPECT_EQ("of shown", key("a").text("comment"));
    EXPECT_EQ(0xfffffff0u, key("a").number("actionType"));
    EXPECT_EQ((Lines{"order", "comment", "displayName", "actionType"}), key("a").valueNames());
    EXPECT_EQ(Lines{"setting"}, key("a").subkeys());
    EXPECT_TRUE(key("a\\setting").subkeys().empty());
    EXPECT_TRUE(key("a\\setting").valueNames().empty());
    EXPECT_EQ(nullptr, attr.setting);
}

TEST_P(Actions, CreatingAtTheFrontMovesTheOthersAndTellsThePosition) {
    uint32_t a = 0, b = 0, c = 1;
    EXPECT_CODE(ZXPOL_S_OK, createAt("a", &a));
    EXPECT_CODE(ZXPOL_S_OK, createAt("b", &b));
    EXPECT_CODE(ZXPOL_S_OK, createAt("c", &c));
    EXPECT_EQ("c a b", enumerated());
    EXPECT_EQ("c1 a2 b3", order());
    EXPECT_EQ("1 2 1", std::to_string(a) + " " + std::to_string(b) + " " + std::to_string(c));
}

TEST_P(Actions, PositionsPastTheEndAppend) {
    add({"a", "b"});
    for (const uint32_t wanted : {3u, 9u, 0x7fffffffu}) {
        uint32_t position = wanted;
        EXPECT_CODE(ZXPOL_S_OK, createAt("x", &position));
        EXPECT_EQ(3u, position) << wanted;
        EXPECT_EQ("a1 b2 x3", order());
        EXPECT_CODE(ZXPOL_S_OK, remove("x"));
    }
    uint32_t middle = 2;
    EXPECT_CODE(ZXPOL_S_OK, createAt("x", &middle));
    EXPECT_EQ("a1 x2 b3", order());
}

TEST_P(Actions, NegativePositionsAreRefusedAndNothingIsMade) {
    for (const uint32_t wanted : {0x80000000u, 0xffffffffu}) {
        uint32_t position = wanted;
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, createAt("a", &position));
        EXPECT_EQ(wanted, position);
    }
    EXPECT_TRUE(raw(actions).subkeys().empty());
}

TEST_P(Actions, WithoutARecordOrANameNothingIsMade) {
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, create("a", nullptr));
    _ZxPolActionAttr attr = attributes("x");
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, create("", &attr));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, create(nullptr, &attr));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, create(nullptr, nullptr));
    EXPECT_TRUE(raw(actions).subkeys().empty());
    EXPECT_TRUE(raw(actions).valueNames().empty());
}

TEST_P(Actions, CreatingAnExistingOneKeepsItsPositionAndItsSetting) {
    add({"a", "b", "c"});
    key("c\\setting").setText("folder", "/var");
    _ZxPolActionAttr attr = attributes("changed", 1, 77);
    EXPECT_CODE(ZXPOL_S_OK, create("c", &attr));
    EXPECT_EQ("a1 b2 c3", order());
    EXPECT_EQ(1u, attr.order) << "no position was given";
    EXPECT_EQ("changed", key("c").text("displayName"));
    EXPECT_EQ("of changed", key("c").text("comment"));
    EXPECT_EQ(77u, key("c").number("actionType"));
    EXPECT_EQ("/var", key("c\\setting").text("folder"));
}

TEST_P(Actions, CreatingAnExistingOneMakesAMissingSetting) {
    add({"a"});
    key("a").removeKey("setting");
    add({"a"});
    EXPECT_TRUE(key("a").hasKey("setting"));
}

TEST_P(Actions, ATextWithoutItsNulIsNotWritten) {
    add({"a"});
    for (const bool isComment : {true, false}) {
        _ZxPolActionAttr attr = attributes("changed", 0, 9);
        if (isComment)
            std::memset(attr.comment, 'c', sizeof attr.comment);
        else
            std::memset(attr.displayName, 'd', sizeof attr.displayName);
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, write(open("a"), &attr));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, create("a", &attr));
        EXPECT_EQ("a", key("a").text("displayName"));
        EXPECT_EQ("of a", key("a").text("comment"));
        EXPECT_EQ(0u, key("a").number("actionType"));
    }
}

TEST_P(Actions, TheContainerIsMadeWhenItIsMissing) {
    raw("Classification\\C").removeKey("actions");
    EXPECT_CODE(ZXREG_E_NOT_FOUND, codeOfOpening("a"));
    EXPECT_TRUE(raw(actions).subkeys().empty()) << "opening makes the container, and no action";
    raw("Classification\\C").removeKey("actions");
    add({"a"});
    EXPECT_EQ("a1", order());
}

TEST_P(Actions, WithoutAContainerThereIsNothingToListMoveOrDelete) {
    raw("Classification\\C").removeKey("actions");
    char name[8];
    uint32_t size = sizeof name;
    int error = ZXPOL_S_OK;
    zxpol_enumAction(owner(), 0, name, &size, &error);
    EXPECT_CODE(ZXREG_E_NOT_FOUND, error);
    EXPECT_CODE(ZXREG_E_NOT_FOUND, remove("a"));
    EXPECT_FALSE(raw("Classification\\C").hasKey("actions"));
    EXPECT_EQ(zxtest::codeText(ZXREG_E_NOT_FOUND), move("a", 1));
}

// ---- moving ---------------------------------------------------------------------------------------------------

TEST_P(Actions, MovingTellsThePositionGiven) {
    add({"c", "a", "b"});
    EXPECT_EQ("1", move("b", 1));
    EXPECT_EQ("b c a", enumerated());
    EXPECT_EQ("b1 c2 a3", order());
    EXPECT_EQ("3", move("b", 3));
    EXPECT_EQ("c1 a2 b3", order());
    EXPECT_EQ("2", move("a", 2));
    EXPECT_EQ("c1 a2 b3", order());
    EXPECT_EQ("3", move("c", 9)) << "past the end is the end";
    EXPECT_EQ("a1 b2 c3", order());
}

TEST_P(Actions, WhatCannotBeMovedGivesPositionZero) {
    add({"a", "b"});
    const std::string invalid = zxtest::codeText(ZXPOL_E_INVALID_ARG);
    for (const uint32_t position : {0u, 0x80000000u, 0xffffffffu})
        EXPECT_EQ(invalid, move("a", position)) << position;
    EXPECT_EQ(invalid, move("", 1));
    EXPECT_EQ(invalid, move(nullptr, 1));
    EXPECT_EQ(zxtest::codeText(ZXREG_E_NOT_FOUND), move("x", 1));
    EXPECT_EQ("a1 b2", order());
    int error = ZXPOL_E_PARSE;
    EXPECT_EQ(0u, zxpol_setActionOrder(owner(), "b", 1, &error));
    EXPECT_EQ(0u, zxpol_setActionOrder(owner(), "b", 1, nullptr));
    error = ZXPOL_S_OK;
    EXPECT_EQ(0u, zxpol_setActionOrder(nullptr, "b", 1, &error));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    EXPECT_EQ("a1 b2", order());
}

TEST_P(Actions, OneThatLostItsPositionIsNotListedAndCannotBeMoved) {
    add({"a", "b", "c"});
    key("b").removeValue("order");
    EXPECT_EQ("a c", enumerated());
    EXPECT_EQ(zxtest::codeText(ZXPOL_E_EXCEPTION), move("b", 1));
    EXPECT_EQ("a1 c3 b-", order());
    EXPECT_NE(nullptr, open("b"));
    EXPECT_CODE(ZXPOL_S_OK, remove("b"));
    EXPECT_EQ("a1 c2", order());
}

// ---- opening, deleting, enumerating -----------------------------------------------------------------------------

TEST_P(Actions, OpeningWithoutANameOrAMissingOneFails) {
    add({"a"});
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, codeOfOpening(nullptr));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, codeOfOpening(""));
    EXPECT_CODE(ZXREG_E_NOT_FOUND, codeOfOpening("b"));
    EXPECT_EQ("a", enumerated());
}

TEST_P(Actions, DeletingRenumbersTheRest) {
    add({"c", "a", "b"});
    key("c\\setting").makeKey("deeper").setText("x", "y");
    EXPECT_CODE(ZXPOL_S_OK, remove("c"));
    EXPECT_EQ("a1 b2", order());
    EXPECT_FALSE(raw(actions).hasKey("c"));
    EXPECT_CODE(ZXPOL_S_OK, remove("b"));
    EXPECT_CODE(ZXPOL_S_OK, remove("a"));
    EXPECT_TRUE(raw(actions).subkeys().empty());
}

TEST_P(Actions, DeletingAMissingOneIsTheStoresFailure) {
    add({"a"});
    EXPECT_CODE(ZXREG_E_NOT_FOUND, remove("x"));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, remove(""));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, remove(nullptr));
    EXPECT_EQ("a1", order());
}

TEST_P(Actions, OnlyIndexZeroReadsTheStore) {
    add({"a", "b"});
    const Handle other = otherOwner();
    EXPECT_EQ("a b", names(zxpol_enumAction, other.get()));
    uint32_t position = 1;
    EXPECT_CODE(ZXPOL_S_OK, createAt("c", &position));
    char name[8] = "";
    uint32_t size = sizeof name;
    int error = ZXPOL_S_OK;
    zxpol_enumAction(other.get(), 1, name, &size, &error);
    EXPECT_STREQ("b", name);
    EXPECT_EQ(2u, size) << "the NUL included";
    zxpol_enumAction(other.get(), 2, name, &size, &error);
    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, error);
    EXPECT_EQ("c a b", names(zxpol_enumAction, other.get()));
}

TEST_P(Actions, ATooSmallBufferTellsTheSizeWithTheNul) {
    add({"abc"});
    char name[4] = "xyz";
    uint32_t size = 3;
    int error = ZXPOL_S_OK;
    zxpol_enumAction(owner(), 0, name, &size, &error);
    EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, error);
    EXPECT_EQ(4u, size);
    EXPECT_STREQ("xyz", name);
    error = ZXPOL_S_OK;
    zxpol_enumAction(owner(), 0, name, &size, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("abc", name);
}

TEST_P(Actions, AClassificationWithoutAnyEndsAtOnce) {
    char name[8];
    uint32_t size = sizeof name;
    int error = ZXPOL_S_OK;
    zxpol_enumAction(owner(), 0, name, &size, &error);
    EXPECT_CODE(ZXREG_E_NO_MORE_ITEMS, error);
}

// ---- attributes -------------------------------------------------------------------------------------------------

TEST_P(Actions, AttributesAreReadWithThePositionAndTheSetting) {
    add({"a"});
    _ZxPolActionAttr created = attributes("shown", 0, 7);
    EXPECT_CODE(ZXPOL_S_OK, create("b", &created));
    _ZxPolActionAttr attr;
    std::memset(&attr, 'x', sizeof attr);
    EXPECT_CODE(ZXPOL_S_OK, read(open("b"), &attr));
    EXPECT_STREQ("shown", attr.displayName);
    EXPECT_STREQ("of shown", attr.comment);
    EXPECT_EQ(2u, attr.order);
    EXPECT_EQ(7u, attr.actionType);
    ASSERT_NE(nullptr, attr.setting);
    const Handle setting(attr.setting);
    EXPECT_EQ(ZXREG_HANDLE_KEY, setting->kind);
}

TEST_P(Actions, TheSettingIsANewOpenKeyEachTime) {
    add({"a"});
    Handle action = open("a");
    _ZxPolActionAttr first = {}, second = {};
    EXPECT_CODE(ZXPOL_S_OK, read(action, &first));
    EXPECT_CODE(ZXPOL_S_OK, read(action, &second));
    const Handle one(first.setting), two(second.setting);
    ASSERT_TRUE(one != nullptr && two != nullptr);
    EXPECT_NE(one.get(), two.get());
    action.reset();  // the key is the caller's
    RawKey(one.get()).setText("folder", "/var");
    EXPECT_EQ("/var", RawKey(two.get()).text("folder"));
    EXPECT_EQ("/var", key("a\\setting").text("folder"));
}

TEST_P(Actions, WithoutACommentNothingElseIsRead) {
    add({"a"});
    key("a").removeValue("comment");
    _ZxPolActionAttr attr = attributes("kept", 77, 78);
    EXPECT_CODE(ZXREG_E_NOT_FOUND, read(open("a"), &attr));
    EXPECT_STREQ("kept", attr.displayName);
    EXPECT_EQ(77u, attr.order);
    EXPECT_EQ(78u, attr.actionType);
    EXPECT_EQ(nullptr, attr.setting);
}

TEST_P(Actions, AfterTheCommentOnlyTheTypeDecidesTheResult) {
    _ZxPolActionAttr created = attributes("shown", 0, 7);
    EXPECT_CODE(ZXPOL_S_OK, create("a", &created));
    key("a").removeValue("displayName");
    key("a").removeValue("order");
    key("a").removeKey("setting");
    _ZxPolActionAttr attr = {};
    attr.order = 77;
    EXPECT_CODE(ZXPOL_S_OK, read(open("a"), &attr));
    EXPECT_STREQ("of shown", attr.comment);
    EXPECT_EQ(77u, attr.order);
    EXPECT_EQ(7u, attr.actionType);
    EXPECT_EQ(nullptr, attr.setting);
}

TEST_P(Actions, ASettingThatIsGoneIsNull) {
    add({"a"});
    const Handle action = open("a");
    _ZxPolActionAttr attr = {};
    EXPECT_CODE(ZXPOL_S_OK, read(action, &attr));
    const Handle setting(attr.setting);
    key("a").removeKey("setting");
    EXPECT_CODE(ZXPOL_S_OK, read(action, &attr));
    EXPECT_EQ(nullptr, attr.setting) << "not the handle of before";
}

TEST_P(Actions, WithoutATypeTheOthersAreReadAndTheFailureReported) {
    _ZxPolActionAttr created = attributes("shown", 0, 7);
    EXPECT_CODE(ZXPOL_S_OK, create("a", &created));
    key("a").removeValue("actionType");
    _ZxPolActionAttr attr = {};
    EXPECT_CODE(ZXREG_E_NOT_FOUND, read(open("a"), &attr));
    const Handle setting(attr.setting);
    EXPECT_STREQ("shown", attr.displayName);
    EXPECT_STREQ("of shown", attr.comment);
    EXPECT_EQ(1u, attr.order);
    EXPECT_EQ(0u, attr.actionType);
}

TEST_P(Actions, WritingChangesNeitherPositionNorSetting) {
    add({"a", "b"});
    key("a\\setting").setText("folder", "/var");
    const Handle action = open("a");
    _ZxPolActionAttr attr = attributes("changed", 2, 9);
    _ZxPolComHandle foreign = {ZXREG_HANDLE_KEY, nullptr};
    attr.setting = &foreign;
    EXPECT_CODE(ZXPOL_S_OK, write(action, &attr));
    EXPECT_EQ("a1 b2", order());
    EXPECT_EQ("/var", key("a\\setting").text("folder"));
    EXPECT_EQ("changed", key("a").text("displayName"));
    EXPECT_EQ("of changed", key("a").text("comment"));
    EXPECT_EQ(9u, key("a").number("actionType"));
    EXPECT_EQ(4u, key("a").valueNames().size());
}

TEST_P(Actions, TheLongestTextsAreKept) {
    add({"a"});
    const std::string name(255, 'n'), comment(511, 'c');
    _ZxPolActionAttr attr = attributes(name);
    zxtest::setField(attr.comment, comment);
    EXPECT_CODE(ZXPOL_S_OK, write(open("a"), &attr));
    _ZxPolActionAttr found = {};
    EXPECT_CODE(ZXPOL_S_OK, read(open("a"), &found));
    const Handle setting(found.setting);
    EXPECT_EQ(name, found.displayName);
    EXPECT_EQ(comment, found.comment);
}

TEST_P(Actions, WithoutARecordNothingIsReadOrWritten) {
    add({"a"});
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, read(open("a"), nullptr));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, write(open("a"), nullptr));
    EXPECT_EQ("a", key("a").text("displayName"));
}

TEST_P(Actions, OutliveTheClassificationThatOpenedThem) {
    add({"a"});
    const Handle action = open("a");
    int error = ZXPOL_S_OK;
    Handle other = otherOwner();
    const Handle through(zxpol_openAction(other.get(), "a", &error));
    other.reset();
    _ZxPolActionAttr attr = attributes("changed");
    EXPECT_CODE(ZXPOL_S_OK, write(through, &attr));
    EXPECT_CODE(ZXPOL_S_OK, read(action, &attr));
    const Handle setting(attr.setting);
    EXPECT_STREQ("changed", attr.displayName);
}

TEST_P(Actions, TheirHandlesAreNoClassifications) {
    add({"a"});
    const Handle action = open("a");
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openAction(action.get(), "a", &error));
    EXPECT_CODE(ZXPOL_E_WRONG_HANDLE, error);
    zxpol_closeClassification(action.get(), &error);
    EXPECT_CODE(ZXPOL_E_WRONG_HANDLE, error);
    error = ZXPOL_S_OK;
    _ZxPolActionAttr attr = {};
    zxpol_getActionAttrib(owner(), &attr, &error);
    EXPECT_CODE(ZXPOL_E_WRONG_HANDLE, error);
    error = ZXPOL_E_PARSE;
    _ZxPolComHandle* closed = open("a").release();
    zxpol_closeAction(closed, &error);
    EXPECT_CODE(ZXPOL_S_OK, error) << "closing works after a failure";
}

}  // namespace
