#include "support/Messages.h"
#include "support/RealGLX.h"
#include "support/Reports.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/kygl.h>
#include <kygl/kyglShaderGLSL.h>
#include <sogl/SoGLContext.h>
#include <sogl/SoGLEW.h>
#include <sogl/SoGLXEW.h>

#include <set>
#include <thread>

using ContextGLTest = RealGLXTest;

TEST_F(ContextGLTest, theDriversAnswersReachTheRegistry) {
    kyglSetContext(1);
    const bool programs = !RealGLX::masked();
    EXPECT_TRUE(kyglVBOsAvailable(1));
    EXPECT_EQ(kyglGLSLAvailable(1), programs);
    EXPECT_EQ(kyglShaderGLSLAvailable(), programs);
    const GLEWContextStruct& flags = *SoGLContext::glewGetCurrentContextIV(true);
    EXPECT_EQ(flags.ARB_vertex_program != 0, programs);
    EXPECT_EQ(flags.ARB_fragment_program != 0, programs);
    EXPECT_TRUE(flags.VERSION_1_4);
    SoGLXEW::GLXEWContextStruct glx = {};
    EXPECT_EQ(SoGLXEW::glxewContextInit(&glx), 0U);
    EXPECT_TRUE(glx.VERSION_1_3 && glx.VERSION_1_4 && glx.ARB_create_context);
    EXPECT_EQ(glGetError(), 0U) << "asking left an error behind";
    kyglClearAllContexts();
}

TEST_F(ContextGLTest, eachContextHasItsOwnObjectWhicheverThreadAsks) {
    SoGLContext* const first = SoGLContext::getCurrent(false);
    const RealGLX beside(gl.get());
    SoGLContext* const second = SoGLContext::getCurrent(false);
    EXPECT_NE(first, second);
    gl->makeCurrent();
    EXPECT_EQ(SoGLContext::getCurrent(false), first);
    std::thread([&] {
        const Reports reports;
        EXPECT_EQ(SoGLContext::glewGetCurrentContextIV(false), nullptr);
        EXPECT_FALSE(kyglShaderGLSLAvailable());
        EXPECT_TRUE(reports.posts.empty());
        EXPECT_EQ(SoGLContext::glewGetCurrentContextIV(true), nullptr);
        ASSERT_EQ(reports.posts.size(), 1U);
        EXPECT_EQ(reports.posts[0], "SoGLContext : Trying to access a NULL context");
        beside.makeCurrent();
        EXPECT_EQ(SoGLContext::getCurrent(false), second);
        beside.release();
    }).join();
    gl->release();
    EXPECT_EQ(SoGLContext::getCurrent(false), nullptr);
}

// Also where the driver gives a new context the address of the old one.
TEST_F(ContextGLTest, diagnosticsKnowTheContextOfAnId) {
    Messages messages;
    kyglSetContext(1);
    KyDeferredDeleteMap::deferredDelete(1);
    EXPECT_TRUE(messages.take().empty());
    glEnable(GL_TEXTURE_BINDING_1D);  // no such capability
    KyDeferredDeleteMap::deferredDelete(1);
    EXPECT_EQ(messages.take().at(0).find("context 1: error: GL_INVALID_ENUM was pending"), 0U);
    gl = std::make_unique<RealGLX>();
    KyDeferredDeleteMap::deferredDelete(1);
    EXPECT_EQ(messages.take().size(), 1U);
    kyglClearAllContexts();
}

// Drivers hand out the address of a destroyed context again, on one connection and on the next.
TEST_F(ContextGLTest, aNewContextAtAnOldAddressIsNotMistaken) {
    for (const bool oneConnection : {true, false}) {
        std::set<void*> addresses;
        bool reused = false;
        for (int i = 0; i < 200 && !reused; ++i) {
            const RealGLX fresh(oneConnection ? gl.get() : nullptr);
            reused = !addresses.insert(fresh.context()).second;
            GLEWContextStruct* const flags = SoGLContext::glewGetCurrentContextIV(false);
            EXPECT_EQ(flags->ARB_vertex_buffer_object, 1) << "the flags of a dead context";
            flags->ARB_vertex_buffer_object = 99;
            EXPECT_EQ(SoGLContext::glewGetCurrentContextIV(false)->ARB_vertex_buffer_object, 99);
        }
        if (!reused) GTEST_SKIP() << "no address came twice";
    }
}
