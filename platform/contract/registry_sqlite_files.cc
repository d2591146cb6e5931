// Files that are no store, or that may not be used: refused by name, never taken for an empty store.
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "registry_support.h"
#include "registry_worker.h"

using namespace registry_test;

namespace {

class SqliteFiles : public testing::Test {
protected:
    SqliteFiles() : path(folder / "store.db"), location("sqlite:" + path) {}

    int openStoreCode() {
        int code = 0;
        openStore(location, &code);
        return code;
    }
    void makeStore() {
        const Key root = openStore(location);
        EXPECT_GE(setText(createKey(root, "A"), "v", "x"), 0);
    }
    // Lets the group of the worker, where that is another user, make log files beside the database.
    void letTheWorkerIn() {
        const gid_t group = geteuid() == 0 ? 65534 : getegid();
        EXPECT_EQ(chown(folder.path().c_str(), geteuid(), group), 0);
        EXPECT_EQ(chmod(folder.path().c_str(), 0775), 0);
    }
    void runSql(const std::string& sql) {
        sqlite3* database = nullptr;
        ASSERT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(database);
        sqlite3_close(database);
    }
    void expectRefused(int wanted) {
        const std::string before = readFile(path);
        EXPECT_EQ(openStoreCode(), wanted) << zxreg_lastErrorText();
        EXPECT_NE(std::string(zxreg_lastErrorText()).find(path), std::string::npos) << zxreg_lastErrorText();
        EXPECT_EQ(readFile(path), before);
    }
    mode_t modeOf(const std::string& file) {
        struct stat status {};
        EXPECT_EQ(stat(file.c_str(), &status), 0) << file;
        return status.st_mode & 07777;
    }

    const Folder folder;
    const std::string path;
    const std::string location;
};

}  // namespace

TEST_F(SqliteFiles, NewFilesBelongToTheirOwnerAlone) {
    for (const mode_t strict : {0u, 027u, 0777u}) {
        const std::string file = path + std::to_string(strict);
        const mode_t mask = umask(strict);
        const Key root = openStore("sqlite:" + file);
        EXPECT_GE(set(root, "p", ZXREG_PROTECTED_STRING, "x"), 0);
        umask(mask);
        for (const char* suffix : {"", "-wal", "-shm", ".key"}) {
            EXPECT_EQ(modeOf(file + suffix), 0600u) << file << suffix;
        }
    }
}

TEST_F(SqliteFiles, MakingAStoreLeavesNothingElseBehind) {
    openStore(location);
    EXPECT_EQ(unlink(path.c_str()), 0);
    EXPECT_EQ(rmdir(folder.path().c_str()), 0);
    EXPECT_EQ(mkdir(folder.path().c_str(), 0700), 0);
}

TEST_F(SqliteFiles, AStoreThatCannotBeMadeLeavesNothingBehind) {
    struct rlimit before {};
    EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    for (const rlim_t most : {0u, 1000u, 5000u, 20000u}) {
        const struct rlimit limit { most, before.rlim_max };
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
        const int code = openStoreCode();
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
        EXPECT_EQ(code, ZXREG_E_IO) << most;
        EXPECT_EQ(rmdir(folder.path().c_str()), 0) << most;
        EXPECT_EQ(mkdir(folder.path().c_str(), 0700), 0);
    }
    std::signal(SIGXFSZ, handler);
    makeStore();
}

TEST_F(SqliteFiles, AnotherTextFileIsForeign) {
    writeFile(path, "This is a letter, and no store at all.\n");
    expectRefused(ZXREG_E_FOREIGN);
    writeFile(path, std::string(10000, 'x'));
    expectRefused(ZXREG_E_FOREIGN);
}

TEST_F(SqliteFiles, AnEmptyFileIsForeign) {
    writeFile(path, "");
    expectRefused(ZXREG_E_FOREIGN);
}

TEST_F(SqliteFiles, ADatabaseOfAnotherApplicationIsForeign) {
    runSql("CREATE TABLE node(id INTEGER PRIMARY KEY, parent, name, checksum); INSERT INTO node VALUES(1, 2, 3, 4)");
    expectRefused(ZXREG_E_FOREIGN);
}

TEST_F(SqliteFiles, AStoreOfAnotherVersionIsForeign) {
    makeStore();
    runSql("PRAGMA user_version = 2");
    expectRefused(ZXREG_E_FOREIGN);
}

TEST_F(SqliteFiles, ADeviceIsForeign) {
    int code = 0;
    openStore("sqlite:/dev/null", &code);
    EXPECT_EQ(code, ZXREG_E_FOREIGN);
}

TEST_F(SqliteFiles, AFolderIsNotPermitted) {
    EXPECT_EQ(mkdir(path.c_str(), 0700), 0);
    EXPECT_EQ(openStoreCode(), ZXREG_E_PERMISSION);
}

TEST_F(SqliteFiles, AMissingFolderIsAFailure) {
    int code = 0;
    openStore("sqlite:" + folder / "missing/store.db", &code);
    EXPECT_EQ(code, ZXREG_E_IO);
}

TEST_F(SqliteFiles, ALogWithoutItsDatabaseIsDamage) {
    writeFile(path + "-wal", "left over");
    EXPECT_EQ(openStoreCode(), ZXREG_E_CORRUPT);
    EXPECT_NE(access(path.c_str(), F_OK), 0);
}

// The worker takes another user's place where the tests run as the one user whom permissions do not stop.
TEST_F(SqliteFiles, AFileThatMayNotBeReadIsNotPermitted) {
    makeStore();
    letTheWorkerIn();
    EXPECT_EQ(chmod(path.c_str(), 0), 0);
    Worker worker({"--uid", "65534", "--gid", "65534", location});
    EXPECT_EQ(worker.line(), "error 81021905");
    EXPECT_EQ(worker.wait(), 1);
}

TEST_F(SqliteFiles, AFileThatMayOnlyBeReadIsReadAndNotWritten) {
    makeStore();
    letTheWorkerIn();
    EXPECT_EQ(chmod(path.c_str(), 0444), 0);
    Worker worker({"--uid", "65534", "--gid",  "65534",  location, "get",   "A",   "v",      "set",
                   "A",     "v",     "y",      "create", "A",      "begin", "get", "A",      "v",
                   "end",   "begin", "secret", "A",      "p",      "y",     "end", "create", "B"});
    for (const char* wanted : {"x", "error 81021905", "x", "error 81021905", "error 81021905", ""}) {
        EXPECT_EQ(worker.line(), wanted);
    }
    EXPECT_EQ(worker.wait(), 1);
    EXPECT_NE(access((path + ".key").c_str(), F_OK), 0);
}

TEST_F(SqliteFiles, AFolderThatMayNotBeWrittenTakesNoNewStore) {
    EXPECT_EQ(chmod(folder.path().c_str(), 0555), 0);
    Worker worker({"--uid", "65534", location});
    EXPECT_EQ(worker.line(), "error 81021905");
    EXPECT_EQ(worker.wait(), 1);
}

TEST_F(SqliteFiles, AFullDiskTakesTheWriteBack) {
    makeStore();
    const std::string big(100000, 'x');
    Worker worker({location, "limit", "60000", "set", "A", "v", big,     "get", "A",   "v", "begin", "set",
                   "A",      "w",     big,     "set", "A", "u", "small", "end", "get", "A", "w"});
    EXPECT_EQ(worker.line(), "error 81021901");
    EXPECT_EQ(worker.line(), "x");
    std::vector<std::string> lines;
    for (std::string line = worker.line(); !line.empty(); line = worker.line()) {
        lines.push_back(line);
    }
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), "error 81021804");
    EXPECT_EQ(worker.wait(), 1);
    const Key root = openStore(location);
    EXPECT_EQ(dump(root), "\\A\n\\A:v=1,x" + std::string(1, '\0') + "\n");
}

TEST_F(SqliteFiles, AStoreThatWasReplacedUnderItsNameTakesNoWrites) {
    const Key old = openStore(location);
    EXPECT_GE(setText(old, "v", "old"), 0);
    for (const char* suffix : {"", "-wal", "-shm"}) {
        EXPECT_EQ(rename((path + suffix).c_str(), (path + ".moved" + suffix).c_str()), 0) << suffix;
    }
    EXPECT_EQ(setText(old, "v", "lost"), ZXREG_E_IO);
    EXPECT_NE(std::string(zxreg_lastErrorText()).find("replaced"), std::string::npos) << zxreg_lastErrorText();
    EXPECT_EQ(setText(old, "w", "lost"), ZXREG_E_IO);
}
