// Numbered values: prefix1, prefix2, ... of one key.
#include "store/multi_value.h"

#include "support/store_fixture.h"

namespace {

using zxtest::RawKey;

class NumberedValues : public zxtest::StoreTest {
protected:
    void set(std::initializer_list<const char*> names) {
        for (const char* name : names)
            raw().setText(name, std::string("text of ") + name);
    }
    // All names that the object knows, and the code at the end of them.
    static std::string known(ZxPolMultiValue& values) {
        std::string line;
        for (uint32_t index = 0;; ++index) {
            char name[300];
            uint32_t size = sizeof name;
            int error = ZXPOL_S_OK;
            values.enumValueName(index, name, &size, &error);
            if (error < 0) {
                EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, error);
                return line;
            }
            EXPECT_EQ(std::char_traits<char>::length(name), size);
            line += (index == 0 ? "" : " ") + std::string(name);
        }
    }
    static std::string created(ZxPolMultiValue& values) {
        char name[300];
        uint32_t size = sizeof name;
        int error = ZXPOL_S_OK;
        values.createValueName(name, &size, &error);
        EXPECT_CODE(ZXPOL_S_OK, error);
        EXPECT_EQ(std::char_traits<char>::length(name), size);
        return name;
    }
    // "name=text" of all values.
    std::string stored() {
        std::string line;
        const RawKey root = raw();
        for (const std::string& name : root.valueNames()) {
            const std::string data = root.bytes(name).value_or("");
            line += (line.empty() ? "" : " ") + name + "=" + data.c_str();
        }
        return line;
    }
    void setShort(std::initializer_list<std::pair<const char*, const char*>> values) {
        for (const auto& [name, text] : values)
            raw().setText(name, text);
    }
};
ZXTEST_ON_BOTH_ENGINES(NumberedValues);

TEST_P(NumberedValues, OnlyNamesWithThePrefixAreKnownAndTheNextIsTheCountPlusOne) {
    set({"condition1", "condition2", "Other"});
    ZxPolMultiValue values(store(), "condition");
    EXPECT_EQ("condition1 condition2", known(values));
    char name[64];
    uint32_t size = sizeof name;
    int error = ZXPOL_S_OK;
    values.createValueName(name, &size, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_STREQ("condition3", name);
    EXPECT_EQ(10u, size);
    EXPECT_EQ("condition1 condition2 condition3", known(values));
    EXPECT_FALSE(raw().bytes("condition3"));
}

TEST_P(NumberedValues, ThePrefixIsCaseBlindAndFollowedByDigitsOnly) {
    const ZxPolMultiValue values(store(), "condition");
    EXPECT_TRUE(values._prefixMatch("CONDITION4"));
    EXPECT_TRUE(values._prefixMatch("condition"));
    EXPECT_TRUE(values._prefixMatch("condition007"));
    EXPECT_FALSE(values._prefixMatch("condition4x"));
    EXPECT_FALSE(values._prefixMatch("conditions"));
    EXPECT_FALSE(values._prefixMatch("condition 4"));
    EXPECT_FALSE(values._prefixMatch("condition-4"));
    EXPECT_FALSE(values._prefixMatch("conditio"));
    EXPECT_FALSE(values._prefixMatch("xcondition4"));
    EXPECT_FALSE(values._prefixMatch(""));
}

TEST_P(NumberedValues, AreKnownByAscendingNumberANameWithoutDigitsFirst) {
    set({"n10", "n2", "N1", "n", "nx"});
    ZxPolMultiValue values(store(), "n");
    EXPECT_EQ("n N1 n2 n10", known(values));
    EXPECT_EQ("n5", created(values));
}

TEST_P(NumberedValues, TheNextNameCountsEvenWhereThereAreGaps) {
    set({"n1", "n3"});
    ZxPolMultiValue values(store(), "n");
    EXPECT_EQ("n3", created(values));
}

TEST_P(NumberedValues, NamesHandedOutAreCounted) {
    ZxPolMultiValue values(store(), "n");
    EXPECT_EQ("n1", created(values));
    EXPECT_EQ("n2", created(values));
    EXPECT_EQ("n1 n2", known(values));
    EXPECT_EQ("", stored());
}

TEST_P(NumberedValues, ATooSmallBufferForANewNameIsToldTheLength) {
    for (int number = 1; number <= 11; ++number)
        set({("address" + std::to_string(number)).c_str()});
    ZxPolMultiValue values(store(), "address");
    char name[64] = "kept";
    uint32_t size = 5;
    int error = ZXPOL_S_OK;
    values.createValueName(name, &size, &error);
    EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, error);
    EXPECT_EQ(9u, size);
    EXPECT_STREQ("kept", name);
    EXPECT_EQ("address12", created(values));  // nothing was handed out before
    EXPECT_EQ("address13", created(values));
}

TEST_P(NumberedValues, ABufferOfExactlyTheLengthIsTooSmall) {
    set({"n1"});
    ZxPolMultiValue values(store(), "n");
    char name[8] = "kept";
    uint32_t size = 2;
    int error = ZXPOL_S_OK;
    values.enumValueName(0, name, &size, &error);
    EXPECT_CODE(ZXPOL_E_BUFFER_TOO_SMALL, error);
    EXPECT_EQ(2u, size);
    EXPECT_STREQ("kept", name);
    size = 3;
    values.enumValueName(0, name, &size, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(2u, size);
    EXPECT_STREQ("n1", name);
}

TEST_P(NumberedValues, EnumeratingChecksItsArguments) {
    set({"n1"});
    ZxPolMultiValue values(store(), "n");
    char name[8];
    uint32_t size = sizeof name;
    int error = ZXPOL_S_OK;
    values.enumValueName(0, nullptr, &size, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    values.enumValueName(0, name, nullptr, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    error = ZXPOL_S_OK;
    size = 0;
    values.enumValueName(0, name, &size, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    values.enumValueName(9, name, &size, &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);  // the size comes before the index
}

TEST_P(NumberedValues, DeletingClosesTheGap) {
    setShort({{"n1", "a"}, {"n2", "b"}, {"n3", "c"}, {"n4", "d"}});
    ZxPolMultiValue values(store(), "n");
    int error = ZXPOL_S_OK;
    values.deleteValueName("n2", &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ("n1=a n2=c n3=d", stored());
    EXPECT_EQ("n1 n2 n3", known(values));
}

TEST_P(NumberedValues, DeletingByIndexMeansTheNumberAboveIt) {
    setShort({{"n1", "a"}, {"n2", "b"}, {"n3", "c"}});
    ZxPolMultiValue values(store(), "n");
    int error = ZXPOL_S_OK;
    values.deleteValueName(0u, &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ("n1=b n2=c", stored());
    values.deleteValueName(1u, &error);
    EXPECT_EQ("n1=b", stored());
}

TEST_P(NumberedValues, AnIndexWithoutANumberDeletesNothing) {
    setShort({{"n1", "a"}, {"n2", "b"}});
    ZxPolMultiValue values(store(), "n");
    for (const uint32_t index : {0x7fffffffu, 0x80000000u, 0xffffffffu}) {
        int error = ZXPOL_S_OK;
        values.deleteValueName(index, &error);
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    }
    EXPECT_EQ("n1=a n2=b", stored());
}

TEST_P(NumberedValues, MovingKeepsTypeAndSize) {
    raw().setText("n1", "a");
    raw().setNumber("n2", 7);
    raw().setBytes("n3", ZXREG_MULTI_STRING, std::string("x\0y\0\0", 5));
    ZxPolMultiValue values(store(), "n");
    int error = ZXPOL_S_OK;
    values.deleteValueName("n1", &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(7u, raw().number("n1"));
    uint32_t type = 0;
    EXPECT_EQ(std::string("x\0y\0\0", 5), raw().bytes("n2", &type));
    EXPECT_EQ(ZXREG_MULTI_STRING, type);
    EXPECT_FALSE(raw().bytes("n3"));
}

TEST_P(NumberedValues, ANumberPastTheEndDeletesTheLast) {
    setShort({{"n1", "a"}, {"n2", "b"}, {"n3", "c"}});
    ZxPolMultiValue values(store(), "n");
    int error = ZXPOL_S_OK;
    values.deleteValueName("n9", &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ("n1=a n2=b", stored());
}

TEST_P(NumberedValues, DeletingFromAnEmptyListFindsNothing) {
    ZxPolMultiValue values(store(), "n");
    int error = ZXPOL_S_OK;
    values.deleteValueName("n1", &error);
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, error);
    error = ZXPOL_S_OK;
    values.deleteValueName(0u, &error);
    EXPECT_CODE(ZXPOL_E_NOT_FOUND, error);
}

TEST_P(NumberedValues, NamesThatCannotBeNumberedAreRefused) {
    setShort({{"n1", "a"}});
    ZxPolMultiValue values(store(), "n");
    for (const char* name : {"x1", "n", "n0", "n1x", ""}) {
        int error = ZXPOL_S_OK;
        values.deleteValueName(name, &error);
        EXPECT_CODE(ZXPOL_E_INVALID_ARG, error) << name;
    }
    int error = ZXPOL_S_OK;
    values.deleteValueName(static_cast<const char*>(nullptr), &error);
    EXPECT_CODE(ZXPOL_E_INVALID_ARG, error);
    EXPECT_EQ("n1=a", stored());
}

TEST_P(NumberedValues, AValueTooLargeToMoveStopsThePartWayDoneDeletion) {
    setShort({{"n1", "a"}, {"n2", "b"}});
    raw().setText("n3", std::string(3000, 'c'));
    raw().setText("n4", "d");
    ZxPolMultiValue values(store(), "n");
    int error = ZXPOL_S_OK;
    values.deleteValueName("n1", &error);
    EXPECT_LT(error, 0);
    EXPECT_EQ(6u, zxtest::reasonOf(error));
    EXPECT_EQ("b", raw().text("n1"));
    EXPECT_EQ("b", raw().text("n2"));
    EXPECT_EQ(std::string(3000, 'c'), raw().text("n3"));
    EXPECT_EQ("d", raw().text("n4"));
}

TEST_P(NumberedValues, AValueOfExactly2048BytesIsMoved) {
    setShort({{"n1", "a"}});
    raw().setText("n2", std::string(2047, 'b'));
    ZxPolMultiValue values(store(), "n");
    int error = ZXPOL_S_OK;
    values.deleteValueName("n1", &error);
    EXPECT_CODE(ZXPOL_S_OK, error);
    EXPECT_EQ(std::string(2047, 'b'), raw().text("n1"));
}

TEST_P(NumberedValues, OtherObjectsOverTheKeyKeepWhatTheyRead) {
    setShort({{"n1", "a"}, {"n2", "b"}});
    ZxPolMultiValue first(store(), "n");
    ZxPolMultiValue second(store(), "n");
    int error = ZXPOL_S_OK;
    first.deleteValueName("n1", &error);
    EXPECT_EQ("n1", known(first));
    EXPECT_EQ("n1 n2", known(second));
}

}  // namespace
