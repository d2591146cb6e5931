#include "files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>

#include "failure.h"
#include "file_trust.h"

namespace zxreg {
namespace {

// Empty with errno set when the path does not lead anywhere.
std::string resolved(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> name(realpath(path.c_str(), nullptr), &std::free);
    return name ? name.get() : "";
}

}  // namespace

std::string folderOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

void throwFileFailure(const std::string& path, const char* what, int error) {
    const bool denied = error == EACCES || error == EPERM || error == EROFS || error == EISDIR;
    throw Failure(denied ? ZXREG_E_PERMISSION : ZXREG_E_IO,
                  path + ": " + what + ": " + std::generic_category().message(error) + ".");
}

std::string canonicalPath(const std::string& path) {
    std::string whole = resolved(path);
    if (!whole.empty()) return whole;
    if (errno != ENOENT) throwFileFailure(path, "cannot be reached", errno);
    const std::string folder = resolved(folderOf(path));
    if (folder.empty()) throwFileFailure(path, "its folder cannot be reached", errno);
    const std::string last = path.substr(path.rfind('/') + 1);
    if (last.empty() || last == "." || last == "..") throwFileFailure(path, "cannot be reached", ENOENT);
    return (folder == "/" ? "" : folder) + "/" + last;
}

void syncFolderOf(const std::string& path) {
    const int folder = open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) throwFileFailure(path, "its folder cannot be opened", errno);
    const int error = fsync(folder) == 0 ? 0 : errno;
    close(folder);
    // Some file systems know no such thing as syncing a folder.
    if (error != 0 && error != EINVAL) throwFileFailure(path, "its folder cannot be written", error);
}

NewFile::NewFile(const std::string& path) : _path(path), _folder(path + ".new-XXXXXX") {
    if (mkdtemp(_folder.data()) == nullptr) throwFileFailure(path, "cannot be created", errno);
    try {
        _name = _folder + "/file";
        // The umask may have kept even the owner out.
        if (chmod(_folder.c_str(), 0700) != 0) throwFileFailure(path, "cannot be created", errno);
        _file = open(_name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (_file < 0) throwFileFailure(path, "cannot be created", errno);
        restrictNewFile(path, _file);
    } catch (...) {
        discard();
        throw;
    }
}

NewFile::~NewFile() {
    discard();
}

// A database that could not be finished may have left more than itself.
void NewFile::discard() noexcept {
    if (_file >= 0) close(_file);
    for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
        char name[PATH_MAX];
        if (std::snprintf(name, sizeof name, "%s%s", _name.c_str(), suffix) < PATH_MAX) unlink(name);
    }
    rmdir(_folder.c_str());
}

void NewFile::write(const void* data, size_t size) {
    const char* bytes = static_cast<const char*>(data);
    for (size_t done = 0; done < size;) {
        const ssize_t written = ::write(_file, bytes + done, size - done);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) throwFileFailure(_path, "cannot be written", errno);
        done += static_cast<size_t>(written);
    }
    if (fsync(_file) != 0) throwFileFailure(_path, "cannot be written", errno);
}

// Renamed, the file never has two names at once; but not every file system can rename without overwriting.
bool NewFile::publish() {
    bool isDone = renameat2(AT_FDCWD, _name.c_str(), AT_FDCWD, _path.c_str(), RENAME_NOREPLACE) == 0;
    if (!isDone && errno != EEXIST) isDone = link(_name.c_str(), _path.c_str()) == 0;
    if (!isDone && errno != EEXIST) throwFileFailure(_path, "cannot be created", errno);
    if (isDone) syncFolderOf(_path);
    return isDone;
}

}  // namespace zxreg
