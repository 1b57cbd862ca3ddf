#pragma once

#include <kylib/KyMutex.h>

/// Holds a mutex until the end of the block, on every way out of it.
class KY_SCOPED_CAPABILITY KyScopedLock {
public:
    explicit KyScopedLock(KyMutex& mutex) KY_ACQUIRE(mutex) : mMutex(mutex) { mMutex.lock(); }
    ~KyScopedLock() KY_RELEASE() { mMutex.unlock(); }
    KyScopedLock(const KyScopedLock&) = delete;
    KyScopedLock& operator=(const KyScopedLock&) = delete;

private:
    KyMutex& mMutex;
};
