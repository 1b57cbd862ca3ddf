#include "support/RecordedGL.h"
#include "support/Reports.h"

#include <kygl/kyglShaderARB.h>

#include <gtest/gtest.h>

#include <cstring>

using Calls = std::vector<std::string>;

struct AssemblyTest : testing::Test {
    RecordedGL gl;
    Reports reports;
    unsigned int vertex = 77, fragment = 77;
};

TEST_F(AssemblyTest, aFaultIsToldWithItsLineAndNothingElse) {
    gl.strings[GL_PROGRAM_ERROR_STRING_ARB] = "100% wrong";
    const struct {
        const char* text;
        int position, line;
        GLenum error;
    } faults[] = {{"a\nb\nc", 4, 3, GL_INVALID_OPERATION},
                  {"a\r\nb\r\nc", 6, 3, 0},
                  {"a\nb", 1, 1, 0},
                  {"a\nb\n", 1 << 30, 3, 0},
                  {"a\nb", -1, 1, GL_INVALID_VALUE},
                  {"a\nb", -7, 1, 0}};
    for (const auto& fault : faults) {
        gl.programErrorPosition = fault.position;
        if (fault.error != 0) gl.failNext("glProgramStringARB", fault.error);
        EXPECT_EQ(kyglShaderARBCreateObject(fault.text, fragment, 0), KyOK);
        EXPECT_EQ(fragment, gl.lastName) << "the caller gets the name all the same";
        ASSERT_EQ(reports.results.size(), 1U) << fault.position;
        EXPECT_EQ(reports.results[0].kind, KyResult::Report::Notify);
        EXPECT_EQ(reports.results[0].result,
                  KyResult(1, fault.line, "internal/kyglShaderARB", "100% wrong", ""));
        reports.results.clear();
    }
    gl.strings.clear();
    kyglShaderARBCreateObject("a", fragment, 0);
    EXPECT_STREQ(reports.results.at(0).result.message(), "") << "a driver without words";
}

TEST_F(AssemblyTest, stagesInOrderAndAGLErrorEndsThere) {
    gl.errors = {GL_INVALID_ENUM};
    EXPECT_EQ(kyglShaderARBPrepareProgram("v!", "f", nullptr, nullptr), KyOK);
    EXPECT_EQ(gl.takeCalls(), Calls());
    ASSERT_EQ(reports.results.size(), 1U) << "an old error";
    EXPECT_EQ(kyglShaderARBPrepareProgram("v!", "f", &vertex, &fragment), KyOK);
    EXPECT_EQ(gl.takeCalls(),
              (Calls{"glGenProgramsARB(1, *)", "glBindProgramARB(34336, 1)",
                     "glProgramStringARB(34336, 34933, 2, *)", "glGetIntegerv(34379, *)",
                     "glGenProgramsARB(1, *)", "glBindProgramARB(34820, 2)",
                     "glProgramStringARB(34820, 34933, 1, *)", "glGetIntegerv(34379, *)"}));
    EXPECT_EQ(vertex + fragment, 3U);
    std::size_t at = 1;
    for (const char* const step : {"glGenProgramsARB(1, &id)", "glBindProgramARB(target, id)"}) {
        fragment = 77;
        gl.failNext(std::string(step, std::strchr(step, '(')), GL_INVALID_OPERATION);
        const KyResult result = kyglShaderARBPrepareProgram("v", "f", &vertex, &fragment);
        Reports::expectGLError(result, "kyglShaderARB", step);
        reports.expectGLError(at++, KyResult::Report::Check, "kyglShaderARB", step);
        EXPECT_TRUE(vertex == 0 && fragment == 77) << "a failed stage skips the next";
    }
    EXPECT_EQ(reports.results.size(), at);
}
