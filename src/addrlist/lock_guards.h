// Scopes in which a host's lock is held.
#pragma once

#include "zxbase.h"

namespace zxpol {

class ReadLock {
public:
    explicit ReadLock(KR::CRWLock& lock) : _lock(lock) { _lock.StartReading(); }
    ~ReadLock() { _lock.EndReading(); }
    ReadLock(const ReadLock&) = delete;
    ReadLock& operator=(const ReadLock&) = delete;

private:
    KR::CRWLock& _lock;
};

class WriteLock {
public:
    explicit WriteLock(KR::CRWLock& lock) : _lock(lock) { _lock.StartWriting(); }
    ~WriteLock() { _lock.EndWriting(); }
    WriteLock(const WriteLock&) = delete;
    WriteLock& operator=(const WriteLock&) = delete;

private:
    KR::CRWLock& _lock;
};

}  // namespace zxpol
