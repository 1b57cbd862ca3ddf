#pragma once

#include "CheckOutput.h"

/// What a check says of each program, to be compared with what it said before.
class Verdict {
public:
    /// Prints the messages that are gone ("- ") and those that are new ("+ "), program by program
    /// below the name of each.
    static void printChanges(const Verdict& before, const Verdict& after);

    /// @param name of a program
    void add(const std::string& name, const std::string& message) { add(name, message, message); }
    /// @param text the message as it is shown
    void add(const std::string& name, const std::string& message, const std::string& text);

private:
    struct Line {
        std::string message;
        std::string text;
    };
    using Lines = std::vector<Line>;

    const Lines& linesOf(const std::string& name) const;

    std::map<std::string, Lines> mLines;  // of each program
};

/// Puts a check into a verdict.
class VerdictOutput : public CheckOutput {
public:
    explicit VerdictOutput(Verdict& verdict) : mVerdict(verdict) {}

    void warning(const KyShaderMessage& warning) override;
    void beginProgram(const Program& program) override;
    void variant(const VariantReport& report) override { mMessages.add(report); }
    void endProgram() override;
    void end(int /*status*/) override {}

private:
    Verdict& mVerdict;
    std::string mProgram;
    MessageList mMessages;
};
