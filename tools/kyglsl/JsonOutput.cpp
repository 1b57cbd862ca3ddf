#include "JsonOutput.h"

#include <nlohmann/json.hpp>

using Json = nlohmann::ordered_json;

static Json json(const KyShaderPlace& place) {
    Json out = place.file.empty() ? Json{{"macro", place.macro}} : Json{{"file", place.file}};
    if (place.line > 0) out["line"] = place.line;
    if (place.column > 0) out["column"] = place.column;
    return out;
}

static Json json(const KyShaderMessage& message) {
    Json out = {{"places", Json::array()},
                {"severity", toString(message.severity)},
                {"text", message.text},
                {"notes", Json::array()}};
    for (const KyShaderPlace& place : message.places)
        out["places"].push_back(json(place));
    for (const KyShaderMessage& note : message.notes)
        out["notes"].push_back(json(note));
    return out;
}

void JsonOutput::beginProgram(const Program& program) {
    if (!mHasBegun) std::fputs("{\"programs\": [", mOut);
    mHasBegun = true;
    mPrograms.separate();
    std::fputc('{', mOut);
    for (const auto& [stage, file] :
         {std::pair("vertex", program.vertex), std::pair("fragment", program.fragment)}) {
        if (file.empty()) continue;
        std::fprintf(mOut, "\"%s\": ", stage);
        writeJson(mOut, file);
        std::fputs(", ", mOut);
    }
    std::fputs("\"variants\": [", mOut);
    mVariants = JsonItems(mOut);
}

void JsonOutput::variant(const VariantReport& report) {
    Json out = {{"macros", report.macros}, {"good", report.good}, {"messages", Json::array()}};
    for (const KyShaderMessage& message : report.messages)
        out["messages"].push_back(json(message));
    for (const VariantReport::Log& log : report.logs)
        if (!log.text.empty()) out["logs"][log.of] = log.text;
    mVariants.add(out);
}

void JsonOutput::endProgram() {
    std::fputs("]}", mOut);
}

void JsonOutput::end(int /*status*/) {
    std::fputs("],\n\"warnings\": [", mOut);
    JsonItems items(mOut);
    for (const KyShaderMessage& warning : mWarnings)
        items.add(json(warning));
    std::fputs("]}\n", mOut);
}
