// The functions are declared here, and by no header: a header may give the ones for short offsets the names of the ones
// for long offsets, which are all that anybody calls.
#include "crash/disk.h"

#include <dlfcn.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#define ZX_REPLACES extern "C" __attribute__((visibility("default")))

extern "C" ssize_t readlink(const char* path, char* target, size_t size) noexcept;

namespace {

using crash::DiskFault;

std::mutex guard;
std::string watched;  // empty: nothing
DiskFault planned;
uint64_t counted = 0;
bool isSyncing = true;
FILE* diary = nullptr;  // of a program that is started with ZX_DISK_LOG

template <class Function>
Function* original(const char* name) {
    void* found = dlsym(RTLD_NEXT, name);
    if (found == nullptr) std::abort();
    Function* function = nullptr;
    std::memcpy(&function, &found, sizeof function);
    return function;
}

// The path of an open file.
std::string pathOf(int file) {
    char link[32];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    char path[4096];
    const ssize_t size = readlink(link, path, sizeof path);
    return std::string(path, size > 0 ? static_cast<size_t>(size) : 0);
}

// What becomes of one call.
struct Verdict {
    int error = 0;
    bool isCut = false;
};

Verdict judge(int file, bool isRead = false) {
    const int before = errno;
    const std::lock_guard lock(guard);
    Verdict verdict;
    if (watched.empty() || isRead != planned.isOfReads || pathOf(file).compare(0, watched.size(), watched) != 0)
        return errno = before, verdict;
    errno = before;
    ++counted;
    const bool isFirst = counted == planned.first;
    if (planned.first == 0 || counted < planned.first || (planned.isOnce && !isFirst)) return verdict;
    verdict.error = planned.error;
    verdict.isCut = isFirst && planned.error == ENOSPC && !planned.isOnce;
    return verdict;
}

// Enters a call for a watched file into the diary, as a line and the bytes written.
void enter(char kind, const std::string& path, int64_t at, const void* data, size_t size) {
    if (diary == nullptr || path.compare(0, watched.size(), watched) != 0) return;
    const std::lock_guard lock(guard);
    std::fprintf(diary, "%c %s %lld %zu\n", kind, path.c_str(), static_cast<long long>(at), size);
    if (size != 0) std::fwrite(data, 1, size, diary);
    std::fflush(diary);
}

// Carries a write out as far as the disk allows; `next(size)` writes.
template <class Write>
ssize_t writeAsAllowed(int file, size_t size, Write next) {
    const Verdict verdict = judge(file);
    if (verdict.error == 0) return next(size);
    if (verdict.isCut && size > 1) return next(size / 2);
    errno = verdict.error;
    return -1;
}

int syncAsAllowed(int file, const char* function) {
    const Verdict verdict = judge(file);
    if (verdict.error != 0) return errno = verdict.error, -1;
    const int result = isSyncing ? original<int(int)>(function)(file) : 0;
    if (result == 0) enter('s', pathOf(file), 0, nullptr, 0);
    return result;
}

// The setting of a program that is to be cut from power.
const bool isLogging = [] {
    const char* const log = std::getenv("ZX_DISK_LOG");
    const char* const prefix = std::getenv("ZX_DISK_FILES");
    if (log == nullptr || prefix == nullptr) return false;
    diary = std::fopen(log, "abe");
    if (diary == nullptr) std::abort();
    std::setvbuf(diary, nullptr, _IOFBF, 1 << 17);
    watched = prefix;
    isSyncing = false;
    return true;
}();

}  // namespace

namespace crash {

void stopSyncing() {
    isSyncing = false;
}

void setDisk(const std::string& prefix, const DiskFault& fault) {
    const std::lock_guard lock(guard);
    watched = prefix;
    planned = fault;
    counted = 0;
}

uint64_t clearDisk() {
    const std::lock_guard lock(guard);
    watched.clear();
    return counted;
}

}  // namespace crash

ZX_REPLACES ssize_t write(int file, const void* data, size_t size);
ZX_REPLACES ssize_t pwrite64(int file, const void* data, size_t size, int64_t offset);
ZX_REPLACES ssize_t pread64(int file, void* data, size_t size, int64_t offset);
ZX_REPLACES int ftruncate64(int file, int64_t size);
ZX_REPLACES int fsync(int file);
ZX_REPLACES int fdatasync(int file);
ZX_REPLACES int unlink(const char* path);

ssize_t write(int file, const void* data, size_t size) {
    static auto* const next = original<ssize_t(int, const void*, size_t)>("write");
    return writeAsAllowed(file, size, [&](size_t most) { return next(file, data, most); });
}

ssize_t pwrite64(int file, const void* data, size_t size, int64_t offset) {
    static auto* const next = original<ssize_t(int, const void*, size_t, int64_t)>("pwrite64");
    if (diary != nullptr) enter('w', pathOf(file), offset, data, size);
    return writeAsAllowed(file, size, [&](size_t most) { return next(file, data, most, offset); });
}

ssize_t pread64(int file, void* data, size_t size, int64_t offset) {
    static auto* const next = original<ssize_t(int, void*, size_t, int64_t)>("pread64");
    const Verdict verdict = judge(file, true);
    if (verdict.error == 0) return next(file, data, size, offset);
    errno = verdict.error;
    return -1;
}

int ftruncate64(int file, int64_t size) {
    static auto* const next = original<int(int, int64_t)>("ftruncate64");
    if (diary != nullptr) enter('t', pathOf(file), size, nullptr, 0);
    const Verdict verdict = judge(file);
    if (verdict.error == 0) return next(file, size);
    errno = verdict.error;
    return -1;
}

int fsync(int file) {
    return syncAsAllowed(file, "fsync");
}

int fdatasync(int file) {
    return syncAsAllowed(file, "fdatasync");
}

int unlink(const char* path) {
    static auto* const next = original<int(const char*)>("unlink");
    enter('u', path, 0, nullptr, 0);
    return next(path);
}
