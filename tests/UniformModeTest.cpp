#include "support/Allocations.h"
#include "support/RecordedGL.h"
#include "support/Reports.h"
#include "support/TempShaders.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/KyShaderProgram.h>
#include <kygl/KyShaderUniform.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <random>

using Calls = std::vector<std::string>;
using Mode = KyShaderProgram::UniformMode;

namespace {

// What every program object holds: a value as it was sent, by program and location.
using Held = std::map<std::pair<int, int>, std::string>;

// Two programs on a GL that may refuse what it is asked. All that happens is drawn from `seed`, in
// whatever mode, so that two runs differ in their modes alone.
class Story {
public:
    Story(unsigned int seed, Mode mode, Mode other) : mRandom(seed), mModes{mode, other} {
        mTree.write("v", "vertex");
        mTree.write("f", "fragment");
        mGL.locations = {{"a", 0}, {"b", 1}, {"f", 2}, {"f[0]", 2}, {"badType", 3}, {"long", 70}};
        mGL.missing = {"gone"};
        mGL.on["glUseProgram"] = [this] { called(mRefusesUse); };
        mGL.on["glUniform1f"] = mGL.on["glUniform1i"] = [this] { called(false); };
        for (int i = 0; i < 2; ++i) {
            mPrograms[i].setUniformMode(mModes[i]);
            mPrograms[i].create("v", "f", mTree.folder);
        }
    }

    /// What is held after each apply.
    std::vector<Held> run(int steps) {
        while (steps-- > 0)
            step(mPrograms[draw(2)]);
        return mAfterApply;
    }

private:
    int draw(int count) { return static_cast<int>(mRandom() % static_cast<unsigned int>(count)); }

    // Takes the last call, which does nothing if it is refused. An error may be an older one, and
    // the value stored all the same.
    void called(bool refused) {
        int number = 0, location = 0;
        char type = 0, value[32] = "";
        const std::string call = mGL.takeCalls().back();
        const bool isValue =
            std::sscanf(call.c_str(), "glUniform1%c(%d, %31[^)]", &type, &location, value) == 3;
        const bool isFailing = isValue && (location == 3 || location == mFailing);
        if (refused || isFailing) mGL.errors.push_back(GL_INVALID_OPERATION);
        if (refused || (isFailing && !mStoresFailing)) return;
        if (isValue) mHeld[{mInUse, location}] = type + std::string(value);
        if (std::sscanf(call.c_str(), "glUseProgram(%d", &number) == 1) mInUse = number;
    }

    void set(KyShaderProgram& program) {
        static const char* const kFloats[] = {"a", "f", "badType", "gone", "long"};
        const float value = static_cast<float>(draw(3)) / 2 - 0.5F;
        const bool isFloat = draw(3) != 0, atOnce = draw(12) == 0;
        const char* const name = isFloat ? kFloats[draw(5)] : draw(2) != 0 ? "b" : "f[0]";
        if (atOnce && isFloat) program.applyUniform(name, value);
        if (atOnce && !isFloat) program.applyUniform(name, draw(3));
        auto* const kept =
            isFloat ? program.setUniform(name, value) : program.setUniform(name, draw(3));
        if (draw(12) == 0) kept->activate(static_cast<unsigned int>(mInUse));
        if (auto* const number = dynamic_cast<KyShaderUniformFloat*>(kept))
            number->setValue(draw(2) != 0 ? -0.0F : value);
    }

    void apply(KyShaderProgram& program) {
        mRefusesUse = draw(24) == 0;
        mFailing = draw(6) == 0 ? draw(3) : -1;
        mStoresFailing = draw(2) == 0;
        if (draw(24) == 0) mGL.errors.push_back(GL_INVALID_ENUM);
        if (draw(2) == 0) mGL.failNth("glGetUniformLocation", 1 + draw(3), GL_INVALID_VALUE);
        mGL.linkStatus.always = draw(3) != 0;
        program.apply(1 + static_cast<unsigned int>(draw(2)));
        mRefusesUse = false;
        mFailing = -1;
        mAfterApply.push_back(mHeld);
    }

    void step(KyShaderProgram& program) {
        const int kind = draw(16), name = draw(static_cast<int>(mGL.lastName) + 1);
        const auto modes = {Mode::ByName, Mode::KeptLocations, Mode::ChangesOnly};
        const Mode mode = modes.begin()[draw(3)];
        const bool switches = mModes[&program - mPrograms] != Mode::ByName;
        static const char* const kMacros[] = {"A", "B", "C"};
        if (kind == 0) program.pushMacro(kMacros[draw(3)]);
        if (kind == 1) program.removeMacro(kMacros[draw(3)]);
        if (kind == 2) glUseProgram(static_cast<GLuint>(name));
        if (kind == 3 && switches) program.setUniformMode(mode);
        if (kind == 4 && draw(8) == 0) {
            glUniform1f(draw(3), 7);
            mPrograms[0].forgetSent();
            mPrograms[1].forgetSent();
        }
        if (kind > 4 && kind < 10) set(program);
        if (kind >= 10) apply(program);
    }

    std::mt19937 mRandom;
    RecordedGL mGL;
    const TempShaders mTree;
    bool mRefusesUse = false;
    int mFailing = -1;
    bool mStoresFailing = false;
    int mInUse = 0;
    Held mHeld;
    std::vector<Held> mAfterApply;
    const Mode mModes[2];
    KyShaderProgram mPrograms[2];
};

}  // namespace

TEST(UniformMode, everyProgramHoldsAfterEachApplyWhatItHoldsByName) {
    const Reports reports;
    testing::internal::CaptureStdout();  // what fails to link is printed
    for (unsigned int seed = 0; seed < 40; ++seed) {
        const std::vector<Held> byName = Story(seed, Mode::ByName, Mode::ByName).run(300);
        for (const Mode mode : {Mode::KeptLocations, Mode::ChangesOnly})
            for (const Mode other : {Mode::ByName, Mode::ChangesOnly})
                EXPECT_TRUE(Story(seed, mode, other).run(300) == byName) << "seed " << seed;
    }
    testing::internal::GetCapturedStdout();
}

TEST(UniformMode, sendsWhatItMustAndAsksForALocationOnce) {
    RecordedGL gl;
    const TempShaders tree;
    tree.write("v", "vertex");
    gl.missing = {"gone"};
    KyShaderProgram program;
    const auto expectCalls = [&](const Calls& calls, const char* macro = "") {
        program.setParameter(KyShaderParametersMacros());
        program.pushMacro(macro);
        program.compile(1);
        gl.calls.clear();
        program.apply(1);
        EXPECT_EQ(gl.takeCalls(), calls);
    };
    program.setUniformMode(Mode::KeptLocations);
    program.create("v", "v", tree.folder);
    program.setUniform("a", 1.5F);
    program.setUniform("gone", 1);
    gl.failNext("glGetUniformLocation", GL_INVALID_VALUE);
    const std::string a = "glGetUniformLocation(3, \"a\")",
                      gone = "glGetUniformLocation(3, \"gone\")", use = "glUseProgram(3)",
                      send = "glUniform1f(0, 1.5)";
    expectCalls({use, a, send, gone});
    expectCalls({use, a, send});  // an error was found at the first lookup
    expectCalls({use, send});
    EXPECT_FALSE(program.applyUniform("gone", 2));
    EXPECT_TRUE(program.applyUniform("a", 1.5F));
    EXPECT_EQ(gl.takeCalls(), (Calls{"glIsProgram(3)", "glIsProgram(3)", send}));

    program.setUniformMode(Mode::ChangesOnly);
    const std::string use2 = "glUseProgram(6)", a2 = "glGetUniformLocation(6, \"a\")",
                      gone2 = "glGetUniformLocation(6, \"gone\")";
    expectCalls({use, send});
    expectCalls({use});
    program.setUniform("a", 2.5F);
    expectCalls({use2, a2, "glUniform1f(0, 2.5)", gone2}, "B");
    program.setUniform("a", 1.5F);
    expectCalls({use});
    EXPECT_TRUE(program.applyUniform("a", 1.5F)) << "always sent";
    program.apply(1);
    const KyString name = "a";
    const long before = Allocations::count;
    program.setUniform(name, 2.5F);
    program.apply(1);
    EXPECT_EQ(Allocations::count, before);
    program.setUniform("b", 1.0F);
    gl.calls.clear();
    EXPECT_FALSE(Allocations::stop(1, true, [&] { program.apply(1); })) << "sent by name";
    EXPECT_EQ(gl.takeCalls(), (Calls{use, a, "glUniform1f(0, 2.5)", gone,
                                     "glGetUniformLocation(3, \"b\")", "glUniform1f(1, 1)"}));
    expectCalls(
        {use, "glUniform1f(0, 2.5)", "glGetUniformLocation(3, \"b\")", "glUniform1f(1, 1)"});
    program.forgetSent();
    expectCalls({use, "glUniform1f(0, 2.5)", "glUniform1f(1, 1)"});
    program.setUniformMode(Mode::ByName);
    expectCalls({use, a, "glUniform1f(0, 2.5)", gone, "glGetUniformLocation(3, \"b\")",
                 "glUniform1f(1, 1)"});
}
