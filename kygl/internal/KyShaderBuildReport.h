#pragma once

#include "KyDiagnosis.h"
#include "KyShaderBuildDelivery.h"
#include "KyShaderBuildRecord.h"

#include <kygl/kyglApi.h>

#include <new>
#include <optional>
#include <utility>

/// Takes the time of one build and reports it to the observer of builds and to `KyDiagnostics`.
/// Costs one load while nobody listens.
class KYGL_LOCAL KyShaderBuildReport {
public:
    KyShaderBuildReport();

    /// Whether anybody listened when it was made.
    explicit operator bool() const { return mIsWanted; }

    /// Describes a compile.
    /// @param shader its GL name; 0 after a failure
    KyShaderBuildRecord compiled(const KyShaderBuildStage& stage, bool isVertex,
                                 unsigned int context, const KyResult& result,
                                 unsigned int shader) const;

    /// Describes a link.
    /// @param program its GL name, also after a failure; 0 if there is none
    KyShaderBuildRecord linked(const KyShaderBuildStage& vertex, const KyShaderBuildStage& fragment,
                               unsigned int context, const KyResult& result,
                               unsigned int program) const;

    /// Reports the build that `describe()` returns, through the batch of this thread if there is
    /// one. A build that there is no memory to describe is not reported.
    template <typename Describe>
    static void deliver(const Describe& describe);

private:
    bool mIsWanted;
    std::chrono::steady_clock::time_point mStart;
};

/// Gathers the builds of one `compile` that may try a stage twice, while somebody listens.
/// `deliver` reports each once, with the result of its last attempt; where an exception passes, the
/// destructor does.
class KYGL_LOCAL KyShaderBuildBatch {
public:
    KyShaderBuildBatch() : mOuter(std::exchange(tCurrent, this)) {}
    ~KyShaderBuildBatch();
    KyShaderBuildBatch(const KyShaderBuildBatch&) = delete;
    KyShaderBuildBatch& operator=(const KyShaderBuildBatch&) = delete;

    void deliver();

private:
    friend class KyShaderBuildReport;

    static bool take(KyShaderBuildRecord& record);
    void merge(KyShaderBuildRecord&& record);

    // In the static block of the thread, where its first use takes no memory.
    [[gnu::tls_model("initial-exec")]] static inline thread_local KyShaderBuildBatch* tCurrent =
        nullptr;
    bool mIsOpen = true;
    KyShaderBuildBatch* mOuter;
    std::vector<KyShaderBuildRecord> mRecords;
    std::size_t mDelivered = 0;
};

template <typename Describe>
void KyShaderBuildReport::deliver(const Describe& describe) {
    std::optional<KyShaderBuildRecord> record;
    try {
        record = describe();
        if (KyShaderBuildBatch::take(*record)) return;
    } catch (const std::bad_alloc&) {
        return;
    }
    kyDeliverBuild(*record);
}
