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
    std::string rawLog;  // empty unless asked for
};

struct ProgramReport {
    std::string vertex;
    std::string fragment;
    std::vector<VariantReport> variants;

    long failures() const;
    /// Variants that build with a warning of the driver.
    long withWarnings() const;
    /// In any variant, good or not.
    bool hasWarning() const;
};

/// Each message once; one that not all variants have, with how many do and the first of them.
void printMessages(std::FILE* out, const ProgramReport& program);

/// One row for each program and one for all.
void printTable(std::FILE* out, const std::vector<ProgramReport>& programs);

/// @param warnings what there is to say of the files themselves
void printJson(std::FILE* out, const std::vector<ProgramReport>& programs,
               const std::vector<Message>& warnings);
