// Protected strings at rest: unreadable in the files, and bound to their key.
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include "registry_support.h"

using namespace registry_test;

namespace {

constexpr char secret[] = "correct horse battery staple";

class SqliteSecret : public testing::Test {
protected:
    SqliteSecret() : path(folder / "store.db"), location("sqlite:" + path), root(openStore(location)) {}

    void writeSecret() {
        EXPECT_GE(set(root, "p", ZXREG_PROTECTED_STRING, secret), 0);
        EXPECT_GE(setText(root, "plain", "readable"), 0);
    }
    void reopen() {
        root.close();
        root = openStore(location);
    }
    void expectLost() {
        EXPECT_EQ(readCode(root, "p"), ZXREG_E_SECRET);
        EXPECT_NE(std::string(zxreg_lastErrorText()).find(".key"), std::string::npos);
        EXPECT_EQ(set(root, "p", ZXREG_PROTECTED_STRING, "new"), ZXREG_E_SECRET);
        EXPECT_EQ(set(root, "q", ZXREG_PROTECTED_STRING, "new"), ZXREG_E_SECRET);
        EXPECT_EQ(text(root, "plain"), "readable");
        EXPECT_EQ(values(root), (std::vector<std::string>{"p", "plain"}));
    }

    const Folder folder;
    const std::string path;
    const std::string location;
    Key root;
};

}  // namespace

TEST_F(SqliteSecret, TheFilesDoNotShowIt) {
    writeSecret();
    EXPECT_EQ(text(root, "p"), secret);
    EXPECT_NE(readFile(path + "-wal").find("readable"), std::string::npos);
    EXPECT_EQ(readFile(path + "-wal").find("horse"), std::string::npos);
    root.close();
    EXPECT_NE(readFile(path).find("readable"), std::string::npos);
    EXPECT_EQ(readFile(path).find("horse"), std::string::npos);
    EXPECT_EQ(text(openStore(location), "p"), secret);
}

TEST_F(SqliteSecret, TheSameTextIsNeverSealedTheSame) {
    EXPECT_GE(set(root, "p", ZXREG_PROTECTED_STRING, secret), 0);
    EXPECT_GE(set(root, "q", ZXREG_PROTECTED_STRING, secret), 0);
    root.close();
    sqlite3* database = nullptr;
    sqlite3_stmt* query = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
    ASSERT_EQ(sqlite3_prepare_v2(database, "SELECT count(DISTINCT data) FROM value", -1, &query, nullptr), SQLITE_OK);
    EXPECT_EQ(sqlite3_step(query), SQLITE_ROW);
    EXPECT_EQ(sqlite3_column_int(query, 0), 2);
    sqlite3_finalize(query);
    sqlite3_close(database);
}

TEST_F(SqliteSecret, TheKeyIsMadeWhenFirstNeeded) {
    EXPECT_GE(setText(root, "plain", "x"), 0);
    EXPECT_NE(access((path + ".key").c_str(), F_OK), 0);
    writeSecret();
    struct stat status {};
    ASSERT_EQ(stat((path + ".key").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    EXPECT_EQ(status.st_size, 32);
}

TEST_F(SqliteSecret, WithoutItsKeyTheStoreOpensAndTheSecretDoesNot) {
    writeSecret();
    const std::string key = readFile(path + ".key");
    EXPECT_EQ(unlink((path + ".key").c_str()), 0);
    EXPECT_EQ(set(root, "q", ZXREG_PROTECTED_STRING, "new"), ZXREG_E_SECRET);
    reopen();
    expectLost();
    EXPECT_NE(access((path + ".key").c_str(), F_OK), 0);
    writeFile(path + ".key", key);
    EXPECT_EQ(chmod((path + ".key").c_str(), 0600), 0);
    EXPECT_EQ(text(root, "p"), secret);
}

TEST_F(SqliteSecret, AForeignOrDamagedKeyIsRefused) {
    writeSecret();
    const std::string key = readFile(path + ".key");
    for (const std::string& wrong : {std::string(32, 'k'), key.substr(1), key + "x", std::string()}) {
        writeFile(path + ".key", wrong);
        reopen();
        expectLost();
    }
}

TEST_F(SqliteSecret, AKeyThatOthersMayReadIsRefused) {
    writeSecret();
    for (const mode_t mode : {0640u, 0604u, 0620u}) {
        EXPECT_EQ(chmod((path + ".key").c_str(), mode), 0);
        EXPECT_EQ(set(root, "p", ZXREG_PROTECTED_STRING, "new"), ZXREG_E_UNSAFE);
        root.close();
        int code = 0;
        openStore(location, &code);
        EXPECT_EQ(code, ZXREG_E_UNSAFE);
        EXPECT_EQ(chmod((path + ".key").c_str(), 0400), 0);
        reopen();
        EXPECT_EQ(text(root, "p"), secret);
    }
}

TEST_F(SqliteSecret, ASecretInAnUpdateThatIsTakenBackLeavesNoTrace) {
    EXPECT_GE(begin(root), 0);
    writeSecret();
    EXPECT_EQ(text(root, "p"), secret);
    EXPECT_GE(cancel(root), 0);
    EXPECT_TRUE(values(root).empty());
    writeSecret();
    reopen();
    EXPECT_EQ(text(root, "p"), secret);
}

TEST_F(SqliteSecret, DeletingIsPossibleWithoutTheKey) {
    writeSecret();
    EXPECT_EQ(unlink((path + ".key").c_str()), 0);
    reopen();
    EXPECT_GE(unset(root, "p"), 0);
    EXPECT_EQ(values(root), std::vector<std::string>{"plain"});
}
