// Which rule refers to an address list or a classification.
#include <algorithm>

#include "support/policy_fixture.h"

namespace {

using zxtest::codeText;
using zxtest::Handle;
using zxtest::RawKey;
using Lines = std::vector<std::string>;

class References : public zxtest::PolicyTest {
protected:
    static constexpr char kCanary = 0x5a;

    // The path of the first rule that refers to the entity: "none", or the failure. What must stay untouched is looked
    // at.
    std::string first(ZxPolRefEntity entity, const std::string& name, uint32_t capacity = 2000) const {
        std::string path(capacity + 1, kCanary);
        uint32_t size = capacity;
        int error = ZXPOL_S_OK;
        const int answer = zxpol_checkReferInRule(store(), entity, name.c_str(), path.data(), &size, &error);
        EXPECT_EQ(kCanary, path[capacity]);
        EXPECT_TRUE((answer != 0 && error >= 0) || path == std::string(capacity + 1, kCanary)) << path;
        EXPECT_TRUE(answer != 0 || size == capacity) << size;
        if (error < 0) return codeText(error) + " " + std::to_string(answer) + " " + std::to_string(size);
        EXPECT_CODE(ZXPOL_S_OK, error);
        if (answer == 0) return "none";
        EXPECT_EQ(1, answer);
        const std::string found = path.c_str();
        EXPECT_EQ(found.size() + 1, size);
        EXPECT_EQ(kCanary, path[size]) << "more was written than the path";
        return found;
    }
    std::string list(const std::string& name) const { return first(ZXPOL_REF_ADDRLIST, name); }
    std::string classification(const std::string& name) const { return first(ZXPOL_REF_CLASSIFICATION, name); }

    // Adds a task with outcomes; the value of each is its text.
    void addTask(const std::string& path, const std::string& name,
                 const std::vector<std::pair<std::string, std::string>>& outcomes) const {
        PolicyTest::addTask(path, name);
        int error = ZXPOL_S_OK;
        const Handle task(zxpol_openTask(rule(path).get(), name.c_str(), &error));
        for (const auto& [outcome, text] : outcomes)
            zxpol_addOutcome(task.get(), outcome.c_str(), text.c_str(), &error);
        EXPECT_CODE(ZXPOL_S_OK, error);
    }
    RawKey outcomes(const std::string& path, const std::string& task) const {
        return RawKey(rawRule(path).handle(), "tasks\\" + task + "\\Classification");
    }
    // Stores a condition that the interface may refuse.
    void setCondition(const std::string& path, const std::string& text, const char* value = "condition1") const {
        rawRule(path).setText(value, text);
    }
};
ZXTEST_ON_BOTH_ENGINES(References);

// ---- address lists --------------------------------------------------------------------------------------------

TEST_P(References, WithoutOneTheAnswerIsNoAndNothingIsTouched) {
    addRule("\\", "A", "*@a.example");
    EXPECT_EQ("none", list("list1"));
    EXPECT_EQ("none", classification("list1"));
}

TEST_P(References, ASideInParenthesesNamesAListWhateverItsLetterCase) {
    addRule("\\", "A", "(list1)", "(Second)");
    for (const char* name : {"list1", "LIST1", "Second", "sECOND"})
        EXPECT_EQ("\\A", list(name)) << name;
    for (const char* name : {"list", "list11", "ist1", "(list1)", "(list1", "list1)", "*", ""})
        EXPECT_EQ("none", list(name)) << name;
}

TEST_P(References, OnlyAsciiLettersAreOfNoCase) {
    addRule("\\", "A", "(B\xc3\x84)");
    EXPECT_EQ("\\A", list("b\xc3\x84"));
    EXPECT_EQ("none", list("b\xc3\xa4"));
}

TEST_P(References, TheLastCharacterOfASideIsNotLookedAt) {
    for (const char* side : {"(list1]", "(list1x", "(list1("}) {
        setCondition("\\", std::string(side) + ",*");
        EXPECT_EQ("\\", list("list1")) << side;
        setCondition("\\", std::string("*,") + side);
        EXPECT_EQ("\\", list("list1")) << side;
    }
    setCondition("\\", "(list1,*");
    EXPECT_EQ("none", list("list1"));
    EXPECT_EQ("\\", list("list"));
}

TEST_P(References, SidesThatAreShortOrDoNotBeginWithAParenthesisNameNone) {
    for (const char* side : {"()", "(", ")", "", "list1)", "list1", "[list1)", " (list1)", "((list1))"}) {
        setCondition("\\", std::string(side) + ",*");
        EXPECT_EQ("none", list("list1")) << side;
        EXPECT_EQ("none", list("")) << side;
    }
    setCondition("\\", "(a),*");
    EXPECT_EQ("\\", list("a"));
}

TEST_P(References, ListNamesMayHoldParentheses) {
    addRule("\\", "A", "((in))", "(a)b)");
    EXPECT_EQ("\\A", list("(in)"));
    EXPECT_EQ("\\A", list("a)b"));
    EXPECT_EQ("none", list("in"));
    addRule("\\", "B", "(()");
    EXPECT_EQ("\\B", list("("));
}

TEST_P(References, ListNamesOfEveryLength) {
    for (const size_t length : {1u, 2u, 255u, 256u, 509u}) {
        const std::string name(length, 'n');
        addRule("\\", "A", "(" + name + ")");
        EXPECT_EQ("\\A", list(name)) << length;
        EXPECT_EQ("\\A", list(std::string(length, 'N'))) << length;
        EXPECT_EQ("none", list(name + "n")) << length;
        EXPECT_EQ("none", list(name.substr(1))) << length;
        int error = ZXPOL_S_OK;
        zxpol_deleteRule(rule().get(), "A", &error);
    }
    EXPECT_EQ("none", list(std::string(100000, 'n')));
}

TEST_P(References, AllConditionsOfARuleAreLookedAt) {
    addRule("\\", "A", "*@a.example");
    EXPECT_CODE(ZXPOL_S_OK, addCondition("\\A", "b@b.example", "*"));
    EXPECT_CODE(ZXPOL_S_OK, addCondition("\\A", "*", "(last)"));
    EXPECT_EQ("\\A", list("last"));
}

TEST_P(References, ARuleOfAnotherMatchTypeNamesNoList) {
    addRule("\\", "A", "(list1)");
    addTask("\\A", "t", {{"o", "class1"}});
    rawRule("\\A").setNumber("matchType", 1);
    EXPECT_EQ("none", list("list1"));
    EXPECT_EQ("\\A", classification("class1"));
    addRule("\\", "B", "(list1)");
    EXPECT_EQ("\\B", list("list1"));
}

TEST_P(References, ATextThatIsNoPairIsPassedOver) {
    addRule("\\", "A");
    setCondition("\\A", "(list1)");
    EXPECT_EQ("none", list("list1"));
    setCondition("\\A", "*,(list1)", "condition2");
    EXPECT_EQ("\\A", list("list1"));
}

TEST_P(References, ConditionsThatCannotBeReadCountAsNone) {
    addRule("\\", "A", "(list1)");
    addRule("\\", "B", "(list1)");
    rawRule("\\A").setNumber("condition2", 7);
    EXPECT_EQ("\\B", list("list1"));
    rawRule("\\A").removeValue("condition2");
    rawRule("\\A").removeValue("matchType");
    EXPECT_EQ("\\B", list("list1"));
    rawRule("\\B").setText("matchType", "none");
    EXPECT_EQ("none", list("list1"));
}

// ---- classifications --------------------------------------------------------------------------------------------

TEST_P(References, TheTextOfAnOutcomeNamesAClassificationWhateverItsLetterCase) {
    addRule("\\", "A");
    addTask("\\A", "t", {{"infected", "Virus"}});
    for (const char* name : {"Virus", "VIRUS", "virus"})
        EXPECT_EQ("\\A", classification(name)) << name;
    for (const char* name : {"Viru", "Viruses", "(Virus)", "", "t"})
        EXPECT_EQ("none", classification(name)) << name;
}

TEST_P(References, TheNameOfAnOutcomeNamesNoClassification) {
    addTask("\\", "t", {{"infected", "Virus"}});
    EXPECT_EQ("none", classification("infected"));
}

TEST_P(References, AllOutcomesOfAllTasksAreLookedAt) {
    addTask("\\", "none", {});
    addTask("\\", "s", {{"a", "1"}, {"b", "2"}, {"c", "3"}});
    addTask("\\", "t", {{"a", "4"}, {"b", "5"}});
    for (const char* name : {"1", "2", "3", "4", "5"})
        EXPECT_EQ("\\", classification(name)) << name;
}

TEST_P(References, TasksThatAreOffOrInactiveRefer) {
    addRule("\\", "A");
    PolicyTest::addTask("\\A", "t", {26, 0, 0, 0});
    outcomes("\\A", "t").setText("o", "Virus");
    inactivate("\\A", "\\A\\t");
    EXPECT_EQ("\\A", classification("Virus"));
}

TEST_P(References, TheKindsAreNotMixed) {
    addRule("\\", "A", "(Both)");
    addRule("\\", "B");
    addTask("\\B", "t", {{"o", "Both"}, {"p", "(Only)"}});
    EXPECT_EQ("\\A", list("Both"));
    EXPECT_EQ("\\B", classification("Both"));
    EXPECT_EQ("none", list("Only"));
    EXPECT_EQ("\\B", classification("(Only)"));
}

TEST_P(References, ClassificationNamesOfEveryLength) {
    PolicyTest::addTask("\\", "t");
    for (const size_t length : {1u, 254u, 255u}) {
        const std::string name(length, 'n');
        outcomes("\\", "t").setText("o", name);
        EXPECT_EQ("\\", classification(name)) << length;
        EXPECT_EQ("\\", classification(std::string(length, 'N'))) << length;
        EXPECT_EQ("none", classification(name + "n")) << length;
        EXPECT_EQ("none", classification(name.substr(1))) << length;
    }
    outcomes("\\", "t").setText("o", "");
    EXPECT_EQ("\\", classification(""));
}

// An outcome's text and name are read into 256 bytes: what is longer names nothing, and hides nothing behind it.
TEST_P(References, OutcomesThatCannotBeReadCountAsNone) {
    addRule("\\", "A");
    addRule("\\", "B");
    addTask("\\A", "s", {{"long", std::string(256, 'n')}});
    addTask("\\A", "t", {{"o", "Found"}});
    EXPECT_EQ("none", classification(std::string(256, 'n')));
    EXPECT_EQ("none", classification(std::string(255, 'n')));
    EXPECT_EQ("\\A", classification("Found")) << "the other tasks are looked at";
    addTask("\\B", "u", {{"before", "Before"}, {"long", std::string(5000, 'n')}});
    outcomes("\\B", "u").setText("later", "Behind");
    EXPECT_EQ("\\B", classification("Before"));
    EXPECT_EQ("\\B", classification("Behind"));
}

TEST_P(References, ATaskWithoutAPositionIsNotSeen) {
    addTask("\\", "t", {{"o", "Virus"}});
    RawKey(rawRule().handle(), "tasks\\t").removeValue("order");
    EXPECT_EQ("none", classification("Virus"));
}

// ---- the order of the search, and paths ---------------------------------------------------------------------------

TEST_P(References, DescendantsComeBeforeTheirRuleAndTheRootComesLast) {
    addRule("\\", "A", "(x)");
    addRule("\\A", "B", "(x)");
    addRule("\\A\\B", "C", "(x)");
    setCondition("\\", "(x),*");
    for (const char* path : {"\\A\\B\\C", "\\A\\B", "\\A", "\\"}) {
        EXPECT_EQ(path, list("x"));
        setCondition(path, "*,*");
    }
    EXPECT_EQ("none", list("x"));
}

TEST_P(References, TheFirstChildWithAllBelowComesBeforeTheSecond) {
    for (const char* name : {"A", "B"}) {
        addRule("\\", name, "(x)");
        addTask(std::string("\\") + name, "t", {{"o", "x"}});
    }
    addRule("\\B", "deep", "(x)");
    EXPECT_EQ("\\A", list("x"));
    EXPECT_EQ("\\A", classification("x"));
    int error = ZXPOL_S_OK;
    zxpol_setRuleOrder(rule().get(), "B", 1, &error);
    EXPECT_EQ("\\B\\deep", list("x")) << "positions count, not the order of creation";
    EXPECT_EQ("\\B", classification("x"));
}

TEST_P(References, ARuleWithoutAPositionIsNotSeenNorWhatIsBelow) {
    addRule("\\", "A", "(x)");
    addRule("\\A", "B", "(x)");
    rawRule("\\A").removeValue("order");
    EXPECT_EQ("none", list("x"));
}

TEST_P(References, AChildWithoutAKeyOfChildrenIsARefererLost) {
    // The children of a rule cannot be enumerated: the rule itself is not looked at, its siblings are.
    addRule("\\", "A", "(x)");
    addRule("\\", "B", "(x)");
    rawRule("\\A").removeKey("rules");
    EXPECT_EQ("\\B", list("x"));
}

TEST_P(References, PathsOfTheDeepestRulesAreWhole) {
    const std::string name(255, 'r');
    std::string path = "\\";
    for (int level = 0; level < 5; ++level) {
        addRule(path, name, level == 4 ? "(x)" : "*");
        path += (path == "\\" ? "" : "\\") + name;
    }
    EXPECT_EQ(path, list("x"));
    EXPECT_EQ(5u * 256u, path.size());
}

// ---- sizes ------------------------------------------------------------------------------------------------------

TEST_P(References, TheBufferMustBeLargerThanThePathWithItsNul) {
    addRule("\\", "ABCD", "(x)");
    EXPECT_EQ("\\ABCD", first(ZXPOL_REF_ADDRLIST, "x", 7));
    EXPECT_EQ("\\ABCD", first(ZXPOL_REF_ADDRLIST, "x", 8));
    const std::string tooSmall = codeText(ZXPOL_E_BUFFER_TOO_SMALL) + " 1 6";
    for (const uint32_t capacity : {0u, 1u, 5u, 6u})
        EXPECT_EQ(tooSmall, first(ZXPOL_REF_ADDRLIST, "x", capacity)) << capacity;
}

TEST_P(References, TheRootsPathNeedsThreeBytes) {
    addTask("\\", "t", {{"o", "x"}});
    EXPECT_EQ("\\", first(ZXPOL_REF_CLASSIFICATION, "x", 3));
    EXPECT_EQ(codeText(ZXPOL_E_BUFFER_TOO_SMALL) + " 1 2", first(ZXPOL_REF_CLASSIFICATION, "x", 2));
}

TEST_P(References, OtherEntitiesAreReferredToByNone) {
    addRule("\\", "A", "(x)");
    addTask("\\A", "t", {{"o", "x"}});
    for (const uint32_t entity : {2u, 256u, 0x7fffffffu, 0xffffffffu})
        EXPECT_EQ("none", first(static_cast<ZxPolRefEntity>(entity), "x")) << entity;
}

// ---- arguments and the store --------------------------------------------------------------------------------------

class ReferenceArguments : public zxtest::StoreTest {
protected:
    int check(_ZxPolComHandle* key, const char* name, char* path, uint32_t* size) {
        int error = ZXPOL_S_OK;
        EXPECT_EQ(0, zxpol_checkReferInRule(key, ZXPOL_REF_ADDRLIST, name, path, size, &error));
        return error;
    }
    char _path[16] = "untouched";
    uint32_t _size = sizeof _path;
};
ZXTEST_ON_BOTH_ENGINES(ReferenceArguments);

TEST_P(ReferenceArguments, MissingOnesAreRefused) {
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, check(store(), nullptr, _path, &_size));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, check(store(), "x", nullptr, &_size));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, check(store(), "x", _path, nullptr));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, check(nullptr, "x", _path, &_size));
    _ZxPolComHandle hive = {ZXPOL_HANDLE_RULE_HIVE, this};
    EXPECT_CODE(ZXPOL_E_WRONG_HANDLE, check(&hive, "x", _path, &_size));
    EXPECT_STREQ("untouched", _path);
    EXPECT_EQ(sizeof _path, _size);
}

TEST_P(ReferenceArguments, AnEarlierFailureOrNoResultStopsTheCall) {
    EXPECT_EQ(0, zxpol_checkReferInRule(store(), ZXPOL_REF_ADDRLIST, "x", _path, &_size, nullptr));
    int error = ZXPOL_E_PARSE;
    EXPECT_EQ(0, zxpol_checkReferInRule(store(), ZXPOL_REF_ADDRLIST, "x", _path, &_size, &error));
    EXPECT_CODE(ZXPOL_E_PARSE, error);
    EXPECT_TRUE(raw().subkeys().empty());
    EXPECT_TRUE(raw().valueNames().empty());
}

TEST_P(ReferenceArguments, APolicyOfALaterVersionIsNotSearched) {
    raw().setNumber("version", 0x02000000);
    EXPECT_CODE(ZXPOL_E_VERSION, check(store(), "x", _path, &_size));
    EXPECT_TRUE(raw().subkeys().empty());
    EXPECT_STREQ("untouched", _path);
}

TEST_P(ReferenceArguments, WithoutARootRuleItsFailureIsReported) {
    EXPECT_CODE(ZXREG_E_NOT_FOUND, check(store(), "x", _path, &_size));
    EXPECT_EQ(Lines{"Rule"}, raw().subkeys()) << "the hive's key is made, and no root rule";
    EXPECT_TRUE(raw("Rule").subkeys().empty());
    EXPECT_EQ(0x01000000u, raw().number("version"));
    EXPECT_STREQ("untouched", _path);
    EXPECT_EQ(sizeof _path, _size);
}

TEST_P(ReferenceArguments, ARootRuleWithoutAnythingRefersToNothing) {
    raw().makeKey("Rule").makeKey("Mail");
    int error = ZXPOL_S_OK;
    for (const ZxPolRefEntity entity : {ZXPOL_REF_ADDRLIST, ZXPOL_REF_CLASSIFICATION}) {
        EXPECT_EQ(0, zxpol_checkReferInRule(store(), entity, "x", _path, &_size, &error));
        EXPECT_CODE(ZXPOL_S_OK, error);
    }
}

}  // namespace
