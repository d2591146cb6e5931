// A disk that fails, is full, or loses what was not synced. A program that contains disk.cc has the system's functions
// for reading and writing files replaced; it must export its symbols.
#pragma once

#include <cstdint>
#include <string>

namespace crash {

// Which of the calls that change a file of the store fail, or of those that read one.
struct DiskFault {
    uint64_t first = 0;   // counted from 1; 0: none
    bool isOnce = false;  // else all that follow fail, too
    int error = 0;  // ENOSPC or EIO; of a disk that becomes full and stays so the first write is cut in the middle
    bool isOfReads = false;
};

// Syncing does nothing from now on: where the power stays on, it only takes time.
void stopSyncing();

// Counts from now on the calls for files whose path begins with `prefix`, and makes them fail as planned. Syncing such
// a file does nothing but count.
void setDisk(const std::string& prefix, const DiskFault& fault);

// Lets everything through again; returns how many calls there were.
uint64_t clearDisk();

}  // namespace crash
