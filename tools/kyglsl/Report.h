#pragma once

#include "Driver.h"
#include "Message.h"

#include <cstdio>
#include <string>
#include <vector>

/// What came of one program with one macro set.
struct VariantReport {
    std::vector<std::string> macros;
    std::string macroNames;  // for people
    bool good = false;
    std::vector<Message> messages;
    struct Log {
        const char* of;  // "vertex", "fragment" or "link"
        std::string text;
    };
    std::vector<Log> logs;  // none unless asked for
};

struct ProgramReport {
    std::string vertex;
    std::string fragment;
    bool isRead = true;  // both of its files are
    std::vector<VariantReport> variants;

    long failures() const;
    /// Variants that build with a warning of the driver.
    long withWarnings() const;
    /// In any variant, good or not.
    bool hasWarning() const;
};

/// Each message once; one that not all variants have, with how many do and the first of them.
void printMessages(std::FILE* out, const ProgramReport& program);

/// The logs as they stand, but for a line end behind each.
/// @param program heads each log together with what it is of, unless it is empty
void printLogs(std::FILE* out, const VariantReport& variant, const std::string& program);

/// One row for each program and one for all.
void printTable(std::FILE* out, const std::vector<ProgramReport>& programs);

/// @param warnings what there is to say of the files themselves
void printJson(std::FILE* out, const std::vector<ProgramReport>& programs,
               const std::vector<Message>& warnings);
