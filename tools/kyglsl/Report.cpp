#include "Report.h"

#include "Printable.h"

#include <algorithm>
#include <map>

namespace {

bool hasWarningIn(const VariantReport& variant) {
    return std::any_of(variant.messages.begin(), variant.messages.end(),
                       [](const Message& message) { return message.severity == "warning"; });
}

void printRow(std::FILE* out, long builds, long failures, long warned, const std::string& name) {
    std::fprintf(out, "%8ld %8ld %8ld %8ld  %s\n", builds, builds - failures, failures, warned,
                 printable(name).c_str());
}

// Drivers quote what stands in a file; what is no UTF-8 there becomes the replacement character.
std::string json(const std::string& text) {
    std::string out = "\"";
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = utf8Length(text, i);
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

std::string json(const Message& message) {
    return "{\"file\": " + json(message.place.file) +
           ", \"line\": " + std::to_string(message.place.line) +
           ", \"severity\": " + json(message.severity) + ", \"text\": " + json(message.text) + "}";
}

template <typename Item, typename Function>
std::string jsonList(const std::vector<Item>& items, const char* separator, Function function) {
    std::string out;
    for (const Item& item : items)
        out += (out.empty() ? "" : separator) + function(item);
    return "[" + out + "]";
}

std::string json(const VariantReport& variant) {
    const auto ofText = [](const std::string& text) { return json(text); };
    const auto ofMessage = [](const Message& message) { return json(message); };
    std::string log;
    for (const VariantReport::Log& each : variant.logs)
        log += each.text;
    return "{\"macros\": " + jsonList(variant.macros, ", ", ofText) +
           ", \"good\": " + (variant.good ? "true" : "false") +
           ", \"messages\": " + jsonList(variant.messages, ", ", ofMessage) +
           (log.empty() ? "" : ", \"log\": " + json(log)) + "}";
}

std::string json(const ProgramReport& program) {
    const auto ofVariant = [](const VariantReport& variant) { return json(variant); };
    return "{\"vertex\": " + json(program.vertex) + ", \"fragment\": " + json(program.fragment) +
           ", \"variants\": " + jsonList(program.variants, ",\n  ", ofVariant) + "}";
}

}  // namespace

long ProgramReport::failures() const {
    return std::count_if(variants.begin(), variants.end(),
                         [](const VariantReport& variant) { return !variant.good; });
}

long ProgramReport::withWarnings() const {
    return std::count_if(variants.begin(), variants.end(), [](const VariantReport& variant) {
        return variant.good && hasWarningIn(variant);
    });
}

bool ProgramReport::hasWarning() const {
    return std::any_of(variants.begin(), variants.end(), hasWarningIn);
}

void printMessages(std::FILE* out, const ProgramReport& program) {
    struct Once {
        const Message* message;
        const VariantReport* first;
        const VariantReport* last;
        long count;
    };
    std::vector<Once> all;
    std::map<std::string, std::size_t> known;
    for (const VariantReport& variant : program.variants) {
        for (const Message& message : variant.messages) {
            const auto [found, isNew] = known.emplace(toString(message), all.size());
            if (isNew) all.push_back({&message, &variant, nullptr, 0});
            Once& once = all[found->second];
            if (once.last != &variant) ++once.count;
            once.last = &variant;
        }
    }
    for (const Once& once : all) {
        std::fputs(toString(*once.message).c_str(), out);
        const auto variants = static_cast<long>(program.variants.size());
        if (once.count < variants)
            std::fprintf(
                out, " [%ld of %ld macro sets, first: %s]", once.count, variants,
                once.first->macros.empty() ? "none" : printable(once.first->macroNames).c_str());
        std::fputc('\n', out);
    }
}

void printLogs(std::FILE* out, const VariantReport& variant, const std::string& program) {
    const std::string macros = variant.macros.empty() ? "" : " [" + variant.macroNames + "]";
    for (const VariantReport::Log& log : variant.logs) {
        if (log.text.empty()) continue;
        if (!program.empty())
            std::fprintf(out, "# %s: %s\n", printable(program + macros).c_str(), log.of);
        std::fputs(log.text.c_str(), out);
        if (log.text.back() != '\n') std::fputc('\n', out);
    }
}

void printTable(std::FILE* out, const std::vector<ProgramReport>& programs) {
    std::fprintf(out, "%8s %8s %8s %8s  %s\n", "variants", "good", "failed", "warned", "program");
    long builds = 0;
    long failures = 0;
    long warned = 0;
    for (const ProgramReport& program : programs) {
        const auto count = static_cast<long>(program.variants.size());
        printRow(out, count, program.failures(), program.withWarnings(),
                 program.vertex + " " + program.fragment);
        builds += count;
        failures += program.failures();
        warned += program.withWarnings();
    }
    printRow(out, builds, failures, warned, "in all");
}

void printJson(std::FILE* out, const std::vector<ProgramReport>& programs,
               const std::vector<Message>& warnings) {
    const auto ofProgram = [](const ProgramReport& program) { return json(program); };
    const auto ofMessage = [](const Message& message) { return json(message); };
    std::fprintf(out, "{\"programs\": %s,\n\"warnings\": %s}\n",
                 jsonList(programs, ",\n ", ofProgram).c_str(),
                 jsonList(warnings, ",\n ", ofMessage).c_str());
}
