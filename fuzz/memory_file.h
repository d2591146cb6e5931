// A file with a text, in memory, gone with the object.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "fail.h"

namespace fuzz {

class MemoryFile {
public:
    explicit MemoryFile(const std::string& text) : _file(memfd_create("fuzz", MFD_CLOEXEC)) {
        const auto written = write(_file, text.data(), text.size());
        requireSame(text.size(), static_cast<size_t>(written), "writing the file");
    }
    ~MemoryFile() { close(_file); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    std::string path() const { return "/proc/self/fd/" + std::to_string(_file); }

private:
    const int _file;
};

}  // namespace fuzz
