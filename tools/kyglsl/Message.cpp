#include "Message.h"

#include "Printable.h"

std::string toString(const Message& message) {
    if (message.place.file.empty()) return printable(message.text);
    const std::string line =
        message.place.line > 0 ? ":" + std::to_string(message.place.line) : std::string();
    return printable(message.place.file + line + ": " + message.severity + ": " + message.text);
}
