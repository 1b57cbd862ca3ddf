#pragma once

#include <kylib/kylibApi.h>

#include <pthread.h>

/// One untyped pointer for each thread, null in every thread until that thread sets it.
///
/// The storage owns nothing that it points to. Any thread may call; each sees only its own
/// pointer. Construction throws `std::bad_alloc` when the process has used up its keys.
class KYLIB_API KyThreadLocalStorageBase {
public:
    KyThreadLocalStorageBase();
    ~KyThreadLocalStorageBase();
    KyThreadLocalStorageBase(const KyThreadLocalStorageBase&) = delete;
    KyThreadLocalStorageBase& operator=(const KyThreadLocalStorageBase&) = delete;

    /// The calling thread's pointer, or null.
    void* get() const { return pthread_getspecific(mKey); }
    /// Throws `std::bad_alloc` when the thread's table cannot grow; the pointer stays as it was.
    /// That does not happen where the thread has set the pointer before, or sets it to null.
    void set(void* pointer);

private:
    pthread_key_t mKey = 0;
};

/// The same with a type.
template <typename T>
class KyThreadLocalStorage : public KyThreadLocalStorageBase {
public:
    /// As `KyThreadLocalStorageBase::get`.
    T* get() const { return static_cast<T*>(KyThreadLocalStorageBase::get()); }
    /// As `KyThreadLocalStorageBase::set`.
    void set(T* pointer) { KyThreadLocalStorageBase::set(pointer); }
};
