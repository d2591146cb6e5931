// Hostile arguments to every operation: a code, and nothing else happens.
#include <functional>

#include "registry_support.h"

using namespace registry_test;

namespace {

using Call = std::function<void(_ZxPolComHandle* key, int* error)>;

char name[256];
char data[256];
uint32_t nameSize = sizeof name;
uint32_t dataSize = sizeof data;
uint32_t type;

// The operations with sound arguments, but for the handle.
const std::vector<std::pair<const char*, Call>>& operations() {
    static const std::vector<std::pair<const char*, Call>> all = {
        {"openKey", [](auto* key, int* error) { EXPECT_EQ(zxreg_openKey(key, "sub", error), nullptr); }},
        {"createKey", [](auto* key, int* error) { EXPECT_EQ(zxreg_createKey(key, "sub2", error), nullptr); }},
        {"closeKey", [](auto* key, int* error) { zxreg_closeKey(key, error); }},
        {"deleteKey", [](auto* key, int* error) { zxreg_deleteKey(key, "sub", error); }},
        {"queryValue",
         [](auto* key, int* error) { zxreg_queryValue(key, "v", &type, data, &(dataSize = sizeof data), error); }},
        {"setValue", [](auto* key, int* error) { zxreg_setValue(key, "v2", ZXREG_STRING, "x", 2, error); }},
        {"deleteValue", [](auto* key, int* error) { zxreg_deleteValue(key, "v", error); }},
        {"enumSubkey", [](auto* key, int* error) { zxreg_enumSubkey(key, 0, name, &(nameSize = sizeof name), error); }},
        {"enumValue",
         [](auto* key, int* error) {
             zxreg_enumValue(key, 0, name, &(nameSize = sizeof name), &type, data, &(dataSize = sizeof data), error);
         }},
    };
    return all;
}

}  // namespace

class Arguments : public StoreTest {
protected:
    void SetUp() override {
        StoreTest::SetUp();
        createKey(top, "sub");
        EXPECT_GE(setText(top, "v", "x"), 0);
        before = dump(top);
    }
    void TearDown() override {
        EXPECT_EQ(dump(top), before);
        StoreTest::TearDown();
    }
    std::string before;
};
ON_EVERY_STORE(Arguments);

TEST_P(Arguments, ANullHandleIsRefused) {
    for (const auto& [what, call] : operations()) {
        int error = 0;
        call(nullptr, &error);
        EXPECT_LT(error, 0) << what;
    }
}

TEST_P(Arguments, AHandleOfAnotherKindIsRefused) {
    for (const uint32_t kind : {0u, 2u, 0x100u, 0xffffffffu}) {
        for (const auto& [what, call] : operations()) {
            _ZxPolComHandle other = *top.get();
            other.kind = kind;
            int error = 0;
            call(&other, &error);
            EXPECT_LT(error, 0) << what;
        }
    }
}

TEST_P(Arguments, ANullResultMakesTheCallANoOp) {
    for (const auto& [what, call] : operations()) {
        call(top.get(), nullptr);
        EXPECT_EQ(dump(top), before) << what;
    }
}

TEST_P(Arguments, AFailureLeftInTheResultIsNotLookedAt) {
    int error = -1;
    uint32_t size = sizeof data;
    zxreg_queryValue(top.get(), "v", nullptr, data, &size, &error);
    EXPECT_GE(error, 0);
}

TEST_P(Arguments, NullNamesAreRefused) {
    int error = 0;
    EXPECT_EQ(zxreg_openKey(top.get(), nullptr, &error), nullptr);
    EXPECT_LT(error, 0);
    EXPECT_EQ(zxreg_createKey(top.get(), nullptr, &(error = 0)), nullptr);
    EXPECT_LT(error, 0);
    zxreg_deleteKey(top.get(), nullptr, &(error = 0));
    EXPECT_LT(error, 0);
    zxreg_queryValue(top.get(), nullptr, &type, data, &(dataSize = sizeof data), &(error = 0));
    EXPECT_LT(error, 0);
    zxreg_setValue(top.get(), nullptr, ZXREG_STRING, "x", 2, &(error = 0));
    EXPECT_LT(error, 0);
    zxreg_deleteValue(top.get(), nullptr, &(error = 0));
    EXPECT_LT(error, 0);
}

TEST_P(Arguments, NullBuffersAreRefused) {
    int error = 0;
    zxreg_enumSubkey(top.get(), 0, nullptr, &(nameSize = 256), &error);
    EXPECT_LT(error, 0);
    zxreg_enumSubkey(top.get(), 0, name, nullptr, &(error = 0));
    EXPECT_LT(error, 0);
    zxreg_enumValue(top.get(), 0, nullptr, &(nameSize = 256), &type, data, &dataSize, &(error = 0));
    EXPECT_LT(error, 0);
    zxreg_enumValue(top.get(), 0, name, nullptr, &type, data, &dataSize, &(error = 0));
    EXPECT_LT(error, 0);
    zxreg_enumValue(top.get(), 0, name, &(nameSize = 256), &type, data, nullptr, &(error = 0));
    EXPECT_LT(error, 0);
    zxreg_queryValue(top.get(), "v", &type, data, nullptr, &(error = 0));
    EXPECT_LT(error, 0);
    zxreg_setValue(top.get(), "v2", ZXREG_STRING, nullptr, 2, &(error = 0));
    EXPECT_LT(error, 0);
}

TEST_P(Arguments, EmptyLevelsOfAPathAreRefused) {
    for (const char* path : {"\\sub", "\\\\", "sub\\\\", "sub\\\\x", "\\\\sub", "sub\\\\\\"}) {
        EXPECT_LT(openCode(top, path), 0) << path;
        EXPECT_LT(createCode(top, path), 0) << path;
        EXPECT_LT(deleteKey(top, path), 0) << path;
    }
}

TEST_P(Arguments, UnknownTypesAreRefused) {
    EXPECT_LT(set(top, "v2", 4, "x"), 0);
    EXPECT_LT(set(top, "v2", 0xffffffff, "x"), 0);
}

TEST_P(Arguments, ANumberHasFourBytes) {
    EXPECT_LT(set(top, "v2", ZXREG_NUMBER, ""), 0);
    EXPECT_LT(set(top, "v2", ZXREG_NUMBER, "123"), 0);
    EXPECT_LT(set(top, "v2", ZXREG_NUMBER, "12345678"), 0);
}

TEST_P(Arguments, AKeyCannotDeleteItself) {
    EXPECT_LT(deleteKey(top, ""), 0);
    EXPECT_LT(deleteKey(top, "\\"), 0);
}
