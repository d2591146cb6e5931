#include "rules/mail_condition.h"

#include "frame/reg_debug.h"
#include "unit/rules_fixture.h"

namespace {

using namespace zxtest;

std::vector<std::string> gMessages;

class MailCondition : public RulesTest {
protected:
    void SetUp() override {
        RulesTest::SetUp();
        int error = ZXREG_S_OK;
        _key.reset(zxreg_createKey(store(), "Conditions", &error));
        conditions = std::make_unique<ZxPolMailCondition>(_key.get());
        gMessages.clear();
        ZxRegDebug::setDebugFunction([](const char* message) { gMessages.emplace_back(message); });
    }
    void TearDown() override { ZxRegDebug::setDebugFunction(nullptr); }

    RawKey values() const { return raw("Conditions"); }

    // Parses into a record that held "old" on both sides: "sender|receiver", and the code when it failed.
    std::string parsed(const std::string& text) const {
        _ZxPolAddrPairCond pair = pairOf("old", "old");
        int error = ZXPOL_S_OK;
        conditions->parseAddressPair(text.c_str(), &pair, &error);
        const std::string sides = std::string(pair.sender) + "|" + pair.receiver;
        return error < 0 ? codeText(error) + " " + sides : sides;
    }

    int add(std::initializer_list<_ZxPolAddrPairCond> pairs) {
        int error = ZXPOL_S_OK;
        conditions->addCondition(CondList(pairs).get(), &error);
        return error;
    }

    std::vector<std::string> stored() const {
        std::vector<std::string> found;
        for (const std::string& name : values().valueNames())
            found.push_back(name + "=" + values().text(name).value_or("?"));
        return found;
    }

    // Enumerates one condition into a record that held "old" on both sides.
    std::string at(uint32_t index) {
        _ZxPolAddrPairCond pair = pairOf("old", "old");
        uint32_t size = sizeof pair;
        char name[256] = "";
        int error = ZXPOL_S_OK;
        conditions->enumCondition(index, reinterpret_cast<unsigned char*>(&pair), &size, name, &error);
        if (error < 0) return codeText(error);
        return std::string(name) + ": " + pair.sender + "|" + pair.receiver;
    }

    std::unique_ptr<ZxPolMailCondition> conditions;

private:
    Handle _key;
};

using Lines = std::vector<std::string>;

_ZxPolAddrPairCond unterminated() {
    _ZxPolAddrPairCond pair = pairOf("*", "*");
    std::memset(pair.sender, 'a', sizeof pair.sender);
    return pair;
}

TEST_F(MailCondition, TextsAreCutAtTheFirstCommaAndLoseTheBlanksBesideIt) {
    EXPECT_EQ("a|b", parsed("a,b"));
    EXPECT_EQ("a|b,c", parsed("a,b,c"));
    EXPECT_EQ("  abc|*  ", parsed("  abc  ,  *  "));
    EXPECT_EQ("\tabc\t|\t*", parsed("\tabc\t,\t*"));
    EXPECT_EQ("|b", parsed("   ,b"));
    EXPECT_EQ("a|", parsed("a,   "));
    EXPECT_EQ("|", parsed(","));
    EXPECT_EQ("|,", parsed(",,"));
}

TEST_F(MailCondition, ATextWithoutACommaLeavesTheRecordAndLongSidesEmptyIt) {
    EXPECT_EQ("0x81021806 old|old", parsed(""));
    EXPECT_EQ("0x81021806 old|old", parsed("abc"));
    EXPECT_EQ("|", parsed(std::string(512, 'a') + ",b"));
    EXPECT_EQ("|", parsed("a," + std::string(512, 'b')));
    EXPECT_EQ(std::string(511, 'a') + "|" + std::string(511, 'b'),
              parsed(std::string(511, 'a') + "," + std::string(511, 'b')));
    int error = ZXPOL_S_OK;
    conditions->parseAddressPair(nullptr, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
}

TEST_F(MailCondition, TheStoredTextIsTheSidesWithACommaBetween) {
    std::string text = "before";
    const _ZxPolAddrPairCond pair = pairOf("*", "*");
    conditions->formatAddressPair(&pair, text);
    EXPECT_EQ("*,*", text);
    const _ZxPolAddrPairCond overlong = unterminated();
    conditions->formatAddressPair(&overlong, text);
    EXPECT_EQ(std::string(512, 'a') + ",*", text);
}

TEST_F(MailCondition, ASideIsAListReferenceOrAValidPattern) {
    const auto isValid = [&](const char* side) {
        const _ZxPolAddrPairCond asSender = pairOf(side, "*");
        const _ZxPolAddrPairCond asReceiver = pairOf("*", side);
        EXPECT_EQ(conditions->isValid(&asSender), conditions->isValid(&asReceiver)) << side;
        return conditions->isValid(&asSender);
    };
    for (const char* side : {"*", "*@*", "a@b", "(list1)", "(a)", "(())", "*@*.example"})
        EXPECT_TRUE(isValid(side)) << side;
    for (const char* side : {"", "(", ")", "()", "(list1", "list1)", "(list1@b", "jo*@b", "a"})
        EXPECT_FALSE(isValid(side)) << side;
    const _ZxPolAddrPairCond overlong = unterminated();
    EXPECT_FALSE(conditions->isValid(&overlong));
    EXPECT_FALSE(conditions->isValid(nullptr));
}

TEST_F(MailCondition, AddedPairsAreTrimmedAndNumbered) {
    EXPECT_CODE(ZXPOL_S_OK, add({pairOf(" a@b\t", "\n*"), pairOf("(list)", "*@*.b")}));
    EXPECT_EQ((Lines{"condition1=a@b,*", "condition2=(list),*@*.b"}), stored());
}

TEST_F(MailCondition, APairThatIsThereIsPassedOver) {
    add({pairOf("abc@x", "*")});
    EXPECT_CODE(ZXPOL_S_OK, add({pairOf("ABC@x", "*"), pairOf("d@x", "*")}));
    EXPECT_EQ((Lines{"condition1=abc@x,*", "condition2=d@x,*"}), stored());
    EXPECT_EQ((Lines{"Condition with sender: ABC@x & receiver: * already exist"}), gMessages);
}

TEST_F(MailCondition, InvalidPairsDoNotStopTheOthers) {
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, add({pairOf(" bad ", "*"), pairOf("a@b", "*"), unterminated()}));
    EXPECT_EQ((Lines{"condition1=a@b,*"}), stored());
    ASSERT_EQ(2u, gMessages.size());
    EXPECT_EQ("Condition with sender:  bad  & receiver: * is not valid. Skip!", gMessages[0]);
    EXPECT_EQ(0u, gMessages[1].find("Condition with sender: aaaa"));
}

TEST_F(MailCondition, ACommaInTheSenderIsStoredAndReadBackAsTheEndOfIt) {
    EXPECT_CODE(ZXPOL_S_OK, add({pairOf("\"a,b\"@x", "*"), pairOf("*", "\"a,b\"@x")}));
    EXPECT_EQ((Lines{"condition1=\"a,b\"@x,*", "condition2=*,\"a,b\"@x"}), stored());
    EXPECT_EQ("condition1: \"a|b\"@x,*", at(0));
    EXPECT_EQ("condition2: *|\"a,b\"@x", at(1));
}

TEST_F(MailCondition, WhenThePresentPairsCannotBeReadNothingIsAdded) {
    values().setNumber("condition1", 5);
    EXPECT_CODE(ZXPOL_S_OK, add({pairOf("a@b", "*")}));
    EXPECT_EQ(1u, values().valueNames().size());
}

TEST_F(MailCondition, EnumeratingATextWithoutACommaLeavesTheRecordAndLongSidesEmptyIt) {
    values().setText("condition1", "no comma");
    values().setText("condition2", std::string(512, 'a') + ",*");
    values().setText("condition3", "a@b,*");
    EXPECT_EQ("condition1: old|old", at(0));
    EXPECT_EQ("condition2: |", at(1));
    EXPECT_EQ("condition3: a@b|*", at(2));
    EXPECT_EQ("0x8102000c", at(3));
}

TEST_F(MailCondition, ATextWithoutNulIsReadToItsEnd) {
    values().setBytes("condition1", ZXREG_STRING, "a@b,*");
    values().setBytes("condition2", ZXREG_STRING, "");
    EXPECT_EQ("condition1: a@b|*", at(0));
    EXPECT_EQ("condition2: old|old", at(1));
}

TEST_F(MailCondition, EnumeratingNeedsAWholeRecord) {
    add({pairOf("a@b", "*")});
    values().setText("condition2", std::string(511, 'a') + "," + std::string(512, 'b'));
    _ZxPolAddrPairCond pair{};
    auto* record = reinterpret_cast<unsigned char*>(&pair);
    int error = ZXPOL_S_OK;
    uint32_t size = 1023;
    conditions->enumCondition(0, record, &size, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, error);
    EXPECT_EQ(1024u, size);
    conditions->enumCondition(1, record, &size, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, error);
    conditions->enumCondition(0, nullptr, &size, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    conditions->enumCondition(0, record, nullptr, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    conditions->enumCondition(0, record, &size, nullptr, nullptr);
}

TEST_F(MailCondition, OnlyIndexZeroReadsTheStoreAgain) {
    add({pairOf("a@b", "*"), pairOf("c@d", "*")});
    EXPECT_EQ("condition1: a@b|*", at(0));
    values().setText("condition2", "new@d,*");
    EXPECT_EQ("condition2: c@d|*", at(1));
    EXPECT_EQ("condition1: a@b|*", at(0));
    EXPECT_EQ("condition2: new@d|*", at(1));
}

TEST_F(MailCondition, AValueThatIsNoStringFailsTheWholeEnumeration) {
    add({pairOf("a@b", "*")});
    values().setBytes("condition2", ZXREG_MULTI_STRING, std::string("x,y\0", 5));
    EXPECT_EQ("0x8102000a", at(0));
}

TEST_F(MailCondition, RemovingComparesAsGivenAndStopsAtTheFirstMissing) {
    add({pairOf("a@b", "*"), pairOf("c@d", "*"), pairOf("e@f", "*")});
    int error = ZXPOL_S_OK;
    conditions->removeCondition(CondList({pairOf("A@B", "*"), pairOf(" c@d", "*"), pairOf("e@f", "*")}).get(), &error);
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, error);
    EXPECT_EQ((Lines{"condition1=c@d,*", "condition2=e@f,*"}), stored());
    conditions->removeCondition(CondList({unterminated()}).get(), &error);
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, error);
}

TEST_F(MailCondition, ReplacingStopsDeletingAtAGap) {
    values().setText("condition1", "a@b,*");
    values().setText("condition3", "c@d,*");
    int error = ZXPOL_S_OK;
    conditions->replaceCondition(CondList({pairOf("bad", "*"), pairOf("new@b", "*"), pairOf("new@b", "*")}).get(),
                                 &error);
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, error);
    EXPECT_EQ("new@b,*", values().text("condition1"));
    EXPECT_EQ("new@b,*", values().text("condition2"));
    EXPECT_EQ("c@d,*", values().text("condition3"));
    EXPECT_EQ(3u, values().valueNames().size());
}

TEST_F(MailCondition, UpdatingRewritesTheNumberedValue) {
    add({pairOf("a@b", "*"), pairOf("c@d", "*")});
    int error = ZXPOL_S_OK;
    const auto update = [&](uint32_t index, const _ZxPolAddrPairCond& pair) {
        conditions->updateCondition(&index, CondList({pair}).get(), &error);
        return error;
    };
    EXPECT_CODE(ZXPOL_S_OK, update(1, pairOf("C@D", "*")));
    EXPECT_CODE(ZXPOL_E_ALREADY_EXISTS, update(0, pairOf("c@d", "*")));
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, update(0, pairOf("bad", "*")));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, update(0xffffffffu, pairOf("x@y", "*")));
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, update(0x7fffffffu, pairOf("x@y", "*")));
    EXPECT_EQ((Lines{"condition1=a@b,*", "condition2=C@D,*"}), stored());
    values().setText("condition3", "no comma");
    EXPECT_CODE(ZXPOL_S_OK, update(1, pairOf("c@d", "*"))) << "a text without a comma is no second c@d";
    values().setNumber("condition2", 1);
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, update(0, pairOf("x@y", "*")));
    EXPECT_EQ("a@b,*", values().text("condition1"));
}

TEST_F(MailCondition, ListsMustBeThere) {
    int error = ZXPOL_S_OK;
    conditions->addCondition(nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    conditions->removeCondition(nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    conditions->replaceCondition(nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    conditions->updateCondition(nullptr, CondList({}).get(), &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    conditions->addCondition(CondList({pairOf("a@b", "*")}).get(), nullptr);
    EXPECT_EQ(Lines{}, stored());
}

}  // namespace
