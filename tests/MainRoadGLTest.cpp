#include "support/RealGLX.h"
#include "support/TempShaders.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/kyglShaderGLSL.h>
#include <kygl/KyShaderProgram.h>
#include <sogl/SoGLEW.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <set>
#include <thread>

extern "C" {
void glGetAttachedShaders(GLuint program, GLsizei room, GLsizei* count, GLuint* shaders);
GLboolean glIsShader(GLuint shader);
}

using Pixel = std::array<unsigned char, 3>;
constexpr Pixel kWhite = {255, 255, 255};  // what the fixed function draws

// With the extensions masked the GL knows no GLSL: nothing builds, and all is drawn white.
struct MainRoadGLTest : RealGLXTest {
    MainRoadGLTest() {
        tree.write("quad.vert", "void main() { gl_Position = gl_Vertex; }");
        tree.write("quad.frag",
                   "#include \"part.glsl\"\n"
                   "#ifdef GREEN\n"
                   "void main() { gl_FragColor = vec4(0, part, 0, 1); }\n"
                   "#else\n"
                   "void main() { gl_FragColor = vec4(part, 0, 0, 1); }\n"
                   "#endif\n");
        tree.write("part.glsl", "uniform float part;");
    }
    Pixel ofProgram(bool green, unsigned char part) const {
        if (!able) return kWhite;
        return green ? Pixel{0, part, 0} : Pixel{part, 0, 0};
    }
    static Pixel drawn() {
        Pixel pixel = {};
        glClear(GL_COLOR_BUFFER_BIT);
        glRecti(-1, -1, 1, 1);
        glReadPixels(30, 30, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, pixel.data());
        return pixel;
    }
    // A module's whole road: built in the first two frames, found in the others, gone at the end.
    void drawAndDrain(const RealGLX& own, unsigned int context) const {
        own.makeCurrent();
        std::set<GLuint> programs, shaders;
        auto program = std::make_unique<KyShaderProgram>();
        program->create("quad.vert", "quad.frag", tree.folder);
        for (unsigned int frame = context; frame < context + 6; ++frame) {
            const bool green = frame % 2 == 0;
            green ? program->pushMacro("GREEN") : program->removeMacro("GREEN");
            program->setUniform("part", 1.0f);
            program->apply(context);
            EXPECT_EQ(drawn(), ofProgram(green, 255));
            EXPECT_EQ(program->applyUniform("part", 0.2f), able);
            EXPECT_EQ(drawn(), ofProgram(green, 51));
            if (able) {
                GLint inUse = 0;
                GLuint attached[2] = {};
                glGetIntegerv(GL_CURRENT_PROGRAM, &inUse);
                glGetAttachedShaders(static_cast<GLuint>(inUse), 2, nullptr, attached);
                programs.insert(static_cast<GLuint>(inUse));
                shaders.insert(attached, attached + 2);
            }
            program->unUse();
            EXPECT_EQ(drawn(), kWhite);
        }
        EXPECT_EQ(programs.size(), able ? 2U : 0U);
        EXPECT_EQ(shaders.size(), able ? 4U : 0U);
        const auto known = [&] {
            return std::count_if(programs.begin(), programs.end(), glIsProgram) +
                   std::count_if(shaders.begin(), shaders.end(), glIsShader);
        };
        program.reset();
        KyDeferredDeleteMap::deferredDelete(context + 100);
        EXPECT_EQ(known(), able ? 6 : 0);
        KyDeferredDeleteMap::deferredDelete(context);
        EXPECT_EQ(known(), 0);
        EXPECT_EQ(glGetError(), 0U);
        own.release();
    }

    const bool able = !RealGLX::masked();
    const TempShaders tree;
};

// The contexts are made and destroyed on one thread: Mesa now and then crashes when two threads do
// that at once.
TEST_F(MainRoadGLTest, twoThreadsDrawInTheirOwnContextsAndDrainThem) {
    const RealGLX beside;
    beside.release();
    std::thread first([&] { drawAndDrain(*gl, 1); });
    std::thread second([&] { drawAndDrain(beside, 2); });
    first.join();
    second.join();
}

TEST_F(MainRoadGLTest, bothSetsDrawAndTellTheDriversLogs) {
    const char* const vertexText = "void main() { gl_Position = gl_Vertex; }";
    for (const bool core : {false, true}) {
        const auto create = core ? kyglShaderGLSLCreateObject2 : kyglShaderGLSLCreateObject;
        const auto prepare = core ? kyglShaderGLSLPrepareProgram2 : kyglShaderGLSLPrepareProgram;
        const auto link = core ? kyglShaderGLSLLinkProgram2 : kyglShaderGLSLLinkProgram;
        unsigned int vertex = 0, fragment = 7, program = 0;
        const KyResult refused = create("void main() { nonsense = 1; }", fragment, 0);
        EXPECT_EQ(fragment, 0U);
        EXPECT_EQ(std::strstr(refused.message(), "nonsense") != nullptr, able) << refused.text();
        const KyResult made = prepare(vertexText, "void unmade(); void main() { unmade(); }",
                                      &vertex, &fragment, &program);
        EXPECT_EQ(made.ok(), able) << made.text();
        if (!able) continue;
        const KyResult unlinked = link(program);
        EXPECT_NE(std::strstr(unlinked.message(), "unmade"), nullptr) << unlinked.text();
        prepare(vertexText, "void main() { gl_FragColor = vec4(0, 0, 1, 1); }", &vertex, &fragment,
                &program);
        EXPECT_EQ(link(program), KyOK);
        glUseProgram(program);
        EXPECT_EQ(drawn(), (Pixel{0, 0, 255}));
        glUseProgram(0);
    }
}
