/// GL objects whose owners die on a thread without a GL context, and are deleted later in their
/// own; and what becomes of those whose context goes before.
///
///     deferred_deletion
#define GL_GLEXT_PROTOTYPES  // glIsProgram
#include "common/GlxBuffer.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/kygl.h>
#include <kygl/KyShader.h>
#include <kygl/KyShaderProgram.h>
#include <kygl/KyTexture.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <thread>

namespace {

constexpr unsigned char kWhite[] = {255, 255, 255, 255};

/// What a module owns. Its destructor may run on any thread.
struct Model {
    ~Model() { texture.destroy(); }  // queues the GL textures; a KyTexture alone leaves them
    KyShaderProgram program;
    KyTexture texture;
};

// The GL name that a state holds.
GLuint current(GLenum state) {
    GLint name = 0;
    glGetIntegerv(state, &name);
    return static_cast<GLuint>(name);
}

void printPending(const char* when, unsigned int context) {
    const KyDeferredDeleteMap::Pending waits = KyDeferredDeleteMap::pending(context);
    std::printf("%s: %ld shaders, %ld programs, %ld textures wait for context %u\n", when,
                waits.shaders, waits.programs, waits.textures, context);
}

// With context 1 current.
void acrossThreads() {
    auto model = std::make_unique<Model>();
    model->program.create("waves.vert", "waves.frag", "examples");
    if (!model->program.compile(1)) throw std::runtime_error("the shaders do not build");
    model->program.apply(1);
    const GLuint program = current(GL_CURRENT_PROGRAM);
    model->program.unUse();  // the GL keeps a program that is in use
    model->texture.create1D(kWhite, 1);
    model->texture.bindTexture(1);
    const GLuint texture = current(GL_TEXTURE_BINDING_1D);

    printPending("alive", 1);
    std::thread([&] { model.reset(); }).join();  // a thread that has no context
    printPending("dead", 1);
    std::printf("the GL has program: %d, texture: %d\n", glIsProgram(program),
                glIsTexture(texture));
    KyDeferredDeleteMap::deferredDelete(1);  // context 1 is current here
    printPending("drained", 1);
    std::printf("the GL has program: %d, texture: %d\n", glIsProgram(program),
                glIsTexture(texture));
}

/// Context 2, which comes and goes while context 1 stays.
struct Second {
    Second() { kyglSetContext(2); }
    ~Second() {
        kyglSetContext(1);    // an id is not cleared while it is the thread's current one
        kyglClearContext(2);  // what is known of it goes; the names that wait for it stay
    }
    GlxBuffer gl{16};
};

// What a drain of another context 2 makes of a name that was queued for the one before: names are
// small numbers, and both contexts give out the same ones.
void takeOver(bool discards) {
    KyTexture texture;
    texture.create1D(kWhite, 1);
    {
        const Second lost;
        texture.bindTexture(2);
        texture.deleteTextures();
    }
    printPending("lost", 2);
    if (discards) std::printf("discarded: %ld\n", KyDeferredDeleteMap::discard(2));

    const Second next;
    texture.bindTexture(2);
    const GLuint name = current(GL_TEXTURE_BINDING_1D);
    KyDeferredDeleteMap::deferredDelete(2);
    std::printf("the GL has the new texture: %d\n", glIsTexture(name));
    texture.destroy();
    KyDeferredDeleteMap::deferredDelete(2);
}

}  // namespace

int main() try {
    KyShader::mFolderPath = EXAMPLES_ROOT;
    const GlxBuffer first(16);
    kyglSetContext(1);
    acrossThreads();
    std::puts("an id that is used again");
    takeOver(false);  // the trap: the drain deletes what is not its own
    std::puts("the same with discard");
    takeOver(true);
    kyglClearAllContexts();
    return 0;
} catch (const std::exception& e) {
    std::fprintf(stderr, "deferred_deletion: %s\n", e.what());
    return 1;
}
