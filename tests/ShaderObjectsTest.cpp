#include "support/Allocations.h"
#include "support/RecordedGL.h"
#include "support/Reports.h"
#include "support/TempShaders.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/KyShaderBuild.h>
#include <kygl/KyShaderProgram.h>
#include <kygl/KyShaderTechnique.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

using namespace std::string_literals;
using Calls = std::vector<std::string>;
using Kind = KyResult::Report;

// The queue is one for the process: each test begins with nothing queued for its contexts.
struct ShaderObjectsTest : testing::Test {
    ShaderObjectsTest() {
        drain(1), drain(2);
        tree.write("v", "vertex");
        tree.write("f", "fragment");
    }
    Calls drain(unsigned int context) {
        gl.calls.clear();
        KyDeferredDeleteMap::deferredDelete(context);
        Calls deleted = gl.takeCalls();
        std::sort(deleted.begin(), deleted.end());
        return deleted;
    }
    template <typename Object>
    Calls applied(Object& object, unsigned int context) {
        gl.calls.clear();
        object.apply(context);
        return gl.takeCalls();
    }
    RecordedGL gl;
    Reports reports;
    const TempShaders tree;
};

// A pushes the macro A, a removes it, 0 clears the set, = sets the empty one.
static void change(KyShader& shader, char how) {
    const char macro[] = {static_cast<char>(std::toupper(how)), '\0'};
    if (how == '0') shader.clearParameters();
    if (how == '=') shader.setParameters(KyShaderParametersMacros());
    if (std::isupper(how)) shader.pushParameter(macro);
    if (std::islower(how)) shader.removeParameter(macro);
}

// A direct shader builds exactly when it is stale and queues what it had, under the old context; a
// caching one builds once for each macro set, in its order, and context, and queues at its end.
TEST_F(ShaderObjectsTest, eachModeBuildsAndQueuesWhatItMust) {
    const struct {
        const char* changes;
        unsigned int context, direct, caching;  // and the names that compile gives; 0: GL refuses
    } steps[] = {{"", 1, 1, 1},   {"a0", 1, 1, 1}, {"", 2, 2, 2},  {"", 1, 3, 1},
                 {"A", 1, 4, 3},  {"A", 1, 4, 3},  {"B", 1, 5, 4}, {"aA", 1, 6, 5},
                 {"bB", 1, 7, 4}, {"0", 2, 8, 2},  {"=", 2, 8, 2}, {"X", 2, 0, 0},
                 {"", 2, 0, 0},   {"", 2, 11, 8},  {"=", 1, 12, 1}};
    const auto expectQueued = [this](const std::map<unsigned int, unsigned int>& contexts) {
        Calls expected[3];
        for (const auto& [name, context] : contexts)
            expected[context].push_back("glDeleteObjectARB(" + std::to_string(name) + ")");
        EXPECT_TRUE(drain(1) == expected[1] && drain(2) == expected[2]);
    };
    gl.on["glGetInfoLogARB"] = [this] { gl.errors.assign(12, GL_INVALID_VALUE); };
    for (const bool caching : {false, true}) {
        auto shader = std::make_unique<KyVertexShader>("v", tree.folder, caching);
        std::map<unsigned int, unsigned int> alive, gone;  // contexts by name
        gl.lastName = 0;
        for (const auto& step : steps) {
            const unsigned int name = caching ? step.caching : step.direct;
            gl.calls.clear();
            gl.compileStatus.always = name != 0;
            for (const char how : std::string(step.changes))
                change(*shader, how);
            EXPECT_EQ(shader->compile(step.context), name);
            EXPECT_EQ(shader->isCurrent(step.context), name != 0);
            EXPECT_EQ(gl.calls.empty(), alive.count(name) != 0);
            gone.clear();
            if (!caching && alive.count(name) == 0) gone.swap(alive);
            if (name != 0) alive[name] = step.context;
            expectQueued(gone);
        }
        shader.reset();
        expectQueued(alive);
    }
    reports.expectGLError(1, Kind::Check, "KyShader", "");  // the log's check reads only 11
}

TEST_F(ShaderObjectsTest, theFirstMatchingEntryInOrderOfCreationCounts) {
    KyShader::KyShaderCashing cache;
    KyShaderParametersMacros a;
    a.pushMacro("A");
    const auto get = [&](unsigned int context) {
        return cache.getVertexShader(a, context, "v", tree.folder);
    };
    KyShader *const first = get(1), *const second = get(1);
    EXPECT_NE(second, first) << "an entry has no context before it is compiled";
    second->compile(1);
    EXPECT_EQ(get(1), second);
    first->compile(1);
    EXPECT_EQ(get(1), first);
    EXPECT_NE(cache.getFragmentShader(a, 1, "f", tree.folder), first);
    first->pushParameter("B");
    EXPECT_EQ(get(1), second);
    gl.compileStatus.next = {0};
    EXPECT_EQ(second->compile(2), 0U);
    EXPECT_EQ(get(2), second) << "one that failed is found again";
}

TEST_F(ShaderObjectsTest, aMacroSetIsKnownByItsMacrosNotByItsLines) {
    const auto make = [](KyShaderParametersMacros& set, const std::vector<KyString>& macros) {
        for (const KyString& macro : macros)
            EXPECT_TRUE(set.pushMacro(macro) && !set.pushMacro(macro));
        return std::string(set.getDefineMacros().dataPtr());
    };
    KyShaderParametersMacros set, other, shorter, longer;
    EXPECT_EQ(make(set, {"A\n#define B", "C"}), make(other, {"A", "B\n#define C"}));
    EXPECT_FALSE(set == other || set.hasMacro("A"));
    KyString withNul("A ");
    withNul[1] = '\0';
    EXPECT_EQ(make(shorter, {"A"}), make(longer, {withNul}));
    EXPECT_FALSE(shorter == longer || shorter.hasMacro(withNul) || longer.removeMacro("A"));

    KyShaderParametersMacros many, rest;
    make(many, {"1", "22", "333", "", "5 5", "6", "7", "8", "9", "10", "11"});
    EXPECT_TRUE(many.removeMacro("22") && many.removeMacro("") && many.removeMacro("11"));
    EXPECT_TRUE(many.removeMacro("1") && !many.removeMacro("1"));
    EXPECT_EQ(make(rest, {"333", "5 5", "6", "7", "8", "9", "10"}),
              many.getDefineMacros().dataPtr());
    EXPECT_TRUE(many == rest && many.fingerprint() == rest.fingerprint());
    many.removeMacro("333");
    many.pushMacro("333");
    EXPECT_FALSE(many == rest || many.count() != rest.count());
    (set = many).clear();
    EXPECT_TRUE(many.count() == 7 && set == KyShaderParametersMacros());
}

TEST_F(ShaderObjectsTest, entriesThatReadEqualTextsKeepTheirsWhenTheFileChanges) {
    KyVertexShader shader("v", tree.folder, true);
    std::vector<KyShader*> entries;
    for (const char* const text : {"one", "two", "one", "three", "four"}) {
        tree.write("v", text);
        for (std::size_t i = 0; i < entries.size(); ++i)
            EXPECT_EQ(entries[i]->loadFromFile().dataPtr(), gl.sources[i]);
        shader.pushParameter(std::to_string(entries.size()).c_str());
        shader.compile(1);
        entries.push_back(shader.getCachingShader(1));
        EXPECT_NE(gl.sources.back().find(text), std::string::npos);
    }
}

TEST_F(ShaderObjectsTest, aUniformKeepsItsTypeAndPlace) {
    KyShaderParametersUniform set, same;
    for (KyShaderParametersUniform* const one : {&set, &same})
        one->setUniform("a", 4), one->setUniform("b", 2.5f), one->setUniform("c", 3.0f);
    EXPECT_TRUE(set.setUniform("a", 4.0f) == nullptr && set.setUniform("b", 2) == nullptr);
    EXPECT_TRUE(set.setUniform("a", 4) == set.getUniform("a") && set == same);
    EXPECT_TRUE(set.removeUniform("b") && !set.removeUniform("b") && !set.hasUniform("b"));
    EXPECT_TRUE(set.setUniform("b", 2) != nullptr && !(set == same));
    gl.missing = {"c"};
    gl.failNext("glGetUniformLocation", GL_INVALID_OPERATION);
    gl.failNext("glUniform1i", GL_INVALID_OPERATION);
    set.activate(9);
    EXPECT_EQ(gl.calls, (Calls{"glGetUniformLocation(9, \"a\")", "glUniform1i(0, 4)",
                               "glGetUniformLocation(9, \"c\")", "glGetUniformLocation(9, \"b\")",
                               "glUniform1i(1, 2)"}));
    reports.expectGLError(0, Kind::Notify, "KyShaderUniform", "setUniform(shaderLocation)");

    const KyShaderUniformInt one("u", 1);
    const KyShaderUniformFloat floatOne("u", 1), zero("u", 0), minus("u", -0.0f), nan("u", NAN);
    EXPECT_FALSE(one == floatOne || floatOne == one || nan == nan || one.isEqual(nullptr));
    EXPECT_TRUE(zero == minus && one == one);
}

TEST_F(ShaderObjectsTest, aTechniqueLinksOnceForEachMacroSetAndContext) {
    KyVertexShader vertex("v", tree.folder, true);
    KyFragmentShader fragment("f", tree.folder, true);
    {
        KyShaderTechnique technique(&vertex, &fragment);
        EXPECT_TRUE(technique.compile(1));
        gl.lastName = 0;  // two contexts that do not share give out the same names
        EXPECT_TRUE(technique.compile(2));
        for (const unsigned int context : {1U, 1U, 2U, 1U, 2U}) {
            fragment.clearParameters();
            EXPECT_EQ(applied(technique, context)[0], "glUseProgram(3)");
            fragment.pushParameter("A");
            EXPECT_EQ(applied(technique, 2).back(), "glUseProgram(5)");
        }
        vertex.compile(1), fragment.compile(1);  // another technique may share them
        EXPECT_TRUE(technique.compile(1));
        EXPECT_EQ(drain(1), Calls{});
    }
    EXPECT_EQ(drain(1), (Calls{"glDeleteProgram(3)", "glDeleteProgram(7)"}));
    EXPECT_EQ(drain(2), (Calls{"glDeleteProgram(3)", "glDeleteProgram(5)"}));
}

static Calls sBuilds;
static void noteBuild(const KyShaderBuild& build, void*) {
    std::string note = std::to_string(build.context);
    for (const KyShaderBuild::Stage& stage : {build.vertex, build.fragment})
        if (stage.file != nullptr)
            note += " "s + stage.file + (*stage.folder != '\0' ? " [" : "?") + stage.macros + ']';
    sBuilds.push_back(note + ' ' + build.result.message() + (build.time.count() > 0 ? "" : "?"));
}

TEST_F(ShaderObjectsTest, aFailedLinkIsTriedPrintedAndObservedEachTimeAndKeepsTheLastProgram) {
    KyVertexShader vertex("v", tree.folder, true);
    KyFragmentShader fragment("f", tree.folder, true);
    KyShaderTechnique technique(&vertex, &fragment);
    KyShaderBuild::setObserver(noteBuild);
    vertex.pushParameter("A 1");
    gl.infoLog = "first\nsecond\n";
    gl.linkStatus.next = {0, 1, 0, 0};
    const auto expectApply = [&](const char* lastCall, bool printed, const Calls& builds) {
        std::fflush(stdout);
        testing::internal::CaptureStdout();
        EXPECT_EQ(applied(technique, 1).back(), lastCall);
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_EQ(out.find("Shader Error: first") != std::string::npos, printed);
        EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), printed ? 1 : 0);
        EXPECT_EQ(std::exchange(sBuilds, {}), builds);
    };
    const std::string v = "1 v [#define A 1\n] ", both = v + "f [] ",
                      another = v + "f [#define A\n] ";
    const std::string error = "Shader Error: first\nsecond\n";
    expectApply("glUseProgram(0)", true, {v, "1 f [] ", both + error});
    expectApply("glUseProgram(4)", false, {both});
    fragment.pushParameter("A");
    expectApply("glUseProgram(4)", true, {"1 f [#define A\n] ", another + error});
    expectApply("glUseProgram(4)", true, {another + error});
    gl.compileStatus.always = 0;
    fragment.setParameters(KyShaderParametersMacros());
    expectApply("glUseProgram(4)", false, {});
    fragment.pushParameter("B");  // getting the entry tries a failed shader again
    const std::string broken = "1 f [#define B\n] " + error;
    expectApply("glUseProgram(4)", false, {broken});
    KyShaderBuild::setObserver(nullptr);
    expectApply("glUseProgram(4)", false, {});
}

TEST_F(ShaderObjectsTest, aStageThatFailedInPassingIsNotTakenForOneThatIsBroken) {
    for (const int failing : {1, 2}) {  // the vertex shader, the fragment shader
        KyShaderProgram program;
        program.create("v", "f", tree.folder);
        gl.failNth("glCompileShaderARB", failing, GL_INVALID_ENUM);
        EXPECT_TRUE(program.compile(1)) << "the second attempt";
        failing == 1 ? program.pushVertexMacro("BROKEN") : program.pushFragmentMacro("BROKEN");
        gl.compileStatus.always = 0;
        EXPECT_FALSE(program.compile(1)) << "not with the program of another set";
        gl.compileStatus.always = 1;
        program.setParameter(KyShaderParametersMacros());
        gl.calls.clear();
        EXPECT_TRUE(program.compile(1) && gl.calls.empty()) << "the good set is linked once";
    }
}

// Until there is memory for the queue as well, the technique or its cache keeps the name.
TEST_F(ShaderObjectsTest, noProgramIsLostWhereAnErrorAndLackOfMemoryMeet) {
    for (const bool caching : {false, true}) {
        drain(1);
        KyVertexShader vertex("v", tree.folder, caching);
        KyFragmentShader fragment("f", tree.folder, caching);
        auto technique = std::make_unique<KyShaderTechnique>(&vertex, &fragment);
        const auto fill = [] { KyDeferredDeleteMap::pushTehniqueHandle(0, 7); };
        while (!Allocations::stop(1, false, fill)) {
        }
        gl.failNext("glAttachObjectARB", GL_INVALID_OPERATION);
        gl.on["glAttachObjectARB"] = [] { Allocations::failing = 1; };
        EXPECT_TRUE(Allocations::stop(0, true, [&] { technique->compile(1); }));
        gl.on.clear();
        const std::string name = std::to_string(gl.lastName);
        EXPECT_EQ(drain(1), Calls());
        KyDeferredDeleteMap::discard(7);
        EXPECT_TRUE(technique->compile(1));
        technique.reset();
        const Calls deleted = drain(1);
        EXPECT_EQ(std::count(deleted.begin(), deleted.end(), "glDeleteProgram(" + name + ")"), 1);
    }
}

TEST_F(ShaderObjectsTest, aPlainTechniqueDropsItsProgramWithItsShaders) {
    KyVertexShader vertex("v", tree.folder, false), other("v", tree.folder, false);
    KyFragmentShader fragment("f", tree.folder, false);
    KyShaderTechnique technique(nullptr, &fragment);
    EXPECT_EQ(applied(technique, 1), Calls{"glUseProgram(0)"});
    EXPECT_TRUE(technique.getAttribLocation("p") == -1 && !technique.applyUniform(nullptr));
    technique.setVertexShader(&vertex);
    gl.failNext("glCreateProgramObjectARB", GL_OUT_OF_MEMORY);
    gl.failNext("glAttachObjectARB", GL_INVALID_VALUE);
    gl.failNth("glAttachObjectARB", 2, GL_INVALID_OPERATION);
    EXPECT_TRUE(technique.compile(1)) << "the link alone decides";
    const char* const commands[] = {"mProgram = glCreateProgramObjectARB()",
                                    "glAttachObjectARB(mProgram, iov)",
                                    "glAttachObjectARB(mProgram, iof)"};
    for (std::size_t i = 0; i < 3; ++i)
        reports.expectGLError(i, Kind::Notify, "KyShaderTechnique", commands[i]);
    technique.setVertexShader(&vertex);
    EXPECT_EQ(technique.getAttribLocation("p"), 0);
    technique.setVertexShader(&other);
    EXPECT_EQ(technique.getAttribLocation("p"), -1);
    EXPECT_TRUE(technique.compile(1));
    EXPECT_EQ(drain(1), Calls{"glDeleteProgram(3)"});
    gl.compileStatus.next = {0};
    EXPECT_FALSE(technique.compile(2)) << "the fragment shader is built all the same";
    EXPECT_EQ(drain(1),
              (Calls{"glDeleteObjectARB(2)", "glDeleteObjectARB(4)", "glDeleteProgram(5)"}));
}

TEST_F(ShaderObjectsTest, aProgramForgetsAllAndWithoutCreateDoesNothing) {
    KyShaderProgram program;
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(program.pushMacro("A") || program.removeMacro("A") || program.compile(1) ||
                     program.isApplied() || program.applyUniform("u", 1.0f));
        EXPECT_TRUE(program.setUniform("u", 1) == nullptr && program.getAttribLocation("p") == -1);
        program.setParameter(KyShaderParametersMacros());
        EXPECT_EQ(applied(program, 1), Calls{});
        program.unUse();
        EXPECT_EQ(gl.calls, Calls{"glUseProgram(0)"});
        program.create("v", "f", tree.folder);
        program.deleteProgram();
        program.deleteProgram();
    }
    program.create("v", "f", tree.folder);
    EXPECT_TRUE(program.pushFragmentMacro("A") && program.pushMacro("A"));
    EXPECT_TRUE(program.pushVertexMacro("B 2") && !program.pushMacro("B 2"));
    gl.notPrograms = {0};
    gl.missing = {"w"};
    EXPECT_FALSE(program.applyUniform("u", 1.5f)) << "stored for the first apply";
    EXPECT_EQ(applied(program, 1).back(), "glUniform1f(0, 1.5)");
    EXPECT_TRUE(program.applyUniform("u", 2.5f));
    EXPECT_EQ(gl.takeCalls(),
              (Calls{"glIsProgram(3)", "glGetUniformLocation(3, \"u\")", "glUniform1f(0, 2.5)"}));
    EXPECT_FALSE(program.applyUniform("u", 2) || program.applyUniform("w", 2));
    EXPECT_EQ(applied(program, 1)[2], "glUniform1f(0, 2.5)");
    EXPECT_TRUE(program.removeVertexMacro("A") && !program.removeMacro("A"));
    EXPECT_FALSE(program.removeFragmentMacro("A"));
    program.create("v", "f", tree.folder);
    EXPECT_EQ(drain(1),
              (Calls{"glDeleteObjectARB(1)", "glDeleteObjectARB(2)", "glDeleteProgram(3)"}));
    EXPECT_EQ(applied(program, 1).back(), "glUseProgram(6)");
    EXPECT_EQ(gl.sources, (Calls{"#define A\n#define B 2\n\nvertex",
                                 "#define A\n#define B 2\n\nfragment", "\nvertex", "\nfragment"}));
    gl.muted = true;
    const long before = Allocations::count;
    program.apply(1);
    program.unUse();
    EXPECT_EQ(Allocations::count, before) << "a steady apply allocates";
}
