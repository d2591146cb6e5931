// A reader-writer lock that lets a waiting writer in before further readers.
#pragma once

#include <pthread.h>

namespace zxreg {

// Meets the standard library's SharedLockable, for std::shared_lock and std::unique_lock. std::shared_mutex prefers
// readers on this system: under steady reading a writer would never get in. Not recursive.
class RwLock {
public:
    RwLock() noexcept {
        pthread_rwlockattr_t attributes;
        pthread_rwlockattr_init(&attributes);
        pthread_rwlockattr_setkind_np(&attributes, PTHREAD_RWLOCK_PREFER_WRITER_NONRECURSIVE_NP);
        pthread_rwlock_init(&_lock, &attributes);
        pthread_rwlockattr_destroy(&attributes);
    }
    ~RwLock() { pthread_rwlock_destroy(&_lock); }
    RwLock(const RwLock&) = delete;
    RwLock& operator=(const RwLock&) = delete;

    void lock() noexcept { pthread_rwlock_wrlock(&_lock); }
    void unlock() noexcept { pthread_rwlock_unlock(&_lock); }
    void lock_shared() noexcept { pthread_rwlock_rdlock(&_lock); }
    void unlock_shared() noexcept { pthread_rwlock_unlock(&_lock); }

private:
    pthread_rwlock_t _lock;
};

}  // namespace zxreg
