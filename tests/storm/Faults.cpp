/// Lets every allocation, error check, GL call and reading of a file fail in turn, at every place
/// of every operation. Afterwards nothing is lost, doubled or deleted in a foreign context, memory
/// that ran out has left what the operation promises, and the same operation succeeds.
#include "../support/Allocations.h"
#include "../support/FileFaults.h"
#include "../support/TempShaders.h"
#include "Rounds.h"
#include "Scenarios.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/KyDiagnostics.h>
#include <kygl/kygl.h>
#include <kygl/KyGLText.h>
#include <kygl/KyShaderBuild.h>
#include <kylib/KyResult.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <random>
#include <thread>

namespace {

/// A way to fail at the nth place of its kind.
struct Weather {
    const char* name;
    void (*arm)(RecordedGL& gl, FileFaults& files, int nth);
    bool takesMemory = false;
};

template <bool kOnwards>
void failAllocation(RecordedGL&, FileFaults&, int nth) {
    Allocations::failing = nth;
    Allocations::failingOnwards = kOnwards;
}
template <RecordedGL::Fault kFault, long kFailing = 0>
void failCall(RecordedGL& gl, FileFaults&, int nth) {
    gl.failingAfterError = kFailing;
    gl.arm(kFault, nth);
}
template <int kError>
void failOpen(RecordedGL&, FileFaults& files, int nth) {
    files.failOpen(nth, kError);
}
void failRead(RecordedGL&, FileFaults& files, int nth) {
    files.failRead(nth, EIO);
}

using Fault = RecordedGL::Fault;
const Weather kWeathers[] = {{"an allocation", failAllocation<false>, true},
                             {"memory", failAllocation<true>, true},
                             {"a check", failCall<Fault::Error>},
                             {"a check, then memory", failCall<Fault::Error, 1>, true},
                             {"a check, memory later", failCall<Fault::Error, 3>, true},
                             {"a call", failCall<Fault::Drop>},
                             {"a name", failCall<Fault::Zero>},
                             {"open", failOpen<EMFILE>},
                             {"open for memory", failOpen<ENOMEM>, true},
                             {"read", failRead}};
using Faults = std::vector<std::pair<const Weather*, int>>;

struct QuietGL : RecordedGL {
    QuietGL() {
        muted = true;
        infoLog = "0:1(1): error: wrong\n";
        strings = {{GL_VERSION, "2.1"},
                   {GL_PROGRAM_ERROR_STRING_ARB, "wrong"},
                   {GL_EXTENSIONS,
                    "GL_ARB_shading_language_100 GL_ARB_shader_objects "
                    "GL_ARB_fragment_shader GL_ARB_vertex_shader"}};
    }
};

/// One run of a subject, in which one of its steps meets faults.
class Trial {
public:
    Trial(const Subject& subject, std::size_t step, const Faults& faults) {
        std::thread([&] { run(subject, step, faults); }).join();
    }
    bool fired = false;  ///< whether there was such a place
    std::string wrongs;

private:
    void run(const Subject& subject, std::size_t step, const Faults& faults) {
        static unsigned int last = 0;
        const unsigned int a = ++last, b = ++last;
        const Allocations::Exempt exempt;
        QuietGL gl;
        FileFaults files;
        Scenario scenario = subject.make(gl, a, b);
        for (std::size_t i = 0; i < scenario.steps.size(); ++i) {
            if (i == step) meet(scenario, step, gl, files, faults);
            expect(scenario.steps[i].run(), scenario.steps[i].name + std::string(" fails"));
        }
        scenario = {};
        for (const unsigned int context : {a, b}) {
            RecordedGL::current = context;
            KyDeferredDeleteMap::deferredDelete(context);
        }
        kyglClearAllContexts();
        for (const std::string& wrong : gl.wrongs)
            expect(false, wrong);
        for (const auto& [name, object] : gl.objects)
            expect(object.mayStay, "lost " + std::to_string(name) + " of " + object.madeBy);
    }

    void meet(const Scenario& scenario, std::size_t step, RecordedGL& gl, FileFaults& files,
              const Faults& faults) {
        const bool hasState = scenario.state && step > 0;
        const std::string before = hasState ? scenario.state() : "";
        bool mayRunOut = false;
        for (const auto& [weather, nth] : faults) {
            mayRunOut = mayRunOut || weather->takesMemory;
            weather->arm(gl, files, nth);
        }
        --Allocations::exempt;
        const bool ranOut = Allocations::stop(Allocations::failing, Allocations::failingOnwards,
                                              [&] { scenario.steps[step].run(); });
        ++Allocations::exempt;
        fired = Allocations::failed > 0 || gl.fired || files.failed > 0;
        gl.arm(Fault::None, 0);
        files.openErrors.clear();
        files.readErrors.clear();
        expect(!ranOut || mayRunOut, "ran out of memory that there was");
        expect(!ranOut || !hasState || scenario.state() == before, "left another state");
    }

    void expect(bool good, const std::string& message) {
        if (!good) wrongs += message + "; ";
    }
};

/// To diagnostics and to builds; each asks the library something.
struct Listeners {
    Listeners() {
        KyDiagnostics::enable(
            [](const KyDiagnostics::Message& message, void* count) {
                KyDeferredDeleteMap::pending(message.context);
                ++*static_cast<long*>(count);
            },
            &messages);
        KyShaderBuild::setObserver(
            [](const KyShaderBuild& build, void* count) {
                KyDeferredDeleteMap::pending(build.context);
                ++*static_cast<long*>(count);
            },
            &builds);
    }
    ~Listeners() {
        KyShaderBuild::setObserver(nullptr);
        KyDiagnostics::disable();
    }
    Listeners(const Listeners&) = delete;
    Listeners& operator=(const Listeners&) = delete;
    long messages = 0, builds = 0;
};

struct StormFaults : testing::Test {
    StormFaults() {
        tree.write("v", "#include \"lib\"\nvoid main() {}\n");
        tree.write("f", "#include \"lib\"\n#include \"none\"\nvoid main() {}\n");
        tree.write("lib", "#include \"deep\"\nfloat f;\n");
        tree.write("deep", "float deep;\n");
        KyResult::setReporter([](const KyResult&, KyResult::Report) {});
        KyGLText::setDisplay(reinterpret_cast<_XDisplay*>(this));
        // Names that are let go of have room in the queue, so that none needs be given up.
        for (int i = 0; i < 256; ++i) {
            KyDeferredDeleteMap::pushShaderHandle(0, 0);
            KyDeferredDeleteMap::pushTehniqueHandle(0, 0);
            KyDeferredDeleteMap::pushTextureHandle(0, 0);
        }
        KyDeferredDeleteMap::discard(0);
    }
    ~StormFaults() override {
        KyGLText::setDisplay(nullptr);
        KyResult::setReporter(nullptr);
        std::printf("places tried: %ld, faults found: %ld\n", places, found);
    }

    static std::size_t stepsOf(const Subject& subject) {
        QuietGL gl;
        return subject.make(gl, 1, 2).steps.size();
    }
    bool meets(const Subject& subject, std::size_t step, const Faults& faults) {
        const Trial trial(subject, step, faults);
        places += trial.fired ? 1 : 0;
        if (trial.wrongs.empty()) return trial.fired;
        std::string where = subject.name + std::string(", step ") + std::to_string(step) + ": ";
        for (const auto& [weather, nth] : faults)
            where += weather->name + std::string(" ") + std::to_string(nth) + ": ";
        if (++found <= 20) ADD_FAILURE() << where << trial.wrongs;
        return trial.fired;
    }

    // @param stride 1 for each place, n for each nth of them
    void meetEach(int stride) {
        std::mt19937 random(std::random_device{}());
        std::uniform_int_distribution<int> first(1, stride);
        for (const Subject& subject : kSubjects)
            for (std::size_t step = 0; step < stepsOf(subject); ++step)
                for (const Weather& weather : kWeathers)
                    for (int nth = first(random); meets(subject, step, {{&weather, nth}});)
                        nth += stride;
    }

    const TempShaders tree{"storm"};
    long places = 0, found = 0;
};

}  // namespace

TEST_F(StormFaults, everyPlaceOfEveryOperation) {
    meetEach(1);
}

// There are thirty thousand places then, so that each run meets others.
TEST_F(StormFaults, somePlacesWhileSomebodyListens) {
    const Listeners listeners;
    for (Rounds rounds; rounds.goOn();)
        meetEach(12);
    EXPECT_TRUE(listeners.messages > 1000 && listeners.builds > 1000);
}

TEST_F(StormFaults, twoFaultsAtOnce) {
    std::mt19937 random(std::random_device{}());
    const auto any = [&](std::size_t count) { return random() % count; };
    const auto fault = [&] {
        const Weather& weather = kWeathers[any(std::size(kWeathers))];
        return std::pair(&weather, static_cast<int>(1 + any(any(2) == 0 ? 6 : 60)));
    };
    for (Rounds rounds; rounds.goOn() || places < 10000;) {
        const Subject& subject = kSubjects[any(kSubjects.size())];
        meets(subject, any(stepsOf(subject)), {fault(), fault()});
    }
}
