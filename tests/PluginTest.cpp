#include "support/Allocations.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <future>
#include <thread>
#include <utility>

// A GLX context that is current on every thread, for the toolkit to look up.
extern "C" void* glXGetCurrentContext() {
    static int context = 0;
    return &context;
}
extern "C" void* glXGetCurrentDisplay() {
    return nullptr;
}
extern "C" unsigned long glXGetContextIDEXT(void*) {
    return 1;
}

// The library as a program with plug-ins brings it in and takes it out again.
struct PluginTest : testing::Test {
    ~PluginTest() override {
        if (library != nullptr) dlclose(library);
    }
    template <typename Function = unsigned int (*)()>
    Function find(const char* name) {
        return reinterpret_cast<Function>(dlsym(library, name));
    }
    void* library = dlopen(KYGL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
};

TEST_F(PluginTest, aThreadWithoutMemoryGetsAnExceptionAtItsFirstCall) {
    ASSERT_NE(library, nullptr) << dlerror();
    for (const char* name :
         {"kyglGetContext", "kyglInitContext", "_ZN11SoGLContext10getCurrentEb"}) {
        const auto call = find(name);
        ASSERT_NE(call, nullptr) << name;
        long nth = 0;
        for (bool threw = true; threw;) {
            std::thread([&] {
                threw = Allocations::stop(++nth, true, call);
                EXPECT_EQ(Allocations::failed > 0, threw) << name << ' ' << nth;
            }).join();
        }
        EXPECT_GT(nth, 1) << name;
    }
}

TEST_F(PluginTest, aThreadMayEndAfterTheLibraryIsUnloaded) {
    ASSERT_NE(library, nullptr) << dlerror();
    std::promise<void> asked, unloaded;
    std::thread thread([&] {
        find("kyglGetContext")();
        asked.set_value();
        unloaded.get_future().wait();
    });
    asked.get_future().wait();
    dlclose(std::exchange(library, nullptr));
    EXPECT_EQ(dlopen(KYGL_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded";
    unloaded.set_value();
    thread.join();
}
