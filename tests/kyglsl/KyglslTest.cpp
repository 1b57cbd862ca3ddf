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

TEST(DriverLogTest, threeVendorsNameTheSamePlaceAndOtherLinesStayAsTheyAre) {
    const auto placeOf = [](long line, long column) {
        return line == 12 ? KyShaderPlace{"f", 7, column} : KyShaderPlace{};
    };
    const std::pair<std::string, std::string> cases[] = {
        {"0:12(3): error: `x' undeclared", "f:7: error: `x' undeclared"},
        {"0:12(3): preprocessor error: no", "f:7: error: preprocessor: no"},
        {"0(12) : warning C7050: \"x\" might: be", "f:7: warning: C7050: \"x\" might: be"},
        {"ERROR: 0:12: 'x' : undeclared identifier", "f:7: error: 'x' : undeclared identifier"},
        {"WARNING: 0:12: 'x' : unused\r", "f:7: warning: 'x' : unused"}};
    const char* const others[] = {"1:12(3): error: another string",
                                  "0:13(3): error: no such line",
                                  "0:99999999999(3): error: x",
                                  "0:12(3): remark",
                                  "0:12",
                                  "ERROR: 1 compilation errors."};
    std::string log, shown, expected;
    for (const auto& [line, means] : cases) {
        log += line + "\n\n";
        expected += means + "\n";
    }
    for (const char* const line : others) {
        log += line + "\n"s;
        expected += line + "\n"s;
    }
    for (const KyShaderMessage& message : kyReadDriverLog(log, placeOf))
        shown += toString(message) + "\n";
    EXPECT_EQ(shown, expected);
}

TEST(DriverLogTest, theLogOfALinkTellsOfBothTexts) {
    const auto inVertex = [](long line, long) { return KyShaderPlace{"v", line}; };
    const auto inFragment = [](long line, long) { return KyShaderPlace{"f", line}; };
    const std::string log =
        "warning: w\nerror: e\n0(1) : error C1: none\nVertex info\n0(2) : warning C2: x\n"
        "Fragment info\n0(3) : error C3: y\n";
    std::string shown;
    for (const KyShaderMessage& message : kyReadLinkLog(log, {{"v"}, {"f"}}, inVertex, inFragment))
        shown += toString(message.severity) + "|"s + toString(message) + '\n';
    EXPECT_EQ(
        shown,
        "warning|v f: warning: w\nerror|v f: error: e\nerror|0(1) : error C1: none\n"
        "|Vertex info\nwarning|v:2: warning: C2: x\n|Fragment info\nerror|f:3: error: C3: y\n");
}
