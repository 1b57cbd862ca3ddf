#pragma once

#include <KyShaderMessage.h>
#include "ProgramList.h"

#include <cstdio>
#include <map>
#include <string>
#include <vector>

/// What came of one program with one macro set.
struct VariantReport {
    std::vector<std::string> macros;
    bool good = false;
    std::vector<KyShaderMessage> messages;
    struct Log {
        const char* of;  // "vertex", "fragment" or "link"
        std::string text;
    };
    std::vector<Log> logs;  // none unless asked for

    bool hasWarning() const;  ///< of the driver
};

/// A row of the table. Variants are only counted, because there may be many.
struct ProgramReport {
    std::string name;  // the names of its files
    long variants = 0;
    long failures = 0;
    long withWarnings = 0;  // of those that build

    void add(const VariantReport& variant);
};

/// The messages of one program, each once, in the order in which they came.
class MessageList {
public:
    void add(const VariantReport& variant);
    /// One that not all variants have, with how many do and the first of them.
    void print(std::FILE* out) const;

private:
    struct Once {
        const std::string* text;
        std::string first;  // the macros of a variant
        long count;
        long last;  // of the variants
    };
    std::map<std::string, std::size_t> mKnown;
    std::vector<Once> mAll;
    long mVariants = 0;
};

/// The logs as they stand, but for a line end behind each.
/// @param program heads each log together with what it is of, unless it is empty
void printLogs(std::FILE* out, const VariantReport& variant, const std::string& program);

/// One row for each program and one for all.
void printTable(std::FILE* out, const std::vector<ProgramReport>& programs);

/// All that there is to say, as one JSON object, written as it comes.
class JsonReport {
public:
    explicit JsonReport(std::FILE* out) : mOut(out) {}
    void beginProgram(const Program& program);
    void add(const VariantReport& variant);
    /// @param warnings what there is to say of the files themselves
    void end(const std::vector<KyShaderMessage>& warnings);

private:
    std::FILE* mOut;
    bool mHasProgram = false;
    bool mHasVariant = false;
};
