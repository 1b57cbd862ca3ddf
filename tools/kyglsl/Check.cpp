#include "Commands.h"
#include "Driver.h"
#include "DriverLog.h"
#include "MacroSet.h"
#include "Report.h"
#include "ShaderFiles.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <optional>

namespace {

// How far it is, on a terminal. Messages go over it.
class Progress {
public:
    Progress(long total, bool isShown)
        : mTotal(total), mShows(isShown && total > 1 && isatty(STDERR_FILENO) == 1) {}
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
        std::optional<Driver> driver;  // needed where there is something to build
        if (std::find(mFailures.begin(), mFailures.end(), std::string()) != mFailures.end())
            driver.emplace();
        long total = 0;
        for (const Program& program : mPrograms)
            total += static_cast<long>(program.macros.size());
        Progress progress(total, !mOptions.json);
        for (std::size_t i = 0; i < mPrograms.size(); ++i) {
            if (mFailures[i].empty())
                build(*driver, mPrograms[i], progress);
            else
                giveUp(mPrograms[i], mFailures[i], progress);
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
        const auto isUnread = [](const ProgramReport& report) { return !report.isRead; };
        if (std::any_of(mReports.begin(), mReports.end(), isUnread)) return 2;
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
            mFailures.emplace_back();
            try {
                for (const std::string& name : {program.vertex, program.fragment})
                    warn(mFiles.get(name).warnings(hasMacros));
            } catch (const UsageError& e) {
                mFailures.back() = e.what();
            }
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

    MacroSet macrosOf(const std::vector<std::string>& list) const {
        std::vector<std::string> texts = mOptions.macros;
        texts.insert(texts.end(), list.begin(), list.end());
        return MacroSet(texts);
    }

    void build(Driver& driver, const Program& program, Progress& progress) {
        mReports.push_back({program.vertex, program.fragment, true, {}});
        for (const std::vector<std::string>& list : program.macros) {
            mReports.back().variants.push_back(buildVariant(
                driver, mFiles.get(program.vertex), mFiles.get(program.fragment), macrosOf(list)));
            progress.step();
        }
    }

    void giveUp(const Program& program, const std::string& failure, Progress& progress) {
        mReports.push_back({program.vertex, program.fragment, false, {}});
        for (const std::vector<std::string>& list : program.macros) {
            const MacroSet macros = macrosOf(list);
            mReports.back().variants.push_back({macros.texts(),
                                                macros.toString(),
                                                false,
                                                {{program.place, "error", failure}},
                                                {}});
            progress.step();
        }
    }

    VariantReport buildVariant(Driver& driver, const ExpandedFile& vertex,
                               const ExpandedFile& fragment, const MacroSet& macros) const {
        const Driver::Build build = driver.build(macros.textFor(vertex), macros.textFor(fragment));
        VariantReport report{macros.texts(), macros.toString(), build.good(), {}, {}};
        addCompile(report, build.vertex, vertex, macros);
        addCompile(report, build.fragment, fragment, macros);
        if (build.vertex.good && build.fragment.good)
            addLink(report, build.link, vertex, fragment, macros);
        if (mOptions.raw)
            report.logs = {{"vertex", build.vertex.log},
                           {"fragment", build.fragment.log},
                           {"link", build.link.log}};
        return report;
    }

    // Behind a "#line" the driver's numbers are not those of the text.
    static PlaceOf placesIn(const ExpandedFile& file, const MacroSet& macros) {
        return [&](long line) {
            return file.hasLineDirective() ? Place() : macros.placeOfLine(file, line);
        };
    }

    static void addCompile(VariantReport& report, const Driver::Step& step,
                           const ExpandedFile& file, const MacroSet& macros) {
        addMessages(report, step, {file.path(), 0}, "does not compile",
                    readDriverLog(step.log, placesIn(file, macros)));
    }

    static void addLink(VariantReport& report, const Driver::Step& step, const ExpandedFile& vertex,
                        const ExpandedFile& fragment, const MacroSet& macros) {
        const Place pair = {vertex.path() + " " + fragment.path(), 0};
        addMessages(
            report, step, pair, "does not link",
            readLinkLog(step.log, pair, placesIn(vertex, macros), placesIn(fragment, macros)));
    }

    // A failure that the driver gives no place for still names the file.
    static void addMessages(VariantReport& report, const Driver::Step& step, const Place& whole,
                            const char* failure, const std::vector<Message>& messages) {
        const bool placed =
            std::any_of(messages.begin(), messages.end(), [](const Message& message) {
                return message.severity == "error" && !message.place.file.empty();
            });
        if (!step.good && !placed) report.messages.push_back({whole, "error", failure});
        report.messages.insert(report.messages.end(), messages.begin(), messages.end());
    }

    void print(const ProgramReport& report) const {
        if (!mOptions.raw) {
            printMessages(stderr, report);
            return;
        }
        if (!report.isRead) printMessages(stderr, report);
        for (const VariantReport& variant : report.variants)
            printLogs(stdout, variant,
                      mOptions.isList ? report.vertex + " " + report.fragment : "");
    }

    const std::vector<Program>& mPrograms;
    const CheckOptions& mOptions;
    ShaderFiles mFiles;
    std::vector<std::string> mFailures;  // why a program cannot be read; empty: it can
    std::vector<ProgramReport> mReports;
    std::vector<Message> mWarnings;
    std::set<std::string> mWarned;
};

}  // namespace

int check(const std::vector<Program>& programs, const CheckOptions& options) {
    return Check(programs, options).run();
}
