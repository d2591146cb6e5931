// Classifications and actions over a store that the program brings along: the order of what is read and written, what
// a failure of each leaves, and that every key is closed.
#include <gtest/gtest.h>

#include <cstring>

#include "map_store.h"
#include "support/raw_store.h"

namespace {

using zxtest::Handle;
using zxtest::ownStore;
using zxtest::ownSubkeys;
using zxtest::ownValues;
using Lines = std::vector<std::string>;

class OwnClassification : public ::testing::Test {
protected:
    void SetUp() override {
        ownStore() = zxtest::OwnStore();
        _root.reset(zxtest::newOwnStore());
        int error = ZXPOL_S_OK;
        _hive.reset(zxpol_openClassificationHive(root(), &error));
        ASSERT_GE(error, 0) << zxtest::codeText(error);
    }
    void TearDown() override {
        _hive.reset();
        _root.reset();
        EXPECT_EQ(0, ownStore().openKeys);
        EXPECT_EQ(0, ownStore().openUpdates);
    }
    _ZxPolComHandle* root() const { return _root.get(); }
    _ZxPolComHandle* hive() const { return _hive.get(); }
    void closeHive() { _hive.reset(); }

    int create(const char* name) {
        _ZxPolCommAttrib attr = {};
        std::snprintf(attr.displayName, sizeof attr.displayName, "%s", name);
        std::snprintf(attr.comment, sizeof attr.comment, "of %s", name);
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createClassification(hive(), name, &attr, &error));
        EXPECT_EQ(error >= 0, made != nullptr);
        return error;
    }
    Handle open(const char* name) {
        int error = ZXPOL_S_OK;
        Handle found(zxpol_openClassification(hive(), name, &error));
        EXPECT_NE(nullptr, found) << zxtest::codeText(error);
        return found;
    }
    int createAction(const Handle& owner, const char* name, uint32_t* order) {
        _ZxPolActionAttr attr = {};
        std::snprintf(attr.displayName, sizeof attr.displayName, "%s", name);
        std::snprintf(attr.comment, sizeof attr.comment, "of %s", name);
        attr.order = *order;
        attr.actionType = 7;
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createAction(owner.get(), name, &attr, &error));
        EXPECT_EQ(error >= 0, made != nullptr);
        *order = attr.order;
        return error;
    }
    int createAction(const Handle& owner, const char* name, uint32_t order = 0) {
        return createAction(owner, name, &order);
    }
    Handle openAction(const Handle& owner, const char* name) {
        int error = ZXPOL_S_OK;
        Handle found(zxpol_openAction(owner.get(), name, &error));
        EXPECT_NE(nullptr, found) << zxtest::codeText(error);
        return found;
    }
    // A classification with the action a.
    Handle withAction() {
        EXPECT_GE(create("C"), 0);
        Handle owner = open("C");
        EXPECT_GE(createAction(owner, "a"), 0);
        return owner;
    }
    int read(const Handle& target, _ZxPolCommAttrib* attr) {
        int error = ZXPOL_S_OK;
        zxpol_getClassificationAttrib(target.get(), attr, &error);
        return error;
    }
    int write(const Handle& target) {
        const _ZxPolCommAttrib attr = {"new", "newer"};
        int error = ZXPOL_S_OK;
        zxpol_setClassificationAttrib(target.get(), &attr, &error);
        return error;
    }
    // Reads an action's attributes, and closes the setting that comes along.
    int readAction(const Handle& action, _ZxPolActionAttr* attr) {
        int error = ZXPOL_S_OK;
        zxpol_getActionAttrib(action.get(), attr, &error);
        const Handle setting(attr->setting);
        return error;
    }
    int writeAction(const Handle& action) {
        _ZxPolActionAttr attr = {};
        attr.order = 9;
        attr.actionType = 8;
        int error = ZXPOL_S_OK;
        zxpol_setActionAttrib(action.get(), &attr, &error);
        return error;
    }
    Lines values(const char* path = "Classification\\C") { return ownValues(root(), path); }
    Lines subkeys(const char* path = "Classification\\C") { return ownSubkeys(root(), path); }

    // The store's calls from the first that is `begin` on.
    static Lines callsFrom(const std::string& begin) {
        const Lines& all = ownStore().calls;
        size_t at = 0;
        while (at < all.size() && all[at] != begin)
            ++at;
        return Lines(all.begin() + static_cast<std::ptrdiff_t>(at), all.end());
    }

private:
    Handle _root, _hive;
};

// ---- the hive -------------------------------------------------------------------------------------------------

TEST_F(OwnClassification, AHiveWhoseKeyCannotBeMadeIsTheStoresFailure) {
    closeHive();
    for (const bool givesKey : {false, true}) {
        ownStore().failingMakes = {{"Classification", zxtest::kOwnFailure}};
        ownStore().givesKeysWithFailures = givesKey;
        const int openBefore = ownStore().openKeys;
        int error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, zxpol_openClassificationHive(root(), &error));
        EXPECT_CODE(zxtest::kOwnFailure, error);
        EXPECT_EQ(openBefore, ownStore().openKeys) << "a key that came with the failure is closed";
    }
}

TEST_F(OwnClassification, TheStoresCodesPassThroughUnchanged) {
    char name[8];
    uint32_t size = sizeof name;
    int error = ZXPOL_S_OK;
    zxpol_enumClassification(hive(), 0, name, &size, &error);
    EXPECT_CODE(zxtest::kOwnEnd, error);
    error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openClassification(hive(), "C", &error));
    EXPECT_CODE(zxtest::kOwnMissing, error);
    error = ZXPOL_S_OK;
    zxpol_deleteClassification(hive(), "C", &error);
    EXPECT_CODE(zxtest::kOwnMissing, error);
    EXPECT_GE(create("LongName"), 0);
    error = ZXPOL_S_OK;
    size = sizeof name;
    zxpol_enumClassification(hive(), 0, name, &size, &error);
    EXPECT_CODE(zxtest::kOwnTooSmall, error);
    EXPECT_EQ(8u, size) << "as this store counts";
    const Handle owner = open("LongName");
    error = ZXPOL_S_OK;
    zxpol_enumAction(owner.get(), 0, name, &size, &error);
    EXPECT_CODE(zxtest::kOwnEnd, error);
    error = ZXPOL_S_OK;
    EXPECT_EQ(0u, zxpol_setActionOrder(owner.get(), "a", 1, &error));
    EXPECT_CODE(zxtest::kOwnMissing, error);
}

// ---- classifications --------------------------------------------------------------------------------------------

TEST_F(OwnClassification, CreatingMakesTheActionsThenWritesCommentAndDisplayName) {
    ownStore().calls.clear();
    EXPECT_GE(create("C"), 0);
    EXPECT_EQ((Lines{"create C", "create actions", "set comment", "set displayName"}), callsFrom("create C"));
    ownStore().calls.clear();
    EXPECT_GE(create("C"), 0);
    EXPECT_EQ((Lines{"open C", "create actions", "set comment", "set displayName"}), callsFrom("open C"));
}

TEST_F(OwnClassification, AMissingKeyOfActionsIsNotNoticed) {
    ownStore().failingMakes["actions"] = zxtest::kOwnFailure;
    EXPECT_GE(create("C"), 0);
    EXPECT_EQ((Lines{"comment", "displayName"}), values());
    EXPECT_TRUE(subkeys().empty());
}

TEST_F(OwnClassification, AFailingCommentIsNotNoticedOnCreating) {
    ownStore().failingWrites["comment"] = zxtest::kOwnFailure;
    EXPECT_GE(create("C"), 0);
    EXPECT_EQ(Lines{"displayName"}, values());
    EXPECT_EQ(Lines{"actions"}, subkeys());
}

TEST_F(OwnClassification, AFailingDisplayNameFailsTheCreationAndTheKeyStays) {
    ownStore().failingWrites["displayName"] = zxtest::kOwnFailure;
    EXPECT_CODE(zxtest::kOwnFailure, create("C"));
    EXPECT_EQ(Lines{"comment"}, values());
    EXPECT_EQ(Lines{"actions"}, subkeys());
    EXPECT_EQ(Lines{"C"}, subkeys("Classification"));
}

TEST_F(OwnClassification, AttributesThatAreNotSupportedDoNotFailTheCreation) {
    ownStore().failingWrites["displayName"] = ZXPOL_E_NOT_SUPPORTED;
    EXPECT_CODE(ZXPOL_S_OK, create("C"));
    EXPECT_EQ(Lines{"comment"}, values());
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, write(open("C"))) << "only creating passes this over";
    // The same reason with another facility is a failure like any other.
    ownStore().failingWrites["displayName"] = static_cast<int>(0x87770001u);
    EXPECT_CODE(static_cast<int>(0x87770001u), create("C"));
}

TEST_F(OwnClassification, AKeyThatCannotBeMadeIsTheStoresFailure) {
    ownStore().failingMakes["C"] = zxtest::kOwnFailure;
    EXPECT_CODE(zxtest::kOwnFailure, create("C"));
    ownStore().givesKeysWithFailures = true;
    EXPECT_CODE(zxtest::kOwnFailure, create("C"));
    ownStore().failingMakes.clear();
    ownStore().failingOpens["C"] = zxtest::kOwnFailure;
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openClassification(hive(), "C", &error));
    EXPECT_CODE(zxtest::kOwnFailure, error);
}

TEST_F(OwnClassification, WritingGoesOnToTheDisplayNameWhichGivesTheResult) {
    EXPECT_GE(create("C"), 0);
    const Handle c = open("C");
    ownStore().failingWrites["comment"] = zxtest::kOwnFailure;
    ownStore().calls.clear();
    EXPECT_CODE(zxtest::kOwnOk, write(c));
    EXPECT_EQ((Lines{"set comment", "set displayName"}), ownStore().calls);
    ownStore().failingWrites = {{"displayName", zxtest::kOwnFailure}};
    EXPECT_CODE(zxtest::kOwnFailure, write(c));
    ownStore().failingWrites.clear();
    _ZxPolCommAttrib attr = {};
    EXPECT_CODE(zxtest::kOwnOk, read(c, &attr));
    EXPECT_STREQ("new", attr.displayName);
    EXPECT_STREQ("newer", attr.comment);
}

TEST_F(OwnClassification, ReadingBeginsWithTheCommentAndEndsThereWhenItFails) {
    EXPECT_GE(create("C"), 0);
    const Handle c = open("C");
    _ZxPolCommAttrib attr = {};
    ownStore().calls.clear();
    EXPECT_CODE(zxtest::kOwnOk, read(c, &attr));
    EXPECT_EQ((Lines{"get comment", "get displayName"}), ownStore().calls);
    EXPECT_STREQ("C", attr.displayName);
    ownStore().calls.clear();
    ownStore().failingReads["comment"] = zxtest::kOwnFailure;
    EXPECT_CODE(zxtest::kOwnFailure, read(c, &attr));
    EXPECT_EQ(Lines{"get comment"}, ownStore().calls);
    ownStore().failingReads = {{"displayName", zxtest::kOwnFailure}};
    EXPECT_CODE(zxtest::kOwnFailure, read(c, &attr));
}

// ---- actions ----------------------------------------------------------------------------------------------------

TEST_F(OwnClassification, CreatingAnActionNumbersItMakesItsSettingAndWritesThreeValues) {
    EXPECT_GE(create("C"), 0);
    const Handle owner = open("C");
    ownStore().calls.clear();
    EXPECT_GE(createAction(owner, "a"), 0);
    EXPECT_EQ((Lines{"set order", "create setting", "set comment", "set displayName", "set actionType"}),
              callsFrom("set order"));
    ownStore().calls.clear();
    EXPECT_GE(createAction(owner, "a"), 0);
    EXPECT_EQ((Lines{"open a", "create setting", "set comment", "set displayName", "set actionType"}),
              callsFrom("open a"));
}

TEST_F(OwnClassification, AMissingSettingIsNotNoticedOnCreating) {
    ownStore().failingMakes["setting"] = zxtest::kOwnFailure;
    const Handle owner = withAction();
    EXPECT_EQ((Lines{"order", "comment", "displayName", "actionType"}), values("Classification\\C\\actions\\a"));
    EXPECT_TRUE(subkeys("Classification\\C\\actions\\a").empty());
}

TEST_F(OwnClassification, OnlyTheTypeDecidesTheResultOfWritingAnAction) {
    const Handle owner = withAction();
    const Handle action = openAction(owner, "a");
    for (const char* passedOver : {"comment", "displayName"}) {
        ownStore().failingWrites = {{passedOver, zxtest::kOwnFailure}};
        ownStore().calls.clear();
        EXPECT_CODE(zxtest::kOwnOk, writeAction(action)) << passedOver;
        EXPECT_EQ((Lines{"set comment", "set displayName", "set actionType"}), ownStore().calls);
        EXPECT_CODE(zxtest::kOwnOk, createAction(owner, "a")) << passedOver;
    }
    ownStore().failingWrites = {{"actionType", zxtest::kOwnFailure}};
    EXPECT_CODE(zxtest::kOwnFailure, writeAction(action));
    EXPECT_CODE(zxtest::kOwnFailure, createAction(owner, "a"));
    ownStore().failingWrites = {{"actionType", ZXPOL_E_NOT_SUPPORTED}};
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, writeAction(action));
}

TEST_F(OwnClassification, AnActionWhoseTypeCannotBeWrittenStaysInTheStore) {
    const Handle owner = withAction();
    ownStore().failingWrites["actionType"] = zxtest::kOwnFailure;
    uint32_t given = 0;
    EXPECT_CODE(zxtest::kOwnFailure, createAction(owner, "b", &given));
    EXPECT_EQ(2u, given) << "the position that it has in the store now";
    EXPECT_EQ((Lines{"a", "b"}), subkeys("Classification\\C\\actions"));
    EXPECT_EQ((Lines{"order", "comment", "displayName"}), values("Classification\\C\\actions\\b"));
    EXPECT_EQ(Lines{"setting"}, subkeys("Classification\\C\\actions\\b"));
    ownStore().failingWrites["actionType"] = ZXPOL_E_NOT_SUPPORTED;
    uint32_t order = 1;
    EXPECT_CODE(ZXPOL_S_OK, createAction(owner, "c", &order));
    EXPECT_EQ(1u, order);
}

TEST_F(OwnClassification, AnActionThatCannotBeNumberedIsNotOpened) {
    const Handle owner = withAction();
    ownStore().failingWrites["order"] = zxtest::kOwnFailure;
    EXPECT_CODE(zxtest::kOwnFailure, createAction(owner, "b"));
    EXPECT_CODE(zxtest::kOwnFailure, createAction(owner, "c", 1)) << "making room";
    EXPECT_EQ((Lines{"a", "b", "c"}), subkeys("Classification\\C\\actions"));
    EXPECT_TRUE(values("Classification\\C\\actions\\b").empty());
    int error = ZXPOL_S_OK;
    EXPECT_EQ(0u, zxpol_setActionOrder(owner.get(), "a", 1, &error));
    EXPECT_CODE(zxtest::kOwnFailure, error);
}

TEST_F(OwnClassification, AnActionIsReadFieldByField) {
    const Handle owner = withAction();
    const Handle action = openAction(owner, "a");
    _ZxPolActionAttr attr = {};
    ownStore().calls.clear();
    EXPECT_GE(readAction(action, &attr), 0);
    const Lines all = {"get comment", "get displayName", "open setting", "get order", "get actionType"};
    EXPECT_EQ(all, ownStore().calls);
    for (const char* passedOver : {"displayName", "order"}) {
        attr = {};
        attr.order = 77;
        ownStore().failingReads = {{passedOver, zxtest::kOwnFailure}};
        ownStore().calls.clear();
        EXPECT_GE(readAction(action, &attr), 0) << passedOver;
        EXPECT_EQ(all, ownStore().calls) << passedOver;
        EXPECT_NE(nullptr, attr.setting);
        EXPECT_EQ(7u, attr.actionType);
        EXPECT_EQ(passedOver == std::string("order") ? 77u : 1u, attr.order);
    }
    ownStore().failingReads = {{"actionType", zxtest::kOwnFailure}};
    ownStore().calls.clear();
    EXPECT_CODE(zxtest::kOwnFailure, readAction(action, &attr));
    EXPECT_EQ(all, ownStore().calls);
    attr = {};
    ownStore().failingReads = {{"comment", zxtest::kOwnFailure}};
    ownStore().calls.clear();
    EXPECT_CODE(zxtest::kOwnFailure, readAction(action, &attr));
    EXPECT_EQ(Lines{"get comment"}, ownStore().calls);
    EXPECT_EQ(nullptr, attr.setting);
}

TEST_F(OwnClassification, ASettingThatCannotBeOpenedIsNull) {
    const Handle owner = withAction();
    const Handle action = openAction(owner, "a");
    ownStore().failingOpens["setting"] = zxtest::kOwnFailure;
    for (const bool givesKey : {false, true}) {
        ownStore().givesKeysWithFailures = givesKey;
        _ZxPolActionAttr attr = {};
        EXPECT_GE(readAction(action, &attr), 0);
        EXPECT_EQ(nullptr, attr.setting);
        EXPECT_EQ(1u, attr.order);
        EXPECT_EQ(7u, attr.actionType);
    }
}

TEST_F(OwnClassification, EachSettingHandedOutIsAKeyToBeClosed) {
    const Handle owner = withAction();
    Handle action = openAction(owner, "a");
    const int before = ownStore().openKeys;
    _ZxPolActionAttr first = {}, second = {};
    int error = ZXPOL_S_OK;
    zxpol_getActionAttrib(action.get(), &first, &error);
    zxpol_getActionAttrib(action.get(), &second, &error);
    const Handle one(first.setting), two(second.setting);
    ASSERT_TRUE(one != nullptr && two != nullptr && one != two);
    EXPECT_EQ(before + 2, ownStore().openKeys);
    action.reset();
    EXPECT_EQ(before + 1, ownStore().openKeys) << "an action owns one key";
}

TEST_F(OwnClassification, EachObjectOwnsOneKey) {
    const Handle owner = withAction();
    EXPECT_EQ(3, ownStore().openKeys) << "the store's, the hive's, the classification's";
    const Handle action = openAction(owner, "a");
    EXPECT_EQ(4, ownStore().openKeys);
    closeHive();
    EXPECT_EQ(3, ownStore().openKeys);
}

}  // namespace
