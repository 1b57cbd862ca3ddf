#pragma once

#include <pthread.h>

/// Names for clang's thread-safety attributes; other compilers see nothing. What a lock guards and
/// which lock comes first stands in the declarations and is checked by `-Wthread-safety`.
///@{
#if defined(__clang__)
#define KY_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define KY_THREAD_ATTRIBUTE(x)
#endif
#define KY_CAPABILITY(name) KY_THREAD_ATTRIBUTE(capability(name))
#define KY_SCOPED_CAPABILITY KY_THREAD_ATTRIBUTE(scoped_lockable)
#define KY_GUARDED_BY(mutex) KY_THREAD_ATTRIBUTE(guarded_by(mutex))
#define KY_ACQUIRED_BEFORE(...) KY_THREAD_ATTRIBUTE(acquired_before(__VA_ARGS__))
#define KY_ACQUIRE(...) KY_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define KY_RELEASE(...) KY_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define KY_REQUIRES(...) KY_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define KY_EXCLUDES(...) KY_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
///@}

/// A mutual exclusion lock, recursive or not.
///
/// `lock` waits until the calling thread holds the mutex; each `lock` needs one `unlock` on the
/// same thread. A recursive mutex may be locked again by its holder; with any other that waits
/// for ever. Both operations are a single call of the system's lock, inline.
///
/// A mutex that is not recursive guards sections that take less time than putting a thread to sleep
/// and waking it. So a thread that waits tries again for a moment before it sleeps, where the C
/// library can do that.
class KY_CAPABILITY("mutex") KyMutex {
public:
    /// Unlocked at first.
    /// @param recursive whether the holder may lock again
    explicit KyMutex(bool recursive) {
        pthread_mutexattr_t kind;
        pthread_mutexattr_init(&kind);
        pthread_mutexattr_settype(&kind, recursive ? PTHREAD_MUTEX_RECURSIVE : kPlain);
        pthread_mutex_init(&mMutex, &kind);
        pthread_mutexattr_destroy(&kind);
    }
    ~KyMutex() { pthread_mutex_destroy(&mMutex); }
    KyMutex(const KyMutex&) = delete;
    KyMutex& operator=(const KyMutex&) = delete;

    /// Waits until this thread holds the mutex.
    void lock() KY_ACQUIRE() { pthread_mutex_lock(&mMutex); }
    /// Lets go of it, once for each `lock`.
    void unlock() KY_RELEASE() { pthread_mutex_unlock(&mMutex); }

private:
#if defined(__GLIBC__)
    static constexpr int kPlain = PTHREAD_MUTEX_ADAPTIVE_NP;
#else
    static constexpr int kPlain = PTHREAD_MUTEX_NORMAL;
#endif
    pthread_mutex_t mMutex = {};
};
