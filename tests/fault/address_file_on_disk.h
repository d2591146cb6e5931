// A file of addresses to import, there as long as the object.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace zxtest {

class AddressFileOnDisk {
public:
    // Each line is `attribute` and a word.
    AddressFileOnDisk(const char* attribute, const std::vector<std::string>& words) {
        const int made = mkstemp(_path);
        std::FILE* file = made == -1 ? nullptr : fdopen(made, "w");
        if (file == nullptr) std::abort();
        for (const std::string& word : words)
            std::fprintf(file, "%s%s\n", attribute, word.c_str());
        std::fclose(file);
    }
    ~AddressFileOnDisk() { std::remove(_path); }
    AddressFileOnDisk(const AddressFileOnDisk&) = delete;
    AddressFileOnDisk& operator=(const AddressFileOnDisk&) = delete;
    const char* path() const { return _path; }

private:
    char _path[32] = "/tmp/zxpolicy-fault-XXXXXX";
};

}  // namespace zxtest
