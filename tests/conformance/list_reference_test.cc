// Conditions that name lists: what they match, how they weigh, and what a list that cannot be asked comes to.
#include "support/list_fixture.h"

namespace {

using zxtest::DebugMessages;
using zxtest::Handle;
using zxtest::Lines;

class ListReferences : public zxtest::ListTest {
protected:
    // The path of the rule that wins for a mail.
    std::string winner(const std::string& sender, uint32_t mode, const char* receiver = "r@s.t") const {
        const Lines lines = matched(sender, {receiver}, mode);
        return lines.empty() ? "" : lines[0].substr(0, lines[0].find(':'));
    }
    static void weighBy(ZxPolMatchWeightType type) {
        const _ZxPolMatchOption option = {1, ZXPOL_PRIORITY_TOTAL, static_cast<uint32_t>(type), 0, 0};
        int error = ZXPOL_S_OK;
        zxpol_setMatchOption(&option, &error);
        EXPECT_CODE(ZXPOL_S_OK, error);
    }
    // Writes the one condition of a rule, whatever it is.
    void condition(const std::string& path, const std::string& text) const {
        zxtest::RawKey(rawRule(path).handle(), "").setText("condition1", text);
    }
};
ZXTEST_ON_BOTH_ENGINES(ListReferences);

TEST_P(ListReferences, MatchOnTheSendersSideAndOnTheReceiversSide) {
    create("Partners", {"a@b.c", "*@*.far.org"});
    addRule("\\", "From", "(Partners)", "*");
    addRule("\\", "To", "*", "(Partners)");
    for (const uint32_t mode : {0u, 1u}) {
        EXPECT_EQ("\\From", winner("a@b.c", mode)) << mode;
        EXPECT_EQ("\\From", winner("A@B.C", mode)) << mode;
        EXPECT_EQ("\\From", winner("any@one.Far.org", mode)) << mode;
        EXPECT_EQ("\\", winner("any@far.org", mode)) << mode;
        EXPECT_EQ("\\", winner("b@b.c", mode)) << mode;
        EXPECT_EQ("\\To", winner("b@b.c", mode, "a@b.c")) << mode;
        EXPECT_EQ("\\To", winner("b@b.c", mode, "x@y.far.org")) << mode;
    }
}

TEST_P(ListReferences, AnAddressWithAPrefixIsAskedWithoutIt) {
    create("Partners", {"a@b.c"});
    addRule("\\", "From", "(Partners)", "*");
    for (const uint32_t mode : {0u, 1u}) {
        const DebugMessages messages;
        EXPECT_EQ("\\From", winner("smtp:a@b.c", mode));
        EXPECT_LE(1, messages.count("split smtp:a@b.c to a@b.c"));
        EXPECT_EQ("\\", winner("x:smtp:a@b.c", mode));
        EXPECT_LE(1, messages.count("split x:smtp:a@b.c to smtp:a@b.c"));
    }
}

TEST_P(ListReferences, FollowTheList) {
    const Handle list = create("Partners", {"a@b.c"});
    addRule("\\", "From", "(Partners)", "*");
    EXPECT_EQ("\\", winner("d@e.f", 0));
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"d@e.f"}));
    EXPECT_EQ("\\From", winner("d@e.f", 0));
    EXPECT_CODE(ZXPOL_S_OK, insert(list, {"*@e.f"}));
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {"d@e.f"}));
    EXPECT_EQ("\\From", winner("d@e.f", 0));
    EXPECT_CODE(ZXPOL_S_OK, remove(list, {"*@e.f", "a@b.c"}));
    EXPECT_EQ("\\", winner("d@e.f", 0));
    EXPECT_EQ("\\", winner("a@b.c", 1));
}

TEST_P(ListReferences, APlainEntryWeighsMostWhateverWildcardsMatchToo) {
    create("Both", {"*@b.c", "a@b.c", "*"});
    addRule("\\", "Pattern", "*@b.c", "*");
    addRule("\\", "List", "(Both)", "*");
    EXPECT_EQ("\\List", winner("a@b.c", 1));
    // An equal weight: the earlier rule stays.
    EXPECT_EQ("\\Pattern", winner("d@b.c", 1));
    EXPECT_EQ("\\List", winner("d@e.f", 1));
}

TEST_P(ListReferences, TheHeaviestOfTheWildcardsCounts) {
    create("Some", {"*", "*@*.b.c", "*@mail.b.c", "*@*.c"});
    // It weighs more than one label less and one more, and less than the address itself.
    addRule("\\", "Light", "*@*.mail.b.c", "*");
    addRule("\\", "List", "(Some)", "*");
    EXPECT_EQ("\\List", winner("a@mail.b.c", 1));
    EXPECT_EQ("\\Light", winner("a@x.mail.b.c", 1));
    EXPECT_EQ("\\List", winner("a@x.b.c", 1));
    EXPECT_EQ("\\List", winner("a@x.org", 1));
}

TEST_P(ListReferences, WeighByTheKindOfWeightThatIsSet) {
    create("Name", {"user@*.b.c"});
    create("Domain", {"*@mail.b.c"});
    addRule("\\", "Name", "(Name)", "*");
    addRule("\\", "Domain", "(Domain)", "*");
    weighBy(ZXPOL_WEIGHT_DOMAIN_FIRST);
    EXPECT_EQ("\\Domain", winner("user@mail.b.c", 1));
    weighBy(ZXPOL_WEIGHT_NAME_FIRST);
    EXPECT_EQ("\\Name", winner("user@mail.b.c", 1));
    EXPECT_EQ("\\Name", winner("user@mail.b.c", 0));
}

TEST_P(ListReferences, ToAListThatDoesNotExistFailTheRuleAlone) {
    addRule("\\", "Lost", "(Nowhere)", "*");
    addRule("\\", "Next", "*", "*");
    for (const uint32_t mode : {0u, 1u}) {
        const DebugMessages messages;
        EXPECT_EQ("\\Next", winner("a@b.c", mode));
        char line[64];
        std::snprintf(line, sizeof line, "Fail to check rule \\Lost (%#010x), ignore",
                      static_cast<unsigned>(ZXREG_E_NOT_FOUND));
        EXPECT_EQ(1, messages.count(line)) << zxtest::joined(messages.all());
    }
    EXPECT_FALSE(raw("AddressList").hasKey("Nowhere"));
}

TEST_P(ListReferences, ToALostListHideTheLaterConditionsOfTheRule) {
    addRule("\\", "Lost", "(Nowhere)", "*");
    EXPECT_CODE(ZXPOL_S_OK, addCondition("\\Lost", "a@b.c", "*"));
    EXPECT_EQ("\\", winner("a@b.c", 0));
    EXPECT_EQ("\\", winner("a@b.c", 1));
    create("Nowhere", {"d@e.f"});
    EXPECT_EQ("\\Lost", winner("a@b.c", 0));
    EXPECT_EQ("\\Lost", winner("d@e.f", 1));
    EXPECT_CODE(ZXPOL_S_OK, deleteList("Nowhere"));
    EXPECT_EQ("\\", winner("d@e.f", 0));
}

TEST_P(ListReferences, ToADirectoryListFailTheRule) {
    addDirectoryList("Staff");
    addRule("\\", "Staff", "(Staff)", "*");
    EXPECT_EQ("\\", winner("a@b.c", 0));
    EXPECT_EQ("\\", winner("a@b.c", 1));
}

TEST_P(ListReferences, ToADirectoryListThatBecameANormalOneMatch) {
    addDirectoryList("Staff");
    addRule("\\", "Staff", "(Staff)", "*");
    _ZxPolAddrListAttr attr = normalAttributes("now normal");
    int error = ZXPOL_S_OK;
    const Handle directory = open("Staff");
    zxpol_setAddrListAttrib(directory.get(), &attr, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, insert(directory, {"a@b.c"}));
    EXPECT_EQ("\\", winner("a@b.c", 0));
    const Handle normal = open("Staff");
    EXPECT_CODE(ZXPOL_S_OK, insert(normal, {"a@b.c"}));
    EXPECT_EQ(Lines{"a@b.c"}, addresses(normal));
    EXPECT_EQ("\\Staff", winner("a@b.c", 0));
    attr = {};
    zxpol_getAddrListAttrib(normal.get(), &attr, &error);
    EXPECT_EQ(0u, attr.type);
    EXPECT_STREQ("now normal", attr.displayName);
}

TEST_P(ListReferences, WithoutAClosingParenthesisNameTheListWithoutTheLastLetter) {
    create("ab", {"a@b.c"});
    addRule("\\", "Open", "*", "*");
    condition("\\Open", "(abc,*");
    for (const uint32_t mode : {0u, 1u}) {
        EXPECT_EQ("\\Open", winner("a@b.c", mode));
        EXPECT_EQ("\\", winner("d@e.f", mode));
    }
}

TEST_P(ListReferences, ThatAreTooShortToHoldANameFailTheRule) {
    addRule("\\", "Short", "*", "*");
    for (const char* side : {"(,*", "(),*"}) {
        condition("\\Short", side);
        EXPECT_EQ("\\", winner("a@b.c", 0)) << side;
        EXPECT_EQ("\\", winner("a@b.c", 1)) << side;
    }
}

TEST_P(ListReferences, AreAcceptedAsSidesWithoutALookAtTheName) {
    addRule("\\", "R", "*", "*");
    EXPECT_CODE(ZXPOL_S_OK, addCondition("\\R", "(a b*c@)", "(x)"));
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, addCondition("\\R", "()", "*"));
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, addCondition("\\R", "(list1", "*"));
    EXPECT_CODE(ZXPOL_E_INVALID_FORMAT, addCondition("\\R", "*", "("));
    EXPECT_EQ((Lines{"* -> *", "(a b*c@) -> (x)"}), conditionsOf("\\R"));
}

TEST_P(ListReferences, ToAnEmptyListMatchNothing) {
    create("Empty");
    addRule("\\", "Empty", "(Empty)", "*");
    for (const char* sender : {"a@b.c", "", "*", "@"}) {
        EXPECT_EQ("\\", winner(sender, 0)) << sender;
        EXPECT_EQ("\\", winner(sender, 1)) << sender;
    }
}

TEST_P(ListReferences, TellListNamesApartByLetterCase) {
    create("Case", {"a@b.c"});
    create("case", {"d@e.f"});
    addRule("\\", "Upper", "(Case)", "*");
    addRule("\\", "Lower", "(case)", "*");
    EXPECT_EQ("\\Upper", winner("a@b.c", 0));
    EXPECT_EQ("\\Lower", winner("d@e.f", 0));
}

}  // namespace
