// What is left of files when the power is cut.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "model/random_source.h"

namespace crash {

// Follows some files of a store through the diary of the process that writes them (ZX_DISK_LOG, see disk.cc). Making
// and removing a file is taken to be done at once.
class LostDisk {
public:
    // Begins with the files as they are.
    explicit LostDisk(const std::vector<std::string>& paths);

    // Goes through the diary and then puts the files into the state after a power cut: all that was synced is there,
    // and of the other writes those that the disk had happened to do: the first few, or any, the last perhaps in part.
    void cutPower(const std::string& diary, model::RandomSource& random);

    // How many writes were not synced, and how many of them were lost.
    uint64_t unsynced() const { return _unsynced; }
    uint64_t lost() const { return _lost; }

private:
    struct Step {
        bool isCut;
        size_t at;
        std::string bytes;
    };
    struct File {
        bool isThere = false;
        std::string durable;
        std::vector<Step> unsynced;
    };
    void follow(const std::string& diary);
    static void carryOut(const Step& step, std::string& bytes);
    void loseSome(File& file, model::RandomSource& random);

    std::map<std::string, File> _files;
    uint64_t _unsynced = 0;
    uint64_t _lost = 0;
};

}  // namespace crash
