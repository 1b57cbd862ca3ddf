#pragma once

#include "CheckOutput.h"
#include "JsonText.h"

/// Everything as one JSON object, written as it comes.
class JsonOutput : public CheckOutput {
public:
    explicit JsonOutput(std::FILE* out) : mOut(out), mPrograms(out), mVariants(out) {}

    void warning(const KyShaderMessage& warning) override { mWarnings.push_back(warning); }
    void beginProgram(const Program& program) override;
    void variant(const VariantReport& report) override;
    void endProgram() override;
    void end(int status) override;

private:
    std::FILE* mOut;
    JsonItems mPrograms;
    JsonItems mVariants;
    bool mHasBegun = false;
    std::vector<KyShaderMessage> mWarnings;
};
