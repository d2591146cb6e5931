// ZxPolRuleMatcher::compareAddress: one address against one side of a condition.
#include "unit/match_fixture.h"

namespace {

using namespace zxtest;

class CompareAddress : public MatchTest {
protected:
    // What a comparison answered.
    struct Answer {
        bool isMatch;
        uint32_t weight;
        int code;
    };

    Answer compare(const char* address, const char* pattern, uint32_t weightType = ZXPOL_WEIGHT_DOMAIN_FIRST) const {
        const _ZxPolMatchOption option = {1, 0, weightType, 0, 0};
        Answer answer = {false, 77, ZXPOL_E_EXCEPTION};
        const std::unique_ptr<ZxPolRuleMatcher> asked = matcher(option);
        answer.isMatch = asked->compareAddress(address, pattern, &answer.weight, &answer.code);
        int code = ZXPOL_E_EXCEPTION;
        EXPECT_EQ(answer.isMatch, asked->compareAddress(address, pattern, nullptr, &code)) << "without a weight";
        EXPECT_CODE(answer.code, code) << "without a weight";
        return answer;
    }
};

TEST_F(CompareAddress, WeighsAMatchByItsPattern) {
    const struct {
        const char* pattern;
        uint32_t byDomain;
        uint32_t byName;
    } kCases[] = {
        {"*", 0, 0},
        {"*@*", 0, 0},
        {"a@*", 1000, 1000},
        {"*@*.example.com", 2002, 2002},
        {"a@*.example.com", 3002, 4002},
        {"*@x.example.com", 4000, 3000},
        {"A@X.example.COM", 5000, 5000},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.pattern);
        const Answer byDomain = compare("a@x.example.com", row.pattern);
        EXPECT_TRUE(byDomain.isMatch);
        EXPECT_EQ(row.byDomain, byDomain.weight);
        EXPECT_CODE(ZXPOL_S_OK, byDomain.code);
        EXPECT_EQ(row.byName, compare("a@x.example.com", row.pattern, ZXPOL_WEIGHT_NAME_FIRST).weight);
    }
}

TEST_F(CompareAddress, HasNoWeightWithoutAMatch) {
    const Answer answer = compare("a@x.example.com", "b@x.example.com");
    EXPECT_FALSE(answer.isMatch);
    EXPECT_EQ(0u, answer.weight);
    EXPECT_CODE(ZXPOL_S_OK, answer.code);
}

TEST_F(CompareAddress, LeavesTheKindOfAnAddressOut) {
    const std::unique_ptr<ZxPolRuleMatcher> asked = matcher();
    messages().clear();
    int error = ZXPOL_S_OK;
    EXPECT_TRUE(asked->compareAddress("smtp:a@example.com", "a@example.com", nullptr, &error));
    EXPECT_EQ(std::vector<std::string>({"split smtp:a@example.com to a@example.com"}), messages());
    EXPECT_FALSE(asked->compareAddress("x:smtp:a@example.com", "a@example.com", nullptr, &error));
    EXPECT_TRUE(asked->compareAddress("a@example.com:", "*", nullptr, &error));
    EXPECT_FALSE(asked->compareAddress("a@example.com:", "a@example.com", nullptr, &error));
}

TEST_F(CompareAddress, TakesTheNullSenderAndNullForAddresses) {
    EXPECT_TRUE(compare("", "*").isMatch);
    EXPECT_FALSE(compare("", "a@example.com").isMatch);
    EXPECT_TRUE(compare(nullptr, "*").isMatch);
    EXPECT_FALSE(compare(nullptr, "*@example.com").isMatch);
}

TEST_F(CompareAddress, RefusesANullPattern) {
    const Answer answer = compare("a@example.com", nullptr);
    EXPECT_FALSE(answer.isMatch);
    EXPECT_EQ(0u, answer.weight);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, answer.code);
}

TEST_F(CompareAddress, DoesNothingWithoutAResult) {
    uint32_t weight = 77;
    EXPECT_FALSE(matcher()->compareAddress("a@example.com", "*", &weight, nullptr));
    EXPECT_EQ(77u, weight);
}

TEST_F(CompareAddress, AsksTheListThatIsReferredTo) {
    addDirectoryList("Far");
    const Answer answer = compare("a@example.com", "(Far)");
    EXPECT_TRUE(answer.isMatch);
    EXPECT_EQ(0u, answer.weight);
    EXPECT_CODE(ZXPOL_E_NOT_SUPPORTED, answer.code);
}

TEST_F(CompareAddress, TakesTheLastCharacterOffAnyReference) {
    addDirectoryList("ab");
    EXPECT_TRUE(compare("a@example.com", "(abc").isMatch);
    EXPECT_TRUE(compare(nullptr, "(abc").isMatch);
}

TEST_F(CompareAddress, FailsWhereTheListCannotBeOpened) {
    const Answer missing = compare("a@example.com", "(Nowhere)");
    EXPECT_FALSE(missing.isMatch);
    EXPECT_EQ(0x1804u, reasonOf(missing.code));
    for (const char* nameless : {"(", "()", "(x"}) {
        const Answer answer = compare("a@example.com", nameless);
        EXPECT_FALSE(answer.isMatch) << nameless;
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, answer.code) << nameless;
    }
}

TEST_F(CompareAddress, SplitsTheAddressOnlyForAListThatIsOpen) {
    addDirectoryList("Far");
    const std::unique_ptr<ZxPolRuleMatcher> asked = matcher();
    int error = ZXPOL_S_OK;
    messages().clear();
    asked->compareAddress("smtp:a@example.com", "(Nowhere)", nullptr, &error);
    EXPECT_EQ(std::vector<std::string>(), messages());
    asked->compareAddress("smtp:a@example.com", "(Far)", nullptr, &error);
    EXPECT_EQ(std::vector<std::string>({"split smtp:a@example.com to a@example.com"}), messages());
}

}  // namespace
