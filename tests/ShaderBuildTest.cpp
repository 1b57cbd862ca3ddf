#include "support/Allocations.h"
#include "support/Messages.h"
#include "support/RecordedGL.h"
#include "support/TempShaders.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/KyShaderBuild.h>
#include <kygl/KyShaderProgram.h>
#include <kygl/KyShaderTechnique.h>

#include <gtest/gtest.h>

#include <algorithm>

using Lines = std::vector<std::string>;

struct ShaderBuildTest : testing::Test {
    ShaderBuildTest() {
        tree.write("v", "varying float q;\nuniform int n;\nvoid main() {}\n");
        tree.write("f", "// top\n#include \"a/lib\"\nvarying float q;\nvoid main() {}\n");
        std::filesystem::create_directories(tree.path("a"));
        tree.write("a/lib", "float x;\n#include \"deep\"\nfloat z;\n");
        tree.write("deep", "float y;\n  wrong;\n");
        program.create("v", "f", tree.folder);
        KyDeferredDeleteMap::discard(1);
    }
    ~ShaderBuildTest() override { KyShaderBuild::setObserver(nullptr); }

    void observe() { KyShaderBuild::setObserver(keep, this); }
    static void keep(const KyShaderBuild& build, void* self) {
        static_cast<ShaderBuildTest*>(self)->keep(build);
    }
    void keep(const KyShaderBuild& build) {
        std::string line = build.vertex.file != nullptr ? build.vertex.file : "";
        if (build.fragment.file != nullptr) line += build.fragment.file;
        builds.push_back(line + (build.result.ok() ? " good" : " bad"));
        for (long i = 0; i < build.messageCount; ++i)
            builds.push_back(shown(build.messages[i]));
        files.clear();
        for (long i = 0; i < build.fileCount; ++i)
            files.push_back(shortened(build.files[i]));
    }
    std::string shown(const KyShaderBuild::Message& message) const {
        const long column = message.placeCount > 0 ? message.places[0].column : 0;
        return shortened(message.line) + (column > 0 ? " @" + std::to_string(column) : "");
    }
    std::string shortened(std::string text) const {
        const std::string folder = tree.path("").string();
        for (std::size_t at = 0; (at = text.find(folder)) != text.npos;)
            text.erase(at, folder.size());
        return text;
    }
    Lines shortened(Lines lines) const {
        for (std::string& line : lines)
            line = shortened(line);
        return lines;
    }
    Lines compiled() {
        program.compile(1);
        return std::exchange(builds, {});
    }

    RecordedGL gl;
    TempShaders tree;
    KyShaderProgram program;
    Lines builds, files;
};

TEST_F(ShaderBuildTest, eachMessageIsAtItsFileLineAndColumnThroughIncludesAndMacros) {
    observe();
    program.pushFragmentMacro("A");
    program.pushFragmentMacro("LIGHTS 3x");
    gl.infoLog = "0:2(11): error: no number\n0:8(3): error: `wrong' undeclared\nodd\n";
    gl.compileStatus.next = {1, 0, 0};
    const Lines lines = compiled();
    EXPECT_EQ(Lines(lines.end() - 4, lines.end()),
              (Lines{"f bad", "-D LIGHTS 3x: error: no number @3",
                     "deep:1: error: `wrong' undeclared @3", "odd"}));
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "f bad"), 1) << "of two attempts";
    EXPECT_EQ(files, (Lines{"f", "a/lib", "deep"}));
}

TEST_F(ShaderBuildTest, theMessagesOfALinkAreAtTheDeclarations) {
    gl.linkStatus.always = 0;
    observe();
    gl.infoLog = "error: fragment shader varying q not written by vertex shader\n.";
    EXPECT_EQ(compiled().back(),
              "v:1 f:3: error: fragment shader varying q not written by vertex shader");
    EXPECT_EQ(files, (Lines{"v", "f", "a/lib", "deep"}));
}

TEST_F(ShaderBuildTest, whatWasReadBeforeIsReadAgainUnlessItHasChanged) {
    KyVertexShader vertex("v", tree.folder, false);
    KyFragmentShader fragment("f", tree.folder, false);
    vertex.compile(1), fragment.compile(1);
    gl.infoLog = "error: varying q differs\n";
    gl.linkStatus.always = 0;
    for (const bool isChanged : {false, true}) {
        if (isChanged) tree.write("v", "varying float q;  // again");
        observe();
        KyShaderTechnique(&vertex, &fragment).compile(1);
        EXPECT_EQ(builds.back(),
                  std::string(isChanged ? "v" : "v:1") + " f:3: error: varying q differs");
        KyShaderBuild::setObserver(nullptr);  // what was known is forgotten
    }
}

TEST_F(ShaderBuildTest, filesThatGiveNothingAreMessagesOfTheirOwn) {
    tree.write("f", "#include \"none\"\n#include \"f\"\n#version 110\n// #include \"deep\"\n");
    program.pushMacro("A");
    observe();
    const Lines lines = compiled();
    const char* const beginnings[] = {
        "v good",
        "f good",
        "f:1: error: 'none' cannot be read: No such file or directory (",
        "f:2: warning: a file includes itself: f -> f; ",
        "f:4: warning: #include in a comment: it is expanded, and its lines are code",
        "f:3: warning: #version is not first, because macros are put in front of the file: ",
        "vf good"};
    ASSERT_EQ(lines.size(), std::size(beginnings));
    for (std::size_t i = 0; i < lines.size(); ++i)
        EXPECT_EQ(lines[i].find(beginnings[i]), 0U) << lines[i];
    EXPECT_EQ(files, (Lines{"v", "f", "none", "deep"}));
}

TEST_F(ShaderBuildTest, diagnosticsNameFilesOnceAndCountBuildsThatFailAgain) {
    std::filesystem::remove(tree.path("deep"));
    program.pushMacro("A");
    gl.infoLog = "0:5(3): error: bad\n";
    gl.compileStatus.always = 0;
    Messages messages;
    for (int i = 0; i < 10; ++i)
        EXPECT_FALSE(program.compile(1));
    EXPECT_FALSE(program.compile(2));
    Lines lines = shortened(messages.take());
    const auto has = [&](const std::string& text) {
        return std::count_if(lines.begin(), lines.end(),
                             [&](const std::string& line) { return line.find(text) != line.npos; });
    };
    EXPECT_EQ(has("a/lib:2: error: 'deep' cannot be read: No such file or directory"), 1);
    EXPECT_EQ(has("error: bad (context 1; macros: A)"), 2) << "in both stages";
    EXPECT_EQ(has("has failed 10 times in a row"), 2);
    EXPECT_EQ(has("and 20 GL objects that nobody deletes are left so far"), 2);
    EXPECT_EQ(has("(context 2; macros: A)"), 2);
    gl.compileStatus.always = 1;
    EXPECT_TRUE(program.compile(1));
    lines = shortened(messages.end());
    EXPECT_EQ(has("error: bad (context 1; macros: A) (10 times)"), 0);
    EXPECT_EQ(has("bad (context 1; macros: A) (10 times)"), 2);
}

TEST_F(ShaderBuildTest, aFailureWithoutALogIsReportedBesideAFileThatIsMissing) {
    KyFragmentShader shader("none", tree.folder, false);
    Messages messages(KyDiagnostics::Build | KyDiagnostics::File);
    constexpr GLenum kErrors[] = {GL_INVALID_VALUE, GL_INVALID_VALUE, GL_INVALID_OPERATION};
    for (const GLenum error : kErrors) {
        gl.failNext("glCompileShaderARB", error);
        EXPECT_EQ(shader.compile(1), 0U);
    }
    const Lines lines = shortened(messages.take());
    ASSERT_EQ(lines.size(), 4U) << "of the file, two errors and a count";
    EXPECT_EQ(lines[0].find("none: error: cannot be read"), 0U);
    EXPECT_EQ(lines[1].find("context 1: none: error: does not compile: "), 0U);
    EXPECT_NE(lines[2].find("(2 times)"), std::string::npos);
    EXPECT_NE(lines[3].find("code=1282"), std::string::npos);
}

TEST_F(ShaderBuildTest, uniformsAreNotJudgedWhileTheProgramIsStale) {
    KyVertexShader vertex("v", tree.folder, true);
    KyFragmentShader fragment("f", tree.folder, true);
    KyShaderTechnique technique(&vertex, &fragment);
    ASSERT_TRUE(technique.compile(1));
    KyShaderUniform* const uniform = technique.uniforms().setUniform("x", 1);
    Messages messages(KyDiagnostics::Uniform);
    technique.setVertexShader(nullptr);
    EXPECT_TRUE(technique.applyUniform(uniform));
    EXPECT_EQ(messages.take(), Lines());
    technique.setVertexShader(&vertex);
    technique.apply(1);
    EXPECT_EQ(messages.take().size(), 1U);
}

TEST_F(ShaderBuildTest, aUniformThatDoesNotFitIsNamedOnceWithItsDeclaration) {
    gl.uniforms = {{"height", GL_FLOAT}, {"n", GL_INT}, {"s[0]", GL_SAMPLER_2D}, {"b", GL_BOOL}};
    program.setUniform("heigth", 1.0F);
    program.setUniform("n", 2.0F);
    program.setUniform("s", 1);
    program.setUniform("b", 1.0F);
    program.setUniform("x", 1);
    program.apply(1);
    Messages messages(KyDiagnostics::Uniform);
    for (int i = 0; i < 3; ++i)
        program.apply(1);
    EXPECT_EQ(shortened(messages.take()),
              (Lines{"context 1: warning: the program of v and f has no uniform 'heigth'; did you "
                     "mean 'height'?",
                     "context 1: v:2: error: uniform 'n' is kept as float, the type of its first "
                     "value, but it is declared as int: the GL refuses it with "
                     "GL_INVALID_OPERATION; set it with an int, such as 2, from the first time on "
                     "(context 1)",
                     "context 1: warning: the program of v and f has no uniform 'x'; it has "
                     "height, n, s, b"}));
    program.pushMacro("A");  // another program, which uses less of what is declared
    gl.uniforms = {{"heigth", GL_FLOAT}};
    program.applyUniform("b", 0.0F);
    EXPECT_EQ(messages.take(), Lines());
    program.apply(1);
    const Lines lines = shortened(messages.take());
    EXPECT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0],
              "context 1: v:2: note: uniform 'n' is declared here, but the program does not use "
              "it: what is set for it goes nowhere (context 1; macros: A)");
}

TEST_F(ShaderBuildTest, macrosThatComeAndGoEachFrameMakeOneMessageOfAVersion) {
    tree.write("f", "//\n#version 110\nvoid main() {}\n");
    KyFragmentShader fragment("f", tree.folder, false);
    Messages messages(KyDiagnostics::Version);
    for (int i = 0; i < 3; ++i) {
        fragment.pushParameter("A"), fragment.compile(1);
        fragment.removeParameter("A"), fragment.compile(1);
    }
    EXPECT_EQ(messages.take().size(), 1U);
}

TEST_F(ShaderBuildTest, aBuildNeedsNoMoreMemoryBecauseSomebodyListens) {
    const auto countFailures = [this] {
        long thrown = 0;
        for (long nth = 1, failed = -1; failed != Allocations::failed; ++nth) {
            failed = Allocations::failed;
            KyFragmentShader fragment("f", tree.folder, false);
            thrown += Allocations::stop(nth, false, [&] { fragment.compile(1); }) ? 1 : 0;
        }
        return thrown;
    };
    const long silent = countFailures();
    const Messages messages;
    KyShaderBuild::setObserver([](const KyShaderBuild&, void*) {});
    EXPECT_LE(countFailures(), silent);
}
