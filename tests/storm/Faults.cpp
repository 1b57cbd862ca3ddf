/// Lets every allocation, error check, GL call and reading of a file fail in turn, at every place
/// of every operation. After each nothing is lost, doubled or deleted in a foreign context, memory
/// that ran out leaves what the operation promises, and the same operation then succeeds.
#include "../support/Allocations.h"
#include "../support/FileFaults.h"
#include "../support/TempShaders.h"
#include "Rounds.h"
#include "Scenarios.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/kygl.h>
#include <kygl/KyGLText.h>
#include <kylib/KyResult.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <new>
#include <random>
#include <thread>

namespace {

/// A way to fail at the nth place of its kind.
struct Weather {
    const char* name;
    void (*arm)(ModelGL& gl, FileFaults& files, long nth);
    bool takesMemory;
};

void failAllocation(long nth, bool onwards) {
    Allocations::failing = nth;
    Allocations::failingOnwards = onwards;
}
template <long kFailing>
void failCheck(ModelGL& gl, FileFaults&, long nth) {
    gl.failingAfterError = kFailing;
    gl.arm(ModelGL::Fault::Error, nth);
}

const Weather kWeathers[] = {
    {"an allocation", [](ModelGL&, FileFaults&, long nth) { failAllocation(nth, false); }, true},
    {"memory", [](ModelGL&, FileFaults&, long nth) { failAllocation(nth, true); }, true},
    {"a check", failCheck<0>, false},
    {"a check, then memory", failCheck<1>, true},
    {"a check, then memory a little later", failCheck<3>, true},
    {"a call", [](ModelGL& gl, FileFaults&, long nth) { gl.arm(ModelGL::Fault::Drop, nth); },
     false},
    {"a name", [](ModelGL& gl, FileFaults&, long nth) { gl.arm(ModelGL::Fault::Zero, nth); },
     false},
    {"open",
     [](ModelGL&, FileFaults& files, long nth) { files.failOpen(static_cast<int>(nth), EMFILE); },
     false},
    {"open, for memory",
     [](ModelGL&, FileFaults& files, long nth) { files.failOpen(static_cast<int>(nth), ENOMEM); },
     true},
    {"read",
     [](ModelGL&, FileFaults& files, long nth) { files.failRead(static_cast<int>(nth), EIO); },
     false},
};

/// One run of a subject, in which one of its steps meets a fault.
class Trial {
public:
    Trial(const Subject& subject, std::size_t step) : mSubject(subject), mStep(step) {}

    /// @return whether there was such a place
    bool run(const std::vector<std::pair<const Weather*, long>>& faults) {
        std::thread([&] { runHere(faults); }).join();
        return mFired;
    }
    std::string what;  ///< what went wrong, or ""
    static std::size_t stepsOf(const Subject& subject) {
        ModelGL gl;
        return subject.make(gl, 1, 2).steps.size();
    }

private:
    void runHere(const std::vector<std::pair<const Weather*, long>>& faults) {
        static unsigned int last = 10;
        const unsigned int a = ++last, b = ++last;
        Allocations::Exempt exempt;
        ModelGL gl;
        FileFaults files;
        Scenario scenario = mSubject.make(gl, a, b);
        for (std::size_t i = 0; i < scenario.steps.size(); ++i) {
            if (i == mStep) meet(scenario, gl, files, faults);
            expect(scenario.steps[i].run(), scenario.steps[i].name + std::string(" fails"));
        }
        if (scenario.end) scenario.end();
        scenario = {};
        for (const unsigned int context : {a, b}) {
            ModelGL::makeCurrent(context);
            KyDeferredDeleteMap::deferredDelete(context);
        }
        kyglClearAllContexts();
        ModelGL::makeCurrent(0);
        for (const std::string& wrong : gl.wrongs)
            expect(false, wrong);
        for (const std::string& lost : gl.lost())
            expect(false, "lost " + lost);
    }

    void meet(const Scenario& scenario, ModelGL& gl, FileFaults& files,
              const std::vector<std::pair<const Weather*, long>>& faults) {
        const bool hasState = scenario.state && mStep > 0;
        const std::string before = hasState ? scenario.state() : "";
        bool ranOut = false, mayRunOut = false;
        for (const auto& [weather, nth] : faults) {
            mayRunOut = mayRunOut || weather->takesMemory;
            weather->arm(gl, files, nth);
        }
        const long failed = Allocations::failed;
        --Allocations::exempt;
        try {
            scenario.steps[mStep].run();
        } catch (const std::bad_alloc&) {
            ranOut = true;
        }
        ++Allocations::exempt;
        mFired = Allocations::failed > failed || gl.fired() || files.failed > 0;
        failAllocation(0, false);
        gl.arm(ModelGL::Fault::None, 0);
        files.openErrors.clear();
        files.readErrors.clear();
        expect(!ranOut || mayRunOut, "ran out of memory that there was");
        if (ranOut && hasState) expect(scenario.state() == before, "left another state");
    }

    void expect(bool good, const std::string& message) {
        if (!good) what += message + "; ";
    }

    const Subject& mSubject;
    std::size_t mStep;
    bool mFired = false;
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
        for (unsigned int i = 0; i < 256; ++i) {
            KyDeferredDeleteMap::pushShaderHandle(0, 0);
            KyDeferredDeleteMap::pushTehniqueHandle(0, 0);
            KyDeferredDeleteMap::pushTextureHandle(0, 0);
        }
        KyDeferredDeleteMap::discard(0);
    }
    ~StormFaults() override {
        KyGLText::setDisplay(nullptr);
        KyResult::setReporter(nullptr);
    }

    bool meets(const Subject& subject, std::size_t step,
               const std::vector<std::pair<const Weather*, long>>& faults) {
        Trial trial(subject, step);
        const bool fired = trial.run(faults);
        places += fired ? 1 : 0;
        if (trial.what.empty()) return fired;
        std::string where = std::string(subject.name) + ", step " + std::to_string(step) + ':';
        for (const auto& [weather, nth] : faults)
            where += std::string(" ") + weather->name + ' ' + std::to_string(nth);
        if (++found <= 20) ADD_FAILURE() << where << ": " << trial.what;
        return fired;
    }

    const TempShaders tree{"storm"};
    long places = 0, found = 0;
};

}  // namespace

TEST_F(StormFaults, everyPlaceOfEveryOperation) {
    for (const Subject& subject : kSubjects)
        for (std::size_t step = 0; step < Trial::stepsOf(subject); ++step)
            for (const Weather& weather : kWeathers)
                for (long nth = 1; meets(subject, step, {{&weather, nth}});)
                    ++nth;
    std::printf("places tried: %ld, faults found: %ld\n", places, found);
}

TEST_F(StormFaults, twoFaultsAtOnce) {
    std::mt19937 random(std::random_device{}());
    const auto any = [&](std::size_t count) { return random() % count; };
    for (Rounds rounds; rounds.goOn();) {
        for (int i = 0; i < 3000; ++i) {
            const Subject& subject = kSubjects[any(kSubjects.size())];
            const auto fault = [&] {
                return std::pair<const Weather*, long>(
                    &kWeathers[any(std::size(kWeathers))],
                    static_cast<long>(1 + any(any(2) == 0 ? 6 : 60)));
            };
            meets(subject, any(Trial::stepsOf(subject)), {fault(), fault()});
        }
    }
    std::printf("places tried: %ld, faults found: %ld\n", places, found);
}
