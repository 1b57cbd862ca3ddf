#include <kylib/KyThreadLocalStorage.h>

#include <new>

KyThreadLocalStorageBase::KyThreadLocalStorageBase() {
    if (pthread_key_create(&mKey, nullptr) != 0) throw std::bad_alloc();
}

KyThreadLocalStorageBase::~KyThreadLocalStorageBase() {
    pthread_key_delete(mKey);
}

void KyThreadLocalStorageBase::set(void* pointer) {
    if (pthread_setspecific(mKey, pointer) != 0) throw std::bad_alloc();
}
