#include "Checker.h"
#include "JsonOutput.h"
#include "SarifOutput.h"
#include "TextOutput.h"

#include <cstdio>
#include <memory>

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
    return std::make_unique<TextOutput>(options.isList, variants(programs));
}

int check(const std::vector<Program>& programs, const CheckOptions& options) {
    const std::unique_ptr<CheckOutput> output = outputFor(programs, options);
    std::optional<Driver> driver;
    const int status = Checker(programs, options, *output).run(driver);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw UsageError("standard output: cannot be written");
    return status;
}
