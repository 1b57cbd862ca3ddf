#include "support/RecordedGL.h"
#include "support/Together.h"

#include <kygl/KyDeferredDeleteMap.h>

#include <gtest/gtest.h>

#include <tuple>

using Queue = KyDeferredDeleteMap;
using Calls = std::vector<std::string>;

constexpr void (*kPush[])(unsigned int, unsigned int) = {
    Queue::pushShaderHandle, Queue::pushTehniqueHandle, Queue::pushTextureHandle,
    Queue::pushBufferHandle};

// The queue is one for the process: each test drains what it queued.
struct DeferredDeleteTest : testing::Test {
    Calls drain(unsigned int context) {
        Queue::deferredDelete(context);
        return gl.takeCalls();
    }
    RecordedGL gl;
};

// Ahead of all others: where each test has a process of its own, this is the first use.
TEST_F(DeferredDeleteTest, manyThreadsMayMakeTheFirstCallAtOnce) {
    constexpr unsigned int kThreads = 32;
    runTogether(kThreads, [](unsigned int i) { Queue::pushBufferHandle(i, 1); });
    EXPECT_EQ(drain(1).size(), kThreads);
}

TEST_F(DeferredDeleteTest, kindsGoInOrderAndTheLastQueuedFirst) {
    const std::tuple<int, unsigned int, unsigned int> pushes[] = {
        {3, 2, 1}, {2, 3, 1}, {1, 4, 1}, {0, 5, 1}, {0, 6, 2}, {0, 0, 1}, {0, 8, 2}, {0, 5, 1}};
    for (const auto& [kind, handle, context] : pushes)
        kPush[kind](handle, context);
    EXPECT_EQ(drain(3), Calls()) << "a push made a GL call, or a drain of nothing did";
    gl.failNext("glDeleteProgram", GL_INVALID_VALUE);
    EXPECT_EQ(drain(1),
              (Calls{"glDeleteObjectARB(5)", "glDeleteObjectARB(0)", "glDeleteObjectARB(5)",
                     "glDeleteProgram(4)", "glDeleteTextures(1, &3)", "glDeleteBuffers(1, &2)"}));
    EXPECT_EQ(gl.errorReads, 7) << "one for each object, and one more behind the error";
    EXPECT_EQ(drain(1), Calls()) << "an object was deleted twice";
    EXPECT_EQ(drain(2), (Calls{"glDeleteObjectARB(8)", "glDeleteObjectARB(6)"}));
}

TEST_F(DeferredDeleteTest, aContextThatIsGoneLeavesItsNamesToNobody) {
    for (unsigned int i = 0; i < 40; ++i)
        for (unsigned int kind = 0; kind <= i % 4; ++kind)
            kPush[kind](i, i / 4 % 2);
    const auto [shaders, programs, textures, buffers] = Queue::pending(1);
    EXPECT_EQ(std::tie(shaders, programs, textures, buffers), std::tuple(20L, 15L, 10L, 5L));
    EXPECT_EQ(Queue::pending().total(), 100);
    EXPECT_EQ(Queue::discard(1), 50);
    EXPECT_EQ(drain(0).size(), 50U);
}
