#include "output/file_path.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace tool {

namespace {

namespace fs = std::filesystem;

bool isOf(int descriptor, const struct stat& file) {
    struct stat open {};
    return fstat(descriptor, &open) == 0 && open.st_dev == file.st_dev && open.st_ino == file.st_ino;
}

bool isWritable(int descriptor) {
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
}

}  // namespace

std::string withoutLinks(const std::string& path) {
    constexpr int kMostLinks = 40;
    std::error_code error;
    fs::path file = path;
    for (int links = 0; fs::is_symlink(file, error); ++links) {
        if (links == kMostLinks) return "";
        file = file.parent_path() / fs::read_symlink(file, error);
        if (error) return "";
    }
    const fs::path name = file.filename();
    if (name.empty()) return "";
    if (fs::exists(file, error)) return fs::canonical(file, error).string();
    const fs::path folder = fs::canonical(file.has_parent_path() ? file.parent_path() : ".", error);
    return error || name == "." || name == ".." ? "" : (folder / name).string();
}

bool areSameFile(const std::string& a, const std::string& b) {
    std::error_code error;
    if (fs::equivalent(a, b, error)) return true;
    const std::string whole = withoutLinks(a);
    return !whole.empty() && whole == withoutLinks(b);
}

int writableDescriptorOf(const std::string& path) {
    struct stat file {};
    if (stat(path.c_str(), &file) != 0) return -1;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd", error)) {
        const int descriptor = std::stoi(entry.path().filename().string());
        const bool isOutput = descriptor == STDOUT_FILENO || descriptor == STDERR_FILENO;
        if (isOf(descriptor, file) && (isOutput || isWritable(descriptor))) return descriptor;
    }
    return -1;
}

bool isStandardInput(const std::string& path) {
    struct stat file {};
    return stat(path.c_str(), &file) == 0 && S_ISREG(file.st_mode) && isOf(STDIN_FILENO, file);
}

}  // namespace tool
