#include "MacroSet.h"
#include "support/TempShaders.h"

#include <gtest/gtest.h>
#include <KyDriverLog.h>

#include <random>

using namespace std::string_literals;

static std::string show(const KyShaderPlace& place) {
    return toString(place);
}

// Files whose words tell where they stand: <a:2> is on line 2 of the file a. What is between them
// are directives, parts of such, and what a reader of comments could stumble over.
static void writeFiles(const TempShaders& tree, std::mt19937& random, bool mayHide) {
    const std::string pieces[] = {"#include \"a\"",
                                  "#include\"b\"",
                                  "ude \"b\"",
                                  "#include \"none\"",
                                  "#incl",
                                  "#include",
                                  "\"e\"",
                                  "\"",
                                  "/*",
                                  "\r",
                                  "\0"s};
    const std::size_t end = std::size(pieces) - (mayHide ? 0 : 1);
    // A file takes its pieces from some place on, so that few expansions are without end.
    const std::pair<const char*, std::size_t> files[] = {{"top", 0}, {"a", 1}, {"b", 3}, {"e", 7}};
    for (const auto& [name, first] : files) {
        std::string text;
        for (auto lines = random() % 6, line = 1UL; line <= lines; ++line) {
            const std::string word =
                "<" + tree.path(name).string() + ":" + std::to_string(line) + ">";
            if (random() % 2 == 0) text += word;
            for (auto more = random() % 4; more > 0; --more)
                text += pieces[first + random() % (end - first)];
            text += word + "\n";
        }
        tree.write(name, text);
    }
}

// Wherever a word comes to stand, even where directives came together over the ends of files, its
// place is that of its line.
TEST(ShaderOriginsTest, theTextIsTheLibrarysAndEachWordIsFromItsLine) {
    const TempShaders tree;
    const std::vector<std::string> texts = {"A", "B 2", "A", "C\nD"};
    const MacroSet macros(texts);
    std::mt19937 random(20261122);
    long words = 0, lineStarts = 0;
    for (int run = 0; run < 2000; ++run) {
        writeFiles(tree, random, run % 8 == 0);
        KyVertexShader shader("top", tree.folder, false);
        for (const std::string& text : texts)
            shader.pushParameter(text.c_str());
        const KyShaderOrigins file(tree.path("top"), KyShaderTop::Any);
        const std::string text = shader.loadFromFile().dataPtr();
        ASSERT_EQ(macros.textFor(file).dataPtr(), text);
        if (text.size() > 20000) continue;  // most likely without end, but for the bounds
        const auto block = text.size() - static_cast<std::size_t>(file.source().length());
        for (auto at = text.find("</", block); at != text.npos; at = text.find("</", at + 1)) {
            const std::string word = text.substr(at + 1, text.find('>', at) - at - 1);
            ASSERT_EQ(show(file.placeOfByte(at - block)), word) << text;
            ++words;
            if (text[at - 1] != '\n') continue;
            const auto before = text.begin() + static_cast<long>(at);
            const auto line = 1 + std::count(text.begin(), before, '\n');
            ASSERT_EQ(show(file.placeInText(macros.lines().dataPtr(), line)), word) << text;
            ++lineStarts;
        }
    }
    EXPECT_TRUE(words > 10000 && lineStarts > 3000) << words << ' ' << lineStarts;
}

static std::string show(const std::vector<KyShaderMessage>& messages) {
    std::string shown;
    for (const KyShaderMessage& message : messages)
        shown += toString(message.severity) + "|"s + toString(message) + '\n';
    return shown;
}

TEST(DriverLogTest, theFormsOfManyDriversNameTheSamePlaceAndOtherLinesStayAsTheyAre) {
    const auto placeOf = [](long line, long column) {
        return line == 12 ? KyShaderPlace{"f", 7, column} : KyShaderPlace{};
    };
    const std::pair<std::string, std::string> cases[] = {
        // Mesa
        {"0:12(3): error: `x' undeclared", "error|f:7: error: `x' undeclared"},
        {"0:12(3): preprocessor error: no", "error|f:7: error: preprocessor: no"},
        {"0:12(3): warning: `x' used uninitialized",
         "warning|f:7: warning: `x' used uninitialized"},
        // NVIDIA, of two times
        {"0(12) : warning C7050: \"x\" might: be", "warning|f:7: warning: C7050: \"x\" might: be"},
        {"0(12) : fatal error C9999: exception", "error|f:7: error: fatal C9999: exception"},
        {"(12) : error C1008: undefined variable", "error|f:7: error: C1008: undefined variable"},
        {"(0) : error C5145: must write to gl_Position",
         "error|(0) : error C5145: must write to gl_Position"},
        // AMD
        {"Fragment shader failed to compile with the following errors:",
         "|Fragment shader failed to compile with the following errors:"},
        {"ERROR: 0:12: error(#143) Undeclared identifier: x",
         "error|f:7: error: error(#143) Undeclared identifier: x"},
        {"ERROR: error(#273) 1 compilation errors.  No code generated",
         "error|ERROR: error(#273) 1 compilation errors.  No code generated"},
        // Apple, ANGLE and glslang
        {"ERROR: 0:12: Use of undeclared identifier 'x'",
         "error|f:7: error: Use of undeclared identifier 'x'"},
        {"WARNING: 0:12: 'x' : unused\r", "warning|f:7: warning: 'x' : unused"},
        {"ERROR: 0:12:3: 'x' : undeclared identifier",
         "error|f:7: error: 'x' : undeclared identifier"},
        {"ERROR: 1 compilation errors.", "error|ERROR: 1 compilation errors."},
        // none
        {"1:12(3): error: another string", "|1:12(3): error: another string"},
        {"0:13(3): error: no such line", "error|0:13(3): error: no such line"},
        {"0:99999999999(3): error: x", "|0:99999999999(3): error: x"},
        {"0:12(3): remark", "|0:12(3): remark"},
        {"0:12", "|0:12"}};
    std::string log, expected;
    for (const auto& [line, means] : cases) {
        log += line + "\n\n";
        expected += means + "\n";
    }
    EXPECT_EQ(show(kyReadDriverLog(log, placeOf)), expected);
}

TEST(DriverLogTest, theLogOfALinkTellsOfBothTexts) {
    const auto inVertex = [](long line, long) { return KyShaderPlace{"v", line}; };
    const auto inFragment = [](long line, long) { return KyShaderPlace{"f", line}; };
    const std::string log =
        "warning: w\nerror: e\n.error: e\n.\n.e\nERROR: a\n0(1) : error C1: none\n"
        "Vertex info\n0(2) : warning C2: x\nFragment info\n0(3) : error C3: y\n"
        "Link info\n0(4) : error C4: z\n";
    EXPECT_EQ(show(kyReadLinkLog(log, {{"v"}, {"f"}}, inVertex, inFragment)),
              "warning|v f: warning: w\nerror|v f: error: e\nerror|v f: error: e\n|.e\n"
              "error|v f: error: a\nerror|0(1) : error C1: none\n"
              "|Vertex info\nwarning|v:2: warning: C2: x\n"
              "|Fragment info\nerror|f:3: error: C3: y\n"
              "|Link info\nerror|0(4) : error C4: z\n");
}

TEST(DriverLogTest, candidatesAreNotesOfTheirCall) {
    const auto placeOf = [](long line, long column) { return KyShaderPlace{"f", line, column}; };
    const std::string log =
        "   bare\n0:4(2): error: no match; candidates are:\n0:4(2): error:    float a(float)\n"
        "0:4(2): error:    int a(int)\n0:4(9): error:    x\n0:4(9): warning:  y\n"
        "0(5) : error C1101: ambiguous\n    (0) : float a(float)\n \t \n0(5) : error C1: z\n";
    EXPECT_EQ(show(kyReadDriverLog(log, placeOf)),
              "|   bare\n"
              "error|f:4: error: no match; candidates are:\n"
              "f:4: note: float a(float)\nf:4: note: int a(int)\n"
              "error|f:4: error:    x\nwarning|f:4: warning:  y\n"
              "error|f:5: error: C1101: ambiguous\nf:5: note: (0) : float a(float)\n"
              "error|f:5: error: C1: z\n");
}
