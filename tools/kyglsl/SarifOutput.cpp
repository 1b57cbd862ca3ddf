#include "SarifOutput.h"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;
using Severity = KyShaderMessage::Severity;

struct Rule {
    const char* id;
    const char* about;
};

// In the order of the topics.
constexpr Rule kRules[] = {
    {"driver", "What the driver says of a shader or program"},
    {"file", "A file that cannot be read"},
    {"include", "A directive that does not give what its author expects"},
    {"version", "A #version that is not first"},
    {"style", "What may surprise in the text of a file"},
};

Json rules() {
    Json all = Json::array();
    for (const Rule& rule : kRules)
        all.push_back({{"id", rule.id}, {"shortDescription", {{"text", rule.about}}}});
    return all;
}

// A URI reference: a relative path stays relative.
std::string uri(const std::string& path) {
    constexpr std::string_view kPlain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string out = path.front() == '/' ? "file://" : "";
    for (const char c : path) {
        char escape[4];
        std::snprintf(escape, sizeof escape, "%%%02X", static_cast<unsigned char>(c));
        if (kPlain.find(c) == std::string_view::npos)
            out += escape;
        else
            out += c;
    }
    return out;
}

Json location(const KyShaderPlace& place) {
    if (place.file.empty())
        return {{"logicalLocations", {{{"name", "-D " + place.macro}, {"kind", "macro"}}}}};
    Json physical = {{"artifactLocation", {{"uri", uri(place.file)}}}};
    if (place.line > 0) physical["region"]["startLine"] = place.line;
    if (place.line > 0 && place.column > 0) physical["region"]["startColumn"] = place.column;
    return {{"physicalLocation", physical}};
}

const char* level(Severity severity) {
    return severity == Severity::None ? "note" : toString(severity);
}

Json result(const KyShaderMessage& message) {
    const auto rule = static_cast<std::size_t>(message.topic);
    Json out = {{"ruleId", kRules[rule].id},
                {"ruleIndex", rule},
                {"level", level(message.severity)},
                {"message", {{"text", message.text}}}};
    for (const KyShaderPlace& place : message.places)
        out["locations"].push_back(location(place));
    for (const KyShaderMessage& note : message.notes) {
        Json related = note.places.empty() ? Json::object() : location(note.places.front());
        related["message"]["text"] = note.text;
        out["relatedLocations"].push_back(related);
    }
    return out;
}

}  // namespace

void SarifOutput::begin() {
    if (mHasBegun) return;
    mHasBegun = true;
    const Json driver = {{"name", "kyglsl"}, {"version", KYGLSL_VERSION}, {"rules", rules()}};
    std::fputs(
        "{\"$schema\": \"https://json.schemastore.org/sarif-2.1.0.json\",\n"
        "\"version\": \"2.1.0\",\n\"runs\": [{\"tool\": {\"driver\": ",
        mOut);
    writeJson(mOut, driver);
    std::fputs("},\n\"columnKind\": \"unicodeCodePoints\",\n\"results\": [", mOut);
    for (const KyShaderMessage& warning : mWarnings)
        mResults.add(result(warning));
}

void SarifOutput::beginProgram(const Program& program) {
    begin();
    mProgram = program.name();
    mMessages = {};
}

void SarifOutput::endProgram() {
    for (const MessageList::Item& item : mMessages.items()) {
        Json out = result(item.message);
        out["properties"] = {{"program", mProgram},
                             {"macroSets", mMessages.variants()},
                             {"macroSetsWithThis", item.count},
                             {"firstMacros", item.first}};
        mResults.add(out);
    }
}

void SarifOutput::end(int status) {
    std::fputs("],\n\"invocations\": [", mOut);
    writeJson(mOut, {{"executionSuccessful", status != 2}, {"exitCode", status}});
    std::fputs("]}]}\n", mOut);
}
