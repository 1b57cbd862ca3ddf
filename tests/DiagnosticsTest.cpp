#include "support/Allocations.h"
#include "support/Messages.h"
#include "support/Together.h"

#include <KyDiagnosis.h>
#include <KyListener.h>

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <string>
#include <thread>

using Lines = std::vector<std::string>;
using Severity = KyDiagnostics::Severity;

namespace {

KyFinding finding(const std::string& subject, const std::string& text) {
    return {subject, {{Severity::Error, text}}, 3};
}

void find(const std::string& subject, const std::string& text, int times = 1) {
    for (int i = 0; i < times; ++i)
        KyDiagnosis::report(KyDiagnostics::File, [&] { return finding(subject, text); });
}

void end(const std::string& subject) {
    KyDiagnosis::ended(KyDiagnostics::File, [&] { return subject; });
}

}  // namespace

TEST(Diagnostics, theSameFindingIsOneMessageUntilItChangesOrEnds) {
    find("a", "nobody asked");
    Messages messages;
    find("a", "gone", 1000);
    find("b", "gone");
    EXPECT_EQ(messages.take(), (Lines{"context 3: error: gone", "context 3: error: gone"}));
    find("a", "odd");
    EXPECT_EQ(messages.take(),
              (Lines{"context 3: note: gone (1000 times)", "context 3: error: odd"}));
    end("a");
    end("a");
    EXPECT_EQ(messages.take(), Lines()) << "what came once has no count";
    find("a", "odd", 2);
    find("b", "gone");
    EXPECT_EQ(messages.end(), (Lines{"context 3: error: odd", "context 3: note: odd (2 times)",
                                     "context 3: note: gone (2 times)"}));
    find("a", "nobody asks any more");
    const Messages anew;
    find("b", "gone");
    EXPECT_EQ(messages.take(), Lines());
}

TEST(Diagnostics, aNumberThatGrowsMakesNoNewMessage) {
    Messages messages;
    for (const char* const objects : {"2", "4", "6"})
        KyDiagnosis::report(KyDiagnostics::Build, [&] {
            return KyFinding{"build",
                             {{Severity::Error, "bad", "f", 7, 2}, {Severity::Note, objects}},
                             3,
                             "bad"};
        });
    EXPECT_EQ(messages.end(), (Lines{"context 3: f:7:2: error: bad", "context 3: note: 2",
                                     "context 3: f:7:2: note: bad (3 times)"}));
}

TEST(Diagnostics, onlyWantedTopicsAreLookedAt) {
    Messages messages(KyDiagnostics::File | KyDiagnostics::Text);
    bool isMade = false;
    KyDiagnosis::report(KyDiagnostics::Build, [&] { return isMade = true, finding("a", "x"); });
    find("a", "y");
    EXPECT_FALSE(isMade);
    EXPECT_EQ(messages.take(), Lines{"context 3: error: y"});
}

TEST(Diagnostics, theOldestSubjectIsForgotten) {
    Messages messages;
    find("z", "first", 3);
    for (int i = 1; i < 1024; ++i)
        find(std::to_string(i), "later");
    find("z", "first");
    EXPECT_EQ(messages.take().size(), 1024U);
    find("one more", "last");
    EXPECT_EQ(messages.take(),
              (Lines{"context 3: note: first (4 times)", "context 3: error: last"}));
    find("z", "first");
    EXPECT_EQ(messages.take(), Lines{"context 3: error: first"});
}

// What arises under a lock comes when the outermost operation has let go of it, and what arises in
// the handler after it has returned.
TEST(Diagnostics, theHandlerRunsWithoutLocksAndOneAtATime) {
    static bool isLocked = false, isRunning = false;
    static Lines texts;
    texts.clear();
    KyDiagnostics::enable([](const KyDiagnostics::Message& message, void*) {
        EXPECT_FALSE(isLocked || isRunning) << message.text;
        isRunning = true;
        texts.emplace_back(message.text);
        if (texts.size() < 4) find("in the handler", texts.back() + '!');
        isRunning = false;
    });
    const auto operation = [](const auto& work) {
        const KyDiagnosis::Postponed outer;
        isLocked = true;
        work();
        isLocked = false;
    };
    operation([] {
        find("a", "a");
        {
            const KyDiagnosis::Postponed inner;
            find("b", "b");
        }
        EXPECT_EQ(texts, Lines());
    });
    EXPECT_EQ(texts, (Lines{"a", "b", "a!", "b!", "a!!"}));
    KyDiagnostics::disable();
}

TEST(Diagnostics, disableWaitsForAHandlerOnAnotherThreadAndNotForItself) {
    static std::promise<void> isIn, mayLeave;
    static std::atomic<int> calls{0};
    static std::atomic<bool> hasLeft{false};
    KyDiagnostics::enable([](const KyDiagnostics::Message& message, void*) {
        ++calls;
        if (message.text == std::string("itself")) {
            find("one", "more");
            KyDiagnostics::disable();
            return;
        }
        isIn.set_value();
        mayLeave.get_future().wait();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        hasLeft = true;
    });
    std::thread other([] { find("a", "other"); });
    isIn.get_future().wait();
    std::thread([] { find("b", "itself"); }).join();
    EXPECT_EQ(calls, 2) << "it ran on after its end";
    mayLeave.set_value();
    KyDiagnostics::disable();
    EXPECT_TRUE(hasLeft);
    other.join();
}

TEST(Diagnostics, twoListenersThatRemoveEachOtherDoNotWait) {
    static KyListener<void (*)(void*)> listeners[2];
    static std::atomic<int> inside{0};
    runTogether(2, [](unsigned int i) {
        const auto removeOther = [](void* other) {
            for (++inside; inside < 2;)
                std::this_thread::yield();
            static_cast<KyListener<void (*)(void*)>*>(other)->set({});
        };
        listeners[i].set({removeOther, &listeners[1 - i]});
        listeners[i].call();
    });
    EXPECT_FALSE(listeners[0].isSet() || listeners[1].isSet());
}

TEST(Diagnostics, withoutAHandlerALineGoesToStandardError) {
    testing::internal::CaptureStderr();
    KyDiagnostics::enable();
    find("a", "no \x1b[31mcolour");
    KyDiagnosis::report(KyDiagnostics::File, [] {
        return KyFinding{"b", {{Severity::Warning, "odd", "f.vert", 7, 2}}, 3};
    });
    KyDiagnosis::report(KyDiagnostics::File, [] {
        return KyFinding{"c", {{Severity::Note, "a\xff\n\xc3\xa4"}}};
    });
    KyDiagnostics::disable();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "context 3: error: no \\x1b[31mcolour\nf.vert:7: warning: odd\n"
              "kygl: note: a\\xff\\x0a\xc3\xa4\n");
}

// Whether or not it came through the first time, a finding is one message in the end.
TEST(Diagnostics, memoryThatRunsOutLosesAMessageAndNothingElse) {
    const std::string name(100, 'x');  // longer than what a string holds itself
    for (const bool onwards : {false, true}) {
        long failed = -1;
        for (long nth = 1; failed != Allocations::failed; ++nth) {
            failed = Allocations::failed;
            Messages messages;
            for (const std::string& text : {name, name + '!'}) {
                EXPECT_FALSE(Allocations::stop(nth, onwards, [&] { find(name, text); }));
                find(name, text, 3);
                EXPECT_EQ(messages.take().back(), "context 3: error: " + text) << nth;
            }
            EXPECT_FALSE(Allocations::stop(nth, onwards, [&] { end(name); }));
            EXPECT_FALSE(Allocations::stop(nth, onwards, KyDiagnostics::disable));
            EXPECT_LE(messages.take().size(), 1U);
        }
        EXPECT_GT(failed, 9) << "it took no memory";
    }
}
