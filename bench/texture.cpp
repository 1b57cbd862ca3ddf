// A texture bound in the steady state, going round the contexts that have it: beside a hash map
// from context to name.

#include "support.h"

#include <kygl/KyTexture.h>
#include <sogl/SoGLEW.h>

#include <cstdio>
#include <unordered_map>

namespace {

struct Library {
    NoOpGL gl;
    KyTexture texture;
    unsigned int contexts;
    unsigned int context = 0;

    explicit Library(unsigned int count) : contexts(count) {
        const unsigned char pixels[4] = {};
        texture.create1D(pixels, 1);
        for (context = 0; context < contexts; ++context)
            texture.bindTexture(context);
        context = 0;
    }
    ~Library() { texture.destroy(); }

    void operator()() {
        texture.bindTexture(context);
        context = context + 1 < contexts ? context + 1 : 0;
    }
};

struct Table {
    NoOpGL gl;
    std::unordered_map<unsigned int, GLuint> names;
    unsigned int contexts;
    unsigned int context = 0;

    explicit Table(unsigned int count) : contexts(count) {
        for (unsigned int id = 0; id < contexts; ++id)
            names[id] = id + 1;
    }

    void operator()() {
        glBindTexture(GL_TEXTURE_1D, names.find(context)->second);
        if (const GLenum error = glGetError()) std::fprintf(stderr, "GL error %#x\n", error);
        context = context + 1 < contexts ? context + 1 : 0;
    }
};

}  // namespace

void addTexture() {
    for (const unsigned int contexts : {1U, 8U, 64U}) {
        const std::string name = "bindTexture" + std::to_string(contexts);
        addSide(name + "/library", [=] { return Library(contexts); });
        addSide(name + "/table", [=] { return Table(contexts); });
        addRatio({name + "/library", name + "/table"});
    }
}
