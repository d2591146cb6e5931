// Opening stores: locations, sharing, what stays and what goes; and the rules that our own store adds to the contract.
#include <unistd.h>

#include <thread>

#include "registry_support.h"

using namespace registry_test;

namespace {

int openStoreCode(const std::string& location) {
    int code = 0;
    openStore(location, &code);
    return code;
}

}  // namespace

TEST(Store, UnknownLocationsAreRefused) {
    for (const char* location : {"", "memory", "sqlite", "sqlite:", "file:/tmp/x", "MEMORY:", "zxreg.db"}) {
        EXPECT_EQ(openStoreCode(location), ZXREG_E_LOCATION) << location;
        EXPECT_NE(std::string(zxreg_lastErrorText()).find(location), std::string::npos);
    }
    int error = 0;
    EXPECT_EQ(zxreg_openStore(nullptr, &error), nullptr);
    EXPECT_EQ(error, ZXREG_E_INVALID_ARG);
    EXPECT_EQ(zxreg_openStore("memory:", nullptr), nullptr);
}

TEST(Store, MemoryStoresWithoutANameAreTheirOwn) {
    const Key one = openStore("memory:");
    const Key two = openStore("memory:");
    createKey(one, "A");
    EXPECT_EQ(openCode(two, "A"), ZXREG_E_NOT_FOUND);
}

TEST(Store, NamedMemoryStoresAreSharedWhileAnyKeyIsOpen) {
    Key one = openStore("memory:shared");
    Key inner = createKey(one, "A");
    one.close();
    Key two = openStore("memory:shared");
    EXPECT_EQ(openCode(two, "A"), ZXREG_S_OK);
    two.close();
    inner.close();
    EXPECT_EQ(openCode(openStore("memory:shared"), "A"), ZXREG_E_NOT_FOUND);
}

TEST(Store, OneFileIsOneTreeByWhateverName) {
    const Folder folder;
    const Key one = openStore("sqlite:" + folder / "a.db");
    EXPECT_EQ(symlink((folder / "a.db").c_str(), (folder / "link.db").c_str()), 0);
    const Key two = openStore("sqlite:" + folder.path() + "/./a.db");
    const Key three = openStore("sqlite:" + folder / "link.db");
    createKey(one, "A");
    EXPECT_EQ(openCode(two, "A"), ZXREG_S_OK);
    EXPECT_EQ(stamp(one), stamp(two));
    EXPECT_EQ(stamp(one), stamp(three));
}

TEST(Store, EverythingStaysInAFile) {
    const Folder folder;
    std::string before;
    {
        const Key root = openStore("sqlite:" + folder / "a.db");
        for (int i = 0; i < 40; ++i) {
            const Key key = createKey(root, "key" + std::to_string(i));
            EXPECT_GE(set(key, "n", ZXREG_NUMBER, "1234"), 0);
            EXPECT_GE(set(key, "m", ZXREG_MULTI_STRING, std::string("a\0b\0\0", 5)), 0);
            EXPECT_GE(set(key, "p", ZXREG_PROTECTED_STRING, std::string("pw\0", 3)), 0);
            EXPECT_GE(setText(key, "", "no name"), 0);
            createKey(key, "below");
        }
        EXPECT_GE(deleteKey(openKey(root, "key7"), "below"), 0);
        EXPECT_GE(deleteKey(root, "key7"), 0);
        EXPECT_GE(unset(openKey(root, "key8"), "n"), 0);
        EXPECT_GE(setText(openKey(root, "key9"), "m", "replaced in place"), 0);
        before = dump(root);
    }
    EXPECT_EQ(dump(openStore("sqlite:" + folder / "a.db")), before);
    EXPECT_NE(before.find("replaced in place"), std::string::npos);
}

TEST(Store, TheOrderOfCreationStays) {
    const Folder folder;
    for (const std::string& location : {std::string("memory:order"), "sqlite:" + folder / "a.db"}) {
        const Key keep = openStore("memory:order");
        {
            const Key root = openStore(location);
            for (const char* name : {"b", "a", "d", "c"}) {
                createKey(root, name);
                EXPECT_GE(setText(root, name, "x"), 0);
            }
            EXPECT_GE(deleteKey(root, "a"), 0);
            EXPECT_GE(unset(root, "a"), 0);
            createKey(root, "a");
            EXPECT_GE(setText(root, "a", "x"), 0);
            EXPECT_GE(setText(root, "b", "replaced"), 0);
        }
        const Key root = openStore(location);
        EXPECT_EQ(subkeys(root), (std::vector<std::string>{"b", "d", "c", "a"}));
        EXPECT_EQ(values(root), (std::vector<std::string>{"b", "d", "c", "a"}));
    }
}

TEST(Store, NamesAreExact) {
    const Key root = openStore("memory:");
    createKey(root, "Mail");
    EXPECT_EQ(openCode(root, "mail"), ZXREG_E_NOT_FOUND);
    EXPECT_GE(setText(root, "v", "lower"), 0);
    EXPECT_GE(setText(root, "V", "upper"), 0);
    EXPECT_EQ(text(root, "v"), "lower");
}

TEST(Store, ItsOwnCodes) {
    const Key root = openStore("memory:");
    const Key gone = createKey(root, "gone");
    createKey(gone, "below");
    EXPECT_EQ(deleteKey(root, "gone"), ZXREG_E_NOT_EMPTY);
    EXPECT_EQ(deleteKey(root, ""), ZXREG_E_INVALID_ARG);
    EXPECT_EQ(createCode(root, "missing\\below"), ZXREG_E_NOT_FOUND);
    EXPECT_EQ(createCode(root, "a\\\\b"), ZXREG_E_INVALID_ARG);
    EXPECT_EQ(createCode(root, std::string(256, 'x')), ZXREG_E_INVALID_ARG);
    int error = 0;
    zxreg_closeKey(nullptr, &error);
    EXPECT_EQ(error, ZXREG_E_INVALID_ARG);
    _ZxPolComHandle other{0x101, nullptr};
    zxreg_closeKey(&other, &error);
    EXPECT_EQ(error, ZXREG_E_WRONG_HANDLE);
    EXPECT_GE(deleteKey(gone, "below"), 0);
    EXPECT_EQ(createCode(root, "new"), ZXREG_S_OK);
}

TEST(Store, OperationsOnADeletedKeyFail) {
    const Key root = openStore("memory:");
    const Key gone = createKey(root, "gone");
    const Key below = createKey(gone, "below");
    EXPECT_GE(setText(below, "v", "x"), 0);
    EXPECT_GE(deleteKey(gone, "below"), 0);
    EXPECT_GE(deleteKey(root, "gone"), 0);
    createKey(root, "gone");
    for (const Key* key : {&gone, &below}) {
        EXPECT_EQ(openCode(*key, ""), ZXREG_E_DELETED);
        EXPECT_EQ(openCode(*key, "x"), ZXREG_E_DELETED);
        EXPECT_EQ(createCode(*key, "x"), ZXREG_E_DELETED);
        EXPECT_EQ(createCode(*key, ""), ZXREG_E_DELETED);
        EXPECT_EQ(deleteKey(*key, "x"), ZXREG_E_DELETED);
        EXPECT_EQ(readCode(*key, "v"), ZXREG_E_DELETED);
        EXPECT_EQ(setText(*key, "v", "x"), ZXREG_E_DELETED);
        EXPECT_EQ(unset(*key, "v"), ZXREG_E_DELETED);
        EXPECT_EQ(begin(*key), ZXREG_E_DELETED);
        char name[256];
        uint32_t size = sizeof name;
        int error = 0;
        zxreg_enumSubkey(key->get(), 0, name, &size, &error);
        EXPECT_EQ(error, ZXREG_E_DELETED);
        zxreg_enumValue(key->get(), 0, name, &size, nullptr, nullptr, nullptr, &error);
        EXPECT_EQ(error, ZXREG_E_DELETED);
        EXPECT_STRNE(zxreg_lastErrorText(), "");
    }
}

TEST(Store, ValuesHaveAGreatestSize) {
    const Key root = openStore("memory:");
    int error = 0;
    zxreg_setValue(root.get(), "v", ZXREG_MULTI_STRING, "x", ZXREG_MAX_VALUE + 1, &error);
    EXPECT_EQ(error, ZXREG_E_INVALID_ARG);
    zxreg_setValue(root.get(), "v", ZXREG_MULTI_STRING, "x", 0xffffffff, &error);
    EXPECT_EQ(error, ZXREG_E_INVALID_ARG);
}

TEST(Store, AVeryDeepTreeComesAndGoes) {
    const Folder folder;
    constexpr int depth = 3000;
    const std::string location = "sqlite:" + folder / "a.db";
    {
        Key key = openStore(location);
        const Key root = openKey(key, "");
        EXPECT_GE(begin(root), 0);
        for (int i = 0; i < depth; ++i) {
            key = createKey(key, "d");
        }
        EXPECT_GE(end(root), 0);
    }
    std::string path;
    for (int i = 0; i < depth; ++i) {
        path += "d\\";
    }
    EXPECT_EQ(openCode(openStore(location), path), ZXREG_S_OK);
}

TEST(Store, ClosingTheLastKeyTakesAnOpenUpdateBack) {
    const Folder folder;
    const std::string location = "sqlite:" + folder / "a.db";
    {
        const Key root = openStore(location);
        EXPECT_GE(begin(root), 0);
        createKey(root, "A");
    }
    EXPECT_EQ(openCode(openStore(location), "A"), ZXREG_E_NOT_FOUND);
}

TEST(Store, TheLastFailureIsOfThisThread) {
    openStoreCode("nonsense:");
    const std::string mine = zxreg_lastErrorText();
    std::thread([] { EXPECT_STREQ(zxreg_lastErrorText(), ""); }).join();
    EXPECT_EQ(zxreg_lastErrorText(), mine);
    EXPECT_EQ(openStoreCode("memory:"), ZXREG_S_OK);
}
