#include "support/FileFaults.h"
#include "support/TempShaders.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <sys/stat.h>

using namespace std::string_literals;

struct ShaderSourceTest : testing::Test {
    std::string load(const char* file) const {
        return KyVertexShader(file, tree.folder, false).loadFromFile().dataPtr();
    }
    static std::string times(int count, const std::string& text) {
        std::string all;
        while (count-- > 0)
            all += text;
        return all;
    }
    const TempShaders tree;
};

TEST_F(ShaderSourceTest, aFileIsReadUntilItYieldsAnythingAndMacrosStandInFront) {
    KyFragmentShader shader("main.frag", tree.folder, false);
    shader.pushParameter("A");
    EXPECT_STREQ(shader.loadFromFile().dataPtr(), "#define A\n");
    tree.write("main.frag", "#include \"lib.glsl\"\nvoid main() {}\n");
    tree.write("lib.glsl", "float f;\n");
    shader.pushParameter("B 2");
    const char* const text = "#define A\n#define B 2\n\n\nfloat f;\nvoid main() {}";
    EXPECT_STREQ(shader.loadFromFile().dataPtr(), text);
    tree.write("main.frag", "new");
    EXPECT_STREQ(shader.loadFromFile().dataPtr(), text);
    EXPECT_EQ(load("main.frag"), "\nnew");
    shader.clearParameters();
    shader.pushParameter("#include \"main.frag\"");
    EXPECT_EQ(shader.loadFromFile().dataPtr(), "#define #include \"main.frag\"\n"s + (text + 22));
}

TEST_F(ShaderSourceTest, everyRuleOfTheFormat) {
    const struct {
        const char* why;
        std::string text, expected;
        const char* file = "top";
    } cases[] = {
        {"a line feed alone", "\n", "\n"},
        {"line ends", "a\r\nb\n", "\na\r\nb"},
        {"a NUL ends the text", "a\0b"s, "\na"},
        {"a NUL from an included file too", "#include \"nul\"b", "\n\nc"},
        {"a folder as a file", "a#include \"\"b", "\nab"},
        {"a longer word", "a#includes\t\"in\"b", "\na\nIb"},
        {"with a blank it is none", "# include \"in\"", "\n# include \"in\""},
        {"in a comment", "// #include \"in\"\nc", "\n// \nI\nc"},
        {"angle brackets take the next quotes", "a#include <in>\n\"in\"z", "\na\nIz"},
        {"an unclosed quote reads to the end", "a#include \"in", "\na\nI"},
        {"an unclosed quote takes what follows its file", "1#include \"reca", "\n1\nA\n1", "rec"},
        {"a round over a file's end", "#include \"h\" \"g\"", "\n\nx\n", "f"},
        {"the same over nothing has no end", "1#include \"rec", "\n1", "rec"},
        {"no quote", "a#include b\nc", "\na"},
        {"no quote reads no file, not the folder's path", "a#include b\nc", "\na", "f\\top"},
        {"a name is not normalised", "#include \"/x/../in\"", "\n\nI"},
        {"nested is beside the top file", "#include \"s/n\"", "\n\n\nY", "x/top"},
        {"a backslash before a slash", "#include \"in\"", "\n\nB", "d\\e/top"},
        {"comes together over nothing", "#includ#include \"no\"e \"in\"", "\n\nI"},
        {"comes together over a file's end", "#include \"part\" \"in\"", "\n\n\nI"},
        {"the same of a file that we are in", "#include \"part\" \"part\"z", "\n\n\n"},
        {"a file twice", "#include \"in\"#include \"in\"", "\n\nI\nI"},
        {"a file in itself", "a#include \"top\"b#include \"top\"c", "\nabc"},
        {"a file in itself through others", "a#include \"x/c\"#include \"x/c\"b",
         "\na\nd\nzeI\nd\nzeIb"},
    };
    for (const char* const folder : {"x/s", "d\\e"})
        std::filesystem::create_directories(tree.path(folder));
    const std::string files[][2] = {{"in", "I\n"},
                                    {"nul", "c\0d"s},
                                    {"part", "#include"},
                                    {"h", "x#include"},
                                    {"g", "#include \"f\""},
                                    {"reca", "A#include \"rec\" z"},
                                    {"f\\", "a file"},
                                    {"x/y", "Y"},
                                    {"x/s/y", "no"},
                                    {"x/s/n", "#include \"y\""},
                                    {"d\\in", "B"},
                                    {"d\\e/in", "no"},
                                    {"x/c", "d#include \"x/d\"eI"},
                                    {"x/d", "#include \"x/c\"z#include \"top\""}};
    for (const auto& [name, text] : files)
        tree.write(name, text);
    for (const auto& each : cases) {
        tree.write(each.file, each.text);
        EXPECT_EQ(load(each.file), each.expected) << each.why;
    }
}

TEST_F(ShaderSourceTest, pastTheBoundsADirectiveGivesNothingAndTheTextIsFinished) {
    constexpr std::size_t kMiB = std::size_t{1} << 20;
    for (int i = 0; i < 70; ++i) {
        const std::string next = "#include \"deep" + std::to_string(i + 1) + '"';
        tree.write("deep" + std::to_string(i), 'x' + next + 'y');
        tree.write("wide" + std::to_string(i),
                   times(2, "#include \"wide" + std::to_string(i + 1) + '"') + 'y');
    }
    EXPECT_EQ(load("deep0"), times(65, "\nx") + times(65, "y"));
    tree.write("tail", "x#include");
    tree.write("side", "#include \"tail\"" + times(100, " \"tail\""));
    EXPECT_EQ(load("side"), "\n" + times(101, "\nx")) << "side by side is not nested";
    tree.write("wide14", times(1000, "y"));
    const std::string wide = load("wide0");
    EXPECT_EQ(wide.find("#include"), std::string::npos);
    EXPECT_TRUE(wide.size() > 15 * kMiB && wide.size() <= 16 * kMiB) << wide.size();
    tree.write("huge", std::string(16 * kMiB + 1, 'x'));
    tree.write("top", "a#include \"small\"b#include \"huge\"c#include \"small\"");
    tree.write("small", "s");
    EXPECT_EQ(load("huge"), "");
    EXPECT_EQ(load("top"), "\na\nsbc") << "what does not fit uses up the rest";
}

TEST_F(ShaderSourceTest, aTreeThatDoublesAtEachLevelIsNotReadAMillionTimes) {
    for (int i = 0; i < 24; ++i)
        tree.write("two" + std::to_string(i),
                   times(2, "#include \"two" + std::to_string(i + 1) + '"'));
    const FileFaults files;
    EXPECT_EQ(load("two0").find("#include"), std::string::npos);
    EXPECT_EQ(files.opened, 65536);
}

TEST_F(ShaderSourceTest, whatCannotBeReadNowIsReadAgainAndNeverInPart) {
    KyVertexShader shader("top", tree.folder, false);
    const auto text = [&] { return std::string(shader.loadFromFile().dataPtr()); };
    tree.write("top", "a#include \"part\"b#include \"part\"c");
    tree.write("part", times(20000, "x"));
    FileFaults files;
    const std::string once = "\nab\n" + times(20000, "x") + "c";
    for (const int error : {EMFILE, ENFILE, EIO}) {
        files.failOpen(2, error);
        EXPECT_EQ(text(), once) << error;
    }
    files.failRead(4, EIO);  // of the three reads of the first included file the second
    EXPECT_EQ(text(), once);
    files.failOpen(1, EMFILE);
    EXPECT_EQ(text(), "");
    for (const auto fail : {&FileFaults::failOpen, &FileFaults::failRead}) {
        (files.*fail)(3, ENOMEM);
        EXPECT_THROW(text(), std::bad_alloc);
    }
    files.failOpen(2, EACCES);
    EXPECT_EQ(text(), once);
    tree.write("top", "new");
    EXPECT_EQ(text(), once) << "no permission is as good as no file";
}

TEST_F(ShaderSourceTest, aPipeOrADeviceDoesNotKeepTheCallerWaiting) {
    ASSERT_EQ(mkfifo(tree.path("pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("/dev/zero", tree.path("zero"));
    tree.write("top", "a#include \"pipe\"#include \"zero\"b");
    EXPECT_EQ(load("top") + load("pipe") + load("zero"), "\nab");
}

TEST_F(ShaderSourceTest, longTextsWithManyDirectivesEnd) {
    tree.write("leaf", "x");
    tree.write("flat", times(60000, "#include \"leaf\""));
    EXPECT_EQ(load("flat"), "\n" + times(60000, "\nx"));
    tree.write("deep", times(60000, "#incl") + times(60000, "ude\"none\"") + "z");
    EXPECT_EQ(load("deep"), "\nz");
}
