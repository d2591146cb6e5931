#include "file_trust.h"

#include <fcntl.h>
#include <grp.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <thread>
#include <vector>

#include "failure.h"
#include "files.h"

namespace zxreg {
namespace {

[[noreturn]] void refuse(const std::string& path, const std::string& why) {
    throw Failure(ZXREG_E_UNSAFE, path + ": not safe to use: " + why + ".");
}

gid_t groupCalled(const char* name) {
    char* end = nullptr;
    const unsigned long number = std::strtoul(name, &end, 10);
    const bool isNumber = *name >= '0' && *name <= '9' && *end == '\0' && number < UINT32_MAX;
    if (isNumber) return static_cast<gid_t>(number);
    std::vector<char> texts(65536);
    struct group entry {};
    struct group* found = nullptr;
    if (getgrnam_r(name, &entry, texts.data(), texts.size(), &found) == 0 && found != nullptr) return found->gr_gid;
    throw Failure(ZXREG_E_UNSAFE, "ZXREG_GROUP names no group of this machine: " + std::string(name) + ".");
}

// The group whose members share stores, if the environment names one. That of a program with the rights of somebody
// else than who started it does not count.
std::optional<gid_t> sharingGroup() {
    const char* name = secure_getenv("ZXREG_GROUP");
    if (name == nullptr || *name == '\0') return std::nullopt;
    return groupCalled(name);
}

bool isOfGroup(const struct stat& status, const std::optional<gid_t>& group) {
    return group && status.st_gid == *group;
}

// Only root and members of a group can give a file to it, and only they can make one in its folder: then any owner will
// do.
void checkOwner(const std::string& path, const struct stat& status, const std::optional<gid_t>& group) {
    const uid_t self = geteuid();
    if (status.st_uid == 0 || status.st_uid == self || isOfGroup(status, group)) return;
    const std::string owner = std::to_string(status.st_uid);
    refuse(path, "it belongs to user " + owner + ", who is neither root nor the user of this program, " +
                     std::to_string(self) + "; run the program as user " + owner + ", or chown it");
}

// Access control lists need no look of their own: who has rights by them shows in the bits of the group.
void checkAccess(const std::string& path, const struct stat& status, mode_t forbidden, const char* mend,
                 const std::optional<gid_t>& group) {
    if (isOfGroup(status, group)) forbidden &= ~mode_t{S_IRWXG};
    const mode_t granted = status.st_mode & forbidden;
    if (granted == 0) return;
    const char* what = (granted & (S_IWGRP | S_IWOTH)) != 0 ? "write to" : "read";
    refuse(path, std::string("others than its owner may ") + what + " it (chmod " + mend + " " + path + ")");
}

void checkKind(const std::string& path, const struct stat& status) {
    if (S_ISLNK(status.st_mode)) refuse(path, "it is a symbolic link; put the file itself here");
    if (!S_ISREG(status.st_mode)) refuse(path, "it is not a regular file; remove it");
}

void checkDatabaseFile(const std::string& path, const struct stat& status, const std::optional<gid_t>& group) {
    checkOwner(path, status, group);
    checkAccess(path, status, S_IWGRP | S_IWOTH, "go-w", group);
}

// Who may write to a folder can take files away and put others there, its owner before all; where the sticky bit keeps
// people from each other's files, they may still add those that SQLite takes for the database's own. A folder that its
// group may write to is left to whoever made it so: on many machines every user has a group of their own, and folders
// are made like that.
void checkFolder(const std::string& path, const std::optional<gid_t>& group) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) throwFileFailure(path, "cannot be looked at", errno);
    checkOwner(path, status, group);
    if ((status.st_mode & S_IWOTH) != 0)
        refuse(path, "everybody may put files into this folder (chmod o-w " + path + ", or use a folder of your own)");
}

// Runs `check(path, status)` if there is such a file.
template <class Check>
void ifThere(const std::string& path, Check check) {
    struct stat status {};
    if (lstat(path.c_str(), &status) == 0) return check(path, status);
    if (errno != ENOENT) throwFileFailure(path, "cannot be looked at", errno);
}

// Where a file cannot be renamed without overwriting, one that is being made has two names for a moment.
bool hasOtherNames(const std::string& path, struct stat status) {
    for (int tries = 0; status.st_nlink > 1 && tries < 100; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (lstat(path.c_str(), &status) != 0) return false;
    }
    return status.st_nlink > 1;
}

// What SQLite reads beside the database, and the key.
void checkSurroundings(const std::string& path) {
    const std::optional<gid_t> group = sharingGroup();
    checkFolder(folderOf(path), group);
    for (const char* suffix : {"-wal", "-shm", "-journal"}) {
        ifThere(path + suffix, [&](const std::string& name, const struct stat& status) {
            checkKind(name, status);
            checkDatabaseFile(name, status, group);
        });
    }
    ifThere(path + ".key", checkKeyFile);
}

// A descriptor that only stands for the file: closing one that could read it would give SQLite's locks on it back.
int holdFile(const std::string& path) {
    const int file = open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
    if (file < 0 && errno != ENOENT) throwFileFailure(path, "cannot be opened", errno);
    return file;
}

}  // namespace

OpeningWatch::OpeningWatch(std::string path) : _path(std::move(path)), _database(holdFile(_path)) {
    try {
        confirm();
    } catch (...) {
        if (_database >= 0) close(_database);
        throw;
    }
}

OpeningWatch::~OpeningWatch() {
    if (_database >= 0) close(_database);
}

// What is no file at all is left to the engine, which knows why it cannot be a store.
void OpeningWatch::confirm() const {
    checkSurroundings(_path);
    ifThere(_path, [&](const std::string& path, const struct stat& status) {
        if (S_ISLNK(status.st_mode)) checkKind(path, status);
        if (S_ISREG(status.st_mode)) checkDatabaseFile(path, status, sharingGroup());
    });
    struct stat held {};
    struct stat named {};
    if (_database < 0) return;
    if (fstat(_database, &held) == 0 && lstat(_path.c_str(), &named) == 0 && held.st_ino == named.st_ino &&
        held.st_dev == named.st_dev)
        return;
    throw Failure(ZXREG_E_IO, _path + ": the file was moved or replaced while it was being opened; try again.");
}

// A second name of the file would be in the hands of whoever made it.
void checkKeyFile(const std::string& path, const struct stat& status) {
    const std::optional<gid_t> group = sharingGroup();
    checkKind(path, status);
    checkOwner(path, status, group);
    checkAccess(path, status, S_IRWXG | S_IRWXO, "600", group);
    if (hasOtherNames(path, status))
        refuse(path, "it has further names (hard links); remove those, or put a copy here");
}

void restrictNewFile(const std::string& path, int file) {
    const std::optional<gid_t> group = sharingGroup();
    if (group && fchown(file, static_cast<uid_t>(-1), *group) != 0) {
        throwFileFailure(path, "cannot be given to the group that ZXREG_GROUP names", errno);
    }
    if (fchmod(file, group ? 0660 : 0600) != 0) throwFileFailure(path, "cannot be made private", errno);
}

}  // namespace zxreg
