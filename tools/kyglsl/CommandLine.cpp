#include "CommandLine.h"

#include <KyNormalPath.h>
#include "Commands.h"
#include "ListedPrograms.h"

#include <CLI/CLI.hpp>

#include <map>

namespace {

struct Options {
    ExpandOptions expand;
    CheckOptions check;
    CheckOptions watch;
    Program pair;
};

void addMacros(CLI::App* command, std::vector<std::string>& macros) {
    command
        ->add_option("-D", macros, "macro, as KyShader::pushParameter takes it: NAME or 'NAME 3'")
        ->type_name("TEXT")
        ->allow_extra_args(false);
}

void addRoot(CLI::App* command, std::string& root) {
    command
        ->add_option("--root", root,
                     "as KyShader::mFolderPath: names are looked for in ROOT/share/shaders/")
        ->type_name("ROOT");
}

void addDeps(CLI::App* command, std::string& deps) {
    command->add_option("--deps", deps, "write a rule for make: which files were read")
        ->type_name("FILE");
}

void addStrict(CLI::App* command, bool& strict) {
    command->add_flag("--strict", strict, "exit status 1 with any warning");
}

void addFormat(CLI::App* command, CheckOptions::Format& format) {
    using Format = CheckOptions::Format;
    const auto choose = [&format](const std::string& name) {
        const std::map<std::string, Format> formats = {
            {"text", Format::Text}, {"json", Format::Json}, {"sarif", Format::Sarif}};
        const auto found = formats.find(name);
        if (found == formats.end()) throw UsageError("--format: text, json or sarif");
        format = found->second;
    };
    auto* const option =
        command->add_option_function<std::string>("--format", choose, "text, json or sarif")
            ->type_name("FORMAT");
    command
        ->add_flag_callback(
            "--json", [&format] { format = Format::Json; }, "as --format json")
        ->excludes(option);
}

CLI::App* addExpand(CLI::App& app, ExpandOptions& options) {
    CLI::App* const command =
        app.add_subcommand("expand", "Print the text that the library gives to the GL");
    command->add_option("FILE", options.file, "shader file")->required();
    addMacros(command, options.macros);
    addRoot(command, options.root);
    command->add_flag("--lines", options.lines, "in front of each line, where it comes from");
    addStrict(command, options.strict);
    addDeps(command, options.deps);
    command->add_option("-o,--output", options.output, "write the text there")->type_name("FILE");
    return command;
}

void addStage(CLI::App* command, const char* name, std::string& file, CLI::Option* pair) {
    command->add_option(name, file, "this stage alone, with a stand-in of the other")
        ->type_name("FILE")
        ->excludes(pair)
        ->excludes(command->get_option("--list"));
}

CLI::App* addCheck(CLI::App& app, Options& options) {
    CLI::App* const command =
        app.add_subcommand("check", "Compile and link on this machine's driver");
    auto* const vertex = command->add_option("VERTEX", options.pair.vertex, "vertex shader file");
    auto* const fragment =
        command->add_option("FRAGMENT", options.pair.fragment, "fragment shader file");
    vertex->needs(fragment);
    command
        ->add_option("--list", options.check.list, "programs and their macro sets; see kyglsl(1)")
        ->type_name("FILE")
        ->excludes(vertex);
    addStage(command, "--vertex", options.pair.vertex, vertex);
    addStage(command, "--fragment", options.pair.fragment, vertex);
    addMacros(command, options.check.macros);
    addRoot(command, options.check.root);
    command->add_flag("--raw", options.check.raw, "the driver's log as it is");
    addFormat(command, options.check.format);
    addStrict(command, options.check.strict);
    addDeps(command, options.check.deps);
    command->add_option("--stamp", options.check.stamp, "write an empty file if all is clean")
        ->type_name("FILE");
    command->add_flag("--skip-without-display", options.check.skipWithoutDisplay,
                      "exit status 0 where there is no X display");
    return command;
}

CLI::App* addWatch(CLI::App& app, CheckOptions& options) {
    CLI::App* const command =
        app.add_subcommand("watch", "Check again whenever a file changes, and print what changed");
    command->add_option("--list", options.list, "programs and their macro sets; see kyglsl(1)")
        ->type_name("FILE")
        ->required();
    addMacros(command, options.macros);
    addRoot(command, options.root);
    return command;
}

void requireFewMacros(const std::vector<std::string>& macros) {
    if (macros.size() > kMaxMacros) throw UsageError("-D: more than 1000 macros");
}

int runExpand(const Options& options) {
    requireFewMacros(options.expand.macros);
    return expand(options.expand);
}

int runWatch(const Options& options) {
    requireFewMacros(options.watch.macros);
    return watch(options.watch);
}

int runCheck(Options& options) {
    requireFewMacros(options.check.macros);
    if (options.check.raw && options.check.format == CheckOptions::Format::Sarif)
        throw UsageError("--raw: SARIF has no place for logs");
    if (!options.check.list.empty())
        return check(listedPrograms(options.check.list, options.check.root), options.check);
    if (options.pair.name().empty())
        throw UsageError("check: VERTEX FRAGMENT, --vertex FILE, --fragment FILE or --list FILE");
    options.pair.lines = {MacroLine()};
    if (options.check.root.empty())
        for (std::string* name : {&options.pair.vertex, &options.pair.fragment})
            *name = kyNormalPath(*name);
    return check({options.pair}, options.check);
}

}  // namespace

int runCommandLine(int argc, const char* const* argv) {
    CLI::App app("Shows what libkygl makes of shader files, and what the driver says to that.");
    Options options;
    app.set_version_flag("--version", "kyglsl " KYGLSL_VERSION);
    app.require_subcommand(1);
    app.footer("Exit status: 0 clean, 1 errors in shaders, 2 wrong use or no display.");
    const CLI::App* const isExpand = addExpand(app, options.expand);
    addCheck(app, options);
    const CLI::App* const isWatch = addWatch(app, options.watch);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::RequiredError&) {
        const std::vector<std::string> words = app.remaining();
        if (!app.get_subcommands().empty() || words.empty()) throw;
        throw UsageError("'" + words.front() +
                         "' is none of expand, check and watch; see kyglsl --help");
    }
    if (isExpand->parsed()) return runExpand(options);
    return isWatch->parsed() ? runWatch(options) : runCheck(options);
}
