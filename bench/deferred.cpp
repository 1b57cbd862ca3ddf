// Pushing to the queue, and draining it for one of eight contexts that are mixed in it: beside a
// mutex and a vector, swept in one go. A sweep forwards is the cheapest there is; one backwards
// deletes last queued first, as the queue does. What fills and empties the queue is not timed. The
// times are those for each name; the pushes of two threads count together.

#include "support.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <sogl/SoGLEW.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

namespace {

constexpr unsigned int kContexts = 8;

struct Library {
    static void push(unsigned int, unsigned int handle, unsigned int context) {
        KyDeferredDeleteMap::pushShaderHandle(handle, context);
    }
    static void drain(unsigned int context) { KyDeferredDeleteMap::deferredDelete(context); }
};

struct Plain {
    std::mutex mutex;
    std::vector<KyDeferredDeleteMap::MapObject> entries;

    void push(unsigned int, unsigned int handle, unsigned int context) {
        const std::lock_guard<std::mutex> hold(mutex);
        entries.push_back({handle, context});
    }

    void drain(unsigned int context) {
        const std::lock_guard<std::mutex> hold(mutex);
        entries.erase(std::remove_if(entries.begin(), entries.end(), Gone{context}), entries.end());
    }

    struct Gone {
        unsigned int context;
        bool operator()(const KyDeferredDeleteMap::MapObject& entry) const {
            if (entry.context != context) return false;
            glDeleteObjectARB(entry.handle);
            if (glGetError() != GL_NO_ERROR) std::abort();
            return true;
        }
    };
};

struct Backwards : Plain {
    void drain(unsigned int context) {
        const std::lock_guard<std::mutex> hold(mutex);
        const auto kept = std::remove_if(entries.rbegin(), entries.rend(), Gone{context});
        entries.erase(entries.begin(), kept.base());
    }
};

// A mutex and a vector for each thread, in cache lines of their own.
struct Own {
    struct alignas(64) Part : Plain {};
    Part parts[2];

    void push(unsigned int thread, unsigned int handle, unsigned int context) {
        parts[thread].push(thread, handle, context);
    }
    void drain(unsigned int context) {
        for (Part& part : parts)
            part.drain(context);
    }
};

double since(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Seconds from the moment when all threads are ready until all have pushed their share. None starts
// before the clock does.
template <typename Queue>
double push(Queue& queue, unsigned int threads, unsigned int count) {
    const auto pushShare = [&](unsigned int thread) {
        for (unsigned int i = 0; i < count / threads; ++i)
            queue.push(thread, i, i % kContexts);
    };
    std::atomic<unsigned int> ready{1};
    std::atomic<bool> go{false};
    std::vector<std::thread> others;
    for (unsigned int i = 1; i < threads; ++i)
        others.emplace_back([&, i] {
            ++ready;
            while (!go)
                std::this_thread::yield();
            pushShare(i);
        });
    while (ready < threads)
        std::this_thread::yield();
    const auto start = std::chrono::steady_clock::now();
    go = true;
    pushShare(0);
    for (std::thread& other : others)
        other.join();
    return since(start);
}

// The first round, which is not measured, makes the room that both queues keep.
template <typename Queue>
void measure(benchmark::State& state, unsigned int threads, unsigned int count, bool drains) {
    const NoOpGL gl;
    Queue queue;
    const auto round = [&] {
        const double pushed = push(queue, threads, count);
        const auto start = std::chrono::steady_clock::now();
        queue.drain(kContexts / 2);
        const double drained = since(start);
        for (unsigned int context = 0; context < kContexts; ++context)
            queue.drain(context);
        return drains ? drained : pushed;
    };
    round();
    for (auto _ : state)
        state.SetIterationTime(round() / count);
}

template <typename Queue>
void add(const std::string& name, unsigned int threads, unsigned int count, bool drains) {
    benchmark::RegisterBenchmark(name.c_str(), measure<Queue>, threads, count, drains)
        ->UseManualTime()
        ->Iterations(5'000'000 / count);
}

}  // namespace

void addDeferred() {
    for (const unsigned int count : {10'000U, 100'000U, 1'000'000U}) {
        const std::string push = "push/" + std::to_string(count) + "/";
        for (const unsigned int threads : {1U, 2U}) {
            const std::string suffix = threads == 1 ? "" : "/threads:2";
            add<Library>(push + "library" + suffix, threads, count, false);
            add<Plain>(push + "peer" + suffix, threads, count, false);
            addRatio({push + "library" + suffix, push + "peer" + suffix, 1.2});
        }
        add<Own>(push + "own/threads:2", 2, count, false);
        addRatio({push + "library/threads:2", push + "own/threads:2"});
        const std::string drain = "drain/" + std::to_string(count) + "/";
        add<Library>(drain + "library", 1, count, true);
        add<Plain>(drain + "forwards", 1, count, true);
        add<Backwards>(drain + "backwards", 1, count, true);
        addRatio({drain + "library", drain + "forwards", 1.2});
        addRatio({drain + "library", drain + "backwards", 1.2});
    }
    addRatio({"drain/100000/library", "drain/10000/library"});
    addRatio({"drain/1000000/library", "drain/10000/library"});
}
