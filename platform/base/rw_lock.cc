// The read-write lock, over the threads library's own.
//
// A waiting writer goes before readers that come later. With the default order a steady stream of readers would keep a
// writer out for ever.
#include <pthread.h>

#include <cerrno>
#include <memory>
#include <system_error>

#include "zxbase.h"

namespace {

// A lock that was not taken must not look taken.
void require(int result) {
    if (result != 0) throw std::system_error(result, std::generic_category());
}

class Attributes {
public:
    Attributes() {
        require(pthread_rwlockattr_init(&_attributes));
        pthread_rwlockattr_setkind_np(&_attributes, PTHREAD_RWLOCK_PREFER_WRITER_NONRECURSIVE_NP);
    }
    ~Attributes() { pthread_rwlockattr_destroy(&_attributes); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    const pthread_rwlockattr_t* get() const { return &_attributes; }

private:
    pthread_rwlockattr_t _attributes;
};

pthread_rwlock_t* lockOf(void* impl) {
    return static_cast<pthread_rwlock_t*>(impl);
}

}  // namespace

namespace KR {

CRWLock::CRWLock(const char*) : _impl(nullptr) {
    auto lock = std::make_unique<pthread_rwlock_t>();
    require(pthread_rwlock_init(lock.get(), Attributes().get()));
    _impl = lock.release();
}

CRWLock::~CRWLock() {
    pthread_rwlock_destroy(lockOf(_impl));
    delete lockOf(_impl);
}

void CRWLock::StartReading() {
    int result = pthread_rwlock_rdlock(lockOf(_impl));
    // The number of readers is full: wait until one has left.
    while (result == EAGAIN)
        result = pthread_rwlock_rdlock(lockOf(_impl));
    require(result);
}

void CRWLock::EndReading() {
    pthread_rwlock_unlock(lockOf(_impl));
}

void CRWLock::StartWriting() {
    require(pthread_rwlock_wrlock(lockOf(_impl)));
}

void CRWLock::EndWriting() {
    pthread_rwlock_unlock(lockOf(_impl));
}

}  // namespace KR
