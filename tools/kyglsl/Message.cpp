#include "Message.h"

std::string toString(const Message& message) {
    if (message.severity.empty()) return message.text;
    const std::string line =
        message.place.line > 0 ? ":" + std::to_string(message.place.line) : std::string();
    return message.place.file + line + ": " + message.severity + ": " + message.text;
}
