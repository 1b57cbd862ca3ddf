#pragma once

#include <KyShaderOrigins.h>
#include "CheckOutput.h"
#include "Commands.h"
#include "Driver.h"
#include "MacroSet.h"
#include "ShaderFiles.h"

#include <optional>
#include <set>

/// Builds programs with all their macro sets on the driver.
class Checker {
public:
    /// @param programs, options, output live longer
    Checker(const std::vector<Program>& programs, const CheckOptions& options, CheckOutput& output)
        : mPrograms(programs), mOptions(options), mOutput(output), mFiles(options.root) {}

    /// Once. Throws a `UsageError`, after the warnings, where there is no driver.
    /// @param driver is opened if it is not and there is something to build
    /// @return the exit status
    int run(std::optional<Driver>& driver);

    /// Every file that was asked for, the missing ones too.
    std::vector<std::string> files() const { return mFiles.files(); }

private:
    void readFiles();
    std::vector<std::string> unreadFiles(const Program& program, bool hasMacros);
    void warn(const KyShaderOrigins& file, bool hasMacros);
    void warn(const std::vector<KyShaderMessage>& warnings);
    void build(const Program& program, const std::vector<std::string>& failures);
    const KyShaderOrigins* fileOf(const std::string& name);
    VariantReport buildVariant(const Program& program, const MacroSet& macros);
    int status() const;

    const std::vector<Program>& mPrograms;
    const CheckOptions& mOptions;
    CheckOutput& mOutput;
    ShaderFiles mFiles;
    Driver* mDriver = nullptr;
    std::vector<std::vector<std::string>> mFailures;  // of each program: why files cannot be read
    bool mIsUnread = false;                           // any program
    bool mIsBad = false;                              // any variant
    std::set<std::string> mWarned;
    std::set<std::pair<const KyShaderOrigins*, bool>> mWarnedFiles;  // with macros and without
};
