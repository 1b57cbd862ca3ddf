#pragma once

#include "Allocations.h"

#include <kygl/KyDiagnostics.h>

#include <mutex>
#include <string>
#include <utility>
#include <vector>

/// While it lives, diagnostics are on and kept. One at a time. The messages neither count nor fail
/// as allocations.
struct Messages {
    explicit Messages(unsigned int topics = KyDiagnostics::All) {
        KyDiagnostics::enable(
            [](const auto& message, void* self) {
                const Allocations::Exempt exempt;
                static_cast<Messages*>(self)->keep(message);
            },
            this, topics);
    }
    ~Messages() { KyDiagnostics::disable(); }
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

    /// "context 3: error: ...", "path/file:7:2: note: ...", "warning: ...".
    std::vector<std::string> take() {
        const std::lock_guard<std::mutex> hold(mMutex);
        return std::exchange(mLines, {});
    }
    /// Turns diagnostics off. @return the counts that this reports, and what was not taken
    std::vector<std::string> end() {
        KyDiagnostics::disable();
        return take();
    }

private:
    void keep(const KyDiagnostics::Message& message) {
        static const char* const kSeverities[] = {"note: ", "warning: ", "error: "};
        std::string place;
        if (message.context != 0xFFFFFFFFU)
            place = "context " + std::to_string(message.context) + ": ";
        if (message.file != nullptr) place += message.file + std::string(":");
        for (const long number : {message.line, message.column})
            if (number > 0) place += std::to_string(number) + ':';
        if (message.file != nullptr) place += ' ';
        const std::lock_guard<std::mutex> hold(mMutex);
        mLines.push_back(place + kSeverities[static_cast<int>(message.severity)] + message.text);
    }

    std::mutex mMutex;
    std::vector<std::string> mLines;
};
