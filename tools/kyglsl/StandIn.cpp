#include "StandIn.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kLetters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";

bool isOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

bool isWord(std::string_view token) {
    return !token.empty() && kLetters.find(token.front()) != std::string_view::npos;
}

std::string withoutComments(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size();) {
        const bool isBlock = text.compare(i, 2, "/*") == 0;
        if (!isBlock && text.compare(i, 2, "//") != 0) {
            out += text[i++];
            continue;
        }
        out += ' ';
        const std::size_t end = text.find(isBlock ? "*/" : "\n", i + (isBlock ? 2 : 0));
        i = std::min(end, text.size() - (isBlock ? 2 : 0)) + (isBlock ? 2 : 0);
    }
    return out;
}

// The next word or single other character, with the blanks in front of it.
std::string_view takeToken(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
    const std::size_t letters = std::min(rest.find_first_not_of(kLetters), rest.size());
    const std::string_view token = rest.substr(0, std::max<std::size_t>(letters, 1));
    rest.remove_prefix(token.size());
    return token;
}

// Takes brackets and what is in them, if they are next.
bool takeBrackets(std::string_view& rest, std::string_view open, std::string_view close) {
    std::string_view next = rest;
    if (takeToken(next) != open) return false;
    for (int depth = 1; depth > 0 && !next.empty();) {
        const std::string_view token = takeToken(next);
        if (token == open) ++depth;
        if (token == close) --depth;
    }
    rest = next;
    return true;
}

class StandIn {
public:
    explicit StandIn(Stage stage) : mStage(stage) {}

    std::string make(const std::string& text) {
        read(withoutComments(text));
        const bool isVertex = mStage == Stage::Fragment;
        return mDeclarations + "\nvoid main() {\n" +
               (isVertex ? mWrites + "gl_Position = vec4(0.0);\n" : "") + "}\n";
    }

private:
    // Statements between functions end with a semicolon, functions with a brace.
    void read(std::string_view text) {
        std::string statement;
        long braces = 0;
        bool isLineStart = true;
        for (std::size_t i = 0; i < text.size(); ++i) {
            const char c = text[i];
            if (c == '#' && isLineStart) {
                i = readDirective(text, i) - 1;
                continue;
            }
            isLineStart = c == '\n' || (isLineStart && kBlanks.find(c) != std::string_view::npos);
            if (c == '{') ++braces;
            if (c == '}') --braces;
            statement += c;
            const bool isFunction = c == '}' && isFunctionHead(statement);
            if (braces > 0 || (c != ';' && !isFunction)) continue;
            if (!isFunction) readStatement(statement);
            statement.clear();
        }
    }

    // A line number would only lead astray. @return where its line ends
    std::size_t readDirective(std::string_view text, std::size_t at) {
        std::size_t end = at;
        do
            end = std::min(text.find('\n', end + 1), text.size());
        while (end < text.size() && text.substr(end - 1, 1) == "\\");
        std::string_view word = text.substr(at + 1, end - at - 1);
        if (takeToken(word) != "line")
            mDeclarations.append("\n").append(text.substr(at, end - at)).append("\n");
        return end;
    }

    static bool isFunctionHead(std::string_view statement) {
        for (std::string_view rest = statement; !rest.empty();) {
            const std::string_view token = takeToken(rest);
            if (token == "layout") takeBrackets(rest, "(", ")");
            if (token == "{") return false;
            if (token == "(") return true;
        }
        return false;
    }

    // Array sizes and types come from constants and structures.
    void readStatement(const std::string& statement) {
        std::string_view rest = statement;
        const std::string_view first = takeToken(rest);
        if (isOneOf(first, {"struct", "const", "precision"}))
            mDeclarations += statement;
        else
            readVarying(statement);
    }

    void readVarying(const std::string& statement) {
        const std::string_view direction = mStage == Stage::Vertex ? "out" : "in";
        std::string qualifiers;
        bool isVarying = false;
        std::string_view rest = statement;
        std::string_view type = takeToken(rest);
        for (; !rest.empty(); type = takeToken(rest)) {
            if (type == "layout") {
                const std::string_view layout = rest;
                takeBrackets(rest, "(", ")");
                qualifiers += "layout" + std::string(layout.substr(0, layout.size() - rest.size()));
            } else if (isOneOf(type, {"varying", direction})) {
                isVarying = true;
                qualifiers += type == "varying"         ? "varying "
                              : mStage == Stage::Vertex ? "in "
                                                        : "out ";
            } else if (isOneOf(type, {"flat", "smooth", "noperspective", "centroid", "invariant",
                                      "sample", "precise", "highp", "mediump", "lowp"})) {
                qualifiers += std::string(type) + " ";
            } else {
                break;
            }
        }
        if (isVarying) declare(qualifiers, std::string(type), rest);
    }

    // @param names and what else follows the type up to the semicolon
    void declare(const std::string& qualifiers, const std::string& type, std::string_view names) {
        const std::string all(names);
        std::string_view rest = names;
        const bool isOfArrays = takeBrackets(rest, "[", "]");
        std::string_view next = rest;
        const std::string_view name = takeToken(next);
        const bool isBlock = name == "{";
        const bool isBuiltIn = (isBlock ? std::string_view(type) : name).substr(0, 3) == "gl_";
        if (isBuiltIn || !(isBlock || isWord(name))) return;
        const std::string mark = "kyglsl_" + std::to_string(mCount++);
        mDeclarations += qualifiers + type + all + "\n#define " + mark + "\n";
        if (isBlock) return;
        // Drivers see through anything that is not from outside. A uniform may have any type.
        mDeclarations += "uniform " + type + " " + mark + "_value;\n";
        mWrites += "#ifdef " + mark + "\n";
        while (!rest.empty())
            writeNext(rest, isOfArrays, mark + "_value");
        mWrites += "#endif\n";
    }

    // Of an array one element.
    void writeNext(std::string_view& rest, bool isOfArrays, const std::string& value) {
        const std::string_view name = takeToken(rest);
        if (!isWord(name)) return;
        mWrites += std::string(name) + (isOfArrays ? "[0]" : "");
        while (takeBrackets(rest, "[", "]"))
            mWrites += "[0]";
        mWrites += " = " + value + ";\n";
    }

    Stage mStage;
    long mCount = 0;
    std::string mDeclarations;
    std::string mWrites;
};

}  // namespace

std::string standInFor(Stage stage, const std::string& text) {
    return StandIn(stage).make(text);
}
