#include "Commands.h"
#include "Driver.h"
#include "DriverLog.h"
#include "MacroSet.h"
#include "Report.h"
#include "ShaderFiles.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace {

// How far it is, on a terminal. Messages go over it.
class Progress {
public:
    explicit Progress(long total)
        : mTotal(total), mShows(isatty(STDERR_FILENO) == 1 && total > 1) {}
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void step() {
        ++mDone;
        if (mShows) std::fprintf(stderr, "\r%ld of %ld", mDone, mTotal);
    }
    void clear() const {
        if (mShows) std::fputs("\r\033[K", stderr);
    }

private:
    long mTotal;
    long mDone = 0;
    bool mShows;
};

class Check {
public:
    Check(const std::vector<Program>& programs, const CheckOptions& options)
        : mPrograms(programs), mOptions(options), mFiles(options.root) {}

    int run() {
        readFiles();
        Driver driver;
        long total = 0;
        for (const Program& program : mPrograms)
            total += static_cast<long>(program.macros.size());
        Progress progress(total);
        for (const Program& program : mPrograms) {
            build(driver, program, progress);
            progress.clear();
            if (!mOptions.json) print(mReports.back());
        }
        if (mOptions.json)
            printJson(stdout, mReports, mWarnings);
        else if (mOptions.isList)
            printTable(stdout, mReports);
        if (std::fflush(stdout) != 0) throw UsageError("standard output: cannot be written");
        return status();
    }

private:
    int status() const {
        const auto isBad = [&](const ProgramReport& report) {
            return report.failures() > 0 || (mOptions.strict && report.hasWarning());
        };
        const bool isBadAny = std::any_of(mReports.begin(), mReports.end(), isBad);
        return isBadAny || (mOptions.strict && !mWarnings.empty()) ? 1 : 0;
    }

    void readFiles() {
        warn(macroWarnings(mOptions.macros));
        for (const Program& program : mPrograms) {
            for (const std::vector<std::string>& list : program.macros)
                warn(macroWarnings(list));
            const bool hasMacros =
                !mOptions.macros.empty() ||
                std::any_of(program.macros.begin(), program.macros.end(),
                            [](const std::vector<std::string>& list) { return !list.empty(); });
            for (const std::string& name : {program.vertex, program.fragment})
                warn(mFiles.get(name).warnings(hasMacros));
        }
    }

    // A file that several others include is warned of once.
    void warn(const std::vector<Message>& warnings) {
        for (const Message& warning : warnings) {
            if (!mWarned.insert(toString(warning)).second) continue;
            mWarnings.push_back(warning);
            if (!mOptions.json) std::fprintf(stderr, "%s\n", toString(warning).c_str());
        }
    }

    void build(Driver& driver, const Program& program, Progress& progress) {
        mReports.push_back({program.vertex, program.fragment, {}});
        for (const std::vector<std::string>& list : program.macros) {
            std::vector<std::string> texts = mOptions.macros;
            texts.insert(texts.end(), list.begin(), list.end());
            mReports.back().variants.push_back(buildVariant(
                driver, mFiles.get(program.vertex), mFiles.get(program.fragment), MacroSet(texts)));
            progress.step();
        }
    }

    // The log of a link does not tell which of the two texts a line belongs to.
    VariantReport buildVariant(Driver& driver, const ExpandedFile& vertex,
                               const ExpandedFile& fragment, const MacroSet& macros) const {
        const Driver::Build build = driver.build(macros.textFor(vertex), macros.textFor(fragment));
        VariantReport report{macros.texts(), macros.toString(), build.good(), {}, {}};
        addCompile(report, build.vertex, vertex, macros);
        addCompile(report, build.fragment, fragment, macros);
        if (build.vertex.good && build.fragment.good)
            addMessages(report, build.link, vertex.path(), "does not link with " + fragment.path(),
                        [](long /*line*/) { return Place(); });
        if (mOptions.raw) report.rawLog = build.vertex.log + build.fragment.log + build.link.log;
        return report;
    }

    static void addCompile(VariantReport& report, const Driver::Step& step,
                           const ExpandedFile& file, const MacroSet& macros) {
        addMessages(report, step, file.path(), "does not compile",
                    [&](long line) { return macros.placeOfLine(file, line); });
    }

    // A failure that the driver gives no place for still names the file.
    static void addMessages(VariantReport& report, const Driver::Step& step,
                            const std::string& path, const std::string& failure,
                            const std::function<Place(long)>& placeOf) {
        const std::vector<Message> messages = readDriverLog(step.log, placeOf);
        const bool placed =
            std::any_of(messages.begin(), messages.end(),
                        [](const Message& message) { return message.severity == "error"; });
        const Place whole = {path, 0};
        if (!step.good && !placed) report.messages.push_back({whole, "error", failure});
        report.messages.insert(report.messages.end(), messages.begin(), messages.end());
    }

    void print(const ProgramReport& report) const {
        if (!mOptions.raw) {
            printMessages(stderr, report);
            return;
        }
        for (const VariantReport& variant : report.variants)
            std::fputs(variant.rawLog.c_str(), stdout);
    }

    const std::vector<Program>& mPrograms;
    const CheckOptions& mOptions;
    ShaderFiles mFiles;
    std::vector<ProgramReport> mReports;
    std::vector<Message> mWarnings;
    std::set<std::string> mWarned;
};

}  // namespace

int check(const std::vector<Program>& programs, const CheckOptions& options) {
    return Check(programs, options).run();
}
