/// Many threads over many contexts, against a model that takes no lock: a lock of its own would
/// hide from ThreadSanitizer one that the library lacks.
#include "../support/RecordedGL.h"
#include "../support/Together.h"
#include "Rounds.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/KyDiagnostics.h>
#include <kygl/kygl.h>
#include <kygl/KyGLText.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <random>

namespace {

constexpr unsigned int kThreads = 64, kContexts = 1000;

// A name tells its context. What a thread does here is seen by no other.
std::array<std::atomic<long>, kContexts + 1> sPushed, sDeleted;
std::atomic<long> sWrong, sMessages;

void countDeleted(GLuint name) {
    const unsigned int context = name % (kContexts + 1);
    sDeleted[context].fetch_add(1, std::memory_order_relaxed);
    if (context != RecordedGL::current) sWrong.fetch_add(1, std::memory_order_relaxed);
}

bool canDoGLSL(unsigned int context) {
    return context % 2 == 1;
}
const GLubyte* words(GLenum name) {
    const char* text =
        "GL_ARB_shading_language_100 GL_ARB_shader_objects GL_ARB_fragment_shader "
        "GL_ARB_vertex_shader";
    if (!canDoGLSL(RecordedGL::current)) text = "";
    return reinterpret_cast<const GLubyte*>(name == GL_VERSION ? "2.1" : text);
}

template <typename Pointer>
struct NoOp;
template <typename Result, typename... Arguments>
struct NoOp<Result (*)(Arguments...)> {
    static Result call(Arguments...) { return Result(); }
};

struct QuietGL : RecordedGL {  // which puts the driver's entry points back
    QuietGL() {
#define SILENCE(Result, Name, Parameters) __glew##Name = NoOp<decltype(__glew##Name)>::call;
        SOGL_ENTRY_POINTS(SILENCE)
#undef SILENCE
        __glewGetString = words;
        __glewGenLists = [](GLsizei) { return GLuint{1}; };
        __glewDeleteObjectARB = __glewDeleteProgram = countDeleted;
        __glewDeleteTextures =
            __glewDeleteBuffers = [](GLsizei, const GLuint* name) { countDeleted(*name); };
    }
};

unsigned int any(std::mt19937& random, unsigned int count) {
    return static_cast<unsigned int>(random() % count);
}

void push(std::mt19937& random) {
    using Queue = KyDeferredDeleteMap;
    constexpr decltype(&Queue::pushShaderHandle) kPushes[] = {
        Queue::pushShaderHandle, Queue::pushTehniqueHandle, Queue::pushTextureHandle,
        Queue::pushBufferHandle};
    const unsigned int context = 1 + any(random, kContexts);
    const unsigned int name = context + (kContexts + 1) * any(random, 1000);
    sPushed[context].fetch_add(1, std::memory_order_relaxed);
    kPushes[any(random, 4)](name, context);
}

// Diagnostics come and go while others report.
void turnOnOrOff(std::mt19937& random) {
    const unsigned int choice = any(random, 16);
    if (choice == 0)
        KyDiagnostics::enable([](const KyDiagnostics::Message& message, void*) {
            KyDeferredDeleteMap::pending(message.context);
            sMessages.fetch_add(1, std::memory_order_relaxed);
        });
    if (choice == 1) KyDiagnostics::disable();
}

// The thread's own contexts are its number and every 64th from there on. @return what went wrong
long visit(unsigned int context, std::mt19937& random) {
    long wrong = 0;
    const auto expect = [&](bool good) { wrong += good ? 0 : 1; };
    turnOnOrOff(random);
    RecordedGL::current = context;
    kyglSetContext(context);
    expect(kyglGetContext() == context);
    expect(kyglGLSLAvailable(context) == canDoGLSL(context));
    const unsigned int other = 1 + any(random, kContexts);
    expect(!kyglGLSLAvailable(other) || canDoGLSL(other));
    kyglVBOsAvailableAllContexts();

    const auto pixels = static_cast<int>(10 + context % 20);
    KyGLText::setFont(pixels, false, false, "courier");
    int width = 0, height = 0;
    expect(KyGLText::textExtent("abc", width, height) == 1 && width == 3 * pixels);
    KyGLText::render(0, 0, 0, "abc");

    for (int i = 0; i < 8; ++i)
        push(random);
    KyDeferredDeleteMap::deferredDelete(context);
    expect(kyglGetContext() == context);
    return wrong;
}

}  // namespace

TEST(StormThreads, sixtyFourThreadsOverAThousandContexts) {
    KyGLText::setDisplay(reinterpret_cast<_XDisplay*>(&sWrong));
    long visits = 0;
    {
        const QuietGL gl;
        for (Rounds rounds; rounds.goOn() || visits < 40L * kContexts; visits += kContexts) {
            runTogether(kThreads, [](unsigned int thread) {
                std::mt19937 random(std::random_device{}());
                for (unsigned int context = 1 + thread; context <= kContexts; context += kThreads) {
                    sWrong.fetch_add(visit(context, random), std::memory_order_relaxed);
                    if (context > kThreads && any(random, 2) == 0)
                        kyglClearContext(context - kThreads);
                }
            });
            for (unsigned int context = 1; context <= kContexts; ++context) {
                RecordedGL::current = context;
                KyDeferredDeleteMap::deferredDelete(context);
                ASSERT_EQ(sDeleted[context], sPushed[context]) << context;
            }
            kyglClearAllContexts();
        }
        RecordedGL::current = 0;
    }
    KyDiagnostics::disable();
    KyGLText::setDisplay(nullptr);
    EXPECT_EQ(sWrong, 0);
    EXPECT_GT(sMessages, 0);
    std::printf("places tried: %ld, faults found: %ld\n", visits, sWrong.load());
}
