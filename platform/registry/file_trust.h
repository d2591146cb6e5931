// Whether the files of a store can be relied on: nobody but their owner, root and perhaps one group can have changed
// them, and nobody else can read the key.
#pragma once

#include <sys/stat.h>

#include <string>

namespace zxreg {

// Watches over an engine that opens a database by its name.
class OpeningWatch {
public:
    // Throws a Failure (UNSAFE) when the database at `path`, a file that belongs to it or their folder cannot be relied
    // on. Files that are missing do no harm.
    explicit OpeningWatch(std::string path);
    ~OpeningWatch();
    OpeningWatch(const OpeningWatch&) = delete;
    OpeningWatch& operator=(const OpeningWatch&) = delete;

    // To be called when the engine has the database open: looks at everything once more. Throws a Failure (IO) when
    // another database stands in the place of the one that was looked at first.
    void confirm() const;

private:
    const std::string _path;
    const int _database;  // keeps the file's number from being given to another one; -1 when there is no file
};

// Throws a Failure (UNSAFE) unless the file of that status may hold a key.
void checkKeyFile(const std::string& path, const struct stat& status);

// Lets nobody use a file that was just made but its owner and perhaps the group, whatever the umask.
void restrictNewFile(const std::string& path, int file);

}  // namespace zxreg
