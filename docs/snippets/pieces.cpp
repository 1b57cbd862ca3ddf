/// The pieces of code in the guide and in the README, each in a test that sees it do what is said.
#include "support/RealGLX.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/KyDiagnostics.h>
#include <kygl/kygl.h>
#include <kygl/KyGLText.h>
#include <kygl/KyShader.h>
#include <kygl/KyShaderBuild.h>
#include <kygl/KyShaderMacro.h>
#include <kygl/KyShaderProgram.h>
#include <kygl/KyTexture.h>
#include <sogl/SoError.h>
#include <sogl/SoGLEW.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <GL/gl.h>

namespace {

using Pixel = std::array<unsigned char, 3>;
constexpr Pixel kInk = {0, 51, 102};
constexpr Pixel kPaper = {255, 255, 255};
constexpr char kRoot[] = KYGL_SOURCE_FOLDER;

std::mutex sLogMutex;
std::vector<std::string> sLog;

void writeLog(const char* kind, const char* text) {
    const std::lock_guard<std::mutex> hold(sLogMutex);
    sLog.push_back(std::string(kind) + ": " + text);
}

std::string takeLog() {
    std::string text;
    for (const std::string& line : std::exchange(sLog, {}))
        text += line + "\n";
    return text;
}

void drawGround() {
    glRectf(-1, -1, 1, 1);
}

Pixel pixelAt(int x, int y) {
    Pixel pixel = {};
    glReadPixels(x, y, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, pixel.data());
    return pixel;
}

// Draws with what is in use, and looks at a pixel that is paper with RINGS 4.
Pixel drawn() {
    glClear(GL_COLOR_BUFFER_BIT);
    drawGround();
    return pixelAt(48, 32);
}

//! [thread]
// Runs once for each surface, on a thread of its own. A surface is the application's: a GL context
// and what it draws to.
template <typename Surface>
void drawSide(const Surface& surface, unsigned int context) {
    surface.makeCurrent();
    kyglSetContext(context);

    KyShaderProgram program;
    program.create("disc.vert", "disc.frag", "guide");
    program.setUniform("radius", 2.0F);
    program.apply(context);
    glRectf(-1, -1, 1, 1);
    program.unUse();

    program.deleteProgram();
    KyDeferredDeleteMap::deferredDelete(context);
    surface.release();
}
//! [thread]

// Context 3 is current, and a program is at hand that draws the whole buffer with ink.
struct Guide : RealGLXTest {
    void SetUp() override {
        RealGLXTest::SetUp();
        if (gl == nullptr) return;
        KyShader::mFolderPath = kRoot;
        kyglSetContext(3);
        program.create("disc.vert", "disc.frag", "guide");
        program.setUniform("radius", 2.0F);
    }
    void TearDown() override {
        KyDiagnostics::disable();
        program.deleteProgram();
        if (gl != nullptr) KyDeferredDeleteMap::deferredDelete(3);
        kyglClearAllContexts();
    }
    KyShaderProgram program;
};

TEST_F(Guide, readme) {
    const KyString root(kRoot);
    //! [readme]
    KyDiagnostics::enable();       // report mistakes: the library is silent otherwise
    KyShader::mFolderPath = root;  // files are in root/share/shaders/

    // on the thread of a context, with that context current
    kyglSetContext(3);  // "this is number 3"
    KyShaderProgram terrain;
    terrain.create("terrain.vert", "terrain.frag", "gallery");
    terrain.pushMacro("CONTOURS");
    terrain.setUniform("exaggeration", 2.5F);

    terrain.apply(3);  // the first time builds, later times find
    drawGround();
    terrain.unUse();

    KyDeferredDeleteMap::deferredDelete(3);  // deletes what died since, wherever that was
    //! [readme]
    EXPECT_TRUE(terrain.compile(3));
}

TEST_F(Guide, threads) {
    const RealGLX& leftSurface = *gl;
    const RealGLX rightSurface;
    leftSurface.release();
    rightSurface.release();
    //! [threads]
    std::thread left([&] { drawSide(leftSurface, 1); });
    std::thread right([&] { drawSide(rightSurface, 2); });
    left.join();
    right.join();
    kyglClearContext(1);
    kyglClearContext(2);
    //! [threads]
    for (const RealGLX* surface : {&leftSurface, &rightSurface}) {
        surface->makeCurrent();
        EXPECT_EQ(pixelAt(32, 32), kInk);
    }
    EXPECT_EQ(KyDeferredDeleteMap::pending().total(), 0);
    gl->makeCurrent();
}

TEST_F(Guide, switchesMacros) {
    for (const bool rings : {true, false}) {
        //! [switch]
        static const KyString kRings("RINGS 4");
        if (rings)
            program.pushMacro(kRings);
        else
            program.removeMacro(kRings);
        program.apply(3);
        //! [switch]
        EXPECT_EQ(drawn(), rings ? kPaper : kInk);
    }
    //! [sets]
    KyShaderParametersMacros coarse;
    KyShaderParametersMacros fine;
    coarse.pushMacro("RINGS 1");
    fine.pushMacro("RINGS 4");

    program.setParameter(coarse);
    program.apply(3);
    //! [sets]
    EXPECT_EQ(drawn(), kInk);
    program.setParameter(fine);
    program.apply(3);
    EXPECT_EQ(drawn(), kPaper);
}

TEST_F(Guide, showsTheTextForTheGL) {
    //! [source]
    KyFragmentShader shader("disc.frag", "guide", false);
    shader.pushParameter("RINGS 4");
    const KyString text = shader.loadFromFile();  // what the GL would get; no GL is needed
    //! [source]
    EXPECT_EQ(std::string(text.dataPtr()).find("#define RINGS 4\n\n\nconst vec3 paper"), 0U);
}

TEST_F(Guide, sendsUniforms) {
    //! [uniforms]
    program.setUniform("radius", 2.0F);  // kept, and sent at every apply
    program.setUniform("absent", 5);     // no such uniform in the shaders: no error, nothing sent
    program.setUniform("radius", 2);     // null: the name holds a float

    program.apply(3);
    glRectf(-1, -1, 1, 1);
    program.applyUniform("radius", 0.5F);  // kept, and sent at once
    glRectf(-1, -1, 1, 1);
    program.unUse();
    //! [uniforms]
    EXPECT_EQ(pixelAt(32, 32), kInk);
    EXPECT_EQ(pixelAt(60, 32), kPaper);
    EXPECT_EQ(program.setUniform("radius", 2), nullptr);
}

TEST_F(Guide, sendsOnlyWhatChanged) {
    program.setUniform("radius", 2.0F);
    program.compile(3);
    //! [uniformMode]
    program.setUniformMode(KyShaderProgram::UniformMode::ChangesOnly);
    program.apply(3);  // asks for each location once, and sends each value
    program.apply(3);  // sends nothing
    program.setUniform("radius", 0.5F);
    program.apply(3);  // sends the radius
    //! [uniformMode]
    GLint name = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &name);
    const GLint radiusLocation = glGetUniformLocation(static_cast<GLuint>(name), "radius");
    //! [uniformMode]

    glUniform1f(radiusLocation, 2.0F);  // the application's own call,
    program.forgetSent();               // after which nothing counts as sent
    //! [uniformMode]
    program.apply(3);
    glRectf(-1, -1, 1, 1);
    program.unUse();
    EXPECT_EQ(pixelAt(32, 32), kInk);
    EXPECT_EQ(pixelAt(60, 32), kPaper);
}

TEST_F(Guide, drawsText) {
    //! [text]
    KyGLText::setFont(18, true, false, "helvetica");
    KyGLText::setForeground(1, 1, 1, 1);
    KyGLText::setAlignment(0, 0);  // the middle of the block lies at the position

    int width = 0;
    int height = 0;
    KyGLText::textExtent("1,008\nm", width, height);  // 2 lines
    KyGLText::render(0, 0, 0, "1,008\nm");
    //! [text]
    EXPECT_GT(width, 20);
    EXPECT_EQ(glGetError(), 0U);
    std::vector<unsigned char> reds(64UL * 64);
    glReadPixels(0, 0, 64, 64, GL_RED, GL_UNSIGNED_BYTE, reds.data());
    EXPECT_GT(std::count(reds.begin(), reds.end(), 255), 50);
}

TEST_F(Guide, bindsATexture) {
    const std::vector<std::array<unsigned char, 4>> rgba(256, {kInk[0], kInk[1], kInk[2], 255});
    //! [texture]
    KyTexture colours;
    colours.create1D(rgba.data(), 256);  // a copy; no GL yet

    if (colours.bindTexture(3) != 0) {
        glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glEnable(GL_TEXTURE_1D);
        drawGround();
        glDisable(GL_TEXTURE_1D);
    }
    colours.destroy();  // before it dies
    //! [texture]
    EXPECT_EQ(KyDeferredDeleteMap::pending(3).textures, 1);
    EXPECT_EQ(pixelAt(32, 32), kInk);
}

TEST_F(Guide, drains) {
    unsigned int name = 0;
    glGenTextures(1, &name);
    glBindTexture(GL_TEXTURE_2D, name);
    std::thread anywhere([&] {
        //! [push]
        KyDeferredDeleteMap::pushTextureHandle(name, 3);  // on any thread, in any context or none
        //! [push]
    });
    anywhere.join();
    EXPECT_EQ(glIsTexture(name), GL_TRUE);
    //! [drain]
    if (KyDeferredDeleteMap::pending(3).total() > 0)
        KyDeferredDeleteMap::deferredDelete(3);  // context 3 is current
    //! [drain]
    EXPECT_EQ(glIsTexture(name), GL_FALSE);
}

TEST_F(Guide, endsAContext) {
    KyTexture colours;
    program.apply(3);
    //! [end]
    // with context 3 current for the last time
    program.deleteProgram();
    colours.destroy();
    KyGLText::cleanUp();
    KyDeferredDeleteMap::deferredDelete(3);
    //! [end]
    //! [clear]
    kyglSetContext(4);    // this thread has another current context by now
    kyglClearContext(3);  // of the thread's own current context it would do nothing
    //! [clear]
    EXPECT_FALSE(kyglGLSLAvailable(3));
    EXPECT_EQ(KyDeferredDeleteMap::pending().total(), 0);
    program.create("disc.vert", "disc.frag", "guide");
    program.apply(3);
    //! [gone]
    program.deleteProgram();
    colours.destroy();
    const long forgotten = KyDeferredDeleteMap::discard(3);  // no GL call
    //! [gone]
    EXPECT_EQ(forgotten, 3);
}

TEST_F(Guide, explainsMistakes) {
    testing::internal::CaptureStderr();
    //! [enable]
    KyDiagnostics::enable();  // where the program starts
    //! [enable]
    program.create("disc.vert", "disk.frag", "guide");
    program.compile(3);
    const std::string lines = testing::internal::GetCapturedStderr();
    EXPECT_NE(lines.find("/share/shaders/guide/disk.frag: error: cannot be read: "), lines.npos);
    //! [handler]
    KyDiagnostics::enable([](const KyDiagnostics::Message& message, void*) {
        const bool isError = message.severity == KyDiagnostics::Severity::Error;
        writeLog(isError ? "mistake" : "hint", message.text);
    });
    //! [handler]
    program.compile(3);
    EXPECT_EQ(takeLog().find("mistake: cannot be read: "), 0U);
}

TEST_F(Guide, reportsErrors) {
    //! [reports]
    KyResult::setReporter([](const KyResult& result, KyResult::Report kind) {
        writeLog(kind == KyResult::Report::Check ? "unexpected" : "notice", result.text());
    });
    SoError::setHandler([](const char* text) { writeLog("toolkit", text); });
    //! [reports]
    //! [check]
    glEnable(GL_TEXTURE);  // no such capability
    kyglErrorCheck("glEnable(GL_TEXTURE)", "viewer/ground", __LINE__, 1);
    //! [check]
    SoError::post("a word");
    SoError::setHandler(nullptr);
    KyResult::setReporter(nullptr);
    const std::string log = takeLog();
    EXPECT_EQ(log.find("notice: viewer/ground:"), 0U) << log;
    EXPECT_NE(log.find("toolkit: a word"), std::string::npos) << log;
}

TEST_F(Guide, observesBuilds) {
    //! [observer]
    KyShaderBuild::setObserver([](const KyShaderBuild& build, void*) {
        const char* const result = build.result.ok() ? "built" : "not built";
        for (const KyShaderBuild::Stage& stage : {build.vertex, build.fragment})
            if (stage.file != nullptr) writeLog(result, stage.file);
        for (long i = 0; i < build.messageCount; ++i)
            writeLog("message", build.messages[i].line);
    });
    //! [observer]
    program.compile(3);
    EXPECT_EQ(takeLog(),
              "built: disc.vert\nbuilt: disc.frag\nbuilt: disc.vert\nbuilt: disc.frag\n");
    program.pushFragmentMacro("vec3 none");  // #define vec3 none: the included file makes no sense
    EXPECT_FALSE(program.compile(3));
    KyShaderBuild::setObserver(nullptr);
    const std::string log = takeLog();
    EXPECT_EQ(log.find("not built: disc.frag\nmessage: /"), 0U);
    EXPECT_NE(log.find("/share/shaders/guide/colours.glsl:1: error: "), log.npos) << log;
}

}  // namespace
