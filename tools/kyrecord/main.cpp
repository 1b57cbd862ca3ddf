/// Fills the build record of a library, or prints that of any file that has one.
#include "Output.h"
#include "RecordFile.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <stdexcept>

namespace {

struct Options {
    std::string file;
    std::vector<std::string> settings;
    bool fills = false;
    bool json = false;
};

// @return false when the program has nothing more to do, as after --help
bool parseOptions(int argc, char** argv, Options& options) {
    CLI::App app("Fills and shows the build record that stands in a library's file.");
    app.footer(
        "Whatever goes wrong is told in one line on standard error; the exit status is 1\n"
        "then, and a file that was to be filled is as it was.");
    app.set_version_flag("--version", "kyrecord " KYRECORD_VERSION);
    app.require_subcommand(1);

    CLI::App* const fill = app.add_subcommand("fill", "Write a record in place of what is there");
    fill->add_option("LIBRARY", options.file, "the library, or a link to it")->required();
    fill->add_option("--set", options.settings, "values, none of which may hold a '|'")
        ->type_name("KEY=VALUE");
    fill->footer(
        "Keys: version_tag comment compiler target_os build_cfg build_user build_ip build_time\n"
        "      filename path vendor product version_major version_minor version_patch\n"
        "A value that is not given is empty, save that of version_tag, one backslash. The size\n"
        "is always the file's own.");

    CLI::App* const show = app.add_subcommand("show", "Print a record");
    show->add_option("FILE", options.file, "any file; it is not loaded")->required();
    show->add_flag("--json", options.json, "as one JSON object of strings");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        app.exit(help);
        return false;
    }
    options.fills = fill->parsed();
    return true;
}

record::Values parseSettings(const std::vector<std::string>& settings) {
    record::Values values;
    for (const std::string& setting : settings) {
        const std::size_t equals = setting.find('=');
        if (equals == std::string::npos)
            throw std::runtime_error("--set " + setting + ": not of the form KEY=VALUE");
        const std::string key = setting.substr(0, equals);
        if (key == "size") throw std::runtime_error("--set size: the size is the file's own");
        if (!values.emplace(key, setting.substr(equals + 1)).second)
            throw std::runtime_error("--set " + key + ": given twice");
    }
    return values;
}

void run(const Options& options) {
    if (options.fills) {
        record::fillRecord(options.file, parseSettings(options.settings));
        return;
    }
    const record::Pairs pairs = record::readRecord(options.file);
    std::fputs((options.json ? record::toJson(pairs) : record::toText(pairs)).c_str(), stdout);
    if (std::fflush(stdout) != 0) throw std::runtime_error("standard output cannot be written");
}

}  // namespace

int main(int argc, char** argv) {
    try {
        Options options;
        if (parseOptions(argc, argv, options)) run(options);
        return 0;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "kyrecord: %s\n", record::printable(e.what()).c_str());
        return 1;
    }
}
