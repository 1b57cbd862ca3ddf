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
    Progress(unsigned long total, bool isShown)
        : mTotal(total), mShows(isShown && total > 1 && isatty(STDERR_FILENO) == 1) {}
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void step() {
        ++mDone;
        if (mShows) std::fprintf(stderr, "\r%lu of %lu", mDone, mTotal);
    }
    void clear() const {
        if (mShows) std::fputs("\r\033[K", stderr);
    }

private:
    unsigned long mTotal;
    unsigned long mDone = 0;
    bool mShows;
};

class Check {
public:
    Check(const std::vector<Program>& programs, const CheckOptions& options)
        : mPrograms(programs),
          mOptions(options),
          mFiles(options.root),
          mProgress(variants(programs), !options.json) {}

    int run() {
        readFiles();
        if (std::find(mFailures.begin(), mFailures.end(), std::string()) != mFailures.end())
            mDriver.emplace();
        for (std::size_t i = 0; i < mPrograms.size(); ++i)
            build(mPrograms[i], mFailures[i]);
        if (mOptions.json)
            mJson.end(mWarnings);
        else if (mOptions.isList)
            printTable(stdout, mReports);
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
            throw UsageError("standard output: cannot be written");
        return status();
    }

private:
    static unsigned long variants(const std::vector<Program>& programs) {
        unsigned long count = 0;
        for (const Program& program : programs)
            count += program.variants();
        return count;
    }

    int status() const {
        const auto isUnread = [](const std::string& failure) { return !failure.empty(); };
        if (std::any_of(mFailures.begin(), mFailures.end(), isUnread)) return 2;
        return mIsBad || (mOptions.strict && !mWarnings.empty()) ? 1 : 0;
    }

    void readFiles() {
        warn(macroWarnings(mOptions.macros));
        for (const Program& program : mPrograms) {
            bool hasMacros = !mOptions.macros.empty();
            for (const MacroLine& line : program.lines) {
                warn(macroWarnings(line.macros(line.choices() - 1)));
                hasMacros = hasMacros || !line.isEmpty();
            }
            mFailures.emplace_back();
            try {
                for (const std::string& name : {program.vertex, program.fragment})
                    warn(mFiles.get(name), hasMacros);
            } catch (const UsageError& e) {
                mFailures.back() = e.what();
            }
        }
    }

    void warn(const ExpandedFile& file, bool hasMacros) {
        if (mWarnedFiles.emplace(&file, hasMacros).second) warn(file.warnings(hasMacros));
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

    // @param failure why the program cannot be read; empty: it can
    void build(const Program& program, const std::string& failure) {
        mReports.push_back({program.vertex + " " + program.fragment});
        if (mOptions.json) mJson.beginProgram(program);
        MessageList messages;
        for (const MacroLine& line : program.lines) {
            for (unsigned long choice = 0; choice < line.choices(); ++choice) {
                const MacroSet macros = macrosOf(line.macros(choice));
                const VariantReport report =
                    failure.empty()
                        ? buildVariant(mFiles.get(program.vertex), mFiles.get(program.fragment),
                                       macros)
                        : VariantReport{
                              macros.texts(), false, {{program.place, "error", failure}}, {}};
                take(report, messages);
                mProgress.step();
            }
        }
        mProgress.clear();
        messages.print(stderr);
    }

    void take(const VariantReport& report, MessageList& messages) {
        mReports.back().add(report);
        mIsBad = mIsBad || !report.good || (mOptions.strict && report.hasWarning());
        if (mOptions.json)
            mJson.add(report);
        else if (report.logs.empty())
            messages.add(report);
        else
            print(report);
    }

    void print(const VariantReport& report) const {
        mProgress.clear();
        printLogs(stdout, report, mOptions.isList ? mReports.back().name : "");
    }

    VariantReport buildVariant(const ExpandedFile& vertex, const ExpandedFile& fragment,
                               const MacroSet& macros) {
        const Driver::Build build =
            mDriver->build(macros.textFor(vertex), macros.textFor(fragment));
        VariantReport report{macros.texts(), build.good(), {}, {}};
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
        const bool isMoved = file.hasLineDirective();
        return
            [&, isMoved](long line) { return isMoved ? Place() : macros.placeOfLine(file, line); };
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

    const std::vector<Program>& mPrograms;
    const CheckOptions& mOptions;
    ShaderFiles mFiles;
    Progress mProgress;
    std::optional<Driver> mDriver;       // where there is something to build
    std::vector<std::string> mFailures;  // why a program cannot be read; empty: it can
    std::vector<ProgramReport> mReports;
    JsonReport mJson{stdout};
    bool mIsBad = false;  // any variant
    std::vector<Message> mWarnings;
    std::set<std::string> mWarned;
    std::set<std::pair<const ExpandedFile*, bool>> mWarnedFiles;  // with macros and without
};

}  // namespace

int check(const std::vector<Program>& programs, const CheckOptions& options) {
    return Check(programs, options).run();
}
