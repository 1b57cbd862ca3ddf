#include "support/RecordedGL.h"
#include "support/Reports.h"

#include <kygl/kyglShaderGLSL.h>

#include <gtest/gtest.h>

#include <regex>

// clang-format off
enum Step { Create, Source, Compile, Status, LogLength, Log, NewProgram, AttachVertex, AttachFragment, Link, LinkQuery, LinkLog };
/// Entry points and command texts: first those of the ARB set, then those of the core set.
const struct { const char* entry[2]; const char* command[2]; } kSteps[] = {
    {{"glCreateShaderObjectARB", "glCreateShader"}, {"id = glCreateShaderObjectARB(inIsVertexShader ? GL_VERTEX_SHADER_ARB : GL_FRAGMENT_SHADER_ARB)", "id = glCreateShader(inIsVertexShader ? GL_VERTEX_SHADER : GL_FRAGMENT_SHADER)"}},
    {{"glShaderSourceARB", "glShaderSource"}, {"glShaderSourceARB(id, 1, (const GLcharARB**)(&str), NULL)", "glShaderSource(id, 1, (const GLcharARB**)(&str), NULL)"}},
    {{"glCompileShaderARB", "glCompileShader"}, {"glCompileShaderARB(id)", "glCompileShader(id)"}},
    {{"glGetObjectParameterivARB", "glGetShaderiv"}, {"glGetObjectParameterivARB(id, GL_OBJECT_COMPILE_STATUS_ARB, &compiled)", "glGetShaderiv(id, GL_COMPILE_STATUS, &compiled)"}},
    {{"glGetObjectParameterivARB", "glGetShaderiv"}, {"glGetObjectParameterivARB(id, GL_OBJECT_INFO_LOG_LENGTH_ARB, &blen)", "glGetShaderiv(id, GL_INFO_LOG_LENGTH, &blen)"}},
    {{"glGetInfoLogARB", "glGetShaderInfoLog"}, {"glGetInfoLogARB(id, blen, 0, log.getString())", "glGetShaderInfoLog(id, blen, 0, log.getString())"}},
    {{"glCreateProgramObjectARB", "glCreateProgram"}, {"*ioP = glCreateProgramObjectARB()", "*ioP = glCreateProgram()"}},
    {{"glAttachObjectARB", "glAttachShader"}, {"glAttachObjectARB(*ioP, *ioV)", "glAttachShader(*ioP, *ioV)"}},
    {{"glAttachObjectARB", "glAttachShader"}, {"glAttachObjectARB(*ioP, *ioF)", "glAttachShader(*ioP, *ioF)"}},
    {{"glLinkProgramARB", "glLinkProgram"}, {"glLinkProgramARB(inProgram)", "glLinkProgram(inProgram)"}},
    {{"glGetObjectParameterivARB", "glGetProgramiv"}, {"kyglShaderGLSLGetProgramsInfoLog(inProgram, log)", "kyglShaderGLSLGetProgramsInfoLog2(inProgram, log)"}},
    {{"glGetInfoLogARB", "glGetProgramInfoLog"}, {"glGetInfoLogARB(inProgram, blen, 0, outLog.getString())", "glGetProgramInfoLog(inProgram, blen, 0, outLog.getString())"}}};

using Road = std::vector<std::pair<Step, const char*>>;  // calls in order
const Road kRefused = {{Create, "(35633)"}, {Source, "(1, 1, *, null)"}, {Compile, "(1)"}, {Status, "(1, 35713, *)"}, {LogLength, "(1, 35716, *)"}, {Log, "(1, 8, null, *)"}};
const Road kPrepared = {{NewProgram, "()"}, {Create, "(35633)"}, {Source, "(2, 1, *, null)"}, {Compile, "(2)"}, {Status, "(2, 35713, *)"},
    {Create, "(35632)"}, {Source, "(3, 1, *, null)"}, {Compile, "(3)"}, {Status, "(3, 35713, *)"}, {AttachVertex, "(1, 2)"}, {AttachFragment, "(1, 3)"}};
const Road kLinked = {{Link, "(9)"}, {LinkQuery, "(9, 35714, *)"}, {LinkQuery, "(9, 35716, *)"}, {LinkLog, "(9, 8, null, *)"}};

constexpr decltype(&kyglShaderGLSLCreateObject) kCreate[] = {kyglShaderGLSLCreateObject, kyglShaderGLSLCreateObject2};
constexpr decltype(&kyglShaderGLSLPrepareProgram) kPrepare[] = {kyglShaderGLSLPrepareProgram, kyglShaderGLSLPrepareProgram2};
constexpr decltype(&kyglShaderGLSLLinkProgram) kLink[] = {kyglShaderGLSLLinkProgram, kyglShaderGLSLLinkProgram2};
constexpr decltype(&kyglShaderGLSLGetProgramsInfoLog) kGetLog[] = {kyglShaderGLSLGetProgramsInfoLog, kyglShaderGLSLGetProgramsInfoLog2};
// clang-format on

constexpr GLenum kError = GL_INVALID_OPERATION;
constexpr unsigned int kKept = 77;  // what an output holds that nobody wrote

/// With parameter 0 the functions without a suffix, with 1 those with a 2.
struct BackendTest : testing::TestWithParam<int> {
    const char* entry(Step step) const { return kSteps[step].entry[set]; }
    const char* command(Step step) const { return kSteps[step].command[set]; }

    // The GL calls were the first ones of the road, and no other.
    void expectCalls(const Road& road, std::size_t count) {
        std::vector<std::string> expected;
        for (std::size_t i = 0; i < count; ++i)
            expected.push_back(std::string(entry(road[i].first)) + road[i].second);
        EXPECT_EQ(gl.takeCalls(), expected);
    }
    // As at the start, with an error that the nth check finds.
    void renewWithErrorAt(std::size_t nth) {
        gl.arm(RecordedGL::Fault::Error, static_cast<long>(nth));
        gl.lastName = 0;
        vertex = fragment = program = kKept;
    }
    KyResult prepare() { return kPrepare[set]("v text", "f text", &vertex, &fragment, &program); }
    void expectOutputs(unsigned int p, unsigned int v, unsigned int f) const {
        EXPECT_EQ(std::tie(program, vertex, fragment), std::tie(p, v, f));
    }
    static void expectGLError(const KyResult& result, const char* command) {
        Reports::expectGLError(result, "kyglShaderGLSL", command);
    }
    void expectReport(std::size_t i, KyResult::Report kind, const char* command) {
        reports.expectGLError(i, kind, "kyglShaderGLSL", command);
    }

    const int set = GetParam();
    RecordedGL gl;
    Reports reports;
    unsigned int vertex = kKept, fragment = kKept, program = kKept;
};
INSTANTIATE_TEST_SUITE_P(Arb, BackendTest, testing::Values(0));
INSTANTIATE_TEST_SUITE_P(Core, BackendTest, testing::Values(1));

TEST_P(BackendTest, eachStepInOrderAndAGLErrorEndsThere) {
    EXPECT_EQ(prepare(), KyOK);
    expectCalls(kPrepared, kPrepared.size());
    expectOutputs(1, 2, 3);
    EXPECT_EQ(gl.sources, (std::vector<std::string>{"v text", "f text"}));
    for (std::size_t i = 0; i < kPrepared.size(); ++i) {
        renewWithErrorAt(i < 9 ? i + 2 : i + 3);
        expectGLError(prepare(), command(kPrepared[i].first));
        expectCalls(kPrepared, i + 1);
        expectOutputs(1, i < 1 ? kKept : i < 5 ? 0 : 2, i < 5 ? kKept : i < 9 ? 0 : 3);
    }
    for (std::size_t i = 0; i < 5; ++i) {
        renewWithErrorAt(i + 1);
        gl.compileStatus.next = {0};
        expectGLError(kCreate[set]("", vertex, 2), command(kRefused[i].first));
        expectCalls(kRefused, i + 1);
        EXPECT_EQ(vertex, 0U);
    }
    EXPECT_TRUE(reports.results.empty());
}

TEST_P(BackendTest, aRefusedTextGivesTheWholeLogWhateverItsFetchSays) {
    gl.compileStatus.always = 0;
    for (const std::string& log : {std::string("refused"), std::string(300000, '%')}) {
        gl.infoLog = log;
        gl.failNext(entry(Log), kError);
        EXPECT_EQ(kCreate[set]("text", vertex, 1),
                  KyResult(1, ("Shader Error: " + log).c_str(), "", false));
        EXPECT_EQ(vertex, 0U);
        if (gl.lastName == 1) expectCalls(kRefused, 6);
    }
    expectReport(0, KyResult::Report::Notify, command(Log));
}

TEST_P(BackendTest, stagesWithoutAnOutputAreLeftOutAndOldErrorsReported) {
    gl.errors = {kError};
    EXPECT_EQ(kPrepare[set]("v", "f", &vertex, &fragment, nullptr), KyResult(1, "", "", false));
    expectReport(0, KyResult::Report::Notify, "");
    expectOutputs(kKept, kKept, kKept);
    EXPECT_EQ(kPrepare[set]("v", "f", nullptr, &fragment, &program), KyOK);
    expectOutputs(1, kKept, 2);
    EXPECT_EQ(kPrepare[set]("v", "f", &vertex, nullptr, &program), KyOK);
    expectOutputs(3, 4, 2);
    EXPECT_EQ(gl.sources, (std::vector<std::string>{"f", "v"}));
    EXPECT_EQ(gl.calls.back(), entry(AttachVertex) + std::string("(3, 4)"));
}

TEST_P(BackendTest, theLinkStatusAloneDecidesAndAFailureTellsPlaceLogAndStamp) {
    gl.failNext(entry(Link), kError);
    EXPECT_EQ(kLink[set](9), KyOK);
    expectCalls(kLinked, 2);
    expectReport(0, KyResult::Report::Notify, command(Link));
    gl.linkStatus.next = {0, std::nullopt};
    gl.infoLog = "100% bad";
    gl.infoLogLength = 8;
    gl.on[entry(LinkQuery)] = [this] { gl.errors = {kError}; };
    gl.on[entry(LinkLog)] = [this] { gl.errors.assign(12, kError); };  // its check reads 11
    const KyResult result = kLink[set](9);
    EXPECT_EQ(result, KyResult(1, result.line(), "internal/kyglShaderGLSL", "Shader Error: 100% ba",
                               result.detail()));
    const std::regex stamp(
        "assertion=.0. timestamp=\\[[A-Z][a-z]{2} [A-Z][a-z]{2} [ 1-3][0-9] "
        "\\d\\d:\\d\\d:\\d\\d \\d{4}\\]");
    EXPECT_TRUE(std::regex_match(result.detail(), stamp)) << result.detail();
    expectCalls(kLinked, 4);
    expectReport(1, KyResult::Report::Notify, "");
    expectReport(2, KyResult::Report::Check, command(LinkQuery));
    EXPECT_EQ(kLink[set](9).ok(), set == 1) << "no answer counts as linked in the core set";
}

TEST_P(BackendTest, aLogReplacesWhatTheTextHeldWhateverItsLength) {
    KyString log("a text that was there before and is longer than the log");
    gl.infoLog = "log";
    for (const auto& [length, text] : {std::pair(4, "log"), {0, ""}, {2, "l"}, {-7, ""}}) {
        gl.infoLogLength = length;
        EXPECT_EQ(kGetLog[set](9, log), KyOK);
        EXPECT_STREQ(log.getString(), text);
        EXPECT_EQ(log.size, std::max(length, 0) + 1);
    }
    gl.failNext(entry(LinkLog), kError);
    expectGLError(kGetLog[set](9, log), command(LinkLog));
}
