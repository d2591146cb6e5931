#include "wal_watch.h"

namespace zxreg {
namespace {

constexpr int indexPageSize = 32768;  // SQLite maps the index in pieces of this size

uint32_t load(const volatile uint32_t* word) noexcept {
    return __atomic_load_n(word, __ATOMIC_RELAXED);
}

}  // namespace

// The mapping stays where it is until the connection is closed, because the connection itself uses it.
void WalWatch::attach(sqlite3* database) noexcept {
    sqlite3_file* file = nullptr;
    const int found = sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    if (found != SQLITE_OK || file == nullptr || file->pMethods == nullptr) return;
    if (file->pMethods->iVersion < 2 || file->pMethods->xShmMap == nullptr) return;
    volatile void* piece = nullptr;
    const int mapped = file->pMethods->xShmMap(file, 0, indexPageSize, 0, &piece);
    if (mapped == SQLITE_OK || mapped == SQLITE_READONLY) _shared = static_cast<const volatile uint32_t*>(piece);
}

WalWatch::Header WalWatch::look() const noexcept {
    Header header{};
    for (size_t i = 0; i < header.size(); ++i) {
        header[i] = load(_shared + i);
    }
    return header;
}

bool WalWatch::isUnchanged() const noexcept {
    if (!_hasSeen) return false;
    for (size_t i = 0; i < _seen.size(); ++i) {
        if (load(_shared + i) != _seen[i]) return false;
    }
    return true;
}

}  // namespace zxreg
