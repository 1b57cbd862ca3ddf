// The exported error check with no error pending: beside glGetError alone.

#include "support.h"

#include <kygl/kygl.h>
#include <sogl/SoGLEW.h>

template <typename GL>
static void add(const std::string& name) {
    struct Library {
        GL gl;
        void operator()() const {
            benchmark::DoNotOptimize(kyglErrorCheck("glEnable(GL_FOG)", "errorCheck", 1, 0).ok());
        }
    };
    struct Raw {
        GL gl;
        void operator()() const { benchmark::DoNotOptimize(glGetError()); }
    };
    addSide(name + "/library", [] { return Library(); });
    addSide(name + "/raw", [] { return Raw(); });
    addRatio({name + "/library", name + "/raw", 5, true});
}

void addErrorCheck() {
    add<NoOpGL>("errorCheck");
    add<RealGL>("errorCheckDriver");
}
