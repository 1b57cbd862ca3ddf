#pragma once

#include "CheckOutput.h"
#include "JsonText.h"

/// A log in the form SARIF 2.1.0, for services and editors that show the results of analyses. A
/// message is one result for all variants of its program.
class SarifOutput : public CheckOutput {
public:
    explicit SarifOutput(std::FILE* out) : mOut(out), mResults(out) {}

    void warning(const KyShaderMessage& warning) override { mWarnings.push_back(warning); }
    void beginProgram(const Program& program) override;
    void variant(const VariantReport& report) override { mMessages.add(report); }
    void endProgram() override;
    void end(int status) override;

private:
    void begin();

    std::FILE* mOut;
    JsonItems mResults;
    bool mHasBegun = false;
    std::vector<KyShaderMessage> mWarnings;
    std::string mProgram;
    MessageList mMessages;
};
