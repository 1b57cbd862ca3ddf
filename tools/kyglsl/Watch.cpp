#include "Checker.h"
#include "FileWatch.h"
#include "ListedPrograms.h"
#include "Verdict.h"

#include <unistd.h>

#include <KyPrintable.h>

#include <csignal>
#include <cstdio>

namespace {

void endOnSignals() {
    for (const int number : {SIGINT, SIGTERM})
        std::signal(number, [](int) { _exit(0); });
}

// What a check would ask for, and the list.
std::vector<std::string> filesOf(const CheckOptions& options) {
    ShaderFiles files(options.root);
    try {
        for (const Program& program : listedPrograms(options.list, options.root))
            for (const std::string& name : {program.vertex, program.fragment})
                files.ask(name);
    } catch (const UsageError&) {  // the check reports it
    }
    std::vector<std::string> all = files.files();
    all.push_back(options.list);
    return all;
}

Verdict verdictOf(const CheckOptions& options, std::optional<Driver>& driver) {
    Verdict verdict;
    try {
        const std::vector<Program> programs = listedPrograms(options.list, options.root);
        VerdictOutput output(verdict);
        Checker(programs, options, output).run(driver);
    } catch (const UsageError& e) {
        verdict.add("kyglsl", kyPrintable(e.what()));
    }
    return verdict;
}

}  // namespace

// What changes while the driver works waits in the queue of its folder.
int watch(const CheckOptions& options) {
    endOnSignals();
    std::optional<Driver> driver;
    driver.emplace();
    FileWatch changes;
    Verdict before;
    for (;; changes.wait()) {
        std::vector<std::string> files = filesOf(options);
        while (changes.watch(files))
            files = filesOf(options);
        Verdict after = verdictOf(options, driver);
        Verdict::printChanges(before, after);
        std::printf("watching %zu files\n", files.size());
        if (std::fflush(stdout) != 0) throw UsageError("standard output: cannot be written");
        before = std::move(after);
    }
}
