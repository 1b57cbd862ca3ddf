#pragma once

#include "Report.h"

/// Where a check puts what it finds. The calls come in the order of the functions, those for
/// programs and variants again and again. A check that cannot be made ends after the warnings.
class CheckOutput {
public:
    CheckOutput() = default;
    virtual ~CheckOutput() = default;
    CheckOutput(const CheckOutput&) = delete;
    CheckOutput& operator=(const CheckOutput&) = delete;

    /// Of the files themselves.
    virtual void warning(const KyShaderMessage& warning) = 0;
    virtual void beginProgram(const Program& program) = 0;
    virtual void variant(const VariantReport& report) = 0;
    virtual void endProgram() = 0;
    virtual void end(int status) = 0;
};
