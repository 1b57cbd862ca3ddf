#include "BuildFailure.h"

#include <kygl/KyShader.h>
#include <kylib/KyResult.h>

#include <algorithm>
#include <sstream>

namespace {

thread_local std::string tFailure;

// The driver numbers the lines of the text that it was given, with all includes and macros in it.
// kyglsl knows where each of them comes from.
std::string command(const KyShader::Stage& vertex, const KyShader::Stage& fragment) {
    std::string text =
        std::string("kyglsl check --root '") + KyShader::mFolderPath.getString() + "'";
    const KyShader::Stage& known = vertex.file != nullptr ? vertex : fragment;
    for (const char* const kind : {"vert", "frag"})
        text += std::string(" ") + known.folder + "/terrain." + kind;
    std::istringstream lines(known.macros);
    for (std::string define, macro; lines >> define && std::getline(lines >> std::ws, macro);)
        text += " -D '" + macro + "'";
    return text;
}

// Runs on the thread that builds.
void note(const KyShader::Build& build) {
    if (build.result.ok()) return;
    const bool links = build.vertex.file != nullptr && build.fragment.file != nullptr;
    const KyShader::Stage& stage = build.vertex.file != nullptr ? build.vertex : build.fragment;
    std::string log = build.result.message();
    log.resize(std::min(log.find('\n'), log.size()));
    tFailure = std::string(stage.file) +
               (links ? std::string(" and ") + build.fragment.file + ": do not link: "
                      : ": does not compile: ") +
               log + "; " + command(build.vertex, build.fragment) + " tells more";
}

}  // namespace

void watchBuilds() {
    KyShader::setBuildObserver(note);
}

std::string lastBuildFailure() {
    return tFailure;
}
