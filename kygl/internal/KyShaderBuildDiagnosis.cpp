#include "KyDiagnosis.h"
#include "KyShaderBuildDelivery.h"
#include "KyShaderKnownOrigins.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <new>

namespace {

using Topic = KyDiagnostics::Topic;

// A driver may list dozens of candidates for one call.
constexpr long kMostNotes = 8;

std::string circumstancesOf(const KyShaderBuildRecord& record) {
    return kyCircumstances("context " + std::to_string(record.context),
                           record.hasVertex ? &record.vertex : nullptr,
                           record.hasFragment ? &record.fragment : nullptr);
}

std::string nameOf(const KyShaderBuildRecord& record) {
    const std::string vertex = record.hasVertex ? record.vertex.path.dataPtr() : "";
    const std::string fragment = record.hasFragment ? record.fragment.path.dataPtr() : "";
    return vertex + (record.isLink() ? " and " : "") + fragment;
}

std::string subjectOf(const KyShaderBuildRecord& record) {
    return "build|" + nameOf(record) + circumstancesOf(record);
}

KyFinding::Message show(const KyShaderMessage& message) {
    KyFinding::Message shown{kySeverityOf(message), message.text};
    if (message.places.empty()) return shown;
    const auto hasLine = [](const KyShaderPlace& place) { return place.line > 0; };
    auto best = std::find_if(message.places.begin(), message.places.end(), hasLine);
    if (best == message.places.end()) best = message.places.begin();
    shown.file = best->file;
    shown.line = best->line;
    shown.column = best->column;
    if (!best->macro.empty()) shown.text = "in the macro '" + best->macro + "': " + shown.text;
    for (auto place = message.places.begin(); place != message.places.end(); ++place)
        if (place != best) shown.text += "; see " + toString(*place);
    return shown;
}

// The path is what the library made of the names that it was given.
std::string whyNotRead(const KyShaderMessage& message, const KyShaderBuildStage& stage) {
    const std::string path =
        "\"/share/shaders/" + std::string(stage.folder.dataPtr()) + "/" + stage.file.dataPtr();
    return message.text + "; the path is KyShader::mFolderPath + " + path +
           "\": set mFolderPath before the first build, or correct the names given to create";
}

// Of the shader itself: an included file is named at its directive.
bool isOfTopFile(const KyShaderMessage& message) {
    return kyTopicOf(message) == KyDiagnostics::File && message.places.front().line == 0;
}

// Files are the same for all macro sets and contexts: what is wrong with them is said once.
void diagnoseFiles(const KyShaderBuildRecord& record) {
    const KyShaderBuildStage& stage = record.hasVertex ? record.vertex : record.fragment;
    for (const Topic topic :
         {KyDiagnostics::File, KyDiagnostics::Include, KyDiagnostics::Version}) {
        // A build without macros does not end the fault: the next one with macros has it again.
        if (topic == KyDiagnostics::Version && stage.macroLines.length() == 0) continue;
        KyFinding found{std::to_string(topic) + "|" + stage.path.dataPtr(), {}};
        for (const KyShaderMessage& message : record.messages) {
            if (kyTopicOf(message) != topic) continue;
            found.messages.push_back(show(message));
            if (isOfTopFile(message)) found.messages.back().text = whyNotRead(message, stage);
        }
        if (found.messages.empty())
            KyDiagnosis::ended(topic, [&] { return found.subject; });
        else
            KyDiagnosis::report(topic, [&] { return found; });
    }
}

/// How often builds have failed in a row.
class Failures {
public:
    struct Count {
        long calls = 0;
        long objectsLeft = 0;
    };
    using Counts = std::map<std::string, Count>;

    static Count add(const std::string& subject, long objectsLeft) {
        const std::lock_guard<std::mutex> hold(sMutex);
        if (sCounts.size() >= kMost) sCounts.clear();
        Count& count = sCounts[subject];
        ++count.calls;
        count.objectsLeft += objectsLeft;
        return count;
    }
    static void clear() {
        const std::lock_guard<std::mutex> hold(sMutex);
        sCounts.clear();
    }
    static void end(const std::string& subject) {
        const std::lock_guard<std::mutex> hold(sMutex);
        sCounts.erase(subject);
    }

private:
    static constexpr std::size_t kMost = 1024;
    static std::mutex sMutex;
    alignas(Counts) static unsigned char sPlaceOfCounts[sizeof(Counts)];
    static Counts& sCounts;
};

std::mutex Failures::sMutex;
// Never destroyed: threads may still build while the process ends. Takes no memory while
// diagnostics are off.
alignas(Failures::Counts) unsigned char Failures::sPlaceOfCounts[sizeof(Counts)];
Failures::Counts& Failures::sCounts = *new (sPlaceOfCounts) Counts;

bool isPowerOfTen(long number) {
    while (number >= 10 && number % 10 == 0)
        number /= 10;
    return number == 1;
}

void diagnoseRepetition(const KyShaderBuildRecord& record, const std::string& subject) {
    const Failures::Count count = Failures::add(subject, record.objectsLeft);
    if (count.calls == 1 || !isPowerOfTen(count.calls)) return;
    KyDiagnosis::report(KyDiagnostics::Build, [&] {
        const std::string text =
            std::string(record.isLink() ? "the link" : "the compile") + " has failed " +
            std::to_string(count.calls) + " times in a row: each call tries it again, and " +
            std::to_string(count.objectsLeft) +
            " GL objects that nobody deletes are left so far; do not apply a program for which "
            "compile has returned false, and correct the shader" +
            circumstancesOf(record);
        const KyShaderBuildStage& stage = record.hasVertex ? record.vertex : record.fragment;
        return KyFinding{subject + "|again",
                         {{KyDiagnostics::Severity::Warning, text, stage.path.dataPtr()}},
                         record.context};
    });
}

void diagnoseResult(const KyShaderBuildRecord& record) {
    const std::string subject = subjectOf(record);
    if (record.result.ok()) {
        Failures::end(subject);
        KyDiagnosis::ended(KyDiagnostics::Build, [&] { return subject; });
        return;
    }
    const bool isUnread = std::any_of(record.messages.begin(), record.messages.end(), isOfTopFile);
    const std::string ending =
        (isUnread ? "; the shader is empty, because its file cannot be read" : "") +
        circumstancesOf(record);
    KyDiagnosis::report(KyDiagnostics::Build, [&] {
        KyFinding found{subject, {}, record.context};
        long notes = 0;  // that follow each other
        for (const KyShaderMessage& message : record.messages) {
            if (kyTopicOf(message) != KyDiagnostics::Build) continue;
            notes = message.severity == KyShaderMessage::Severity::Note ? notes + 1 : 0;
            if (notes > kMostNotes) continue;
            found.messages.push_back(show(message));
            found.messages.back().text += ending;
            if (notes == kMostNotes) found.messages.back().text += "; no more of them are shown";
        }
        return found;
    });
    diagnoseRepetition(record, subject);
}

}  // namespace

void kyDiagnoseBuild(const KyShaderBuildRecord& record) noexcept {
    if (!KyDiagnosis::isOn()) return;
    try {
        if (!record.isLink()) diagnoseFiles(record);
        if (KyDiagnosis::wants(KyDiagnostics::Build)) diagnoseResult(record);
    } catch (const std::exception&) {  // no memory: the message is lost
    }
}

void kyForgetBuilds() {
    Failures::clear();
    KyShaderKnownOrigins::clear();
}
