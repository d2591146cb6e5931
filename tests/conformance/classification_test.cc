// The classification hive, classifications and their attributes.
#include "support/policy_fixture.h"

namespace {

using zxtest::Handle;
using zxtest::RawKey;
using Lines = std::vector<std::string>;

class Classifications : public zxtest::PolicyTest {
protected:
    void SetUp() override {
        PolicyTest::SetUp();
        if (!HasFatalFailure()) openHive();
    }
    void TearDown() override {
        _hive.reset();
        PolicyTest::TearDown();
    }
    void openHive() {
        int error = ZXPOL_S_OK;
        _hive.reset(zxpol_openClassificationHive(store(), &error));
        ASSERT_GE(error, 0) << zxtest::codeText(error);
    }
    _ZxPolComHandle* hive() const { return _hive.get(); }
    void closeHive() { _hive.reset(); }

    static _ZxPolCommAttrib attributes(const std::string& displayName, const std::string& comment) {
        _ZxPolCommAttrib attr = {};
        zxtest::setField(attr.displayName, displayName);
        zxtest::setField(attr.comment, comment);
        return attr;
    }
    int create(const char* name, const _ZxPolCommAttrib* attr) const {
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createClassification(hive(), name, attr, &error));
        EXPECT_EQ(error >= 0, made != nullptr);
        return error;
    }
    void add(const char* name) const {
        const _ZxPolCommAttrib attr = attributes(name, "");
        EXPECT_CODE(ZXPOL_S_OK, create(name, &attr));
    }
    Handle open(const char* name) const {
        int error = ZXPOL_S_OK;
        Handle found(zxpol_openClassification(hive(), name, &error));
        EXPECT_TRUE(found != nullptr) << name << ": " << zxtest::codeText(error);
        return found;
    }
    static void addAction(const Handle& owner, const char* name) {
        _ZxPolActionAttr attr = {};
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createAction(owner.get(), name, &attr, &error));
        EXPECT_CODE(ZXPOL_S_OK, error);
    }
    int remove(const char* name) const {
        int error = ZXPOL_S_OK;
        zxpol_deleteClassification(hive(), name, &error);
        return error;
    }
    static int read(const Handle& target, _ZxPolCommAttrib* attr) {
        int error = ZXPOL_S_OK;
        zxpol_getClassificationAttrib(target.get(), attr, &error);
        return error;
    }
    static int write(const Handle& target, const _ZxPolCommAttrib* attr) {
        int error = ZXPOL_S_OK;
        zxpol_setClassificationAttrib(target.get(), attr, &error);
        return error;
    }
    std::string enumerated() const { return names(zxpol_enumClassification, hive()); }
    RawKey key(const std::string& path = "") const {
        return raw(path.empty() ? "Classification" : "Classification\\" + path);
    }

private:
    Handle _hive;
};
ZXTEST_ON_BOTH_ENGINES(Classifications);

// ---- the hive -------------------------------------------------------------------------------------------------

class ClassificationHive : public zxtest::StoreTest {};
ZXTEST_ON_BOTH_ENGINES(ClassificationHive);

TEST_P(ClassificationHive, OpeningMakesItsKeyAndStampsTheVersion) {
    int error = ZXPOL_S_OK;
    const Handle hive(zxpol_openClassificationHive(store(), &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    ASSERT_NE(nullptr, hive);
    EXPECT_EQ(ZXPOL_HANDLE_CLASS_HIVE, hive->kind);
    EXPECT_EQ(Lines{"Classification"}, raw().subkeys());
    EXPECT_EQ(0x01000000u, raw().number("version"));
    EXPECT_TRUE(raw("Classification").subkeys().empty());
    EXPECT_TRUE(raw("Classification").valueNames().empty());
}

TEST_P(ClassificationHive, OfALaterPolicyIsNotOpenedNorMade) {
    raw().setNumber("version", 0x02000000);
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openClassificationHive(store(), &error));
    EXPECT_CODE(ZXPOL_E_VERSION, error);
    EXPECT_TRUE(raw().subkeys().empty());
    raw().setNumber("version", 0x01ffffff);
    error = ZXPOL_S_OK;
    EXPECT_NE(nullptr, Handle(zxpol_openClassificationHive(store(), &error)));
}

TEST_P(ClassificationHive, IsOpenedBelowAKeyOfTheStoreOnly) {
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openClassificationHive(nullptr, &error));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    const Handle hive(zxpol_openClassificationHive(store(), &error));
    EXPECT_EQ(nullptr, zxpol_openClassificationHive(hive.get(), &error));
    EXPECT_CODE(ZXPOL_E_WRONG_HANDLE, error);
    EXPECT_EQ(nullptr, zxpol_openClassificationHive(store(), nullptr));
}

TEST_P(Classifications, ARuleHiveIsNoClassificationHive) {
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openClassification(ruleHive(), "C", &error));
    EXPECT_CODE(ZXPOL_E_WRONG_HANDLE, error);
}

// ---- creating -------------------------------------------------------------------------------------------------

TEST_P(Classifications, ANewOneHasItsTextsAndAKeyForItsActions) {
    const _ZxPolCommAttrib attr = attributes("shown", "words");
    int error = ZXPOL_S_OK;
    const Handle made(zxpol_createClassification(hive(), "C", &attr, &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    ASSERT_NE(nullptr, made);
    EXPECT_EQ(ZXPOL_HANDLE_CLASSIFICATION, made->kind);
    EXPECT_EQ("shown", key("C").text("displayName"));
    EXPECT_EQ("words", key("C").text("comment"));
    EXPECT_EQ((Lines{"comment", "displayName"}), key("C").valueNames()) << "the comment is written first, no position";
    EXPECT_EQ(Lines{"actions"}, key("C").subkeys());
    EXPECT_TRUE(key("C\\actions").subkeys().empty());
}

TEST_P(Classifications, CreatingAnExistingOneOverwritesItsTextsAndKeepsItsActions) {
    add("C");
    add("D");
    addAction(open("C"), "a");
    const _ZxPolCommAttrib attr = attributes("changed", "new words");
    EXPECT_CODE(ZXPOL_S_OK, create("C", &attr));
    EXPECT_EQ("changed", key("C").text("displayName"));
    EXPECT_EQ("new words", key("C").text("comment"));
    EXPECT_EQ("D", key("D").text("displayName"));
    EXPECT_EQ("C D", enumerated());
    EXPECT_EQ("a", names(zxpol_enumAction, open("C").get()));
}

TEST_P(Classifications, CreatingAnExistingOneMakesAMissingKeyOfActions) {
    add("C");
    key("C").removeKey("actions");
    add("C");
    EXPECT_TRUE(key("C").hasKey("actions"));
}

TEST_P(Classifications, WithoutARecordOnlyTheKeyIsMade) {
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, create("C", nullptr));
    EXPECT_TRUE(key("C").valueNames().empty());
    EXPECT_EQ(Lines{"actions"}, key("C").subkeys());
    add("D");
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, create("D", nullptr));
    EXPECT_EQ("D", key("D").text("displayName"));
    EXPECT_EQ("C D", enumerated());
}

TEST_P(Classifications, WithoutANameNothingIsMade) {
    const _ZxPolCommAttrib attr = attributes("x", "");
    for (const char* name : {static_cast<const char*>(nullptr), ""}) {
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, create(name, &attr));
        int error = ZXPOL_S_OK;
        EXPECT_EQ(nullptr, zxpol_openClassification(hive(), name, &error));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, remove(name));
    }
    EXPECT_TRUE(key().subkeys().empty());
    EXPECT_TRUE(key().valueNames().empty());
}

TEST_P(Classifications, ATextWithoutItsNulIsNotWritten) {
    add("C");
    for (const bool isComment : {true, false}) {
        _ZxPolCommAttrib attr = attributes("changed", "changed");
        if (isComment)
            std::memset(attr.comment, 'c', sizeof attr.comment);
        else
            std::memset(attr.displayName, 'd', sizeof attr.displayName);
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, write(open("C"), &attr));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, create("C", &attr));
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, create("New", &attr));
        EXPECT_EQ("C", key("C").text("displayName"));
        EXPECT_EQ("", key("C").text("comment"));
    }
    if (key().hasKey("New")) {
        EXPECT_TRUE(key("New").valueNames().empty());
    }
}

// ---- opening and deleting ---------------------------------------------------------------------------------------

TEST_P(Classifications, OpeningAMissingOneIsTheStoresFailure) {
    int error = ZXPOL_S_OK;
    EXPECT_EQ(nullptr, zxpol_openClassification(hive(), "C", &error));
    EXPECT_CODE(ZXREG_E_NOT_FOUND, error);
    EXPECT_TRUE(key().subkeys().empty());
}

TEST_P(Classifications, EachOpeningIsAHandleOfItsOwn) {
    add("C");
    const Handle first = open("C");
    Handle second = open("C");
    EXPECT_NE(first.get(), second.get());
    EXPECT_NE(first->object, second->object);
    const _ZxPolCommAttrib changed = attributes("changed", "words");
    EXPECT_CODE(ZXPOL_S_OK, write(second, &changed));
    second.reset();
    _ZxPolCommAttrib attr = {};
    EXPECT_CODE(ZXPOL_S_OK, read(first, &attr));
    EXPECT_STREQ("changed", attr.displayName);
}

TEST_P(Classifications, OutliveTheHiveThatOpenedThem) {
    add("C");
    const Handle c = open("C");
    closeHive();
    _ZxPolCommAttrib attr = {};
    EXPECT_CODE(ZXPOL_S_OK, read(c, &attr));
    addAction(c, "a");
    EXPECT_EQ("a", names(zxpol_enumAction, c.get()));
}

TEST_P(Classifications, DeletingRemovesTheActionsAndTheirSettings) {
    add("C");
    add("D");
    addAction(open("C"), "a");
    key("C\\actions\\a\\setting").setText("folder", "/var");
    key("C\\actions\\a\\setting").makeKey("deeper").makeKey("still");
    EXPECT_CODE(ZXPOL_S_OK, remove("C"));
    EXPECT_FALSE(key().hasKey("C"));
    EXPECT_EQ("D", enumerated());
    EXPECT_EQ((Lines{"comment", "displayName"}), key("D").valueNames()) << "nothing is numbered";
}

TEST_P(Classifications, DeletingAMissingOneIsTheStoresFailure) {
    add("C");
    EXPECT_CODE(ZXREG_E_NOT_FOUND, remove("D"));
    EXPECT_EQ("C", enumerated());
    EXPECT_CODE(ZXPOL_S_OK, remove("C"));
    EXPECT_CODE(ZXREG_E_NOT_FOUND, remove("C"));
}

// ---- enumerating ------------------------------------------------------------------------------------------------

TEST_P(Classifications, AreEnumeratedInTheOrderOfTheStore) {
    for (const char* name : {"c", "a", "b"})
        add(name);
    EXPECT_EQ("c a b", enumerated());
    EXPECT_EQ((Lines{"c", "a", "b"}), key().subkeys());
    EXPECT_CODE(ZXPOL_S_OK, remove("a"));
    add("a");
    EXPECT_EQ("c b a", enumerated());
}

TEST_P(Classifications, AnyIndexReadsTheStore) {
    add("a");
    add("b");
    char name[8] = "";
    uint32_t size = sizeof name;
    int error = ZXPOL_S_OK;
    zxpol_enumClassification(hive(), 1, name, &size, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("b", name);
    add("c");
    size = sizeof name;
    zxpol_enumClassification(hive(), 2, name, &size, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("c", name);
    EXPECT_EQ(1u, size) << "as the store counts";
    zxpol_enumClassification(hive(), 3, name, &size, &error);
    EXPECT_CODE(ZXREG_E_NO_MORE_ITEMS, error);
}

TEST_P(Classifications, AHiveWithoutAnyEndsAtOnce) {
    char name[8];
    uint32_t size = sizeof name;
    int error = ZXPOL_S_OK;
    zxpol_enumClassification(hive(), 0, name, &size, &error);
    EXPECT_CODE(ZXREG_E_NO_MORE_ITEMS, error);
}

// ---- attributes -------------------------------------------------------------------------------------------------

TEST_P(Classifications, TextsAreReadBackAsWritten) {
    add("C");
    const Handle c = open("C");
    for (const auto& [name, words] : {std::pair<std::string, std::string>{"", ""},
                                      {"shown", "words"},
                                      {std::string(255, 'n'), std::string(511, 'c')},
                                      {"\xc3\xa4 %s", "two\nlines"}}) {
        const _ZxPolCommAttrib attr = attributes(name, words);
        EXPECT_CODE(ZXPOL_S_OK, write(c, &attr));
        _ZxPolCommAttrib found;
        std::memset(&found, 'x', sizeof found);
        EXPECT_CODE(ZXPOL_S_OK, read(c, &found));
        EXPECT_EQ(name, found.displayName);
        EXPECT_EQ(words, found.comment);
        EXPECT_EQ(name, key("C").text("displayName"));
        EXPECT_EQ(words, key("C").text("comment"));
    }
}

TEST_P(Classifications, WithoutACommentTheDisplayNameIsNotRead) {
    key().makeKey("C").setText("displayName", "shown");
    const Handle c = open("C");
    _ZxPolCommAttrib attr = attributes("kept", "");
    EXPECT_CODE(ZXREG_E_NOT_FOUND, read(c, &attr));
    EXPECT_STREQ("kept", attr.displayName);
    key("C").setText("comment", "words");
    EXPECT_CODE(ZXPOL_S_OK, read(c, &attr));
    EXPECT_STREQ("shown", attr.displayName);
    EXPECT_STREQ("words", attr.comment);
}

TEST_P(Classifications, OneWithoutACommentCanBeReadAgainOnceItIsWritten) {
    add("C");
    key("C").removeValue("comment");
    const Handle c = open("C");
    _ZxPolCommAttrib attr = {};
    EXPECT_CODE(ZXREG_E_NOT_FOUND, read(c, &attr));
    const _ZxPolCommAttrib again = attributes("again", "");
    EXPECT_CODE(ZXPOL_S_OK, write(c, &again));
    EXPECT_CODE(ZXPOL_S_OK, read(c, &attr));
    EXPECT_STREQ("again", attr.displayName);
}

TEST_P(Classifications, WithoutADisplayNameTheCommentIsReadAndTheFailureReported) {
    add("C");
    key("C").removeValue("displayName");
    key("C").setText("comment", "words");
    _ZxPolCommAttrib attr = {};
    EXPECT_CODE(ZXREG_E_NOT_FOUND, read(open("C"), &attr));
    EXPECT_STREQ("words", attr.comment);
}

TEST_P(Classifications, WithoutARecordNothingIsReadOrWritten) {
    add("C");
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, read(open("C"), nullptr));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, write(open("C"), nullptr));
    EXPECT_EQ("C", key("C").text("displayName"));
    EXPECT_EQ("", key("C").text("comment"));
}

TEST_P(Classifications, WritingTheTextsLeavesTheActions) {
    add("C");
    const Handle c = open("C");
    addAction(c, "a");
    const _ZxPolCommAttrib attr = attributes("changed", "");
    EXPECT_CODE(ZXPOL_S_OK, write(c, &attr));
    EXPECT_EQ("a", names(zxpol_enumAction, c.get()));
    EXPECT_EQ((Lines{"comment", "displayName"}), key("C").valueNames());
}

}  // namespace
