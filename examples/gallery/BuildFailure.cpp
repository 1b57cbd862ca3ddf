#include "BuildFailure.h"

#include <kygl/KyShaderBuild.h>
#include <kylib/KyResult.h>

namespace {

thread_local std::string tFailure;

// Runs on the thread that builds.
void note(const KyShaderBuild& build, void* /*user*/) {
    if (build.result.ok()) return;
    for (long i = build.messageCount; i-- > 0;)
        if (build.messages[i].severity == KyDiagnostics::Severity::Error)
            tFailure = build.messages[i].line;
}

}  // namespace

void watchBuilds() {
    KyShaderBuild::setObserver(note);
}

std::string lastBuildFailure() {
    return tFailure;
}
