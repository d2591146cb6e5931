// Names at their limits, of any bytes.
#include <cctype>

#include "registry_support.h"

using namespace registry_test;

class Names : public StoreTest {};
ON_EVERY_STORE(Names);

TEST_P(Names, UpTo255BytesAreTaken) {
    const std::string longest(255, 'n');
    createKey(top, longest);
    EXPECT_GE(openCode(top, longest), 0);
    EXPECT_GE(setText(top, longest, "v"), 0);
    EXPECT_EQ(text(top, longest), "v");
    EXPECT_GE(unset(top, longest), 0);
    EXPECT_GE(deleteKey(top, longest), 0);
}

TEST_P(Names, LongerOnesAreRefused) {
    const std::string tooLong(256, 'n');
    EXPECT_LT(createCode(top, tooLong), 0);
    EXPECT_LT(openCode(top, tooLong), 0);
    EXPECT_LT(deleteKey(top, tooLong), 0);
    EXPECT_LT(setText(top, tooLong, "v"), 0);
    EXPECT_LT(readCode(top, tooLong), 0);
    EXPECT_LT(unset(top, tooLong), 0);
    EXPECT_LT(setText(top, std::string(1 << 20, 'n'), "v"), 0);
    EXPECT_TRUE(subkeys(top).empty());
    EXPECT_TRUE(values(top).empty());
}

TEST_P(Names, APathMayBeLongerThanAName) {
    const std::string level(200, 'p');
    std::string path;
    for (int depth = 0; depth < 50; ++depth) {
        path += (depth == 0 ? "" : "\\") + level;
        EXPECT_GE(createCode(top, path), 0) << depth;
    }
    EXPECT_GE(setText(openKey(top, path), "v", "deep"), 0);
    EXPECT_EQ(text(openKey(top, path + "\\"), "v"), "deep");
    EXPECT_LT(createCode(top, path + "\\" + std::string(256, 'p')), 0);
}

TEST_P(Names, EveryByteButTheSeparatorIsAName) {
    for (int byte = 1; byte < 256; ++byte) {
        const std::string name(1, static_cast<char>(byte));
        if (name != "\\") {
            EXPECT_GE(createCode(top, name), 0) << byte;
        }
        EXPECT_GE(setText(top, name, std::to_string(byte)), 0) << byte;
    }
    // Upper and lower case may be one name in other stores; ours tells them apart.
    for (int byte = 1; byte < 256; ++byte) {
        const std::string name(1, static_cast<char>(byte));
        EXPECT_TRUE(isalpha(byte) != 0 || text(top, name) == std::to_string(byte)) << byte;
        EXPECT_TRUE(name == "\\" || openCode(top, name) >= 0) << byte;
    }
}

TEST_P(Names, NamesMadeOfSpecialTexts) {
    for (const char* name : {"%s", "'; DROP TABLE node; --", "..", "/", " ", "\xc3\xa4", "\xff\xfe", "a\nb", "NULL"}) {
        EXPECT_GE(setText(createKey(top, name), name, name), 0) << name;
        EXPECT_EQ(text(openKey(top, name), name), name);
    }
}
