// Copies of a store's files that are damaged and then opened.
#pragma once

#include <string>

#include "crash/edited_store.h"

namespace crash {

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& bytes);
void flipBit(std::string& bytes, size_t at, model::RandomSource& random);

// A place where damaged files are laid down and opened.
class DamagedStore {
public:
    DamagedStore();

    const std::string& folder() const { return _folder.path(); }
    std::string path() const { return _folder.path() + "/damaged.db"; }

    // Puts the files there; an empty log is none. The key file is kept beside them.
    void lay(const std::string& database, const std::string& log, const std::string& sharedMemory = "");

    // What is found when the store is opened: its text, or nothing when it is refused, which must be by name.
    std::string open();

    // Makes a change that takes many pages; the code.
    int change();

private:
    const Folder _folder;
};

// Whether a result is one of those that tell of damage.
bool tellsOfDamage(int code);

}  // namespace crash
