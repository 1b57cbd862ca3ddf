#include "Commands.h"
#include "MacroSet.h"
#include "MakeRule.h"
#include "OutputFile.h"
#include "ShaderFiles.h"

#include <algorithm>
#include <iostream>

namespace {

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

}  // namespace

int expand(const ExpandOptions& options) {
    const std::string& target = options.output.empty() ? options.deps : options.output;
    if (!options.deps.empty()) requireMakeTarget(target);
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
        writeFile(options.output, print);
    }
    if (!options.deps.empty())
        writeFile(options.deps,
                  [&](std::ostream& out) { out << makeRule(target, file.files(), file.path()); });
    return options.strict && !warnings.empty() ? 1 : 0;
}
