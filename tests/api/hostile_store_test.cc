// A store whose content no library call would have written: positions, texts and numbers that make no sense. What
// can be read is served, what cannot is reported, and nothing overruns.
#include <algorithm>

#include "support/policy_fixture.h"

using namespace zxtest;

namespace {

class HostileOrder : public PolicyTest {
protected:
    void SetUp() override {
        PolicyTest::SetUp();
        if (HasFatalFailure()) return;
        for (const char* name : {"a", "b", "c", "d"})
            addRule("\\", name);
    }

    RawKey child(const std::string& name) const { return raw("Rule\\Mail\\rules\\" + name); }
    std::string children() const { return names(zxpol_enumRule, rule().get()); }
    std::string stored() const { return orders("Rule\\Mail\\rules"); }

    // How many children there are, with a position or without.
    size_t positions() const { return raw("Rule\\Mail\\rules").subkeys().size(); }

    int move(const char* name, uint32_t position) const {
        int error = ZXPOL_S_OK;
        zxpol_setRuleOrder(rule().get(), name, position, &error);
        return error;
    }
    int remove(const char* name) const {
        int error = ZXPOL_S_OK;
        zxpol_deleteRule(rule().get(), name, &error);
        return error;
    }
    int create(const char* name, uint32_t position) const {
        _ZxPolRuleAttr attr{};
        attr.order = position;
        const Conditions any{{"*", "*"}};
        int error = ZXPOL_S_OK;
        Handle(zxpol_createRule(rule().get(), name, &attr, any.list(), &error));
        return error;
    }

    // A child that has no position is not enumerated, cannot be moved, and can be deleted.
    void expectNoPosition() {
        EXPECT_EQ("a c d", children());
        EXPECT_CODE(ZXPOL_E_EXCEPTION, move("b", 1));
        EXPECT_CODE(ZXPOL_S_OK, create("e", 1));
        EXPECT_EQ("e a c d", children());
        EXPECT_CODE(ZXPOL_S_OK, remove("b"));
        EXPECT_EQ("e1 a2 c3 d4", stored());
    }
};

TEST_P(HostileOrder, Missing) {
    child("b").removeValue("order");
    expectNoPosition();
}

TEST_P(HostileOrder, NegativeWhenSigned) {
    for (const uint32_t order : {0xffffffffu, 0x80000000u}) {
        child("b").setNumber("order", order);
        EXPECT_EQ("a c d", children()) << order;
        EXPECT_CODE(ZXPOL_E_EXCEPTION, move("b", 1)) << order;
    }
    expectNoPosition();
}

TEST_P(HostileOrder, OfTheStringType) {
    child("b").setText("order", "2");
    expectNoPosition();
}

TEST_P(HostileOrder, OfFourCharactersOfTheStringType) {
    child("b").setText("order", "002");
    expectNoPosition();
}

TEST_P(HostileOrder, OfEightBytesOfAnotherType) {
    child("b").setBytes("order", ZXREG_MULTI_STRING, std::string("\2\0\0\0\0\0\0\0", 8));
    expectNoPosition();
}

TEST_P(HostileOrder, EmptyOfAnotherType) {
    child("b").setBytes("order", ZXREG_PROTECTED_STRING, "");
    EXPECT_EQ("a c d", children());
}

TEST_P(HostileOrder, DoubledKeepsTheStoresOrder) {
    child("c").setNumber("order", 2);
    EXPECT_EQ("a b c d", children());
    EXPECT_CODE(ZXPOL_S_OK, remove("d"));
    EXPECT_EQ("a1 b2 c3", stored());
}

TEST_P(HostileOrder, DoubledEverywhere) {
    for (const char* name : {"a", "b", "c", "d"})
        child(name).setNumber("order", 1);
    EXPECT_EQ("a b c d", children());
    EXPECT_CODE(ZXPOL_S_OK, create("e", 1));
    EXPECT_CODE(ZXPOL_S_OK, move("d", 1));
    EXPECT_CODE(ZXPOL_S_OK, move("a", 99));
    EXPECT_CODE(ZXPOL_S_OK, remove("b"));
    EXPECT_EQ(4u, positions());
    EXPECT_NE(std::string::npos, stored().find("1 "));
}

TEST_P(HostileOrder, Zero) {
    child("b").setNumber("order", 0);
    EXPECT_EQ("b a c d", children());
    EXPECT_CODE(ZXPOL_E_EXCEPTION, move("b", 1));
    // A sibling without a valid position stops the making of room; the child stays without one.
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, create("e", 1));
    EXPECT_EQ("b a c d", children());
    EXPECT_CODE(ZXPOL_S_OK, remove("e"));
    EXPECT_EQ("b1 a2 c3 d4", stored());
}

TEST_P(HostileOrder, LargestPositiveNumber) {
    child("b").setNumber("order", 0x7fffffff);
    EXPECT_EQ("a c d b", children());
    EXPECT_CODE(ZXPOL_S_OK, create("e", 2));
    EXPECT_CODE(ZXPOL_S_OK, move("b", 1));
    EXPECT_EQ(0u, children().find("b"));
    child("d").setNumber("order", 0x7fffffff);
    EXPECT_CODE(ZXPOL_S_OK, move("a", 0x7fffffff));
    EXPECT_CODE(ZXPOL_S_OK, remove("c"));
    EXPECT_EQ(4u, positions());
}

TEST_P(HostileOrder, MatchesSeeOnlyWhatHasAPosition) {
    child("a").removeValue("order");
    child("b").setNumber("order", 0xffffffffu);
    EXPECT_EQ(std::vector<std::string>{"\\c: r@x.example |"}, matched("s@x.example", {"r@x.example"}));
    EXPECT_EQ(std::vector<std::string>{"\\c: r@x.example |"}, matched("s@x.example", {"r@x.example"}, 1));
}

ZXTEST_ON_BOTH_ENGINES(HostileOrder);

// ---- texts and numbers ---------------------------------------------------------------------------------------

class HostileContent : public PolicyTest {
protected:
    void SetUp() override {
        PolicyTest::SetUp();
        if (HasFatalFailure()) return;
        addRule("\\", "A", "*@a.example");
        addTask("\\A", "t");
        addDirectoryList("Dir");
    }

    // Bytes of another type that are not the text that they should be.
    static constexpr uint32_t kOtherTypes[] = {ZXREG_PROTECTED_STRING, ZXREG_MULTI_STRING};

    RawKey rawTask() const { return raw("Rule\\Mail\\rules\\A\\tasks\\t"); }

    Handle task() const {
        int error = ZXPOL_S_OK;
        return Handle(zxpol_openTask(rule("\\A").get(), "t", &error));
    }
    Handle list(int* error) const { return Handle(zxpol_openAddrList(listHive(), "Dir", error)); }

    template <size_t N>
    static bool isTerminated(const char (&field)[N]) {
        return std::memchr(field, '\0', N) != nullptr;
    }

    // The first condition as it is read; "unchanged" when the record was left as it was; or the code.
    std::string condition(const std::string& path) const {
        _ZxPolAddrPairCond pair;
        std::memset(&pair, 'x', sizeof pair);
        uint32_t size = sizeof pair;
        int error = ZXPOL_S_OK;
        zxpol_enumCondition(rule(path).get(), 0, reinterpret_cast<unsigned char*>(&pair), &size, &error);
        if (ZX_FAILURE(error)) return codeText(error);
        if (!isTerminated(pair.sender) && !isTerminated(pair.receiver)) return "unchanged";
        EXPECT_TRUE(isTerminated(pair.sender) && isTerminated(pair.receiver));
        return std::string(pair.sender) + "|" + pair.receiver;
    }

    // Whichever way the store's content is broken, a mail from elsewhere gets the root rule, and a match ends.
    void expectMatchesStillEnd() const {
        for (const uint32_t mode : {0u, 1u}) {
            const MatchResult other = match("s@elsewhere.example", {"r@x.example"}, mode);
            EXPECT_CODE(ZXPOL_S_OK, other.code);
            EXPECT_EQ(std::vector<std::string>{"\\: r@x.example |"}, other.lines);
            match("s@a.example", {"r@x.example"}, mode);
        }
    }
};

TEST_P(HostileContent, RuleTextsWithoutNul) {
    for (const uint32_t type : kOtherTypes) {
        RawKey a = rawRule("\\A");
        a.setBytes("displayName", type, std::string(256, 'd'));
        a.setBytes("comment", type, std::string(512, 'c'));
        _ZxPolRuleAttr attr;
        std::memset(&attr, 'x', sizeof attr);
        int error = ZXPOL_S_OK;
        zxpol_getRuleAttrib(rule("\\A").get(), &attr, &error);
        EXPECT_CODE(ZXPOL_S_OK, error);
        EXPECT_EQ(std::string(255, 'd'), std::string(attr.displayName, strnlen(attr.displayName, 256)));
        EXPECT_EQ(std::string(511, 'c'), std::string(attr.comment, strnlen(attr.comment, 512)));
        EXPECT_EQ(1u, attr.order);
        expectMatchesStillEnd();
    }
}

TEST_P(HostileContent, RuleCommentThatDoesNotFit) {
    rawRule("\\A").setText("comment", std::string(512, 'c'));
    _ZxPolRuleAttr attr{};
    int error = ZXPOL_S_OK;
    zxpol_getRuleAttrib(rule("\\A").get(), &attr, &error);
    EXPECT_EQ(6u, reasonOf(error)) << codeText(error);
}

TEST_P(HostileContent, EmptyTexts) {
    rawRule("\\A").setBytes("displayName", ZXREG_MULTI_STRING, "");
    rawRule("\\A").setBytes("comment", ZXREG_MULTI_STRING, "");
    _ZxPolRuleAttr attr;
    std::memset(&attr, 'x', sizeof attr);
    int error = ZXPOL_S_OK;
    zxpol_getRuleAttrib(rule("\\A").get(), &attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("", attr.displayName);
    EXPECT_STREQ("", attr.comment);
}

TEST_P(HostileContent, TaskTextsWithoutNul) {
    rawTask().setBytes("displayName", ZXREG_MULTI_STRING, std::string(256, 'd'));
    rawTask().setBytes("comment", ZXREG_PROTECTED_STRING, std::string(512, 'c'));
    _ZxPolTaskAttr attr;
    std::memset(&attr, 'x', sizeof attr);
    int error = ZXPOL_S_OK;
    zxpol_getTaskAttrib(task().get(), &attr, &error);
    ASSERT_EQ(codeText(ZXPOL_S_OK), codeText(error));
    EXPECT_TRUE(isTerminated(attr.displayName));
    EXPECT_TRUE(isTerminated(attr.comment));
    Handle(attr.setting).reset();
    expectMatchesStillEnd();
}

TEST_P(HostileContent, ConditionOfAnotherType) {
    for (const uint32_t type : kOtherTypes) {
        rawRule("\\A").setBytes("condition1", type, "*,*");
        EXPECT_EQ(codeText(ZXPOL_E_INVALID_FORMAT), condition("\\A"));
        expectMatchesStillEnd();
    }
    rawRule("\\A").setNumber("condition1", 7);
    EXPECT_EQ(codeText(ZXPOL_E_INVALID_FORMAT), condition("\\A"));
    expectMatchesStillEnd();
}

TEST_P(HostileContent, ConditionTextsThatAreNoPairs) {
    const std::string side(511, 's');
    const struct {
        std::string text;
        std::string read;
    } cases[] = {
        {"", "unchanged"},
        {",", "|"},
        {"no comma", "unchanged"},
        {"a,b,c", "a|b,c"},
        {side + ",r", side + "|r"},
        {"x" + side + ",r", "|"},
        {"s," + side, "s|" + side},
        {"s,x" + side, "|"},
        {std::string(1023, 's'), "unchanged"},
        {std::string(1024, 's'), codeText(ZXPOL_E_BUFFER_TOO_SMALL)},
        {std::string(2047, ','), codeText(ZXPOL_E_BUFFER_TOO_SMALL)},
    };
    for (const auto& one : cases) {
        rawRule("\\A").setText("condition1", one.text);
        EXPECT_EQ(one.read, condition("\\A")) << one.text.substr(0, 20) << " of " << one.text.size();
        expectMatchesStillEnd();
    }
    rawRule("\\A").setText("condition1", std::string(2048, 's'));
    EXPECT_TRUE(condition("\\A").find("0006") != std::string::npos) << condition("\\A");
    expectMatchesStillEnd();
}

TEST_P(HostileContent, MatchTypesThatAreNot0) {
    for (const uint32_t type : {1u, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
        rawRule("\\A").setNumber("matchType", type);
        EXPECT_EQ(codeText(ZXPOL_E_NOT_SUPPORTED), condition("\\A"));
        expectMatchesStillEnd();
    }
    rawRule("\\A").setText("matchType", "zero");
    EXPECT_EQ('8', condition("\\A")[2]) << condition("\\A");
    rawRule("\\A").removeValue("matchType");
    EXPECT_TRUE(condition("\\A").find("1804") != std::string::npos) << condition("\\A");
    expectMatchesStillEnd();
}

TEST_P(HostileContent, MarksThatAreNoNames) {
    RawKey marks = rawRule("\\A");
    RawKey inactive = RawKey(marks.handle(), "inactive");
    const Handle a = rule("\\A");
    inactive.setText("inactive1", std::string(255, '\\'));
    inactive.setBytes("inactive2", ZXREG_MULTI_STRING, "\\A\\t");
    inactive.setNumber("inactive3", 0x5c415c74);
    inactive.setBytes("inactive4", ZXREG_MULTI_STRING, std::string(256, 'x'));
    for (const char* name : {"\\A\\t", "\\other", "\\"}) {
        int error = ZXPOL_S_OK;
        const int active = zxpol_isTaskActive(a.get(), name, &error);
        EXPECT_TRUE(active == 0 || active == 1);
        expectMatchesStillEnd();
    }
    // A mark that cannot be read is a failure, and the task counts as active.
    inactive.setText("inactive1", std::string(300, 'x'));
    int error = ZXPOL_S_OK;
    EXPECT_EQ(1, zxpol_isTaskActive(a.get(), "\\A\\t", &error));
    EXPECT_EQ(6u, reasonOf(error)) << codeText(error);
    expectMatchesStillEnd();
}

TEST_P(HostileContent, ExclusiveFilterTypesOfOddSizes) {
    RawKey hive = raw("Rule");
    hive.setBytes("ExcluId00000001", ZXREG_MULTI_STRING, "");
    hive.setBytes("ExcluId00000002", ZXREG_MULTI_STRING, "ab");
    hive.setNumber("ExcluId00000003", 99);
    hive.setBytes("ExcluId0000000", ZXREG_MULTI_STRING, "");
    hive.setBytes("ExcluId000000001", ZXREG_MULTI_STRING, "");
    hive.setBytes("ExcluId0000000g", ZXREG_MULTI_STRING, "");
    hive.setNumber("eXCLUiDFFFFFFFF", 1);
    std::vector<uint32_t> filters;
    for (uint32_t index = 0; index < 10; ++index) {
        uint32_t filter = 0;
        ZxPolFilterPriorityType type = ZXPOL_FILTER_ASC_EXCLUSIVE;
        int error = ZXPOL_S_OK;
        zxpol_enumExclusiveFilterType(ruleHive(), index, &filter, &type, &error);
        if (ZX_FAILURE(error)) break;
        filters.push_back(filter);
    }
    EXPECT_EQ(1, std::count(filters.begin(), filters.end(), 0xffffffffu));
    EXPECT_EQ(1, std::count(filters.begin(), filters.end(), 3u));
    EXPECT_EQ(0, std::count(filters.begin(), filters.end(), 0u));
    expectMatchesStillEnd();
}

TEST_P(HostileContent, ClassificationTextsOfOddTypesAndSizes) {
    int error = ZXPOL_S_OK;
    const Handle hive(zxpol_openClassificationHive(store(), &error));
    RawKey stored = raw("Classification").makeKey("C");
    const Handle c(zxpol_openClassification(hive.get(), "C", &error));
    _ZxPolCommAttrib attr;
    for (const uint32_t type : kOtherTypes) {
        std::memset(&attr, 'x', sizeof attr);
        stored.setBytes("comment", type, std::string(512, 'c'));
        stored.setBytes("displayName", type, std::string(256, 'd'));
        zxpol_getClassificationAttrib(c.get(), &attr, &error);
        EXPECT_CODE(ZXPOL_S_OK, error);
        EXPECT_EQ(std::string(511, 'c'), std::string(attr.comment, strnlen(attr.comment, 512)));
        EXPECT_EQ(std::string(255, 'd'), std::string(attr.displayName, strnlen(attr.displayName, 256)));
        stored.setBytes("comment", type, "");
        zxpol_getClassificationAttrib(c.get(), &attr, &error);
        EXPECT_STREQ("", attr.comment);
    }
    stored.setText("comment", std::string(512, 'c'));
    zxpol_getClassificationAttrib(c.get(), &attr, &error);
    EXPECT_EQ(6u, reasonOf(error)) << codeText(error);
}

TEST_P(HostileContent, ActionValuesOfOddTypesAndSizes) {
    int error = ZXPOL_S_OK;
    const Handle hive(zxpol_openClassificationHive(store(), &error));
    const _ZxPolCommAttrib classRecord{};
    _ZxPolActionAttr attr{};
    const Handle c(zxpol_createClassification(hive.get(), "C", &classRecord, &error));
    const Handle action(zxpol_createAction(c.get(), "a", &attr, &error));
    ASSERT_GE(error, 0) << codeText(error);
    RawKey stored = raw("Classification\\C\\actions\\a");
    stored.setBytes("comment", ZXREG_MULTI_STRING, std::string(512, 'c'));
    stored.setBytes("displayName", ZXREG_PROTECTED_STRING, std::string(256, 'd'));
    stored.setText("order", "a long text in the place of a number");
    std::memset(&attr, 'x', sizeof attr);
    zxpol_getActionAttrib(action.get(), &attr, &error);
    ASSERT_EQ(codeText(ZXPOL_S_OK), codeText(error));
    Handle(attr.setting).reset();
    EXPECT_EQ(std::string(511, 'c'), std::string(attr.comment, strnlen(attr.comment, 512)));
    EXPECT_EQ(std::string(255, 'd'), std::string(attr.displayName, strnlen(attr.displayName, 256)));
    EXPECT_EQ(0x78787878u, attr.order);
    EXPECT_EQ(0u, attr.actionType);
    stored.setText("displayName", std::string(256, 'd'));
    zxpol_getActionAttrib(action.get(), &attr, &error);
    Handle(attr.setting).reset();
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_TRUE(isTerminated(attr.displayName));
    for (const std::string& type : {std::string(), std::string("ab"), std::string("a long text")}) {
        stored.setBytes("actionType", ZXREG_MULTI_STRING, type);
        attr = {};
        error = ZXPOL_S_OK;
        zxpol_getActionAttrib(action.get(), &attr, &error);
        EXPECT_TRUE(ZX_FAILURE(error)) << type;
        EXPECT_EQ(0u, attr.actionType) << type;
        const Handle setting(attr.setting);
    }
}

// Whichever way the rules are broken, the search for references ends, and finds what can be read.
TEST_P(HostileContent, ReferencesInBrokenRules) {
    const auto find = [&](ZxPolRefEntity entity) -> std::string {
        char path[64] = "none";
        uint32_t size = sizeof path;
        int error = ZXPOL_S_OK;
        zxpol_checkReferInRule(store(), entity, "found", path, &size, &error);
        EXPECT_CODE(ZXPOL_S_OK, error);
        return path;
    };
    RawKey a = rawRule("\\A");
    RawKey outcomes = RawKey(rawTask().handle(), "Classification");
    for (const std::string& text :
         {std::string(), std::string(","), std::string("("), std::string("(,("), std::string("no comma"),
          std::string(1023, '('), std::string(2047, '('), "(" + std::string(600, 'x') + "),(found)"}) {
        a.setText("condition1", text);
        EXPECT_EQ("none", find(ZXPOL_REF_ADDRLIST)) << text.substr(0, 20);
    }
    a.setBytes("condition1", ZXREG_MULTI_STRING, "(found),*");
    EXPECT_EQ("none", find(ZXPOL_REF_ADDRLIST)) << "of another type";
    a.setText("condition1", "(found,(FOUND)");
    EXPECT_EQ("\\A", find(ZXPOL_REF_ADDRLIST));
    outcomes.setBytes("full", ZXREG_MULTI_STRING, std::string(256, 'x'));
    outcomes.setBytes("none", ZXREG_MULTI_STRING, "");
    outcomes.setNumber("number", 0x41414141);
    EXPECT_EQ("none", find(ZXPOL_REF_CLASSIFICATION));
    outcomes.setBytes("last", ZXREG_PROTECTED_STRING, "found");
    EXPECT_EQ("\\A", find(ZXPOL_REF_CLASSIFICATION)) << "a text that ends without NUL";
}

TEST_P(HostileContent, ListTypes) {
    RawKey dir = raw("AddressList\\Dir");
    int error = ZXPOL_S_OK;
    dir.setNumber("type", 2);
    EXPECT_EQ(nullptr, list(&error));
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, error);
    error = ZXPOL_S_OK;
    dir.setText("type", "a long text in the place of a number");
    EXPECT_EQ(nullptr, list(&error));
    EXPECT_TRUE(ZX_FAILURE(error));
    error = ZXPOL_S_OK;
    dir.removeValue("type");
    EXPECT_EQ(nullptr, list(&error));
    EXPECT_EQ(0x1804u, reasonOf(error)) << codeText(error);
}

TEST_P(HostileContent, DirectorySettingsOfOddTypesAndSizes) {
    int error = ZXPOL_S_OK;
    const Handle dir = list(&error);
    RawKey stored = raw("AddressList\\Dir");
    stored.setText("server", std::string(2047, 's'));
    stored.setText("port", "389");
    stored.setBytes("schematype", ZXREG_MULTI_STRING, "");
    stored.setText("filter", std::string(2000, 'f'));
    stored.setText("password", "in the clear");
    _ZxPolAddrListAttr attr;
    std::memset(&attr, 'x', sizeof attr);
    zxpol_getAddrListAttrib(dir.get(), &attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(std::string(255, 's'), std::string(attr.server, strnlen(attr.server, sizeof attr.server)));
    EXPECT_EQ(std::string(1023, 'f'), std::string(attr.filter, strnlen(attr.filter, sizeof attr.filter)));
    EXPECT_EQ(0x78787878u, attr.port);
    EXPECT_EQ(0x78787878u, attr.schematype);
    EXPECT_EQ('x', attr.password[0]) << "a password that is not protected is not given away either";
    EXPECT_EQ('x', attr.password[39]);

    stored.setText("server", std::string(2048, 's'));
    zxpol_getAddrListAttrib(dir.get(), &attr, &error);
    EXPECT_EQ(6u, reasonOf(error)) << codeText(error);
}

TEST_P(HostileContent, VersionOfAnotherTypeIsReplaced) {
    RawKey root = raw();
    root.setText("version", "a long text in the place of a number");
    int error = ZXPOL_S_OK;
    EXPECT_EQ(0x01000000u, zxpol_getVersion(store(), &error));
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(0x01000000u, root.number("version").value_or(0));
    root.setNumber("version", 0xff000000u);
    EXPECT_EQ(nullptr, zxpol_openRuleHive(store(), 0, &error));
    EXPECT_CODE(ZXPOL_E_VERSION, error);
}

TEST_P(HostileContent, OutcomesOfAnotherType) {
    RawKey outcomes = RawKey(rawTask().handle(), "Classification");
    outcomes.setNumber("number", 0x41414141);
    outcomes.setBytes("none", ZXREG_MULTI_STRING, "");
    char value[8];
    for (const char* name : {"number", "none"}) {
        std::memset(value, 'x', sizeof value);
        uint32_t size = 4;
        int error = ZXPOL_S_OK;
        zxpol_getOutcome(task().get(), name, value, &size, &error);
        EXPECT_EQ('x', value[4]) << name;
    }
}

ZXTEST_ON_BOTH_ENGINES(HostileContent);

}  // namespace
