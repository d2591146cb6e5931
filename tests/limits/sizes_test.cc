// How long texts may be: the longest that is kept whole, and what becomes of one that is longer.
#include "limits/big_policy.h"

using namespace zxtest;

namespace {

class Sizes : public limits::BigPolicyTest {
protected:
    static std::string lastOf(size_t size) { return std::string(size, 'n'); }

    int createRule(const std::string& name) const {
        _ZxPolRuleAttr attr = {};
        const Conditions any{{"*", "*"}};
        int error = ZXPOL_S_OK;
        const Handle made(zxpol_createRule(rule().get(), name.c_str(), &attr, any.list(), &error));
        return error;
    }
};

TEST_P(Sizes, OfNames) {
    EXPECT_CODE(ZXPOL_S_OK, createRule(lastOf(255)));
    EXPECT_EQ(std::vector<std::string>{"\\" + lastOf(255) + ": b@x.example |"},
              matched("a@x.example", {"b@x.example"}));
    EXPECT_LT(createRule(lastOf(256)), 0);
    EXPECT_EQ(lastOf(255), names(&zxpol_enumRule, rule().get()));
}

// The side of a condition with its NUL fills its field. Of an address, 254 characters before the "@" are compared and
// 255 behind it; what goes beyond that does not tell it from others.
TEST_P(Sizes, OfTheSidesOfAConditionAndOfAddressesThatMeetThem) {
    const std::string side = lastOf(254) + "@" + lastOf(251) + ".net";
    addRule("\\", "long", side, "*");
    EXPECT_EQ(std::vector<std::string>{"\\long: b@x.example |"}, matched(side, {"b@x.example"}));
    EXPECT_EQ(std::vector<std::string>{"\\long: b@x.example |"}, matched("n" + side, {"b@x.example"}));
    for (const std::string& other : {side.substr(1), lastOf(253) + "x" + side.substr(254), side.substr(0, 509) + "x"})
        EXPECT_EQ(std::vector<std::string>{"\\: b@x.example |"}, matched(other, {"b@x.example"}));
    const std::string huge = std::string(1 << 20, 'n') + "@x.example";
    EXPECT_EQ(std::vector<std::string>{"\\: b@x.example |"}, matched(huge, {"b@x.example"}));
    addRule("\\", "any", "*@x.example", "*");
    EXPECT_EQ(std::vector<std::string>{"\\any: b@x.example |"}, matched(huge, {"b@x.example"}));
    _ZxPolAddrPairCond unterminated;
    std::memset(&unterminated, 'n', sizeof unterminated);
    int error = ZXPOL_S_OK;
    zxpol_addCondition(rule("\\long").get(), asCondition(unterminated), &error);
    EXPECT_LT(error, 0);
    EXPECT_EQ(1u, conditionsOf("\\long").size());
}

TEST_P(Sizes, OfAnAddressInAList) {
    const Handle list = makeList("L", 0);
    const std::string longest = lastOf(511 - 10) + "@x.example", longer = "n" + longest;
    for (const std::string& text : {longest, longer}) {
        const char* addresses[] = {text.c_str(), nullptr};
        int error = ZXPOL_S_OK;
        zxpol_insertAddress(list.get(), addresses, &error);
        EXPECT_EQ(text == longest, error >= 0) << codeText(error);
    }
    char found[ZXPOL_ADDRESS_SIZE];
    uint32_t size = sizeof found;
    int error = ZXPOL_S_OK;
    zxpol_enumAddress(list.get(), 0, found, &size, &error);
    EXPECT_EQ(longest, found);
    size = sizeof found;
    zxpol_enumAddress(list.get(), 1, found, &size, &error);
    EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, error);
}

TEST_P(Sizes, OfDisplayNamesAndComments) {
    _ZxPolRuleAttr attr = {};
    setField(attr.displayName, lastOf(255));
    setField(attr.comment, lastOf(511));
    addRule("\\", "a");
    int error = ZXPOL_S_OK;
    zxpol_setRuleAttrib(rule("\\a").get(), &attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    _ZxPolRuleAttr found = {};
    zxpol_getRuleAttrib(rule("\\a").get(), &found, &error);
    EXPECT_EQ(lastOf(255), found.displayName);
    EXPECT_EQ(lastOf(511), found.comment);
    std::memset(attr.comment, 'n', sizeof attr.comment);
    zxpol_setRuleAttrib(rule("\\a").get(), &attr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
}

// The full name of a task, its rule's path and its own name, must leave room for the NUL.
TEST_P(Sizes, OfATasksFullName) {
    const std::string name = lastOf(200);
    addRule("\\", name);
    addTask("\\" + name, lastOf(255 - 202));
    EXPECT_EQ(std::vector<std::string>{"\\" + name + ": b@x.example | " + lastOf(53)},
              matched("a@x.example", {"b@x.example"}));
    addTask("\\" + name, lastOf(255 - 202 + 1));
    EXPECT_EQ(std::vector<std::string>{"\\" + name + ": b@x.example | " + lastOf(53)},
              matched("a@x.example", {"b@x.example"}));
}

TEST_P(Sizes, OfAValueInTheStore) {
    const std::string data(1 << 22, 'v');
    int error = ZXREG_S_OK;
    zxreg_setValue(store(), "v", ZXREG_MULTI_STRING, data.data(), static_cast<uint32_t>(data.size()), &error);
    EXPECT_CODE(ZXREG_S_OK, error);
    std::string found(data.size(), '\0');
    uint32_t size = static_cast<uint32_t>(found.size());
    zxreg_queryValue(store(), "v", nullptr, found.data(), &size, &error);
    EXPECT_TRUE(data == found);
    zxreg_setValue(store(), "w", ZXREG_MULTI_STRING, data.data(), ZXREG_MAX_VALUE + 1, &error);
    EXPECT_CODE(ZXREG_E_INVALID_ARG, error);
}

ZXTEST_ON_BOTH_ENGINES(Sizes);

}  // namespace
