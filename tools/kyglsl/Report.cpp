#include "Report.h"

#include <KyPrintable.h>

#include <algorithm>

namespace {

std::string joined(const std::vector<std::string>& macros) {
    std::string all;
    for (const std::string& macro : macros)
        all += (all.empty() ? "" : "; ") + macro;
    return all;
}

void printRow(std::FILE* out, const ProgramReport& row) {
    std::fprintf(out, "%8ld %8ld %8ld %8ld  %s\n", row.variants, row.variants - row.failures,
                 row.failures, row.withWarnings, kyPrintable(row.name).c_str());
}

// Drivers quote what stands in a file; what is no UTF-8 there becomes the replacement character.
std::string json(const std::string& text) {
    std::string out = "\"";
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = kyUtf8Length(text, i);
        const char c = text[i];
        if (length == 0) {
            out += "\\ufffd";
        } else if (length == 1 && static_cast<unsigned char>(c) < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned int>(c));
            out += escape;
        } else {
            if (c == '"' || c == '\\') out += '\\';
            out.append(text, i, length);
        }
        i += std::max<std::size_t>(length, 1);
    }
    return out + '"';
}

std::string json(const KyShaderMessage& message) {
    std::string file;
    for (const KyShaderPlace& place : message.places)
        file += (file.empty() ? "" : " ") + (place.file.empty() ? "-D " + place.macro : place.file);
    const long line = message.places.empty() ? 0 : message.places.front().line;
    return "{\"file\": " + json(file) + ", \"line\": " + std::to_string(line) +
           ", \"severity\": " + json(std::string(toString(message.severity))) +
           ", \"text\": " + json(message.text) + "}";
}

template <typename Item>
std::string json(const std::vector<Item>& items, const char* separator = ", ") {
    std::string out;
    for (const Item& item : items)
        out += (out.empty() ? "" : separator) + json(item);
    return "[" + out + "]";
}

std::string json(const VariantReport& variant) {
    std::string log;
    for (const VariantReport::Log& each : variant.logs)
        log += each.text;
    return "{\"macros\": " + json(variant.macros) +
           ", \"good\": " + (variant.good ? "true" : "false") +
           ", \"messages\": " + json(variant.messages) +
           (log.empty() ? "" : ", \"log\": " + json(log)) + "}";
}

}  // namespace

bool VariantReport::hasWarning() const {
    return std::any_of(messages.begin(), messages.end(), [](const KyShaderMessage& message) {
        return message.severity == KyShaderMessage::Severity::Warning;
    });
}

void ProgramReport::add(const VariantReport& variant) {
    ++variants;
    if (!variant.good)
        ++failures;
    else if (variant.hasWarning())
        ++withWarnings;
}

void MessageList::add(const VariantReport& variant) {
    ++mVariants;
    for (const KyShaderMessage& message : variant.messages) {
        const auto [found, isNew] = mKnown.emplace(toString(message), mAll.size());
        if (isNew) mAll.push_back({&found->first, joined(variant.macros), 0, 0});
        Once& once = mAll[found->second];
        if (once.last != mVariants) ++once.count;
        once.last = mVariants;
    }
}

void MessageList::print(std::FILE* out) const {
    for (const Once& once : mAll) {
        const std::size_t end = std::min(once.text->find('\n'), once.text->size());  // of a line
        std::fwrite(once.text->data(), 1, end, out);
        if (once.count < mVariants)
            std::fprintf(out, " [%ld of %ld macro sets, first: %s]", once.count, mVariants,
                         once.first.empty() ? "none" : kyPrintable(once.first).c_str());
        std::fprintf(out, "%s\n", once.text->c_str() + end);
    }
}

void printLogs(std::FILE* out, const VariantReport& variant, const std::string& program) {
    const std::string macros = variant.macros.empty() ? "" : " [" + joined(variant.macros) + "]";
    for (const VariantReport::Log& log : variant.logs) {
        if (log.text.empty()) continue;
        if (!program.empty())
            std::fprintf(out, "# %s: %s\n", kyPrintable(program + macros).c_str(), log.of);
        std::fputs(log.text.c_str(), out);
        if (log.text.back() != '\n') std::fputc('\n', out);
    }
}

void printTable(std::FILE* out, const std::vector<ProgramReport>& programs) {
    std::fprintf(out, "%8s %8s %8s %8s  %s\n", "variants", "good", "failed", "warned", "program");
    ProgramReport all{"in all"};
    for (const ProgramReport& program : programs) {
        printRow(out, program);
        all.variants += program.variants;
        all.failures += program.failures;
        all.withWarnings += program.withWarnings;
    }
    printRow(out, all);
}

void JsonReport::beginProgram(const Program& program) {
    std::fprintf(mOut, "%s{\"vertex\": %s, \"fragment\": %s, \"variants\": [",
                 mHasProgram ? "]},\n " : "{\"programs\": [", json(program.vertex).c_str(),
                 json(program.fragment).c_str());
    mHasProgram = true;
    mHasVariant = false;
}

void JsonReport::add(const VariantReport& variant) {
    std::fprintf(mOut, "%s%s", mHasVariant ? ",\n  " : "", json(variant).c_str());
    mHasVariant = true;
}

void JsonReport::end(const std::vector<KyShaderMessage>& warnings) {
    std::fprintf(mOut, "]}],\n\"warnings\": %s}\n", json(warnings, ",\n ").c_str());
}
