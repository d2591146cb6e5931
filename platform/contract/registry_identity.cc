// Identities: numbers that designate a key itself.
#include <set>

#include "registry_support.h"
#include "registry_worker.h"

using namespace registry_test;

class Identities : public StoreTest {};
ON_EVERY_STORE(Identities);

TEST_P(Identities, AKeyHasOneThroughEveryHandle) {
    const Key key = createKey(top, "key");
    const uint64_t number = identity(key);
    EXPECT_NE(number, 0u);
    EXPECT_EQ(identity(key), number);
    EXPECT_EQ(identity(openKey(top, "key")), number);
    EXPECT_EQ(identity(createKey(top, "key")), number);
    EXPECT_EQ(identity(openKey(key, "")), number);
}

TEST_P(Identities, ChangesLeaveItAlone) {
    const Key key = createKey(top, "key");
    const uint64_t number = identity(key);
    const uint64_t above = identity(top);
    EXPECT_GE(setText(key, "v", "x"), 0);
    EXPECT_GE(setText(createKey(key, "below"), "v", "x"), 0);
    EXPECT_GE(deleteKey(key, "below"), 0);
    EXPECT_GE(unset(key, "v"), 0);
    EXPECT_EQ(identity(key), number);
    EXPECT_EQ(identity(top), above);
}

TEST_P(Identities, EveryKeyHasItsOwn) {
    const Key other = openStore("memory:");
    const Key third = openStore("memory:");
    std::set<uint64_t> numbers{identity(root), identity(top), identity(other), identity(third)};
    for (int i = 0; i < 30; ++i) {
        numbers.insert(identity(createKey(top, "k" + std::to_string(i))));
        numbers.insert(identity(createKey(other, "k" + std::to_string(i))));
    }
    EXPECT_EQ(numbers.size(), 64u);
}

TEST_P(Identities, AKeyMadeAgainIsAnother) {
    const Key gone = createKey(top, "key");
    const uint64_t number = identity(gone);
    EXPECT_GE(deleteKey(top, "key"), 0);
    int error = 0;
    EXPECT_EQ(zxreg_identity(gone.get(), &error), 0u);
    EXPECT_EQ(error, ZXREG_E_DELETED);
    EXPECT_NE(identity(createKey(top, "key")), number);
    EXPECT_EQ(zxreg_identity(gone.get(), &error), 0u);
}

TEST_P(Identities, TakingBackGivesTheOldKeyBack) {
    const Key key = createKey(top, "key");
    const uint64_t number = identity(key);
    EXPECT_GE(begin(top), 0);
    EXPECT_GE(deleteKey(top, "key"), 0);
    const Key made = createKey(top, "key");
    EXPECT_NE(identity(made), number);
    EXPECT_GE(cancel(top), 0);
    EXPECT_EQ(identity(key), number);
    EXPECT_EQ(identity(openKey(top, "key")), number);
    int error = 0;
    EXPECT_EQ(zxreg_identity(made.get(), &error), 0u);
    EXPECT_EQ(error, ZXREG_E_DELETED);
}

TEST(IdentitiesOfStores, AStoreOpenedAgainHasOthers) {
    const Folder folder;
    for (const std::string& location : {std::string("memory:identities"), "sqlite:" + folder / "a.db"}) {
        std::set<uint64_t> numbers;
        for (int i = 0; i < 3; ++i) {
            const Key root = openStore(location);
            numbers.insert(identity(root));
            numbers.insert(identity(createKey(root, "A")));
            EXPECT_EQ(identity(root), identity(openStore(location)));
        }
        EXPECT_EQ(numbers.size(), 6u);
    }
}

TEST(IdentitiesOfStores, WhatOtherProcessesDoLeavesThemAlone) {
    const Folder folder;
    const std::string location = "sqlite:" + folder / "a.db";
    const Key root = openStore(location);
    const Key key = createKey(root, "A");
    const Key gone = createKey(root, "gone");
    const uint64_t number = identity(key);
    const uint64_t ofGone = identity(gone);
    work({location, "set", "A", "v", "x", "create", "A\\below"});
    EXPECT_EQ(identity(key), number);
    // So much that everything is read again.
    work({location, "delete", "gone", "create", "gone", "fill", "A", "300"});
    EXPECT_EQ(identity(openKey(root, "A")), number);
    int error = 0;
    EXPECT_EQ(zxreg_identity(gone.get(), &error), 0u);
    EXPECT_EQ(error, ZXREG_E_DELETED);
    EXPECT_NE(identity(openKey(root, "gone")), ofGone);
}

TEST(IdentitiesOfStores, HostileArgumentsAreRefused) {
    int error = 0;
    EXPECT_EQ(zxreg_identity(nullptr, &error), 0u);
    EXPECT_EQ(error, ZXREG_E_INVALID_ARG);
    _ZxPolComHandle other{0x101, nullptr};
    EXPECT_EQ(zxreg_identity(&other, &error), 0u);
    EXPECT_EQ(error, ZXREG_E_WRONG_HANDLE);
    const Key root = openStore("memory:");
    EXPECT_EQ(zxreg_identity(root.get(), nullptr), 0u);
}
