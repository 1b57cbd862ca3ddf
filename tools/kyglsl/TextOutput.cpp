#include "TextOutput.h"

#include <KyPrintable.h>

#include <unistd.h>

#include <cstdio>

TextOutput::TextOutput(bool isList, unsigned long variants)
    : mIsList(isList),
      mTotal(variants),
      mShowsProgress(variants > 1 && isatty(STDERR_FILENO) == 1) {}

TextOutput::~TextOutput() {
    clearProgress();
}

void TextOutput::clearProgress() const {
    if (mShowsProgress) std::fputs("\r\033[K", stderr);
}

void TextOutput::warning(const KyShaderMessage& warning) {
    std::fprintf(stderr, "%s\n", toString(warning).c_str());
}

void TextOutput::beginProgram(const Program& program) {
    mRows.push_back({program.name()});
    mMessages = {};
}

void TextOutput::variant(const VariantReport& report) {
    Row& row = mRows.back();
    ++row.variants;
    if (!report.good)
        ++row.failures;
    else if (report.hasWarning())
        ++row.withWarnings;
    if (report.logs.empty())
        mMessages.add(report);
    else
        printLogs(report);
    if (mShowsProgress) std::fprintf(stderr, "\r%lu of %lu", ++mDone, mTotal);
}

// Each log gets a line end if it has none, and in a list a line that names it.
void TextOutput::printLogs(const VariantReport& report) const {
    clearProgress();
    const std::string macros = report.macros.empty() ? "" : " [" + joined(report.macros) + "]";
    for (const VariantReport::Log& log : report.logs) {
        if (log.text.empty()) continue;
        if (mIsList)
            std::printf("# %s: %s\n", kyPrintable(mRows.back().name + macros).c_str(), log.of);
        std::fputs(log.text.c_str(), stdout);
        if (log.text.back() != '\n') std::putchar('\n');
    }
}

void TextOutput::endProgram() {
    clearProgress();
    for (const MessageList::Item& item : mMessages.items())
        std::fprintf(stderr, "%s\n", mMessages.text(item).c_str());
}

void TextOutput::end(int /*status*/) {
    if (!mIsList) return;
    std::printf("%8s %8s %8s %8s  %s\n", "variants", "good", "failed", "warned", "program");
    Row all{"in all"};
    for (const Row& row : mRows) {
        printRow(row);
        all.variants += row.variants;
        all.failures += row.failures;
        all.withWarnings += row.withWarnings;
    }
    printRow(all);
}

void TextOutput::printRow(const Row& row) {
    std::printf("%8ld %8ld %8ld %8ld  %s\n", row.variants, row.variants - row.failures,
                row.failures, row.withWarnings, kyPrintable(row.name).c_str());
}
