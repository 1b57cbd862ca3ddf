#include "ProgramList.h"

#include <fstream>
#include <iomanip>
#include <sstream>

namespace {

constexpr std::size_t kMaxSwitches = 16;

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r") + 1 - first);
}

struct Macro {
    std::string text;
    long bit;  // of the switch, or -1
};

// Whether a macro's brackets are its own, such as those of "SIZE a[3]". One that is behind a blank
// or has no partner was meant as a switch.
bool hasOwnBrackets(const std::string& macro) {
    long open = 0;
    for (std::size_t i = 0; i < macro.size(); ++i) {
        if (macro[i] == '[' && (i == 0 || macro[i - 1] == ' ' || macro[i - 1] == '\t'))
            return false;
        if (macro[i] == '[') ++open;
        if (macro[i] == ']' && --open < 0) return false;
    }
    return open == 0;
}

bool hasSingleNumberSign(const std::string& macro) {
    for (std::size_t i = macro.find('#'); i != std::string::npos; i = macro.find('#', i + 1)) {
        if (macro.compare(i, 2, "##") != 0) return true;
        ++i;
    }
    return false;
}

// What would test something else than its line seems to say.
void checkMacro(const std::string& macro, bool isSwitch) {
    if (hasSingleNumberSign(macro))
        throw UsageError("'#' in '" + macro + "': a comment stands on a line of its own");
    const bool good = isSwitch ? !macro.empty() && macro.find_first_of("[]") == std::string::npos
                               : hasOwnBrackets(macro);
    if (!good) throw UsageError("brackets around more or less than one macro; ';' missing?");
}

// Every choice of the switches, counted up: bit i says whether switch i is on.
void addChoices(const std::string& line, std::vector<std::vector<std::string>>& lists) {
    std::vector<Macro> all;
    std::size_t switches = 0;
    std::istringstream pieces(line);
    for (std::string piece; std::getline(pieces, piece, ';');) {
        piece = trimmed(piece);
        if (piece.empty()) continue;
        const bool isSwitch = piece.front() == '[' && piece.back() == ']';
        if (isSwitch) piece = trimmed(piece.substr(1, piece.size() - 2));
        checkMacro(piece, isSwitch);
        all.push_back({piece, isSwitch ? static_cast<long>(switches++) : -1});
    }
    if (switches > kMaxSwitches) throw UsageError("more than 16 switches");
    for (unsigned long choice = 0; choice < 1UL << switches; ++choice) {
        lists.emplace_back();
        for (const Macro& macro : all)
            if (macro.bit < 0 || (choice >> macro.bit & 1) != 0) lists.back().push_back(macro.text);
    }
}

void readLine(const std::string& line, const Place& place, std::vector<Program>& programs) {
    std::istringstream words(line);
    std::string first;
    words >> first;
    if (first == "program") {
        Program program;
        std::string more;
        words >> std::quoted(program.vertex) >> std::quoted(program.fragment);
        if (!words || words >> more) throw UsageError("not of the form: program VERTEX FRAGMENT");
        program.place = place;
        programs.push_back(program);
    } else if (first == "macros") {
        if (programs.empty()) throw UsageError("no program stands above these macros");
        std::string rest;
        std::getline(words, rest);
        addChoices(rest, programs.back().macros);
    } else if (!first.empty() && first.front() != '#') {
        throw UsageError("'" + first + "' is neither program nor macros");
    }
}

}  // namespace

std::vector<Program> readProgramList(const std::string& path) {
    std::vector<Program> programs;
    std::ifstream file(path);
    long number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        try {
            readLine(line, {path, number}, programs);
        } catch (const UsageError& e) {
            throw UsageError(path + ":" + std::to_string(number) + ": " + e.what());
        }
    }
    if (!file.is_open() || file.bad()) throw UsageError(path + ": cannot be read");
    if (programs.empty()) throw UsageError(path + ": names no program");
    for (Program& program : programs)
        if (program.macros.empty()) program.macros.emplace_back();
    return programs;
}
