#include "Checker.h"

#include "StandIn.h"

#include <KyDriverLog.h>
#include <KyRepeatedIncludes.h>
#include <KyShaderDeclarations.h>

#include <algorithm>

namespace {

KyPlaceOf placesIn(const KyShaderOrigins& file, const MacroSet& macros) {
    return [&](long line, long column) {
        return file.placeInLog(macros.lines().dataPtr(), line, column);
    };
}

bool isPlacedError(const KyShaderMessage& message) {
    return message.severity == KyShaderMessage::Severity::Error && !message.places.empty();
}

// A failure that the driver gives no place for still names the file.
void addMessages(VariantReport& report, const Driver::Step& step,
                 const std::vector<KyShaderPlace>& whole, const char* failure,
                 const std::vector<KyShaderMessage>& messages) {
    if (!step.good && std::none_of(messages.begin(), messages.end(), isPlacedError))
        report.messages.push_back({whole, KyShaderMessage::Severity::Error, failure});
    report.messages.insert(report.messages.end(), messages.begin(), messages.end());
}

void addCompile(VariantReport& report, const Driver::Step& step, const KyShaderOrigins& file,
                const MacroSet& macros) {
    std::vector<KyShaderMessage> messages = kyReadDriverLog(step.log, placesIn(file, macros));
    kyExplainRepeatedIncludes(messages, file);
    addMessages(report, step, {{file.path()}}, "does not compile", messages);
}

// A stand-in has no place, and what is warned of is how little it does.
void addLink(VariantReport& report, const Driver::Step& step, const KyShaderOrigins* vertex,
             const KyShaderOrigins* fragment, const MacroSet& macros) {
    std::vector<KyShaderPlace> files;
    KyPlaceOf places[2];
    for (const int stage : {0, 1}) {
        const KyShaderOrigins* const file = stage == 0 ? vertex : fragment;
        places[stage] = [](long /*line*/, long /*column*/) { return KyShaderPlace(); };
        if (file == nullptr) continue;
        places[stage] = placesIn(*file, macros);
        files.push_back({file->path()});
    }
    std::vector<KyShaderMessage> messages = kyReadLinkLog(step.log, files, places[0], places[1]);
    kyPlaceDeclarations(messages, vertex, fragment);
    const auto isWarning = [](const KyShaderMessage& message) {
        return message.severity == KyShaderMessage::Severity::Warning;
    };
    if (files.size() == 1)
        messages.erase(std::remove_if(messages.begin(), messages.end(), isWarning), messages.end());
    addMessages(report, step, files, "does not link", messages);
}

// The stage compiles, and that is all that is known of it.
void addUnlinked(VariantReport& report, const KyShaderOrigins& file) {
    report.good = true;
    report.messages.push_back({{{file.path()}},
                               KyShaderMessage::Severity::Warning,
                               "not linked: no stand-in of the other stage can be made of it"});
}

// @param failures why files of the program cannot be read
std::vector<KyShaderMessage> unread(const Program& program,
                                    const std::vector<std::string>& failures) {
    std::vector<KyShaderMessage> messages;
    for (const std::string& failure : failures) {
        messages.push_back({{}, KyShaderMessage::Severity::Error, failure});
        messages.back().topic = KyShaderMessage::Topic::File;
        if (program.place.isKnown()) messages.back().places = {program.place};
    }
    return messages;
}

}  // namespace

int Checker::run(std::optional<Driver>& driver) {
    readFiles();
    const auto isRead = [](const std::vector<std::string>& failures) { return failures.empty(); };
    mIsUnread = !std::all_of(mFailures.begin(), mFailures.end(), isRead);
    if (std::any_of(mFailures.begin(), mFailures.end(), isRead)) {
        if (!driver) driver.emplace();
        mDriver = &*driver;
    }
    for (std::size_t i = 0; i < mPrograms.size(); ++i)
        build(mPrograms[i], mFailures[i]);
    mOutput.end(status());
    return status();
}

int Checker::status() const {
    if (mIsUnread) return 2;
    return mIsBad || (mOptions.strict && !mWarned.empty()) ? 1 : 0;
}

void Checker::readFiles() {
    warn(macroWarnings(mOptions.macros));
    for (const Program& program : mPrograms) {
        bool hasMacros = !mOptions.macros.empty();
        for (const MacroLine& line : program.lines) {
            warn(macroWarnings(line.macros(line.choices() - 1)));
            hasMacros = hasMacros || !line.isEmpty();
        }
        mFailures.push_back(unreadFiles(program, hasMacros));
    }
}

std::vector<std::string> Checker::unreadFiles(const Program& program, bool hasMacros) {
    std::vector<std::string> failures;
    for (const std::string& name : {program.vertex, program.fragment}) {
        if (name.empty()) continue;
        try {
            warn(mFiles.get(name), hasMacros);
        } catch (const UsageError& e) {
            if (failures.empty() || failures.back() != e.what()) failures.emplace_back(e.what());
        }
    }
    return failures;
}

void Checker::warn(const KyShaderOrigins& file, bool hasMacros) {
    if (mWarnedFiles.emplace(&file, hasMacros).second) warn(file.messages(hasMacros));
}

// A file that several others include is warned of once.
void Checker::warn(const std::vector<KyShaderMessage>& warnings) {
    for (const KyShaderMessage& warning : warnings)
        if (mWarned.insert(toString(warning)).second) mOutput.warning(warning);
}

void Checker::build(const Program& program, const std::vector<std::string>& failures) {
    mOutput.beginProgram(program);
    for (const MacroLine& line : program.lines) {
        for (unsigned long choice = 0; choice < line.choices(); ++choice) {
            std::vector<std::string> texts = mOptions.macros;
            for (std::string& text : line.macros(choice))
                texts.push_back(std::move(text));
            const MacroSet macros(texts);
            const VariantReport report =
                failures.empty()
                    ? buildVariant(program, macros)
                    : VariantReport{macros.texts(), false, unread(program, failures), {}};
            mIsBad = mIsBad || !report.good || (mOptions.strict && report.hasWarning());
            mOutput.variant(report);
        }
    }
    mOutput.endProgram();
}

const KyShaderOrigins* Checker::fileOf(const std::string& name) {
    return name.empty() ? nullptr : &mFiles.get(name);
}

VariantReport Checker::buildVariant(const Program& program, const MacroSet& macros) {
    const KyShaderOrigins* const vertex = fileOf(program.vertex);
    const KyShaderOrigins* const fragment = fileOf(program.fragment);
    const auto text = [&](Stage stage) -> KyString {
        const KyShaderOrigins* const file = stage == Stage::Vertex ? vertex : fragment;
        if (file != nullptr) return macros.textFor(*file);
        return stage == Stage::Vertex
                   ? standInFor(Stage::Fragment, macros.textFor(*fragment).dataPtr()).c_str()
                   : standInFor(Stage::Vertex, macros.textFor(*vertex).dataPtr()).c_str();
    };
    const Driver::Build build = mDriver->build(text(Stage::Vertex), text(Stage::Fragment));
    VariantReport report{macros.texts(), build.good(), {}, {}};
    if (vertex != nullptr) addCompile(report, build.vertex, *vertex, macros);
    if (fragment != nullptr) addCompile(report, build.fragment, *fragment, macros);
    if (build.vertex.good && build.fragment.good)
        addLink(report, build.link, vertex, fragment, macros);
    if (vertex == nullptr && build.fragment.good && !build.vertex.good)
        addUnlinked(report, *fragment);
    if (fragment == nullptr && build.vertex.good && !build.fragment.good)
        addUnlinked(report, *vertex);
    if (!mOptions.raw) return report;
    if (vertex != nullptr) report.logs.push_back({"vertex", build.vertex.log});
    if (fragment != nullptr) report.logs.push_back({"fragment", build.fragment.log});
    report.logs.push_back({"link", build.link.log});
    return report;
}
