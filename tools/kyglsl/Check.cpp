#include <KyDriverLog.h>
#include <KyRepeatedIncludes.h>
#include "Commands.h"
#include "Driver.h"
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

    void warn(const KyShaderOrigins& file, bool hasMacros) {
        if (mWarnedFiles.emplace(&file, hasMacros).second) warn(file.messages(hasMacros));
    }

    // A file that several others include is warned of once.
    void warn(const std::vector<KyShaderMessage>& warnings) {
        for (const KyShaderMessage& warning : warnings) {
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
                        : VariantReport{macros.texts(), false, {unread(program, failure)}, {}};
                take(report, messages);
                mProgress.step();
            }
        }
        mProgress.clear();
        messages.print(stderr);
    }

    static KyShaderMessage unread(const Program& program, const std::string& failure) {
        KyShaderMessage message{{}, KyShaderMessage::Severity::Error, failure};
        if (program.place.isKnown()) message.places = {program.place};
        return message;
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

    VariantReport buildVariant(const KyShaderOrigins& vertex, const KyShaderOrigins& fragment,
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

    static KyPlaceOf placesIn(const KyShaderOrigins& file, const MacroSet& macros) {
        return [&](long line, long column) {
            return file.placeInLog(macros.lines().dataPtr(), line, column);
        };
    }

    static void addCompile(VariantReport& report, const Driver::Step& step,
                           const KyShaderOrigins& file, const MacroSet& macros) {
        std::vector<KyShaderMessage> messages = kyReadDriverLog(step.log, placesIn(file, macros));
        kyExplainRepeatedIncludes(messages, file);
        addMessages(report, step, {{file.path()}}, "does not compile", messages);
    }

    static void addLink(VariantReport& report, const Driver::Step& step,
                        const KyShaderOrigins& vertex, const KyShaderOrigins& fragment,
                        const MacroSet& macros) {
        const std::vector<KyShaderPlace> pair = {{vertex.path()}, {fragment.path()}};
        addMessages(
            report, step, pair, "does not link",
            kyReadLinkLog(step.log, pair, placesIn(vertex, macros), placesIn(fragment, macros)));
    }

    // A failure that the driver gives no place for still names the file.
    static void addMessages(VariantReport& report, const Driver::Step& step,
                            const std::vector<KyShaderPlace>& whole, const char* failure,
                            const std::vector<KyShaderMessage>& messages) {
        const bool placed =
            std::any_of(messages.begin(), messages.end(), [](const KyShaderMessage& message) {
                return message.severity == KyShaderMessage::Severity::Error &&
                       !message.places.empty();
            });
        if (!step.good && !placed)
            report.messages.push_back({whole, KyShaderMessage::Severity::Error, failure});
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
    std::vector<KyShaderMessage> mWarnings;
    std::set<std::string> mWarned;
    std::set<std::pair<const KyShaderOrigins*, bool>> mWarnedFiles;  // with macros and without
};

}  // namespace

int check(const std::vector<Program>& programs, const CheckOptions& options) {
    return Check(programs, options).run();
}
