#include <KyNormalPath.h>
#include <KyPrintable.h>
#include "Checker.h"
#include "JsonOutput.h"
#include "MakeRule.h"
#include "OutputFile.h"
#include "SarifOutput.h"
#include "TextOutput.h"

#include <cstdio>
#include <memory>
#include <ostream>

static unsigned long variants(const std::vector<Program>& programs) {
    unsigned long count = 0;
    for (const Program& program : programs)
        count += program.variants();
    return count;
}

static std::unique_ptr<CheckOutput> outputFor(const std::vector<Program>& programs,
                                              const CheckOptions& options) {
    if (options.format == CheckOptions::Format::Json) return std::make_unique<JsonOutput>(stdout);
    if (options.format == CheckOptions::Format::Sarif) return std::make_unique<SarifOutput>(stdout);
    return std::make_unique<TextOutput>(!options.list.empty(), variants(programs));
}

static const std::string& ruleTarget(const CheckOptions& options) {
    return options.stamp.empty() ? options.deps : options.stamp;
}

static void writeRule(const CheckOptions& options, const Checker& checker) {
    std::vector<std::string> files = checker.files();
    if (!options.list.empty()) files.insert(files.begin(), kyNormalPath(options.list));
    writeFile(options.deps,
              [&](std::ostream& out) { out << makeRule(ruleTarget(options), files, ""); });
}

static int checkAll(const std::vector<Program>& programs, const CheckOptions& options) {
    const std::unique_ptr<CheckOutput> output = outputFor(programs, options);
    std::optional<Driver> driver;
    Checker checker(programs, options, *output);
    const int status = checker.run(driver);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw UsageError("standard output: cannot be written");
    if (!options.deps.empty()) writeRule(options, checker);
    if (!options.stamp.empty() && status == 0) writeFile(options.stamp, [](std::ostream&) {});
    return status;
}

// A stamp that stays would be taken for that of this check, which may find no display.
int check(const std::vector<Program>& programs, const CheckOptions& options) {
    if (!options.stamp.empty()) std::remove(options.stamp.c_str());
    if (!options.deps.empty()) requireMakeTarget(ruleTarget(options));
    try {
        return checkAll(programs, options);
    } catch (const NoDisplay& e) {
        if (!options.skipWithoutDisplay) throw;
        std::fprintf(stderr, "kyglsl: %s: nothing is checked\n", kyPrintable(e.what()).c_str());
        return 0;
    }
}
