// Files that come into being whole or not at all.
#pragma once

#include <string>

namespace zxreg {

// The one absolute name of a file, which need not exist yet; its folder must. Throws a Failure (PERMISSION or IO).
std::string canonicalPath(const std::string& path);

// The folder that a file stands in.
std::string folderOf(const std::string& path);

// Throws a Failure that says what could not be done with the file, by errno.
[[noreturn]] void throwFileFailure(const std::string& path, const char* what, int error);

// Makes the names in the folder of `path` durable.
void syncFolderOf(const std::string& path);

// A new empty file for nobody but its owner (and the group that shares stores), removed again unless published. Until
// then it is in a folder of its own beside `path`, where nobody can put anything beside it that SQLite would believe.
class NewFile {
public:
    explicit NewFile(const std::string& path);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    const std::string& name() const noexcept { return _name; }

    // Replaces the content, durably.
    void write(const void* data, size_t size);

    // Gives the file its real name, durably. False when a file of that name exists already; it is left as it is.
    bool publish();

private:
    void discard() noexcept;

    const std::string _path;
    std::string _folder;
    std::string _name;
    int _file = -1;
};

}  // namespace zxreg
