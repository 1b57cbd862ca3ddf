#include "Commands.h"
#include "MacroSet.h"
#include "ShaderFiles.h"

#include <algorithm>
#include <fstream>
#include <iostream>

namespace {

void write(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) throw UsageError(path + ": cannot be written");
}

std::string withPlaces(const std::string& text, const ExpandedFile& file, const MacroSet& macros) {
    std::string all;
    long line = 0;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const Place place = macros.placeOfLine(file, ++line);
        all += place.file + ":" + std::to_string(place.line) + ":";
        all.append(text, begin, end - begin) += '\n';
        begin = end + 1;
    }
    return all;
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
std::string depfile(const std::string& target, const ExpandedFile& file) {
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
    const ExpandedFile& file = files.get(options.file);
    const MacroSet macros(options.macros);
    std::vector<Message> warnings = macroWarnings(macros.texts());
    const std::vector<Message> ofFile = file.warnings(!macros.texts().empty());
    warnings.insert(warnings.end(), ofFile.begin(), ofFile.end());
    for (const Message& warning : warnings)
        std::cerr << toString(warning) << '\n';

    std::string text = macros.textFor(file).dataPtr();
    if (options.lines) text = withPlaces(text, file, macros);
    if (!options.output.empty())
        write(options.output, text);
    else if (!(std::cout << text << std::flush))
        throw UsageError("standard output: cannot be written");
    if (!options.deps.empty()) write(options.deps, depfile(target, file));
    return options.strict && !warnings.empty() ? 1 : 0;
}
