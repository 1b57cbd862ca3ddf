/// Takes any bytes for a list of programs, and holds what is read against simpler rules.
#include "ProgramList.h"
#include "Require.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace {

using Texts = std::vector<std::string>;

// What is left of a line of macros without all that may be between them.
std::string bare(std::string line) {
    const auto isBetween = [](char c) {
        return c != '\0' && std::strchr(" \t\r[];", c) != nullptr;
    };
    line.erase(std::remove_if(line.begin(), line.end(), isBetween), line.end());
    return line;
}

bool isWithin(const Texts& part, const Texts& all) {
    auto next = part.begin();
    for (const std::string& text : all)
        if (next != part.end() && *next == text) ++next;
    return next == part.end();
}

void check(const MacroLine& line, const std::string& words) {
    unsigned long switches = 0;
    std::istringstream pieces(words);
    for (std::string piece; std::getline(pieces, piece, ';');)
        if (piece.find('[') == piece.find_first_not_of(" \t\r") && !bare(piece).empty()) ++switches;
    const Texts none = line.macros(0), all = line.macros(line.choices() - 1);
    std::string text;
    for (const std::string& macro : all)
        text += macro;
    require(bare(text) == bare(words) && all.size() <= kMaxMacros);
    require(line.choices() == 1UL << switches && none.size() + switches == all.size());
    for (unsigned long bit = 0; bit < switches; ++bit) {
        const Texts one = line.macros(1UL << bit);
        require(one.size() == none.size() + 1 && isWithin(none, one) && isWithin(one, all));
    }
}

void check(const std::vector<Program>& programs, const std::string& list) {
    std::size_t program = 0, macros = 0;
    std::istringstream lines(list);
    for (std::string line, first; std::getline(lines, line); first.clear()) {
        std::istringstream words(line);
        words >> first;
        if (first == "program") {
            ++program;
            macros = 0;
        } else if (first == "macros") {
            check(programs.at(program - 1).lines.at(macros++), line.substr(line.find('s') + 1));
        }
    }
    require(program == programs.size());
    unsigned long variants = 0;
    for (const Program& each : programs)
        variants += each.variants();
    require(variants >= programs.size() && variants <= 1000000 + programs.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string list(reinterpret_cast<const char*>(data), size);
    std::vector<Program> programs;
    try {
        programs = parseProgramList(list, "name");
    } catch (const UsageError& e) {
        require(std::string(e.what()).compare(0, 5, "name:") == 0);
        return 0;
    }
    check(programs, list);
    return 0;
}
