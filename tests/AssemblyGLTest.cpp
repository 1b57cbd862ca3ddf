#include "support/RealGLX.h"
#include "support/Reports.h"

#include <kygl/kyglShaderARB.h>

#include <GL/gl.h>

struct AssemblyGLTest : RealGLXTest {};

TEST_F(AssemblyGLTest, assemblyDrawsAndAFaultHasItsLine) {
    EXPECT_EQ(kyglShaderARBAvailable(), !RealGLX::masked());
    if (RealGLX::masked()) return;
    const Reports reports;
    unsigned int vertex = 0, fragment = 0;
    EXPECT_EQ(kyglShaderARBPrepareProgram("!!ARBvp1.0\nMOV result.position, vertex.position;\nEND",
                                          "!!ARBfp1.0\nMOV result.color, {0, 1, 0, 1};\nEND",
                                          &vertex, &fragment),
              KyOK);
    EXPECT_TRUE(reports.results.empty());
    glEnable(0x8620);  // GL_VERTEX_PROGRAM_ARB
    glEnable(0x8804);  // GL_FRAGMENT_PROGRAM_ARB
    glRecti(-1, -1, 1, 1);
    unsigned char pixel[4] = {};
    glReadPixels(30, 30, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    EXPECT_EQ(pixel[0], 0);
    EXPECT_EQ(pixel[1], 255);
    // Mesa's positions lag behind by some bytes, so the fault stands well inside its line.
    EXPECT_EQ(
        kyglShaderARBCreateObject(
            "!!ARBfp1.0\r\nMOV result.color, 1;\r\n      MOV result.colr, 1;\r\nEND", fragment, 0),
        KyOK);
    ASSERT_EQ(reports.results.size(), 1U);
    EXPECT_EQ(reports.results[0].result.line(), 3);
    EXPECT_STRNE(reports.results[0].result.message(), "");
}
