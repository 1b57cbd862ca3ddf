#pragma once

#include <benchmark/benchmark.h>

#include <exception>
#include <functional>
#include <map>
#include <string>

/// What the benchmarks share: sides, ratios, and the ground that a side runs on.
///
/// A subject is measured from two sides or more, the library's and its peers', in one run; what
/// counts is their ratio. A side is any object that does one step each time it is called. `make`
/// makes it; what `make` throws is reported and fails the run.

/// Every side by name, as a function that makes it and runs that many steps and nothing else, for
/// counting instructions from outside.
std::map<std::string, std::function<void(long)>>& countable();

/// Number of allocations that the calling thread has made so far, in whatever library.
unsigned long allocations();

/// Bytes of heap that the calling thread holds after `work` beyond those that it held before.
long heapGrowth(const std::function<void()>& work);

template <typename Make>
benchmark::internal::Benchmark* addSide(const std::string& name, Make make) {
    countable()[name] = [make](long steps) {
        auto side = make();
        side();
        for (long i = 0; i < steps; ++i)
            side();
    };
    return benchmark::RegisterBenchmark(name.c_str(), [make](benchmark::State& state) {
        try {
            auto side = make();
            side();
            const auto before = static_cast<double>(allocations());
            for (auto _ : state)
                side();
            const double made = static_cast<double>(allocations()) - before;
            state.counters["allocs"] = {made, benchmark::Counter::kAvgIterations};
        } catch (const std::exception& error) {
            state.SkipWithError(error.what());
        }
    });
}

/// One line of the table that ends a run: the time of `side` over that of `peer`, or the bytes of
/// both where they report a counter of that name.
struct Ratio {
    std::string side;
    std::string peer;
    double limit = 0;         ///< the target, 0 for none; of bytes it is one for `side` itself
    bool difference = false;  ///< take the difference in nanoseconds instead
};
void addRatio(const Ratio& ratio);

/// While one lives, every GL entry point does nothing: builds succeed, new names count up, and no
/// error is pending. Several threads may hold one each.
struct NoOpGL {
    NoOpGL();
    ~NoOpGL();
};

/// The same with a GLX context current on this thread, as `RealGL` makes one.
struct NoOpGLInContext : NoOpGL {
    NoOpGLInContext();
    ~NoOpGLInContext();
};

/// While one lives, the entry points are the driver's and a GLX context on a small pbuffer is
/// current on this thread. Throws `std::runtime_error` where there is none to be had.
struct RealGL {
    RealGL();
    ~RealGL();
};

/// Writes a file of the shader folder "bench", which lies in a temporary folder of this process.
/// @return its path
std::string writeShader(const std::string& file, const std::string& text);

/// The subjects, a source each.
///@{
void addApply();
void addErrorCheck();
void addRegistry();
void addMacroSwitch();
void addVariants();
void addDeferred();
void addLoader();
void addContainers();
void addText();
void addTexture();
///@}
