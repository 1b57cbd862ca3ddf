#include "Commands.h"
#include "MacroSet.h"
#include "ShaderFiles.h"

#include <algorithm>
#include <fstream>
#include <iostream>

namespace {

template <typename Function>
void write(const std::string& path, Function print) {
    std::ofstream file(path, std::ios::binary);
    print(file);
    file.close();
    if (!file) throw UsageError(path + ": cannot be written");
}

void printWithPlaces(std::ostream& out, const std::string& text, const KyShaderOrigins& file,
                     const MacroSet& macros) {
    long line = 0;
    for (std::size_t begin = 0; begin <= text.size() && out;) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        out << toString(file.placeInText(macros.lines().dataPtr(), ++line)) << ':';
        out << std::string_view(text).substr(begin, end - begin) << '\n';
        begin = end + 1;
    }
}

// No rule of make can name such a file.
bool hasControl(const std::string& path) {
    return std::any_of(path.begin(), path.end(),
                       [](unsigned char c) { return c < 0x20 || c == 0x7F; });
}

std::string forMake(const std::string& path) {
    std::string out;
    for (const char c : path) {
        if (c == ' ' || c == '#' || c == ':') out += '\\';
        if (c == '$') out += '$';
        out += c;
    }
    return out;
}

// Each included file is a target of its own as well: one that goes away stops no build.
std::string depfile(const std::string& target, const KyShaderOrigins& file) {
    const std::vector<std::string> paths = file.files();
    std::string rule = forMake(target) + ":";
    std::string targets;
    for (const std::string& path : paths) {
        if (hasControl(path)) continue;
        rule += " " + forMake(path);
        if (path != paths.front()) targets += forMake(path) + ":\n";
    }
    return rule + "\n" + targets;
}

}  // namespace

int expand(const ExpandOptions& options) {
    const std::string& target = options.output.empty() ? options.deps : options.output;
    if (!options.deps.empty() && hasControl(target))
        throw UsageError(target + ": make cannot name such a file");
    ShaderFiles files(options.root);
    const KyShaderOrigins& file = files.get(options.file);
    const MacroSet macros(options.macros);
    std::vector<KyShaderMessage> warnings = macroWarnings(macros.texts());
    const std::vector<KyShaderMessage> ofFile = file.messages(!macros.texts().empty());
    warnings.insert(warnings.end(), ofFile.begin(), ofFile.end());
    for (const KyShaderMessage& warning : warnings)
        std::cerr << toString(warning) << '\n';

    const auto print = [&](std::ostream& out) {
        const std::string text = macros.textFor(file).dataPtr();
        if (options.lines)
            printWithPlaces(out, text, file, macros);
        else
            out << text;
    };
    if (options.output.empty()) {
        print(std::cout);
        if (!(std::cout << std::flush)) throw UsageError("standard output: cannot be written");
    } else {
        write(options.output, print);
    }
    if (!options.deps.empty())
        write(options.deps, [&](std::ostream& out) { out << depfile(target, file); });
    return options.strict && !warnings.empty() ? 1 : 0;
}
