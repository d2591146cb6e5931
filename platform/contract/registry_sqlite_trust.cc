// Files that somebody else may have changed, or read the key of: refused by name before anything in them counts.
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <list>
#include <thread>

#include "registry_support.h"
#include "registry_worker.h"

using namespace registry_test;

namespace {

constexpr uid_t somebodyElse = 65534;

class SqliteTrust : public testing::Test {
protected:
    SqliteTrust() : path(folder / "store.db"), location("sqlite:" + path) {
        const Key root = openStore(location);
        EXPECT_GE(set(root, "p", ZXREG_PROTECTED_STRING, std::string("secret", 7)), 0);
    }

    // Expects that the store does not open because of that file, which `mend` is said to help.
    void expectUnsafe(const std::string& file, const std::string& mend) {
        int code = 0;
        openStore(location, &code);
        EXPECT_EQ(code, ZXREG_E_UNSAFE) << file;
        const std::string text = zxreg_lastErrorText();
        EXPECT_EQ(text.rfind(file + ": ", 0), 0u) << text;
        EXPECT_NE(text.find(mend), std::string::npos) << text;
    }
    void expectGood() { EXPECT_EQ(text(openStore(location), "p"), "secret"); }

    void setMode(const std::string& file, mode_t mode) { EXPECT_EQ(chmod(file.c_str(), mode), 0) << file; }
    struct stat look(const std::string& file) {
        struct stat status {};
        EXPECT_EQ(lstat(file.c_str(), &status), 0) << file;
        return status;
    }

    const Folder folder;
    const std::string path;
    const std::string location;
};

// The environment of this process with one more variable, and workers with it.
class Setting {
public:
    Setting(const char* name, const std::string& value) : _name(name) { setenv(name, value.c_str(), 1); }
    ~Setting() { unsetenv(_name); }
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;

private:
    const char* const _name;
};

}  // namespace

TEST_F(SqliteTrust, AFileThatOthersMayWriteIsRefused) {
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
        const std::string file = path + suffix;
        if (*suffix != '\0') writeFile(file, "");
        for (const mode_t mode : {0620u, 0602u, 0666u}) {
            setMode(file, mode);
            expectUnsafe(file, "chmod go-w " + file);
        }
        setMode(file, 0644);
        expectGood();
    }
}

TEST_F(SqliteTrust, AKeyFileThatOthersMayUseIsRefused) {
    for (const mode_t mode : {0640u, 0604u, 0620u, 0602u, 0610u, 0601u}) {
        setMode(path + ".key", mode);
        expectUnsafe(path + ".key", "chmod 600 " + path + ".key");
    }
    setMode(path + ".key", 0400);
    expectGood();
}

TEST_F(SqliteTrust, ALinkOrAFolderInTheirPlaceIsRefused) {
    for (const char* suffix : {"-wal", "-shm", "-journal", ".key"}) {
        const std::string file = path + suffix;
        const std::string elsewhere = folder / "elsewhere";
        if (std::string(suffix) == ".key") {
            EXPECT_EQ(rename(file.c_str(), elsewhere.c_str()), 0);
        } else {
            writeFile(elsewhere, "");
        }
        EXPECT_EQ(symlink(elsewhere.c_str(), file.c_str()), 0) << suffix;
        expectUnsafe(file, "symbolic link");
        EXPECT_EQ(unlink(file.c_str()), 0);
        EXPECT_EQ(mkdir(file.c_str(), 0700), 0);
        expectUnsafe(file, "not a regular file");
        EXPECT_EQ(rmdir(file.c_str()), 0);
        EXPECT_EQ(rename(elsewhere.c_str(), file.c_str()), 0);
        expectGood();
    }
}

TEST_F(SqliteTrust, AKeyThatIsSwappedWhileTheStoreIsOpenIsRefused) {
    const Key root = openStore(location);
    EXPECT_EQ(rename((path + ".key").c_str(), (path + ".moved").c_str()), 0);
    EXPECT_EQ(symlink((path + ".moved").c_str(), (path + ".key").c_str()), 0);
    EXPECT_EQ(readCode(root, "p"), ZXREG_E_UNSAFE);
    EXPECT_EQ(set(root, "q", ZXREG_PROTECTED_STRING, "new"), ZXREG_E_UNSAFE);
    EXPECT_EQ(unlink((path + ".key").c_str()), 0);
    EXPECT_EQ(rename((path + ".moved").c_str(), (path + ".key").c_str()), 0);
    EXPECT_EQ(text(root, "p"), "secret");
}

TEST_F(SqliteTrust, AStoreUnderALinkIsTheFileThatItLeadsTo) {
    const std::string name = folder / "link.db";
    EXPECT_EQ(symlink(path.c_str(), name.c_str()), 0);
    EXPECT_EQ(text(openStore("sqlite:" + name), "p"), "secret");
    setMode(path, 0622);
    int code = 0;
    openStore("sqlite:" + name, &code);
    EXPECT_EQ(code, ZXREG_E_UNSAFE);
}

TEST_F(SqliteTrust, AKeyFileWithASecondNameIsRefused) {
    EXPECT_EQ(link((path + ".key").c_str(), (folder / "second").c_str()), 0);
    expectUnsafe(path + ".key", "hard links");
    EXPECT_EQ(unlink((folder / "second").c_str()), 0);
    expectGood();
}

// As when it is being made on a file system that cannot rename without overwriting.
TEST_F(SqliteTrust, AKeyFileMayHaveASecondNameForAMoment) {
    EXPECT_EQ(link((path + ".key").c_str(), (folder / "second").c_str()), 0);
    std::thread remover([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        EXPECT_EQ(unlink((folder / "second").c_str()), 0);
    });
    expectGood();
    remover.join();
}

TEST_F(SqliteTrust, AFolderThatEverybodyMayWriteToIsRefused) {
    // In a sticky one they may not take files away, but add a log that is believed.
    for (const mode_t mode : {0777u, 01777u}) {
        setMode(folder.path(), mode);
        expectUnsafe(folder.path(), "chmod o-w " + folder.path());
    }
    EXPECT_EQ(unlink(path.c_str()), 0);
    expectUnsafe(folder.path(), "chmod o-w");
    EXPECT_NE(access(path.c_str(), F_OK), 0);
    for (const mode_t mode : {0770u, 0755u}) {
        setMode(folder.path(), mode);
        openStore(location);
    }
}

// Only root can give files away.
TEST_F(SqliteTrust, AFolderOfSomebodyElseIsRefused) {
    if (geteuid() != 0) return;
    EXPECT_EQ(chown(folder.path().c_str(), somebodyElse, somebodyElse), 0);
    expectUnsafe(folder.path(), "user 65534");
    EXPECT_EQ(chown(folder.path().c_str(), 0, 0), 0);
    expectGood();
}

// Only root can give files away.
TEST_F(SqliteTrust, AFileOfSomebodyElseIsRefused) {
    if (geteuid() != 0) return;
    for (const char* suffix : {"", "-wal", ".key"}) {
        const std::string file = path + suffix;
        if (access(file.c_str(), F_OK) != 0) writeFile(file, "");
        EXPECT_EQ(chown(file.c_str(), somebodyElse, somebodyElse), 0);
        expectUnsafe(file, "user 65534");
        EXPECT_EQ(chown(file.c_str(), 0, 0), 0);
        expectGood();
    }
}

TEST_F(SqliteTrust, ProcessesThatMakeAKeyAtOnceAgreeOnOne) {
    for (const char* suffix : {"", ".key"}) {
        EXPECT_EQ(unlink((path + suffix).c_str()), 0);
    }
    std::list<Worker> workers;
    for (const char* name : {"a", "b", "c", "d", "e", "f"}) {
        workers.emplace_back(std::vector<std::string>{location, "create", "A", "say", "ready", "wait", "secret", "A",
                                                      name, name, "get", "A", name});
        EXPECT_EQ(workers.back().line(), "ready");
    }
    for (Worker& worker : workers) {
        worker.goOn();
    }
    for (Worker& worker : workers) {
        EXPECT_EQ(worker.line().size(), 1u);
        EXPECT_EQ(worker.wait(), 0);
    }
    const Key key = openKey(openStore(location), "A");
    for (const std::string name : {"a", "b", "c", "d", "e", "f"}) {
        EXPECT_EQ(text(key, name), name);
    }
    EXPECT_EQ(look(path + ".key").st_nlink, 1u);
    EXPECT_EQ(look(path + ".key").st_mode & 07777, 0600u);
}

TEST_F(SqliteTrust, AGroupSharesAStoreWhereTheEnvironmentNamesIt) {
    const bool isRoot = geteuid() == 0;
    const gid_t group = isRoot ? 54321 : getegid();
    const std::string user = std::to_string(isRoot ? somebodyElse : geteuid());
    EXPECT_EQ(chown(folder.path().c_str(), static_cast<uid_t>(-1), group), 0);
    setMode(folder.path(), 02770);
    const std::string shared = folder / "shared.db";
    {
        const Setting setting("ZXREG_GROUP", std::to_string(group));
        const Key root = openStore("sqlite:" + shared);
        EXPECT_GE(set(createKey(root, "A"), "p", ZXREG_PROTECTED_STRING, std::string("s", 2)), 0);
        for (const char* suffix : {"", "-wal", "-shm", ".key"}) {
            EXPECT_EQ(look(shared + suffix).st_mode & 07777, 0660u) << suffix;
            EXPECT_EQ(look(shared + suffix).st_gid, group) << suffix;
        }
        Worker worker({"--uid", user, "--gid", std::to_string(group), "sqlite:" + shared, "get", "A", "p", "secret",
                       "A", "q", "t"});
        EXPECT_EQ(worker.line(), "s");
        EXPECT_EQ(worker.wait(), 0);
        EXPECT_EQ(text(openKey(root, "A"), "q"), "t");
    }
    int code = 0;
    openStore("sqlite:" + shared, &code);
    EXPECT_EQ(code, ZXREG_E_UNSAFE);
}

TEST_F(SqliteTrust, TheGroupIsKnownByNameOrNumber) {
    setMode(path, 0660);
    EXPECT_EQ(chown(path.c_str(), static_cast<uid_t>(-1), getegid()), 0);
    {
        const Setting setting("ZXREG_GROUP", std::to_string(getegid()));
        expectGood();
        setMode(path, 0662);
        expectUnsafe(path, "chmod go-w");
        setMode(path, 0660);
    }
    {
        const Setting setting("ZXREG_GROUP", std::to_string(getegid() + 1));
        expectUnsafe(path, "chmod go-w");
    }
    if (getegid() == 0) {
        const Setting setting("ZXREG_GROUP", "root");
        expectGood();
    }
    for (const char* wrong : {"no such group", "4294967295", "99999999999", "-1", "0x10"}) {
        const Setting setting("ZXREG_GROUP", wrong);
        expectUnsafe("ZXREG_GROUP names no group of this machine", wrong);
    }
}
