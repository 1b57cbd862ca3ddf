#pragma once

#include <atomic>
#include <thread>
#include <vector>

/// Runs `work(0)` to `work(count - 1)`, each on a thread of its own, and starts them all at once.
template <typename Work>
void runTogether(unsigned int count, Work work) {
    std::atomic<unsigned int> ready{0};
    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < count; ++i) {
        threads.emplace_back([&, i] {
            for (++ready; ready < count;)
                std::this_thread::yield();
            work(i);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}
