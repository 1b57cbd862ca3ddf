#include "support/Messages.h"
#include "support/RecordedGL.h"
#include "support/TempShaders.h"
#include "support/Together.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/kygl.h>
#include <kygl/KyGLText.h>
#include <kygl/KyShader.h>
#include <kygl/KyShaderTechnique.h>
#include <kygl/KyTexture.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

#include <GL/glx.h>  // last: its macros break others

using Lines = std::vector<std::string>;
using Queue = KyDeferredDeleteMap;

// The GLX of this program: the number of the current context is its address, and its XID unless a
// later one has that address.
static std::atomic<GLXContextID> sGeneration{0};
extern "C" GLXContext glXGetCurrentContext() {
    return reinterpret_cast<GLXContext>(static_cast<std::uintptr_t>(RecordedGL::current));
}
extern "C" GLXContextID glXGetContextIDEXT(GLXContext context) {
    return reinterpret_cast<std::uintptr_t>(context) + sGeneration;
}

namespace {

struct ContextWatchTest : testing::Test {
    ContextWatchTest() {
        for (unsigned int id = 0; id < 10; ++id)
            Queue::discard(id);
        tree.write("v", "vertex");
        tree.write("f", "fragment");
        gl.uniforms = {{"height", GL_FLOAT}};
        pixels.create1D("abcd", 1);
        technique.uniforms().setUniform("height", 2.5F);
    }
    ~ContextWatchTest() override {
        KyDiagnostics::disable();
        KyDiagnostics::setQueueLimit(10000);
        pixels.destroy();
        kyglClearAllContexts();
        RecordedGL::current = 0;
    }

    // GL context 30 is that of id 3, and 50 that of id 5.
    static void makeCurrent(unsigned int context) { RecordedGL::current = context; }
    static void set(unsigned int id, unsigned int context) {
        makeCurrent(context);
        kyglSetContext(id);
    }
    // Each operation that is given an id, once.
    void useAll(unsigned int id) {
        technique.compile(id);
        technique.apply(id);
        technique.applyUniform(technique.uniforms().getUniform("height"));
        pixels.bindTexture(id);
        vertex.compile(id);
        Queue::deferredDelete(id);
    }
    // The lines have these beginnings and nothing else comes.
    static void expect(const Lines& lines, const Lines& beginnings) {
        EXPECT_EQ(lines.size(), beginnings.size());
        for (std::size_t i = 0; i < std::min(lines.size(), beginnings.size()); ++i)
            EXPECT_EQ(lines[i].substr(0, beginnings[i].size()), beginnings[i]) << lines[i];
    }

    RecordedGL gl;
    TempShaders tree;
    KyVertexShader vertex{"v", tree.folder, true};
    KyFragmentShader fragment{"f", tree.folder, true};
    KyShaderTechnique technique{&vertex, &fragment};
    KyTexture pixels;
};

}  // namespace

TEST_F(ContextWatchTest, eachOperationInAnotherContextIsOneMessage) {
    Messages messages;
    set(5, 50);
    set(3, 30);
    useAll(3);
    EXPECT_EQ(messages.take(), Lines());
    makeCurrent(50);
    const std::string wrong = " runs while the GL context of id 5 is current: ";
    Lines expected;
    for (const char* const what :
         {"compile(3) of v and f", "apply(3) of v and f", "applyUniform with id 3 of v and f",
          "bindTexture(3)", "compile(3) of v", "deferredDelete(3)"})
        expected.push_back("context 3: error: " + (what + wrong));
    for (int frame = 0; frame < 1000; ++frame) {
        useAll(3);
        makeCurrent(30);
        useAll(3);  // right in between, so the fault does not end
        makeCurrent(50);
    }
    expect(messages.take(), expected);
    makeCurrent(0);
    technique.apply(3);
    makeCurrent(70);
    technique.apply(3);
    expect(
        messages.take(),
        {"context 3: error: apply(3) of v and f runs while no GL context is current: ",
         "context 3: error: apply(3) of v and f runs while a GL context is current that is not "});
    EXPECT_EQ(messages.end().size(), 6U) << "counts";
}

TEST_F(ContextWatchTest, textIsDrawnInTheContextOfTheIdThatTheThreadHasSet) {
    Messages messages(KyDiagnostics::Context);
    set(5, 50);
    set(3, 30);
    KyGLText::render(0, 0, 0, "a");
    EXPECT_EQ(messages.take(), Lines());
    makeCurrent(50);
    KyGLText::render(0, 0, 0, "a");
    KyGLText::render(0, 0, 0, L"a");
    expect(messages.take(),
           {"context 3: error: KyGLText::render with id 3 runs while the GL context of id 5 is "});
}

TEST_F(ContextWatchTest, aDrainInAnotherContextIsReportedBeforeItDeletes) {
    Messages messages;
    set(5, 50);
    set(3, 30);
    Queue::pushTextureHandle(1, 3);
    makeCurrent(50);
    Lines before;
    gl.on["glDeleteTextures"] = [&] { before = messages.take(); };
    Queue::deferredDelete(3);
    EXPECT_EQ(before,
              Lines{"context 3: error: deferredDelete(3) runs while the GL context of id 5 is "
                    "current: it deletes objects of that context that have the same names; make "
                    "the context of id 3 current first"});
    EXPECT_EQ(Queue::pending(3).total(), 0);
}

TEST_F(ContextWatchTest, anIdIsJudgedByTheContextThatItWasSetForWhileOn) {
    set(3, 30);
    Messages messages;
    makeCurrent(50);
    technique.apply(3);
    EXPECT_EQ(messages.take(), Lines()) << "nobody knows what it was set for";
    technique.apply(9);
    expect(messages.take(), {"context 9: warning: apply(9) of v and f uses an id that was never "});
    set(3, 30);
    makeCurrent(50);
    technique.apply(3);
    EXPECT_EQ(messages.end().size(), 1U);
    set(3, 50);
    const Messages anew;
    technique.apply(3);
    EXPECT_EQ(messages.take(), Lines()) << "it was set while off";
}

TEST_F(ContextWatchTest, anIdThatChangesItsContextIsReported) {
    Messages messages;
    kyglSetContext(5);
    expect(messages.take(),
           {"context 5: warning: kyglSetContext(5) registers the id while no GL "});
    set(5, 50);
    set(3, 30);
    for (int frame = 0; frame < 9; ++frame)
        set(3, frame % 2 != 0 ? 30 : 50);
    expect(messages.take(),
           {"context 3: warning: kyglSetContext(3) runs while the GL context of id 5 is current: ",
            "context 3: warning: kyglSetContext(3) runs while a GL context is current that is "});
    technique.apply(3);
    EXPECT_EQ(messages.take(), Lines()) << "the last one counts";
    kyglSetContext(5);
    kyglClearContext(3);
    messages.take();  // a count
    set(3, 30);
    ++sGeneration;  // another context at the old address
    kyglSetContext(3);
    expect(messages.take(),
           {"context 3: warning: kyglSetContext(3) runs while a GL context is current that is "});
}

TEST_F(ContextWatchTest, aContextAtTheAddressOfAnotherIsNoticedInTime) {
    Messages messages;
    set(3, 30);
    technique.apply(3);
    ++sGeneration;
    for (int i = 0; i < 1002; ++i)
        technique.apply(3);
    EXPECT_EQ(messages.take().size(), 1U);
    ++sGeneration;
    Queue::deferredDelete(3);
    EXPECT_EQ(messages.take().size(), 1U) << "a drain looks closely";
}

TEST_F(ContextWatchTest, namesThatOutliveTheirIdAreReported) {
    Messages messages;
    const auto fill = [](unsigned int id) {
        set(id, id * 10);
        Queue::pushShaderHandle(1, id);
        Queue::pushShaderHandle(2, id);
        Queue::pushBufferHandle(3, id);
    };
    fill(3);
    kyglClearContext(3);  // that of the thread stays
    EXPECT_EQ(messages.take(), Lines());
    fill(5);
    kyglClearContext(3);
    expect(messages.take(), {"context 3: warning: kyglClearContext(3) forgets id 3 while 3 of its "
                             "GL names wait for deletion (2 shaders, 1 buffer): "});
    Queue::discard(3);
    kyglClearAllContexts();
    expect(messages.take(), {"context 5: warning: kyglClearAllContexts() forgets id 5 while 3 "});
}

TEST_F(ContextWatchTest, aPendingErrorIsNamedAndTakenAway) {
    Messages messages;
    set(3, 30);
    gl.errors = {GL_INVALID_ENUM, GL_OUT_OF_MEMORY, GL_INVALID_ENUM};
    EXPECT_TRUE(technique.compile(3)) << "it failed the build";
    expect(messages.take(), {"context 3: error: GL_INVALID_ENUM and GL_OUT_OF_MEMORY were pending "
                             "when compile(3) of v and f began"});
    technique.apply(3);
    gl.errorReads = 0;
    technique.apply(3);
    EXPECT_EQ(gl.errorReads, 4) << "one, and those of the apply";
    gl.errors.assign(99, GL_INVALID_VALUE);  // a context that is lost
    Queue::deferredDelete(3);
    EXPECT_EQ(gl.errors.size(), 88U);
    gl.errors.assign(1, GL_INVALID_VALUE);
    makeCurrent(0);
    Queue::deferredDelete(3);
    EXPECT_EQ(gl.errors.size(), 1U) << "without a context there is no error to ask for";
}

TEST_F(ContextWatchTest, namesThatPileUpAreReportedByKindUntilTheyAreDrained) {
    KyDiagnostics::setQueueLimit(10);
    Messages messages(KyDiagnostics::Queue);
    const auto push = [&](int count, unsigned int id) {
        while (count-- > 0)
            (count % 2 != 0 ? Queue::pushShaderHandle : Queue::pushTextureHandle)(1, id);
        return messages.take();
    };
    EXPECT_EQ(push(10, 5), Lines());
    EXPECT_EQ(push(10, 3), Lines());
    expect(push(5, 3),
           {"context 3: warning: 11 GL names of id 3 wait for deletion (5 shaders, 6 "});
    EXPECT_EQ(push(7, 3), Lines()) << "so many are no news";
    expect(push(1, 3), {"context 3: warning: 23 GL names of id 3"});
    expect(push(1, 5), {"context 5: warning: 11 GL names of id 5"});
    Queue::deferredDelete(3);
    Queue::discard(5);
    EXPECT_EQ(push(10, 5), Lines());
    EXPECT_EQ(push(11, 3).size(), 1U);
    const Messages anew(KyDiagnostics::Queue);
    EXPECT_EQ(push(1, 5), Lines());
    EXPECT_EQ(messages.end(), Lines());
}

TEST_F(ContextWatchTest, theHandlerOfAPushMayUseTheQueue) {
    KyDiagnostics::setQueueLimit(2);
    long waiting = 0;
    KyDiagnostics::enable(
        [](const KyDiagnostics::Message& message, void* number) {
            *static_cast<long*>(number) = Queue::pending(message.context).total();
            Queue::pushBufferHandle(1, message.context);
        },
        &waiting, KyDiagnostics::Queue);
    for (int i = 0; i < 3; ++i)
        Queue::pushBufferHandle(1, 3);
    EXPECT_EQ(waiting, 3);
    EXPECT_EQ(Queue::pending(3).total(), 4);
}

TEST_F(ContextWatchTest, offTheLibraryDoesWhatItDidBeforeItWasOn) {
    const auto run = [&](unsigned int id) {
        const long before = Allocations::count;
        set(id, id);
        useAll(id);
        kyglSetContext(5);
        useAll(id);
        Queue::pushShaderHandle(8, id);
        Queue::discard(id);
        kyglClearContext(id);
        return std::pair(Allocations::count - before, gl.takeCalls());
    };
    set(5, 50);
    run(1);
    run(2);
    const auto [allocations, calls] = run(3);
    gl.errorReads = 0;
    run(4);
    const int reads = gl.errorReads;
    {
        const Messages messages;
        useAll(5);
    }
    run(6);
    gl.errorReads = 0;
    const auto [allocationsAfter, callsAfter] = run(7);
    EXPECT_EQ(allocationsAfter, allocations);
    EXPECT_EQ(callsAfter.size(), calls.size());
    EXPECT_EQ(gl.errorReads, reads);
}

TEST_F(ContextWatchTest, aSteadyApplyAllocatesNothingWhileOn) {
    const Messages messages;
    set(3, 30);
    technique.apply(3);
    technique.apply(3);
    gl.calls.clear();
    const long before = Allocations::count;
    for (int i = 0; i < 600; ++i)
        technique.apply(3);
    EXPECT_EQ(Allocations::count, before);
}

TEST_F(ContextWatchTest, anyThreadMayTurnItOnAndOff) {
    std::atomic<int> working{3};
    runTogether(4, [&](unsigned int i) {
        if (i == 3)
            while (working > 0) {
                Messages messages;
                std::this_thread::yield();
                messages.end();
            }
        else {
            for (unsigned int n = 0; n < 500; ++n) {
                set(i, n % 3 == 0 ? 30 : i);
                Queue::pushShaderHandle(1, n % 4);
                Queue::deferredDelete(n % 4);
            }
            --working;
        }
    });
}
