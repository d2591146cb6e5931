// Enumerating subkeys and values.
#include <set>

#include "registry_support.h"

using namespace registry_test;

class Enumeration : public StoreTest {};
ON_EVERY_STORE(Enumeration);

TEST_P(Enumeration, NothingToEnumerateEndsAtOnce) {
    char name[256];
    uint32_t size = sizeof name;
    int error = 0;
    zxreg_enumSubkey(top.get(), 0, name, &size, &error);
    EXPECT_REASON(error, noMoreItems);
    size = sizeof name;
    zxreg_enumValue(top.get(), 0, name, &size, nullptr, nullptr, nullptr, &error);
    EXPECT_REASON(error, noMoreItems);
    size = sizeof name;
    zxreg_enumSubkey(top.get(), 0xffffffff, name, &size, &error);
    EXPECT_REASON(error, noMoreItems);
}

TEST_P(Enumeration, EveryNameOnceInAStableOrder) {
    for (int i = 0; i < 50; ++i) {
        createKey(top, "k" + std::to_string(i * 7 % 50));
        EXPECT_GE(setText(top, "v" + std::to_string(i * 11 % 50), "x"), 0);
    }
    const std::vector<std::string> keys = subkeys(top);
    const std::vector<std::string> names = values(top);
    EXPECT_EQ(std::set<std::string>(keys.begin(), keys.end()).size(), 50u);
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), 50u);
    EXPECT_EQ(subkeys(top), keys);
    EXPECT_EQ(values(top), names);
}

TEST_P(Enumeration, ANameThatDoesNotFitGetsItsLength) {
    createKey(top, "abcde");
    for (const uint32_t capacity : {0u, 1u, 5u}) {
        char name[8] = "#######";
        uint32_t size = capacity;
        int error = 0;
        zxreg_enumSubkey(top.get(), 0, name, &size, &error);
        EXPECT_REASON(error, tooSmall);
        EXPECT_EQ(size, 5u);
        EXPECT_STREQ(name, "#######");
    }
    char name[8] = "#######";
    uint32_t size = 6;
    int error = 0;
    zxreg_enumSubkey(top.get(), 0, name, &size, &error);
    EXPECT_GE(error, 0);
    EXPECT_EQ(size, 5u);
    EXPECT_STREQ(name, "abcde");
    EXPECT_EQ(name[6], '#');
}

TEST_P(Enumeration, EitherBufferOfAValueMayBeTooSmall) {
    EXPECT_GE(setText(top, "abcde", "hello"), 0);
    for (const auto& [nameCapacity, dataCapacity] : {std::pair(5u, 6u), std::pair(6u, 5u), std::pair(0u, 0u)}) {
        char name[8] = "#######";
        char data[8] = "#######";
        uint32_t nameSize = nameCapacity;
        uint32_t dataSize = dataCapacity;
        uint32_t type = 0;
        int error = 0;
        zxreg_enumValue(top.get(), 0, name, &nameSize, &type, data, &dataSize, &error);
        EXPECT_REASON(error, tooSmall);
        EXPECT_EQ(nameSize, 5u);
        EXPECT_EQ(dataSize, 6u);
        EXPECT_STREQ(name, "#######");
        EXPECT_STREQ(data, "#######");
    }
}

TEST_P(Enumeration, AValueComesWithTypeDataAndSize) {
    EXPECT_GE(set(top, "ExcluId0000001a", ZXREG_NUMBER, "\1\2\3\4"), 0);
    EXPECT_GE(set(top, "p", ZXREG_PROTECTED_STRING, "pw"), 0);
    for (uint32_t i = 0; i < 2; ++i) {
        char name[256];
        char data[16];
        uint32_t nameSize = sizeof name;
        uint32_t dataSize = sizeof data;
        uint32_t type = 99;
        int error = 0;
        zxreg_enumValue(top.get(), i, name, &nameSize, &type, data, &dataSize, &error);
        EXPECT_GE(error, 0);
        const bool isNumber = std::string(name) == "ExcluId0000001a";
        EXPECT_EQ(type, isNumber ? ZXREG_NUMBER : ZXREG_PROTECTED_STRING);
        EXPECT_EQ(std::string(data, dataSize), isNumber ? "\1\2\3\4" : "pw");
    }
}

TEST_P(Enumeration, PartsThatAreNotWantedAreNotReturned) {
    EXPECT_GE(setText(top, "v", "hello"), 0);
    char name[256];
    uint32_t nameSize = sizeof name;
    uint32_t type = 99;
    uint32_t dataSize = 0;
    int error = 0;
    zxreg_enumValue(top.get(), 0, name, &nameSize, nullptr, nullptr, nullptr, &error);
    EXPECT_GE(error, 0);
    EXPECT_STREQ(name, "v");
    nameSize = sizeof name;
    zxreg_enumValue(top.get(), 0, name, &nameSize, &type, nullptr, &dataSize, &error);
    EXPECT_GE(error, 0);
    EXPECT_EQ(type, ZXREG_STRING);
    EXPECT_EQ(dataSize, 6u);
}

TEST_P(Enumeration, NamesOf255BytesFitIntoBuffersOf256) {
    const std::string longest(255, 'n');
    createKey(top, longest);
    EXPECT_GE(setText(top, longest, "x"), 0);
    EXPECT_EQ(subkeys(top), std::vector<std::string>{longest});
    EXPECT_EQ(values(top), std::vector<std::string>{longest});
}
