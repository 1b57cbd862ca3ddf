#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <utility>

/// How many calls of listeners, whichever they are, a thread is in.
struct KyListenerCalls {
    // In the static block of the thread, where its first use takes no memory.
    [[gnu::tls_model("initial-exec")]] static inline thread_local int here = 0;
};

/// A function that is called with the pointer it was set with. Any thread sets it while others call
/// it.
///
///     KyListener<void (*)(int event, void* user)> listener;
///     listener.set({function, user});
///     if (listener.isSet()) listener.call(event);
///
/// No lock is held while the function runs, and what it throws passes to the caller. A call
/// allocates nothing.
template <typename Function>
class KyListener {
public:
    struct Target {
        Function function = nullptr;  ///< null: nobody listens
        void* user = nullptr;
    };

    /// One load.
    bool isSet() const { return mIsSet.load(std::memory_order_relaxed); }

    /// Replaces the target and waits for the calls of former ones.
    void set(const Target& target) {
        replace(target);
        waitForFormer();
    }
    /// Replaces the target. Calls of the former one may go on.
    void replace(const Target& target) {
        const std::lock_guard<std::mutex> hold(mMutex);
        mTarget = target;
        ++mGeneration;
        mIsSet.store(target.function != nullptr, std::memory_order_relaxed);
    }
    /// Waits for the calls of former targets that other threads are in: they do not run any more
    /// after it returns. It does not wait on a thread that is in a call of this or another listener
    /// itself, because two of those would wait for each other.
    void waitForFormer() {
        if (KyListenerCalls::here > 0) return;
        std::unique_lock<std::mutex> hold(mMutex);
        mEnded.wait(hold, [this, now = mGeneration] { return !isCallingBefore(now); });
    }

    /// Calls the function with these arguments and its pointer.
    /// @return false where nobody listens
    template <typename... Arguments>
    bool call(const Arguments&... arguments) {
        const Call call(*this);
        if (call.target.function == nullptr) return false;
        call.target.function(arguments..., call.target.user);
        return true;
    }

private:
    // A call that a thread is in, on the stack of that thread.
    struct Call {
        explicit Call(KyListener& owner) : listener(owner) { listener.enter(*this); }
        ~Call() { listener.leave(*this); }
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

        KyListener& listener;
        Target target;
        unsigned long generation = 0;
        Call* next = nullptr;
    };

    void enter(Call& call) {
        const std::lock_guard<std::mutex> hold(mMutex);
        call.target = mTarget;
        call.generation = mGeneration;
        call.next = std::exchange(mCalls, &call);
        ++KyListenerCalls::here;
    }
    void leave(const Call& call) {
        const std::lock_guard<std::mutex> hold(mMutex);
        Call** at = &mCalls;
        while (*at != &call)
            at = &(*at)->next;
        *at = call.next;
        --KyListenerCalls::here;
        mEnded.notify_all();
    }

    bool isCallingBefore(unsigned long generation) const {
        for (const Call* call = mCalls; call != nullptr; call = call->next)
            if (call->generation < generation) return true;
        return false;
    }

    std::atomic<bool> mIsSet{false};
    std::mutex mMutex;
    std::condition_variable mEnded;  ///< of a call
    Target mTarget;
    unsigned long mGeneration = 0;  ///< of the target
    Call* mCalls = nullptr;
};
