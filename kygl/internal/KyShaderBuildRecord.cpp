#include "KyShaderBuildRecord.h"

#include <algorithm>
#include <string_view>

namespace {

// "A; LIGHTS 3" for the lines of these macros.
std::string macrosOf(const KyShaderBuildStage* stage) {
    constexpr std::string_view kDefine = "#define ";
    std::string all;
    std::string_view lines(stage != nullptr ? stage->macroLines.dataPtr() : "");
    while (!lines.empty()) {
        const std::size_t end = std::min(lines.find('\n'), lines.size() - 1);
        std::string_view macro = lines.substr(0, end);
        if (macro.substr(0, kDefine.size()) == kDefine) macro.remove_prefix(kDefine.size());
        all += (all.empty() ? "" : "; ") + std::string(macro);
        lines.remove_prefix(end + 1);
    }
    return all;
}

}  // namespace

KyDiagnostics::Severity kySeverityOf(const KyShaderMessage& message) {
    using From = KyShaderMessage::Severity;
    using To = KyDiagnostics::Severity;
    if (message.severity == From::Error) return To::Error;
    return message.severity == From::Warning ? To::Warning : To::Note;
}

KyDiagnostics::Topic kyTopicOf(const KyShaderMessage& message) {
    using From = KyShaderMessage::Topic;
    if (message.topic == From::File) return KyDiagnostics::File;
    if (message.topic == From::Include) return KyDiagnostics::Include;
    return message.topic == From::Version ? KyDiagnostics::Version : KyDiagnostics::Build;
}

std::string kyCircumstances(const std::string& where, const KyShaderBuildStage* vertex,
                            const KyShaderBuildStage* fragment) {
    const std::string ofVertex = macrosOf(vertex != nullptr ? vertex : fragment);
    const std::string ofFragment = macrosOf(fragment != nullptr ? fragment : vertex);
    std::string text = where;
    const auto add = [&](const std::string& more) { text += (text.empty() ? "" : "; ") + more; };
    if (ofVertex != ofFragment)
        add("macros of the vertex shader: " + ofVertex + "; of the fragment shader: " + ofFragment);
    else if (!ofVertex.empty())
        add("macros: " + ofVertex);
    return text.empty() ? text : " (" + text + ")";
}
