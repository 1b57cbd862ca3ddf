#include "support/Allocations.h"
#include "support/RecordedGL.h"
#include "support/Together.h"

#include <kygl/KyDeferredDeleteMap.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using Queue = KyDeferredDeleteMap;
using Calls = std::vector<std::string>;

constexpr void (*kPush[])(unsigned int, unsigned int) = {
    Queue::pushShaderHandle, Queue::pushTehniqueHandle, Queue::pushTextureHandle,
    Queue::pushBufferHandle};

std::string deletion(std::size_t kind, unsigned int handle) {
    const char* const calls[] = {"glDeleteObjectARB(", "glDeleteProgram(", "glDeleteTextures(1, &",
                                 "glDeleteBuffers(1, &"};
    return calls[kind] + std::to_string(handle) + ')';
}

// The queue is one for the process: each test drains what it queued.
struct DeferredDeleteTest : testing::Test {
    Calls drain(unsigned int context) {
        Queue::deferredDelete(context);
        return gl.takeCalls();
    }
    RecordedGL gl;
};

// Ahead of all others: where each test has a process of its own, this is the first use.
TEST_F(DeferredDeleteTest, manyThreadsMayMakeTheFirstCallAtOnceAndLoseNothing) {
    constexpr unsigned int kThreads = 8;
    constexpr unsigned int kEach = 500;
    std::vector<Queue*> maps(kThreads);
    runTogether(kThreads, [&](unsigned int t) {
        maps[t] = Queue::getMap();
        for (unsigned int i = 0; i < kEach; ++i) {
            kPush[i % 4](t * kEach + i, t % 2);
            if (i % 50 == 0) Queue::deferredDelete(t % 2);
        }
    });
    EXPECT_EQ(std::count(maps.begin(), maps.end(), maps[0]), kThreads);
    Queue::deferredDelete(0);
    Queue::deferredDelete(1);
    Calls all;
    for (unsigned int i = 0; i < kThreads * kEach; ++i)
        all.push_back(deletion(i % 4, i));
    std::sort(all.begin(), all.end());
    std::sort(gl.calls.begin(), gl.calls.end());
    EXPECT_EQ(gl.calls, all);
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
        for (std::size_t kind = 0; kind <= i % 4; ++kind)
            kPush[kind](i, i % 2);
    const Queue::Pending waiting = Queue::pending(1);
    EXPECT_EQ((Calls{std::to_string(waiting.shaders), std::to_string(waiting.programs),
                     std::to_string(waiting.textures), std::to_string(waiting.buffers)}),
              (Calls{"20", "20", "10", "10"}));
    EXPECT_EQ(Queue::pending().total(), 100);
    EXPECT_EQ(Queue::discard(1), 60);
    EXPECT_EQ(Queue::discard(1), 0);
    EXPECT_EQ(drain(1), Calls());
    EXPECT_EQ(Queue::pending().total(), 40);
    EXPECT_EQ(drain(0).size(), 40U);
}

TEST_F(DeferredDeleteTest, mixedContextsComeOutAsFromPlainLists) {
    std::mt19937 random(3);
    std::vector<std::pair<unsigned int, unsigned int>> model[4];
    for (unsigned int step = 0; step < 3000; ++step) {
        const auto context = static_cast<unsigned int>(step < 2995 ? random() % 5 : step - 2995);
        if (step % 100 != 99 && step < 2995) {
            const std::size_t kind = random() % 4;
            kPush[kind](step, context);
            model[kind].emplace_back(step, context);
            continue;
        }
        Calls expected;
        for (std::size_t kind = 0; kind < 4; ++kind) {
            auto& list = model[kind];
            for (std::size_t i = list.size(); i-- > 0;) {
                if (list[i].second != context) continue;
                expected.push_back(deletion(kind, list[i].first));
                list.erase(list.begin() + static_cast<long>(i));
            }
        }
        ASSERT_EQ(drain(context), expected) << "step " << step;
    }
}

TEST_F(DeferredDeleteTest, aPushWithoutMemoryLeavesTheQueueAsItWas) {
    Calls expected;
    unsigned int refused = 0;
    for (unsigned int i = 0; refused < 3; ++i) {
        Allocations::failing = 1;
        try {
            Queue::pushTextureHandle(i, 1);
        } catch (const std::bad_alloc&) {
            ++refused;
            Queue::pushTextureHandle(i, 1);
        }
        Allocations::failing = 0;
        expected.push_back(deletion(2, i));
    }
    std::reverse(expected.begin(), expected.end());
    EXPECT_EQ(drain(1), expected);
}

TEST_F(DeferredDeleteTest, aDrainThatRunsOutOfMemoryKeepsTheRest) {
    for (unsigned int i = 0; i < 6; ++i)
        Queue::pushBufferHandle(i, i % 2);
    gl.failNth("glDeleteBuffers", 2, GL_INVALID_VALUE);
    gl.on["glDeleteBuffers"] = [this] { Allocations::failing = gl.errors.empty() ? 0 : 1; };
    EXPECT_THROW(drain(1), std::bad_alloc) << "to word the failure takes memory";
    EXPECT_EQ(gl.takeCalls(), (Calls{deletion(3, 5), deletion(3, 3)}));
    EXPECT_EQ(drain(1), Calls{deletion(3, 1)});
    EXPECT_EQ(drain(0), (Calls{deletion(3, 4), deletion(3, 2), deletion(3, 0)}));
}
