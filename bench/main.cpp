#include "support.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

namespace {

std::vector<Ratio>& ratios() {
    static std::vector<Ratio> all;
    return all;
}

// Prints what the console reporter prints, and a table of ratios at the end: for people, and into a
// file, if there is one, for programs.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    explicit RatioReporter(std::FILE* file) : ConsoleReporter(OO_Tabular), mFile(file) {}

    bool failed() const { return !mFailed.empty(); }

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration) continue;
            std::string name = run.run_name.function_name;
            if (!run.run_name.threads.empty()) name += "/" + run.run_name.threads;
            // The processor's time unless the side wants another: it knows nothing of other
            // programs.
            const double total = run.run_name.time_type.empty() ? run.cpu_accumulated_time
                                                                : run.real_accumulated_time;
            if (total <= 0) {
                mFailed.insert(name);
                continue;
            }
            double figure = total * 1e9 / static_cast<double>(run.iterations);
            const auto bytes = run.counters.find("bytes");
            if (bytes != run.counters.end()) {
                figure = bytes->second.value;
                mInBytes.insert(name);
            }
            mFigures[name].push_back(figure);
        }
    }

    void Finalize() override {
        std::printf("\n%-36s %12s   %-32s %12s %7s %7s\n", "side", "ns", "peer", "ns", "ratio",
                    "target");
        for (const Ratio& ratio : ratios())
            print(ratio);
        for (const std::string& name : mFailed)
            std::printf("%s: NOT MEASURED\n", name.c_str());
    }

private:
    // Of several repetitions the best, for what disturbs a measurement only makes it longer. Of
    // several threads the median, for the best is one where they missed each other. 0 for none.
    double best(const std::string& name) const {
        const auto found = mFigures.find(name);
        if (found == mFigures.end()) return 0;
        std::vector<double> figures = found->second;
        std::sort(figures.begin(), figures.end());
        return name.find("/threads:") == name.npos ? figures[0] : figures[figures.size() / 2];
    }

    void print(const Ratio& ratio) const {
        const double side = best(ratio.side);
        const double peer = best(ratio.peer);
        if (side <= 0 || peer <= 0) return;
        const bool inBytes = mInBytes.count(ratio.side) > 0;
        const char* const unit = ratio.difference ? "ns" : inBytes ? "bytes" : "x";
        const double value = ratio.difference ? side - peer : side / peer;
        std::printf("%-36s %12.1f   %-32s %12.1f %7.2f", ratio.side.c_str(), side,
                    ratio.peer.c_str(), peer, value);
        if (ratio.limit > 0)
            std::printf(" %7g  %s", ratio.limit,
                        (inBytes ? side : value) <= ratio.limit ? "met" : "MISSED");
        std::printf("%s\n", ratio.difference ? " (difference in ns)" : inBytes ? " (bytes)" : "");
        if (mFile != nullptr)
            std::fprintf(mFile, "%s\t%.5g\t%s\t%.5g\t%.5g\t%g\t%s\n", ratio.side.c_str(), side,
                         ratio.peer.c_str(), peer, value, ratio.limit, unit);
    }

    std::FILE* mFile;
    std::map<std::string, std::vector<double>> mFigures;
    std::set<std::string> mInBytes;
    std::set<std::string> mFailed;
};

int count(const char* side, long steps) {
    const auto found = countable().find(side);
    if (found == countable().end()) {
        std::fprintf(stderr, "kygl_bench: no side %s; there are:\n", side);
        for (const auto& known : countable())
            std::fprintf(stderr, "  %s\n", known.first.c_str());
        return 1;
    }
    try {
        found->second(steps);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kygl_bench: %s: %s\n", side, error.what());
        return 1;
    }
}

// Takes `--ratios FILE` off the command line. @return FILE, or null
const char* takeRatiosFile(int& argc, char** argv) {
    char** const end = argv + argc;
    char** const found = std::find_if(
        argv, end, [](const char* word) { return std::strcmp(word, "--ratios") == 0; });
    if (end - found < 2) return nullptr;
    const char* const file = found[1];
    std::copy(found + 2, end, found);
    argc -= 2;
    return file;
}

}  // namespace

void addRatio(const Ratio& ratio) {
    ratios().push_back(ratio);
}

int main(int argc, char** argv) {
    // As long as a process never had a second thread its locks and allocations cost half as much,
    // which is not the life that the library leads.
    std::thread([] {}).join();
    addApply();
    addErrorCheck();
    addRegistry();
    addMacroSwitch();
    addVariants();
    addDeferred();
    addLoader();
    addContainers();
    addText();
    addTexture();
    if (argc == 4 && std::strcmp(argv[1], "--count") == 0)
        return count(argv[2], std::atol(argv[3]));
    const char* const path = takeRatiosFile(argc, argv);
    std::FILE* const file = path != nullptr ? std::fopen(path, "w") : nullptr;
    if (path != nullptr && file == nullptr) {
        std::perror(path);
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    RatioReporter reporter(file);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    if (file != nullptr) std::fclose(file);
    return reporter.failed() ? 1 : 0;
}
