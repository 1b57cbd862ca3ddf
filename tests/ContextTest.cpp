#include "support/Allocations.h"
#include "support/RecordedGL.h"
#include "support/Reports.h"

#include <kygl/kygl.h>

#include <gtest/gtest.h>
#include <pthread.h>

#include <thread>

using Names = std::vector<std::string>;

const Names kAll = {"GL_ARB_shading_language_100", "GL_ARB_shader_objects",
                    "GL_ARB_fragment_shader", "GL_ARB_vertex_shader",
                    "GL_ARB_vertex_buffer_object"};

// The registry is one for the process: each test begins and ends with an empty one.
struct ContextTest : testing::Test {
    ContextTest() { kyglClearAllContexts(); }
    ~ContextTest() override { kyglClearAllContexts(); }

    // Makes the driver one that has these extensions.
    void drive(const Names& names, const char* version = "1.5") {
        gl.extensions = names;
        gl.strings = {{GL_VERSION, version}, {GL_EXTENSIONS, ""}};
        if (version[0] >= '3') return;
        for (const std::string& name : names)
            gl.strings[GL_EXTENSIONS] += name + ' ';
    }
    static bool allCan() {
        EXPECT_EQ(kyglGLSLAvailableAllContexts(), kyglVBOsAvailableAllContexts());
        return kyglGLSLAvailableAllContexts();
    }
    RecordedGL gl;
};

TEST_F(ContextTest, eachFlagCountsHoweverTheDriverListsThem) {
    unsigned int id = 0;
    for (const char* version : {"1.5", "2.1 Mesa", "3.0", "4.5 (Core Profile)"}) {
        for (std::size_t lacking = 0; lacking < 5; ++lacking) {
            Names names = kAll;
            names[lacking] += "_x";  // a longer name is another name
            drive(names, version);
            kyglSetContext(++id);
            EXPECT_EQ(kyglGLSLAvailable(id), lacking == 4) << version << ' ' << lacking;
            EXPECT_EQ(kyglVBOsAvailable(id), lacking != 4) << version << ' ' << lacking;
        }
    }
}

TEST_F(ContextTest, anIdHasNothingUntilItIsCapturedAndIsCapturedAnewOnlyOnDemand) {
    drive(kAll);
    kyglSetContext(7);
    EXPECT_FALSE(kyglGLSLAvailable(9) || kyglVBOsAvailable(8) || allCan());
    kyglSetContext(9);
    EXPECT_FALSE(allCan());
    kyglClearContext(8);
    EXPECT_TRUE(allCan());
    drive({kAll[4]});
    gl.calls.clear();
    kyglSetContext(7);
    EXPECT_EQ(gl.takeCalls(), Names()) << "the driver was asked again";
    kyglInitContext();
    EXPECT_TRUE(kyglVBOsAvailable(7) && !kyglGLSLAvailable(7));
    gl.strings.clear();  // no context is current: what was known stays
    kyglInitContext();
    EXPECT_TRUE(kyglVBOsAvailable(7));
}

TEST_F(ContextTest, aThreadOfItsOwnHasNoIdAndIsInNoTable) {
    kyglSetContext(7);
    gl.calls.clear();
    std::thread([&] {
        kyglClearContext(9);
        EXPECT_EQ(gl.calls, Names()) << "an unknown id made a record";
        EXPECT_EQ(kyglGetContext(), KYGL_NO_CONTEXT);
        EXPECT_NE(gl.takeCalls(), Names());
        EXPECT_EQ(kyglGetContext(), KYGL_NO_CONTEXT);
        EXPECT_EQ(gl.takeCalls(), Names()) << "a second record";
        kyglSetContext(0);
    }).join();
    kyglClearContext(0);
    kyglClearContext(7);
    EXPECT_EQ(kyglGetContext(), 7U) << "the current id was cleared";
    kyglClearAllContexts();
    EXPECT_TRUE(allCan()) << "an id was left";
    gl.calls.clear();
    EXPECT_EQ(kyglGetContext(), KYGL_NO_CONTEXT);
    EXPECT_NE(gl.calls, Names()) << "the thread kept a dead record";
}

// Each allocation fails once by itself and once with all that follow, those that the C library
// makes for a thread's first use of something among them: so each time on a thread of its own.
TEST_F(ContextTest, memoryThatRunsOutLeavesTheRegistryAsItWas) {
    const auto set5 = [] { kyglSetContext(5); };
    const struct {
        void (*call)();
        unsigned int own;  // the id of the thread
        bool placeholder;
    } cases[] = {{set5, KYGL_NO_CONTEXT, true},
                 {set5, 9, false},
                 {[] { kyglSetContext(7); }, KYGL_NO_CONTEXT, false},
                 {[] { kyglClearContext(7); }, KYGL_NO_CONTEXT, false}};
    gl.muted = true;
    for (const auto& one : cases) {
        for (const bool onwards : {false, true}) {
            bool threw = true;
            for (long nth = 1; threw; ++nth) {
                kyglClearAllContexts();
                drive(kAll);
                kyglSetContext(7);
                kyglSetContext(9);
                if (one.placeholder) kyglGLSLAvailable(5);
                drive({});
                std::thread([&] {
                    if (one.own != KYGL_NO_CONTEXT) kyglSetContext(one.own);
                    threw = Allocations::stop(nth, onwards, one.call);
                    EXPECT_EQ(Allocations::failed > 0, threw) << nth;
                    if (!threw) return;
                    EXPECT_EQ(kyglGetContext(), one.own) << nth;
                    EXPECT_EQ(allCan(), !one.placeholder) << nth << ": an id came or went";
                    drive(kAll);
                    one.call();
                    EXPECT_TRUE(allCan()) << nth << ": a record stayed";
                }).join();
                EXPECT_TRUE(threw || nth > 1) << "it took no memory";
            }
        }
    }
}

// Other objects of a thread that ends may ask after the registry has released its record.
TEST_F(ContextTest, anEndingThreadMayStillAsk) {
    static pthread_key_t key;
    static int asked = 0;
    const auto end = [](void* pointer) {
        EXPECT_EQ(kyglGetContext(), KYGL_NO_CONTEXT);
        if (++asked == 1) pthread_setspecific(key, pointer);
    };
    ASSERT_EQ(pthread_key_create(&key, end), 0);
    std::thread([] {
        kyglGetContext();
        pthread_setspecific(key, &key);
    }).join();
    EXPECT_EQ(asked, 2);
    pthread_key_delete(key);
}

TEST(ErrorCheck, readsElevenTimesAtMostAndTellsWhomTheModeNames) {
    RecordedGL gl;
    const Reports reports;
    for (const int mode : {-1, 0, 1, 2, 3}) {
        gl.errors.assign(12, GL_INVALID_ENUM);
        gl.errors[0] = GL_INVALID_OPERATION;
        EXPECT_EQ(
            kyglErrorCheck("\"100%s %n\", &a", "internal/x", 42, mode),
            KyResult(GL_INVALID_OPERATION, 42, "internal/x", "", "command=[\"100%s %n\", &a]"));
        EXPECT_EQ(gl.errors.size(), 1U) << "a lost context may answer with errors for ever";
    }
    EXPECT_EQ(reports.results.size(), 2U) << "of the modes 1 and 2";
    reports.expectGLError(0, KyResult::Report::Notify, "x", "\"100%s %n\", &a");
    reports.expectGLError(1, KyResult::Report::Check, "x", "\"100%s %n\", &a");
}
