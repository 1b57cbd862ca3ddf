#include <kygl/KyDeferredDeleteMap.h>

#include "KyContextWatch.h"
#include "KyDiagnosis.h"
#include "kyglCheck.h"
#include "kyglScopedLock.h"
#include "KyQueueWatch.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

constexpr char kSource[] = "internal/KyDeferredDeleteMap";

// Goes through a list from its last element to its first and takes out those of one context, in
// one pass however they are mixed with others: what stays gathers behind the part that was not
// looked at yet, in its order, and closes up when the sweep ends. It ends well on an exception
// too: what was found is gone, all the rest is there.
class Sweep {
public:
    Sweep(KyDArray<KyDeferredDeleteMap::MapObject>& list, unsigned int context)
        : mList(list), mContext(context), mFront(list.size), mKept(list.size) {}
    Sweep(const Sweep&) = delete;
    Sweep& operator=(const Sweep&) = delete;

    ~Sweep() {
        const long kept = mList.size - mKept;
        if (kept > 0)
            std::memmove(mList.data + mFront, mList.data + mKept,
                         static_cast<std::size_t>(kept) * sizeof(KyDeferredDeleteMap::MapObject));
        mList.size = mFront + kept;
    }

    /// Finds the next element of the context, which is off the list from then on.
    bool next(long& index) {
        KyDeferredDeleteMap::MapObject* const list = mList.data;
        long front = mFront;
        long kept = mKept;
        while (front > 0 && list[front - 1].context != mContext)
            list[--kept] = list[--front];
        const bool found = front > 0;
        if (found) index = --front;
        mFront = front;
        mKept = kept;
        return found;
    }

private:
    KyDArray<KyDeferredDeleteMap::MapObject>& mList;
    unsigned int mContext;
    long mFront;  // elements below were not looked at
    long mKept;   // elements from here on stay
};

using List = KyQueueWatch::List;

long count(const List& list, unsigned int context) {
    return std::count_if(list.data, list.data + list.size,
                         [=](const auto& object) { return object.context == context; });
}

long forget(List& list, unsigned int context) {
    const long before = list.size;
    list.resize(std::remove_if(list.data, list.data + list.size,
                               [=](const auto& object) { return object.context == context; }) -
                list.data);
    return before - list.size;
}

// The names of a context are about to go.
void endReports(unsigned int context) {
    KyDiagnosis::ended(KyDiagnostics::Queue, [=] { return KyQueueWatch::subject(context); });
}

}  // namespace

std::atomic<KyDeferredDeleteMap*> KyDeferredDeleteMap::mDeferredMap{nullptr};

// Of several threads that make the first call at once, one sees its instance win.
KyDeferredDeleteMap* KyDeferredDeleteMap::getMap() {
    if (KyDeferredDeleteMap* const map = mDeferredMap.load(std::memory_order_acquire)) return map;
    std::unique_ptr<KyDeferredDeleteMap> made(new KyDeferredDeleteMap);
    KyDeferredDeleteMap* winner = nullptr;
    if (mDeferredMap.compare_exchange_strong(winner, made.get())) winner = made.release();
    return winner;
}

void KyDeferredDeleteMap::pushShaderHandle(unsigned int handle, unsigned int context) {
    getMap()->pushShader(handle, context);
}

void KyDeferredDeleteMap::pushTehniqueHandle(unsigned int handle, unsigned int context) {
    getMap()->pushTehnique(handle, context);
}

void KyDeferredDeleteMap::pushTextureHandle(unsigned int handle, unsigned int context) {
    getMap()->pushTexture(handle, context);
}

void KyDeferredDeleteMap::pushBufferHandle(unsigned int handle, unsigned int context) {
    getMap()->pushBuffer(handle, context);
}

void KyDeferredDeleteMap::deferredDelete(unsigned int context) {
    getMap()->callDeferredDelete(context);
}

KyDeferredDeleteMap::Pending KyDeferredDeleteMap::pending(unsigned int context) {
    return getMap()->countPending(context);
}

KyDeferredDeleteMap::Pending KyDeferredDeleteMap::pending() {
    return getMap()->countPending();
}

long KyDeferredDeleteMap::discard(unsigned int context) {
    return getMap()->callDiscard(context);
}

void KyDeferredDeleteMap::pushShader(unsigned int handle, unsigned int context) {
    if (KyDiagnosis::isOn())
        return pushWatched(&KyDeferredDeleteMap::mShaderHandles, {handle, context});
    const KyScopedLock hold(mMutex);
    mShaderHandles.append({handle, context});
}

void KyDeferredDeleteMap::pushTehnique(unsigned int handle, unsigned int context) {
    if (KyDiagnosis::isOn())
        return pushWatched(&KyDeferredDeleteMap::mProgramHandles, {handle, context});
    const KyScopedLock hold(mMutex);
    mProgramHandles.append({handle, context});
}

void KyDeferredDeleteMap::pushTexture(unsigned int handle, unsigned int context) {
    if (KyDiagnosis::isOn())
        return pushWatched(&KyDeferredDeleteMap::mTextureHandles, {handle, context});
    const KyScopedLock hold(mMutex);
    mTextureHandles.append({handle, context});
}

void KyDeferredDeleteMap::pushBuffer(unsigned int handle, unsigned int context) {
    if (KyDiagnosis::isOn())
        return pushWatched(&KyDeferredDeleteMap::mBufferHandles, {handle, context});
    const KyScopedLock hold(mMutex);
    mBufferHandles.append({handle, context});
}

void KyDeferredDeleteMap::pushWatched(Queue KyDeferredDeleteMap::*list, const MapObject& object) {
    const KyDiagnosis::Postponed reports;
    const KyScopedLock hold(mMutex);
    (this->*list).append(object);
    if (mWatch == nullptr) mWatch = new (std::nothrow) KyQueueWatch;
    if (mWatch != nullptr)
        mWatch->pushed({mShaderHandles, mProgramHandles, mTextureHandles, mBufferHandles});
}

void KyDeferredDeleteMap::callDeferredDelete(unsigned int context) {
    if (KyDiagnosis::isOn()) {
        KyContextWatch::judgeAnew(
            {"deferredDelete", "it deletes objects of that context that have the same names"},
            context);
        endReports(context);
    }
    const KyScopedLock hold(mMutex);
    if (mWatch != nullptr) mWatch->emptied(context);
    long i = 0;
    for (Sweep sweep(mShaderHandles, context); sweep.next(i);)
        KYGL_CHECKED(glDeleteObjectARB(mShaderHandles[i].handle), 0);
    for (Sweep sweep(mProgramHandles, context); sweep.next(i);)
        KYGL_CHECKED(glDeleteProgram(mProgramHandles[i].handle), 0);
    for (Sweep sweep(mTextureHandles, context); sweep.next(i);)
        KYGL_CHECKED(glDeleteTextures(1, &mTextureHandles[i].handle), 0);
    for (Sweep sweep(mBufferHandles, context); sweep.next(i);)
        KYGL_CHECKED(glDeleteBuffers(1, &mBufferHandles[i].handle), 0);
}

KyDeferredDeleteMap::Pending KyDeferredDeleteMap::countPending(unsigned int context) {
    const KyScopedLock hold(mMutex);
    return {count(mShaderHandles, context), count(mProgramHandles, context),
            count(mTextureHandles, context), count(mBufferHandles, context)};
}

KyDeferredDeleteMap::Pending KyDeferredDeleteMap::countPending() {
    const KyScopedLock hold(mMutex);
    return {mShaderHandles.size, mProgramHandles.size, mTextureHandles.size, mBufferHandles.size};
}

long KyDeferredDeleteMap::callDiscard(unsigned int context) {
    if (KyDiagnosis::isOn()) endReports(context);
    const KyScopedLock hold(mMutex);
    if (mWatch != nullptr) mWatch->emptied(context);
    return forget(mShaderHandles, context) + forget(mProgramHandles, context) +
           forget(mTextureHandles, context) + forget(mBufferHandles, context);
}
