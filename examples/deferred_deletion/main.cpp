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

void acrossThreads() {
    const GlxBuffer gl(16);
    kyglSetContext(1);
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

// Leaves a texture that waits for context 2, while that context and its objects go.
void loseContext() {
    const GlxBuffer gl(16);
    kyglSetContext(2);
    KyTexture texture;
    texture.create1D(kWhite, 1);
    texture.bindTexture(2);
    texture.destroy();
}

// Another context takes the id 2, and what it makes gets the same small numbers for names.
void takeOver(bool discards) {
    loseContext();
    kyglClearAllContexts();  // forgets what the ids could do; the names that wait for them stay
    printPending("lost", 2);
    if (discards) std::printf("discarded: %ld\n", KyDeferredDeleteMap::discard(2));
    const GlxBuffer gl(16);
    kyglSetContext(2);
    KyTexture texture;
    texture.create1D(kWhite, 1);
    texture.bindTexture(2);
    const GLuint name = current(GL_TEXTURE_BINDING_1D);
    KyDeferredDeleteMap::deferredDelete(2);
    std::printf("the GL has the new texture: %d\n", glIsTexture(name));
    texture.destroy();
    KyDeferredDeleteMap::deferredDelete(2);
    kyglClearAllContexts();
}

}  // namespace

int main() try {
    KyShader::mFolderPath = EXAMPLES_ROOT;
    acrossThreads();
    std::puts("an id that is used again");
    takeOver(false);  // the trap: the drain deletes what is not its own
    std::puts("the same with discard");
    takeOver(true);
    return 0;
} catch (const std::exception& e) {
    std::fprintf(stderr, "deferred_deletion: %s\n", e.what());
    return 1;
}
