// Values: types, sizes, replacing, deleting.
#include "registry_support.h"

using namespace registry_test;

class Values : public StoreTest {};
ON_EVERY_STORE(Values);

TEST_P(Values, EveryTypeComesBackAsWritten) {
    const std::string number("\x01\x02\x03\x04", 4);
    const std::string string("text\0", 5);
    const std::string multi("one\0two\0\0", 9);
    EXPECT_GE(set(top, "number", ZXREG_NUMBER, number), 0);
    EXPECT_GE(set(top, "string", ZXREG_STRING, string), 0);
    EXPECT_GE(set(top, "protected", ZXREG_PROTECTED_STRING, string), 0);
    EXPECT_GE(set(top, "multi", ZXREG_MULTI_STRING, multi), 0);
    EXPECT_EQ(read(top, "number"), (Stored{ZXREG_NUMBER, number}));
    EXPECT_EQ(read(top, "string"), (Stored{ZXREG_STRING, string}));
    EXPECT_EQ(read(top, "protected"), (Stored{ZXREG_PROTECTED_STRING, string}));
    EXPECT_EQ(read(top, "multi"), (Stored{ZXREG_MULTI_STRING, multi}));
}

TEST_P(Values, ReadingWhatDoesNotExistIsNotFound) {
    EXPECT_REASON(readCode(top, "missing"), notFound);
    EXPECT_REASON(unset(top, "missing"), notFound);
}

TEST_P(Values, ABufferThatIsTooSmallGetsTheSizeOnly) {
    EXPECT_GE(setText(top, "v", "hello"), 0);
    for (const uint32_t capacity : {0u, 1u, 5u}) {
        char data[8] = "#######";
        uint32_t size = capacity;
        int error = 0;
        zxreg_queryValue(top.get(), "v", nullptr, data, &size, &error);
        EXPECT_REASON(error, tooSmall);
        EXPECT_EQ(size, 6u);
        EXPECT_STREQ(data, "#######");
    }
}

TEST_P(Values, ABufferThatJustFitsIsNotOverrun) {
    EXPECT_GE(setText(top, "v", "hello"), 0);
    char data[8] = "#######";
    uint32_t size = 6;
    uint32_t type = 99;
    int error = 0;
    zxreg_queryValue(top.get(), "v", &type, data, &size, &error);
    EXPECT_GE(error, 0);
    EXPECT_EQ(type, ZXREG_STRING);
    EXPECT_EQ(size, 6u);
    EXPECT_STREQ(data, "hello");
    EXPECT_EQ(data[6], '#');
}

TEST_P(Values, ANullBufferAsksForTheSize) {
    EXPECT_GE(setText(top, "v", "hello"), 0);
    uint32_t size = 0;
    int error = 0;
    zxreg_queryValue(top.get(), "v", nullptr, nullptr, &size, &error);
    EXPECT_GE(error, 0);
    EXPECT_EQ(size, 6u);
}

TEST_P(Values, ReplacingChangesTypeAndSize) {
    EXPECT_GE(setText(top, "v", "first"), 0);
    EXPECT_GE(set(top, "v", ZXREG_NUMBER, "1234"), 0);
    EXPECT_EQ(read(top, "v"), (Stored{ZXREG_NUMBER, "1234"}));
    EXPECT_GE(set(top, "v", ZXREG_PROTECTED_STRING, std::string("x\0", 2)), 0);
    EXPECT_EQ(read(top, "v"), (Stored{ZXREG_PROTECTED_STRING, std::string("x\0", 2)}));
    EXPECT_EQ(values(top).size(), 1u);
}

TEST_P(Values, DeletingLeavesTheOthers) {
    EXPECT_GE(setText(top, "a", "1"), 0);
    EXPECT_GE(setText(top, "b", "2"), 0);
    EXPECT_GE(unset(top, "a"), 0);
    EXPECT_REASON(readCode(top, "a"), notFound);
    EXPECT_EQ(text(top, "b"), "2");
}

TEST_P(Values, ValuesAndSubkeysOfOneNameAreTwoThings) {
    EXPECT_GE(setText(top, "both", "value"), 0);
    EXPECT_GE(setText(createKey(top, "both"), "v", "key"), 0);
    EXPECT_EQ(text(top, "both"), "value");
    EXPECT_GE(unset(top, "both"), 0);
    EXPECT_EQ(text(openKey(top, "both"), "v"), "key");
}

TEST_P(Values, SizesFromNothingToAMegabyte) {
    for (const size_t size : {0u, 1u, 2u, 255u, 256u, 2048u, 4096u, 65535u, 65536u, 1048576u}) {
        std::string bytes(size, 'x');
        for (size_t i = 0; i < size; ++i) {
            bytes[i] = static_cast<char>(i * 31 + size);
        }
        EXPECT_GE(set(top, "v", ZXREG_MULTI_STRING, bytes), 0) << size;
        EXPECT_EQ(read(top, "v"), (Stored{ZXREG_MULTI_STRING, bytes})) << size;
        EXPECT_GE(set(top, "p", ZXREG_PROTECTED_STRING, bytes), 0) << size;
        EXPECT_EQ(read(top, "p"), (Stored{ZXREG_PROTECTED_STRING, bytes})) << size;
    }
}

TEST_P(Values, ManyValuesAreFoundByName) {
    for (int i = 0; i < 200; ++i) {
        EXPECT_GE(setText(top, "n" + std::to_string(i), std::to_string(i)), 0);
    }
    for (int i = 0; i < 200; i += 2) {
        EXPECT_GE(unset(top, "n" + std::to_string(i)), 0);
    }
    for (int i = 0; i < 200; ++i) {
        if (i % 2 == 0) {
            EXPECT_REASON(readCode(top, "n" + std::to_string(i)), notFound);
        } else {
            EXPECT_EQ(text(top, "n" + std::to_string(i)), std::to_string(i));
        }
    }
}
