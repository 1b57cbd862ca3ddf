#include "KyShaderBuildReport.h"

#include "KyDriverLog.h"
#include "kyglCheck.h"
#include "KyRepeatedIncludes.h"
#include "KyShaderDeclarations.h"
#include "KyShaderKnownOrigins.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <utility>

namespace {

using Severity = KyShaderMessage::Severity;

constexpr char kSource[] = "internal/KyShaderBuildReport";

// The log of a good build, which nothing else asks for. A GL error of this query is dropped: the
// application did not make it.
std::string fetchLog(unsigned int object) {
    constexpr int kMost = 1 << 20;
    int length = 0;
    glGetObjectParameterivARB(object, GL_OBJECT_INFO_LOG_LENGTH_ARB, &length);
    std::string log(static_cast<std::size_t>(std::clamp(length, 1, kMost)), '\0');
    if (length > 1) glGetInfoLogARB(object, static_cast<GLsizei>(log.size()), nullptr, log.data());
    if (KYGL_CHECK_GROUP(0).failed()) return {};
    log.resize(std::min(log.find('\0'), log.size()));
    return log;
}

// Only a text that the driver refused has a log; after a GL error there is none.
std::string logOf(const KyResult& result, unsigned int object) {
    constexpr std::string_view kHead = "Shader Error: ";
    if (result.ok()) return fetchLog(object);
    const std::string_view message(result.message());
    return std::string(message.substr(0, kHead.size()) == kHead ? message.substr(kHead.size())
                                                                : std::string_view());
}

// By the check of the call that makes it. Without an object there is nothing to leave.
bool wasMade(const KyResult& result) {
    return std::strstr(result.detail(), "glCreateShaderObject") == nullptr;
}

KyPlaceOf placesIn(const KyShaderBuildStage& stage, const KyShaderOrigins* origins) {
    return [&stage, origins](long line, long column) {
        return origins != nullptr ? origins->placeInLog(stage.macroLines.dataPtr(), line, column)
                                  : KyShaderPlace();
    };
}

// The notes of a message become messages after it.
void add(KyShaderBuildRecord& record, std::vector<KyShaderMessage>&& log) {
    for (KyShaderMessage& message : log) {
        std::vector<KyShaderMessage> notes = std::move(message.notes);
        message.notes.clear();
        record.messages.push_back(std::move(message));
        add(record, std::move(notes));
    }
}

void addFiles(KyShaderBuildRecord& record, const KyShaderOrigins* origins) {
    if (origins == nullptr) return;
    std::set<std::string> known(record.files.begin(), record.files.end());
    for (std::string& file : origins->files())
        if (known.insert(file).second) record.files.push_back(std::move(file));
}

// Findings of style matter where files are checked, not in a running program.
void addFindings(KyShaderBuildRecord& record, const KyShaderBuildStage& stage,
                 const KyShaderOrigins* origins) {
    if (origins == nullptr) return;
    for (KyShaderMessage& message : origins->messages(stage.macroLines.length() > 0)) {
        if (message.topic == KyShaderMessage::Topic::Style) continue;
        if (message.topic == KyShaderMessage::Topic::File) message.severity = Severity::Error;
        record.messages.push_back(std::move(message));
    }
}

// A failure without a place in the log still names the files, even if there is an error about one
// of the files themselves.
void addFailure(KyShaderBuildRecord& record, const std::vector<KyShaderPlace>& whole,
                const char* what) {
    const auto isPlaced = [](const KyShaderMessage& message) {
        return message.topic == KyShaderMessage::Topic::Driver &&
               message.severity == Severity::Error && !message.places.empty();
    };
    const auto& known = record.messages;
    if (record.result.ok() || std::any_of(known.begin(), known.end(), isPlaced)) return;
    const bool hasLog = record.result.message()[0] != '\0';
    record.messages.push_back(
        {whole, Severity::Error, what + (hasLog ? "" : ": " + std::string(record.result.text()))});
}

}  // namespace

KyShaderBuildReport::KyShaderBuildReport() : mIsWanted(KyDiagnosis::wantsBuilds()) {
    if (!mIsWanted) return;
    KyDiagnosis::setForgetBuilds(kyForgetBuilds);
    mStart = std::chrono::steady_clock::now();
}

KyShaderBuildRecord KyShaderBuildReport::compiled(const KyShaderBuildStage& stage, bool isVertex,
                                                  unsigned int context, const KyResult& result,
                                                  unsigned int shader) const {
    KyShaderBuildRecord record;
    record.time = std::chrono::steady_clock::now() - mStart;
    record.hasVertex = isVertex;
    record.hasFragment = !isVertex;
    (isVertex ? record.vertex : record.fragment) = stage;
    record.context = context;
    record.result = result;
    record.objectsLeft = result.failed() && wasMade(result) ? 1 : 0;
    const KyShaderKnownOrigins origins(stage.path, stage.source);
    addFiles(record, origins.get());
    addFindings(record, stage, origins.get());
    auto log = kyReadDriverLog(logOf(result, shader), placesIn(stage, origins.get()));
    if (origins.get() != nullptr) kyExplainRepeatedIncludes(log, *origins.get());
    add(record, std::move(log));
    addFailure(record, {{stage.path.dataPtr()}}, "does not compile");
    return record;
}

KyShaderBuildRecord KyShaderBuildReport::linked(const KyShaderBuildStage& vertex,
                                                const KyShaderBuildStage& fragment,
                                                unsigned int context, const KyResult& result,
                                                unsigned int program) const {
    KyShaderBuildRecord record;
    record.time = std::chrono::steady_clock::now() - mStart;
    record.hasVertex = record.hasFragment = true;
    record.vertex = vertex;
    record.fragment = fragment;
    record.context = context;
    record.result = result;
    record.objectsLeft = result.failed() && program != 0 ? 1 : 0;
    const KyShaderKnownOrigins ofVertex(vertex.path, vertex.source);
    const KyShaderKnownOrigins ofFragment(fragment.path, fragment.source);
    addFiles(record, ofVertex.get());
    addFiles(record, ofFragment.get());
    const std::vector<KyShaderPlace> whole = {{vertex.path.dataPtr()}, {fragment.path.dataPtr()}};
    auto log = kyReadLinkLog(logOf(result, program), whole, placesIn(vertex, ofVertex.get()),
                             placesIn(fragment, ofFragment.get()));
    kyPlaceDeclarations(log, ofVertex.get(), ofFragment.get());
    add(record, std::move(log));
    addFailure(record, whole, "does not link");
    return record;
}

KyShaderBuildBatch::~KyShaderBuildBatch() {
    while (mIsOpen || mDelivered < mRecords.size()) {
        try {
            deliver();
        } catch (...) {  // of the observer's: another one is on its way already
        }
    }
}

// The observer may build on its own: its builds are not of this batch.
void KyShaderBuildBatch::deliver() {
    if (mIsOpen) tCurrent = mOuter;
    mIsOpen = false;
    while (mDelivered < mRecords.size())
        kyDeliverBuild(mRecords[mDelivered++]);
}

// @return false where this thread has no batch
bool KyShaderBuildBatch::take(KyShaderBuildRecord& record) {
    if (tCurrent == nullptr) return false;
    tCurrent->merge(std::move(record));
    return true;
}

void KyShaderBuildBatch::merge(KyShaderBuildRecord&& record) {
    const auto former =
        std::find_if(mRecords.begin(), mRecords.end(), [&](const KyShaderBuildRecord& each) {
            return each.hasVertex == record.hasVertex && each.hasFragment == record.hasFragment;
        });
    if (former == mRecords.end()) {
        mRecords.push_back(std::move(record));
        return;
    }
    record.time += former->time;
    record.objectsLeft += former->objectsLeft;
    *former = std::move(record);
}
