#include <kygl/kygl.h>

#include "KyContextWatch.h"
#include "KyDiagnosis.h"
#include "kyglCheck.h"
#include "kyglRegistry.h"
#include "kyglScopedLock.h"

#include <kygl/containers/KyHashTable.h>
#include <kylib/KyString.h>
#include <kylib/KyThreadLocalStorage.h>
#include <sogl/SoGLEW.h>
#include <sogl/SoGLXEW.h>

#include <pthread.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace {

// The table owns its records, a thread's slot only points. The lock is not recursive. It is the
// last of the library's locks: nothing that runs while it is held takes another one or calls back
// into the registry.
extern KyMutex _contextTabMutex;
KyHashTable<unsigned int, KyGLContext_s*> _contextTab KY_GUARDED_BY(_contextTabMutex)(nullptr);
KyMutex _contextTabMutex(false);
KyThreadLocalStorage<KyGLContext_s> _curContext;

KyResult kyglInitContext(KyGLContext_s* context) {
    SoGLEW::glewContextInit(&context->gl);
    SoGLXEW::glxewContextInit(&context->glx);
    return KyOK;
}

std::unique_ptr<KyGLContext_s> createRecord() {
    auto record = std::make_unique<KyGLContext_s>();
    kyglInitContext(record.get());
    return record;
}

// The records that are in no table: those of threads that asked before they had a context. Each
// lives until its thread ends or needs another one; short-lived threads would pile them up
// otherwise. A `thread_local` with a destructor would end the process where there is no memory to
// register it, and keep the library loaded. A thread that outlives the library leaves its record
// allocated.
class ThreadOnlyRecords {
public:
    ThreadOnlyRecords() {
        if (pthread_key_create(&mKey, release) != 0) throw std::bad_alloc();
    }
    ~ThreadOnlyRecords() {
        release(pthread_getspecific(mKey));
        pthread_key_delete(mKey);
    }
    ThreadOnlyRecords(const ThreadOnlyRecords&) = delete;
    ThreadOnlyRecords& operator=(const ThreadOnlyRecords&) = delete;

    // Makes `record` the calling thread's current one. Other objects of an ending thread may still
    // ask: what they get is released in the next round of destructors.
    void makeCurrent(std::unique_ptr<KyGLContext_s> record) {
        _curContext.set(record.get());
        void* const former = pthread_getspecific(mKey);
        if (pthread_setspecific(mKey, record.get()) != 0) {
            _curContext.set(nullptr);
            throw std::bad_alloc();
        }
        static_cast<void>(record.release());
        delete static_cast<KyGLContext_s*>(former);
    }

private:
    static void release(void* record) {
        if (record != nullptr && _curContext.get() == record) _curContext.set(nullptr);
        delete static_cast<KyGLContext_s*>(record);
    }

    pthread_key_t mKey = 0;
};
ThreadOnlyRecords _threadOnlyRecords;

// The last walk of `kyglGetContext` on this thread. Its answer holds until an entry gets or loses
// its record; a record that dies takes its address out of use by that, too. In the static block of
// the thread, where its first use takes no memory.
std::atomic<unsigned long> _contextTabChanges{0};
struct LastWalk {
    const KyGLContext_s* record;  // null before the first
    unsigned long changes;
    unsigned int id;
};
[[gnu::tls_model("initial-exec")]] thread_local LastWalk tLastWalk{};

void tableChanged() KY_REQUIRES(_contextTabMutex) {
    _contextTabChanges.fetch_add(1, std::memory_order_release);
}

unsigned int idOf(const KyGLContext_s* current) KY_REQUIRES(_contextTabMutex) {
    unsigned int id = 0;
    KyGLContext_s* record = nullptr;
    _contextTab.resetNext();
    while (_contextTab.next(id, record))
        if (record == current) return id;
    return KYGL_NO_CONTEXT;
}

// The slot comes before the entry, because it can be set back: that takes no memory.
void registerCurrent(unsigned int id, std::unique_ptr<KyGLContext_s> record)
    KY_REQUIRES(_contextTabMutex) {
    KyGLContext_s* const former = _curContext.get();
    _curContext.set(record.get());
    try {
        _contextTab[id] = record.get();
    } catch (...) {
        _curContext.set(former);
        throw;
    }
    static_cast<void>(record.release());
    tableChanged();
}

KyGLContext_s* kyglCurrentRecord() {
    if (KyGLContext_s* const current = _curContext.get()) return current;
    _threadOnlyRecords.makeCurrent(createRecord());
    return _curContext.get();
}

using Check = bool (*)(KyGLContext_s*);

// The look-up leaves a placeholder for an unknown id, so that from now on the all-contexts
// questions count it as a context that can do nothing.
bool isAvailable(unsigned int id, Check check) {
    const KyScopedLock hold(_contextTabMutex);
    return check(_contextTab[id]);
}

bool isAvailableInAll(Check check) {
    const KyScopedLock hold(_contextTabMutex);
    unsigned int id = 0;
    KyGLContext_s* record = nullptr;
    _contextTab.resetNext();
    while (_contextTab.next(id, record))
        if (!check(record)) return false;
    return true;
}

// @return whether it registered the id
bool setContext(unsigned int id) {
    const KyScopedLock hold(_contextTabMutex);
    KyGLContext_s* const* const known = _contextTab.lookup(id);
    const bool isNew = known == nullptr || *known == nullptr;
    if (isNew)
        registerCurrent(id, createRecord());
    else
        _curContext.set(*known);
    return isNew;
}

// @return whether the id is gone
bool clearContext(unsigned int id) {
    const KyScopedLock hold(_contextTabMutex);
    KyGLContext_s* const* const found = _contextTab.lookup(id);
    if (found == nullptr) return false;
    KyGLContext_s* const record = *found;
    if (record == kyglCurrentRecord()) return false;
    delete record;
    _contextTab.remove(id);
    tableChanged();
    return true;
}

// For diagnostics: empty while they are off, and incomplete without memory.
std::vector<unsigned int> idsToReport() KY_REQUIRES(_contextTabMutex) {
    std::vector<unsigned int> ids;
    if (!KyDiagnosis::isOn()) return ids;
    try {
        unsigned int id = 0;
        KyGLContext_s* record = nullptr;
        _contextTab.resetNext();
        while (_contextTab.next(id, record))
            if (record != nullptr) ids.push_back(id);
    } catch (const std::bad_alloc&) {
    }
    return ids;
}

// @return of the ids what is to be reported
std::vector<unsigned int> clearAllContexts() {
    const KyScopedLock hold(_contextTabMutex);
    std::vector<unsigned int> ids = idsToReport();
    unsigned int id = 0;
    KyGLContext_s* record = nullptr;
    _contextTab.resetNext();
    while (_contextTab.next(id, record))
        delete record;
    _contextTab.removeAll();
    _contextTab.resetNext();
    tableChanged();
    _curContext.set(nullptr);
    return ids;
}

bool vendorContains(const char* name) {
    const auto* const vendor = reinterpret_cast<const char*>(glGetString(GL_VENDOR));
    return vendor != nullptr && std::strstr(vendor, name) != nullptr;
}

}  // namespace

void kyglSetContext(unsigned int id) {
    const bool isNew = setContext(id);
    if (KyDiagnosis::isOn()) KyContextWatch::learn(id, isNew);
}

bool kyglIsRegistered(unsigned int id) {
    const KyScopedLock hold(_contextTabMutex);
    KyGLContext_s* const* const known = _contextTab.lookup(id);
    return known != nullptr && *known != nullptr;
}

unsigned int kyglGetContext() {
    const KyGLContext_s* const current = kyglCurrentRecord();
    LastWalk& last = tLastWalk;
    if (last.record == current &&
        last.changes == _contextTabChanges.load(std::memory_order_acquire))
        return last.id;
    const KyScopedLock hold(_contextTabMutex);
    last = {current, _contextTabChanges.load(std::memory_order_relaxed), idOf(current)};
    return last.id;
}

void kyglInitContext() {
    KyGLContext_s* const current = kyglCurrentRecord();
    kyglInitContext(current);
    _curContext.set(current);
}

void kyglClearContext(unsigned int id) {
    const bool isGone = clearContext(id);
    if (isGone && KyDiagnosis::isOn()) KyContextWatch::forget(id, false);
}

void kyglClearAllContexts() {
    for (const unsigned int id : clearAllContexts())
        KyContextWatch::forget(id, true);
}

bool kyglVBOsAvailable(unsigned int id) {
    return isAvailable(id, checkVBOs);
}

bool kyglGLSLAvailable(unsigned int id) {
    return isAvailable(id, checkGLSL);
}

bool kyglVBOsAvailableAllContexts() {
    return isAvailableInAll(checkVBOs);
}

bool kyglGLSLAvailableAllContexts() {
    return isAvailableInAll(checkGLSL);
}

bool kyglIsVendorNVIDIA() {
    return vendorContains("NVIDIA");
}

bool kyglIsVendorATI() {
    return vendorContains("ATI");
}

bool checkGLSL(KyGLContext_s* context) {
    return context != nullptr && context->gl.ARB_shading_language_100 != 0 &&
           context->gl.ARB_shader_objects != 0 && context->gl.ARB_fragment_shader != 0 &&
           context->gl.ARB_vertex_shader != 0;
}

bool checkVBOs(KyGLContext_s* context) {
    return context != nullptr && context->gl.ARB_vertex_buffer_object != 0;
}

KyResult kyglErrorCheck(const char* command, const char* file, unsigned int line, int mode) {
    return kyglCheckInline(command, file, line, mode);
}

// The number of reads is bounded because a lost context may answer with errors for ever.
KyResult kyglErrorFound(GLenum first, const char* command, const char* file, unsigned int line,
                        int mode) {
    constexpr int kFurtherReads = 10;
    for (int i = 0; i < kFurtherReads && glGetError() != GL_NO_ERROR; ++i) {
    }
    const KyString detail(0, "command=[%s]", command);
    const KyResult result(static_cast<int>(first), static_cast<int>(line), file, "",
                          detail.dataPtr());
    if (mode == 1) result.notify();
    if (mode == 2) result.check();
    return result;
}
