#include "ProgramList.h"

#include <fstream>
#include <iomanip>
#include <sstream>

namespace {

constexpr std::size_t kMaxBytes = std::size_t{1} << 20;
constexpr unsigned long kMaxSwitches = 16;
constexpr unsigned long kMaxVariants = 1000000;

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r") + 1 - first);
}

// For a message of one line.
std::string inQuotes(const std::string& text) {
    constexpr std::size_t kMost = 60;
    return "'" + text.substr(0, kMost) + (text.size() > kMost ? "...'" : "'");
}

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
        throw UsageError("'#' in " + inQuotes(macro) + ": a comment needs a line of its own");
    const bool good = isSwitch ? !macro.empty() && macro.find_first_of("[]") == std::string::npos
                               : hasOwnBrackets(macro);
    if (!good) throw UsageError("brackets around more or less than one macro; ';' missing?");
}

class ListReader {
public:
    void readLine(const std::string& line, const KyShaderPlace& place) {
        std::istringstream words(line);
        std::string first;
        words >> first;
        if (line.find('\0') != std::string::npos) throw UsageError("a NUL byte");
        if (first == "program")
            addProgram(words, place);
        else if (first == "macros")
            addMacros(words);
        else if (!first.empty() && first.front() != '#')
            throw UsageError(inQuotes(first) + " is neither program nor macros");
    }

    std::vector<Program> programs() && {
        for (Program& program : mPrograms)
            if (program.lines.empty()) program.lines.emplace_back();
        return std::move(mPrograms);
    }

private:
    void addProgram(std::istream& words, const KyShaderPlace& place) {
        Program program;
        std::string more;
        words >> std::quoted(program.vertex) >> std::quoted(program.fragment);
        if (!words || words >> more) throw UsageError("not of the form: program VERTEX FRAGMENT");
        program.place = place;
        mPrograms.push_back(program);
    }

    void addMacros(std::istream& words) {
        if (mPrograms.empty()) throw UsageError("there is no program above these macros");
        std::string rest;
        std::getline(words, rest);
        mPrograms.back().lines.emplace_back(rest);
        mVariants += mPrograms.back().lines.back().choices();
        if (mVariants > kMaxVariants) throw UsageError("more than 1000000 variants up to here");
    }

    std::vector<Program> mPrograms;
    unsigned long mVariants = 0;
};

std::string readText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text(kMaxBytes + 1, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (!file.is_open() || file.bad()) throw UsageError(path + ": cannot be read");
    text.resize(static_cast<std::size_t>(file.gcount()));
    if (text.size() > kMaxBytes) throw UsageError(path + ": a list of more than 1 MiB");
    return text;
}

}  // namespace

MacroLine::MacroLine(const std::string& line) {
    std::istringstream pieces(line);
    for (std::string piece; std::getline(pieces, piece, ';');) {
        piece = trimmed(piece);
        if (piece.empty()) continue;
        const bool isSwitch = piece.front() == '[' && piece.back() == ']';
        if (isSwitch) piece = trimmed(piece.substr(1, piece.size() - 2));
        checkMacro(piece, isSwitch);
        mMacros.push_back({piece, isSwitch});
        if (isSwitch) ++mSwitches;
    }
    if (mSwitches > kMaxSwitches) throw UsageError("more than 16 switches");
    if (mMacros.size() > kMaxMacros) throw UsageError("more than 1000 macros");
}

std::vector<std::string> MacroLine::macros(unsigned long choice) const {
    std::vector<std::string> texts;
    for (const Macro& macro : mMacros) {
        if (!macro.isSwitch || (choice & 1) != 0) texts.push_back(macro.text);
        if (macro.isSwitch) choice >>= 1;
    }
    return texts;
}

std::string Program::name() const {
    return vertex + (vertex.empty() || fragment.empty() ? "" : " ") + fragment;
}

unsigned long Program::variants() const {
    unsigned long count = 0;
    for (const MacroLine& line : lines)
        count += line.choices();
    return count;
}

std::vector<Program> readProgramList(const std::string& path) {
    return parseProgramList(readText(path), path);
}

std::vector<Program> parseProgramList(const std::string& text, const std::string& path) {
    ListReader reader;
    std::istringstream lines(text);
    long number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        try {
            reader.readLine(line, {path, number});
        } catch (const UsageError& e) {
            throw UsageError(path + ":" + std::to_string(number) + ": " + e.what());
        }
    }
    std::vector<Program> programs = std::move(reader).programs();
    if (programs.empty()) throw UsageError(path + ": names no program");
    return programs;
}
