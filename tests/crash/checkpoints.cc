#include "crash/checkpoints.h"

#include <dlfcn.h>
#include <sqlite3.h>

#include <cstdlib>
#include <cstring>

namespace {

int logPages = [] {
    const char* const pages = std::getenv("ZX_LOG_PAGES");
    return pages != nullptr ? std::atoi(pages) : 0;
}();

}  // namespace

namespace crash {

void setLogPages(int pages) {
    logPages = pages;
}

}  // namespace crash

// Every connection is opened here.
extern "C" __attribute__((visibility("default"))) int sqlite3_open_v2(const char* path, sqlite3** database, int flags,
                                                                      const char* vfs) {
    void* const found = dlsym(RTLD_NEXT, "sqlite3_open_v2");
    if (found == nullptr) std::abort();
    decltype(&sqlite3_open_v2) next = nullptr;
    std::memcpy(&next, &found, sizeof next);
    const int result = next(path, database, flags, vfs);
    if (result == SQLITE_OK && logPages != 0) sqlite3_wal_autocheckpoint(*database, logPages);
    return result;
}
