#pragma once

#include "CheckOutput.h"

/// For people: messages on standard error, and on standard output the logs as they are, where they
/// are asked for, and a table at the end of a list. On a terminal it shows how far it is.
class TextOutput : public CheckOutput {
public:
    /// @param variants how many there are in all
    TextOutput(bool isList, unsigned long variants);
    ~TextOutput() override;

    void warning(const KyShaderMessage& warning) override;
    void beginProgram(const Program& program) override;
    void variant(const VariantReport& report) override;
    void endProgram() override;
    void end(int status) override;

private:
    // A row of the table. Variants are only counted, because there may be many.
    struct Row {
        std::string name = {};
        long variants = 0;
        long failures = 0;
        long withWarnings = 0;  // of those that build
    };

    static void printRow(const Row& row);
    void printLogs(const VariantReport& report) const;
    void clearProgress() const;

    bool mIsList;
    unsigned long mTotal;
    bool mShowsProgress;
    unsigned long mDone = 0;
    std::vector<Row> mRows;
    MessageList mMessages;
};
