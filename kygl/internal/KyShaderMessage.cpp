#include "KyShaderMessage.h"

#include "KyPrintable.h"

const char* toString(KyShaderMessage::Severity severity) {
    constexpr const char* kNames[] = {"", "note", "warning", "error"};
    return kNames[static_cast<int>(severity)];
}

std::string toString(const KyShaderPlace& place) {
    const std::string line = place.line > 0 ? ":" + std::to_string(place.line) : std::string();
    return (place.file.empty() ? "-D " + place.macro : place.file) + line;
}

static std::string withoutNotes(const KyShaderMessage& message) {
    if (message.places.empty()) return kyPrintable(message.text);
    std::string places;
    for (const KyShaderPlace& place : message.places)
        places += (places.empty() ? "" : " ") + toString(place);
    return kyPrintable(places + ": " + toString(message.severity) + ": " + message.text);
}

std::string toString(const KyShaderMessage& message) {
    std::string text = withoutNotes(message);
    for (const KyShaderMessage& note : message.notes)
        text += '\n' + toString(note);
    return text;
}
