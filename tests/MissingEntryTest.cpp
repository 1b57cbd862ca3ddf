#include "support/Reports.h"
#include "support/Together.h"

#include <sogl/SoGLEW.h>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>

// The look-up of a GL that lacks one entry point. libsogl asks while it is loaded, before anything
// here is initialised.
using EntryPoint = void (*)();
extern "C" EntryPoint glXGetProcAddressARB(const GLubyte* name) {
    if (std::strcmp(reinterpret_cast<const char*>(name), "glCreateProgram") == 0) return nullptr;
    const auto next =
        reinterpret_cast<EntryPoint (*)(const GLubyte*)>(dlsym(RTLD_NEXT, "glXGetProcAddressARB"));
    return next(name);
}

TEST(MissingEntry, isReportedOnceWhoeverCallsAndDoesNothing) {
    const Reports reports;
    runTogether(4, [](unsigned int) { EXPECT_EQ(glCreateProgram(), 0U); });
    ASSERT_EQ(reports.posts.size(), 1U);
    EXPECT_NE(reports.posts[0].find("glCreateProgram"), std::string::npos);
}
