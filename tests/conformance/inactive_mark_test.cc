// The marks by which a rule switches tasks off for itself.
#include "support/policy_fixture.h"

namespace {

using zxtest::Handle;
using zxtest::RawKey;
using Lines = std::vector<std::string>;

class InactiveMarks : public zxtest::PolicyTest {
protected:
    // Sets or removes a mark of the rule; returns the code.
    int mark(const std::string& path, const char* taskFullName, int activate) {
        int error = ZXPOL_S_OK;
        zxpol_inactivateTask(rule(path).get(), taskFullName, activate, &error);
        return error;
    }
    // The answer and the code: "1 0x01020000".
    std::string active(const std::string& path, const char* taskFullName) {
        int error = ZXPOL_S_OK;
        const int answer = zxpol_isTaskActive(rule(path).get(), taskFullName, &error);
        return std::to_string(answer) + " " + zxtest::codeText(error);
    }
    RawKey marksKey(const std::string& path = "\\") { return raw(keyOf(path) + "\\inactive"); }
    // All marks of the rule, in the store's order, "name=text".
    std::string marks(const std::string& path = "\\") {
        const RawKey key = marksKey(path);
        Lines found;
        for (const std::string& name : key.valueNames())
            found.push_back(name + "=" + key.text(name).value_or("?"));
        return zxtest::joined(found);
    }
    const std::string yes = "1 0x01020000", no = "0 0x01020000";
};
ZXTEST_ON_BOTH_ENGINES(InactiveMarks);

TEST_P(InactiveMarks, MarkingTwiceWritesOneMark) {
    EXPECT_EQ(yes, active("\\", "\\A\\t"));
    EXPECT_CODE(ZXPOL_S_OK, mark("\\", "\\A\\t", 0));
    EXPECT_CODE(ZXPOL_S_OK, mark("\\", "\\A\\t", 0));
    EXPECT_EQ("inactive1=\\A\\t", marks());
    EXPECT_EQ(no, active("\\", "\\A\\t"));
}

TEST_P(InactiveMarks, AnyNumberButOneMarks) {
    EXPECT_CODE(ZXPOL_S_OK, mark("\\", "\\a", 2));
    EXPECT_CODE(ZXPOL_S_OK, mark("\\", "\\b", -1));
    EXPECT_EQ("inactive1=\\a inactive2=\\b", marks());
}

TEST_P(InactiveMarks, ReactivatingWithoutAMarkWritesNothing) {
    EXPECT_CODE(ZXPOL_S_OK, mark("\\", "\\t", 1));
    EXPECT_EQ("", marks());
}

TEST_P(InactiveMarks, ReactivatingClosesTheGap) {
    for (const char* name : {"\\a", "\\b", "\\c"})
        mark("\\", name, 0);
    EXPECT_CODE(ZXPOL_S_OK, mark("\\", "\\A", 1));
    EXPECT_EQ("inactive1=\\b inactive2=\\c", marks());
    EXPECT_EQ(yes, active("\\", "\\a"));
}

TEST_P(InactiveMarks, LetterCaseDoesNotCount) {
    marksKey().setText("inactive1", "\\a\\T");
    EXPECT_EQ(no, active("\\", "\\A\\t"));
    EXPECT_CODE(ZXPOL_S_OK, mark("\\", "\\A\\T", 1));
    EXPECT_EQ("", marks());
    marksKey().setText("inactive1", "\\A\\t");
    EXPECT_EQ(no, active("\\", "\\A\\t"));
}

TEST_P(InactiveMarks, OneTrailingBackslashDoesNotCount) {
    marksKey().setText("inactive1", "\\A\\t\\");
    marksKey().setText("inactive2", "\\A\\u");
    EXPECT_EQ(no, active("\\", "\\A\\t"));
    EXPECT_EQ(no, active("\\", "\\A\\t\\"));
    EXPECT_EQ(no, active("\\", "\\A\\u\\"));
    EXPECT_EQ(no, active("\\", "\\A\\u"));
    EXPECT_EQ(yes, active("\\", "\\A\\u\\\\"));
    EXPECT_EQ(yes, active("\\", "\\A"));
}

TEST_P(InactiveMarks, NamesHaveAtMost255Characters) {
    const std::string longest = "\\" + std::string(254, 't');
    EXPECT_EQ("0 0x81020008", active("\\", (longest + "t").c_str()));
    EXPECT_EQ("0 0x81020008", active("\\", ""));
    EXPECT_EQ("0 0x81020008", active("\\", nullptr));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, mark("\\", (longest + "t").c_str(), 0));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, mark("\\", "", 0));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, mark("\\", nullptr, 1));
    EXPECT_EQ("", marks());
    EXPECT_CODE(ZXPOL_S_OK, mark("\\", longest.c_str(), 0));
    EXPECT_EQ(no, active("\\", longest.c_str()));
}

TEST_P(InactiveMarks, AMarkOf255CharactersIsComparedInFull) {
    const std::string stored = "\\" + std::string(253, 't') + "u";
    marksKey().setText("inactive1", stored);
    EXPECT_EQ(no, active("\\", stored.c_str()));
    // With the backslash that the asked name ends with, the mark would have 256 characters.
    EXPECT_EQ(yes, active("\\", ("\\" + std::string(253, 't') + "\\").c_str()));
    const std::string asked = "\\" + std::string(252, 't') + "u\\";
    marksKey().setText("inactive1", asked.substr(0, 254));
    EXPECT_EQ(no, active("\\", asked.c_str()));
}

TEST_P(InactiveMarks, AMarkThatCannotBeReadIsReportedAndAnsweredWithActive) {
    marksKey().setText("inactive1", std::string(300, 'x'));
    marksKey().setText("inactive2", "\\t");
    int error = ZXPOL_S_OK;
    EXPECT_EQ(1, zxpol_isTaskActive(rule().get(), "\\t", &error));
    EXPECT_LT(error, 0);
    EXPECT_EQ(6u, zxtest::reasonOf(error));
    EXPECT_EQ(6u, zxtest::reasonOf(mark("\\", "\\t", 1)));
    EXPECT_TRUE(marksKey().bytes("inactive2"));
}

TEST_P(InactiveMarks, WithoutTheKeyTheFailureIsReportedAndTheAnswerIsActive) {
    rawRule().removeKey("inactive");
    EXPECT_EQ("1 0x81021804", active("\\", "\\t"));
    EXPECT_CODE(ZXREG_E_NOT_FOUND, mark("\\", "\\t", 0));
    EXPECT_FALSE(rawRule().hasKey("inactive"));
}

TEST_P(InactiveMarks, DeletingATaskRemovesItsMarksFromItsRuleAndAllBelow) {
    addRule("\\", "A");
    addRule("\\A", "B");
    addRule("\\A\\B", "C");
    addTask("\\A", "t");
    for (const char* path : {"\\", "\\A", "\\A\\B", "\\A\\B\\C"}) {
        mark(path, "\\A\\other", 0);
        mark(path, "\\a\\T", 0);
        mark(path, "\\t", 0);
    }
    int error = ZXPOL_S_OK;
    zxpol_deleteTask(rule("\\A").get(), "t", &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    for (const char* path : {"\\A", "\\A\\B", "\\A\\B\\C"})
        EXPECT_EQ("inactive1=\\A\\other inactive2=\\t", marks(path)) << path;
    EXPECT_EQ("inactive1=\\A\\other inactive2=\\a\\T inactive3=\\t", marks("\\"));
}

TEST_P(InactiveMarks, ATaskOfTheRootIsNamedByOneBackslash) {
    addTask("\\", "t");
    addRule("\\", "A");
    mark("\\A", "\\t", 0);
    mark("\\A", "\\\\t", 0);
    int error = ZXPOL_S_OK;
    zxpol_deleteTask(rule().get(), "t", &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ("inactive1=\\\\t", marks("\\A"));
}

TEST_P(InactiveMarks, ATaskIsGoneEvenWhereItsMarksCannotBeCleared) {
    addTask("\\", "t");
    rawRule().removeKey("inactive");
    int error = ZXPOL_S_OK;
    zxpol_deleteTask(rule().get(), "t", &error);
    EXPECT_CODE(ZXREG_E_NOT_FOUND, error);
    EXPECT_FALSE(raw("Rule\\Mail\\tasks").hasKey("t"));
}

}  // namespace
