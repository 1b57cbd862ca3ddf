/// Fourteen mistakes that are easily made, each on purpose, and what diagnostics report of them.
///
///     faults          all of them
///     faults NAME...  these
///
/// Below the name of a fault come the messages, as a handler gets them. Without a handler they go
/// to standard error, in the same form and with the full paths of files.
#include "common/GlxBuffer.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/KyDiagnostics.h>
#include <kygl/kygl.h>
#include <kygl/KyGLText.h>
#include <kygl/KyShader.h>
#include <kygl/KyShaderProgram.h>
#include <kylib/KyResult.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace {

// ---- the handler

// Paths below the tree that holds the shaders are the same on every machine.
std::string shortened(std::string text) {
    const std::string root = EXAMPLES_ROOT "/";
    for (std::size_t at = text.find(root); at != std::string::npos; at = text.find(root, at))
        text.erase(at, root.size());
    return text;
}

std::string placeOf(const KyDiagnostics::Message& message) {
    if (message.file != nullptr)
        return message.file + (message.line > 0 ? ":" + std::to_string(message.line) : "");
    if (message.context == KYGL_NO_CONTEXT) return "faults";
    return "context " + std::to_string(message.context);
}

void print(const KyDiagnostics::Message& message, void* /*user*/) {
    static const char* const kSeverities[] = {"note", "warning", "error"};
    const std::string line = placeOf(message) + ": " +
                             kSeverities[static_cast<int>(message.severity)] + ": " + message.text;
    std::printf("  %s\n", shortened(line).c_str());
}

// ---- the faults; GL context 3 is current

void build(const char* vertexFile, const char* fragmentFile, const char* macro = nullptr) {
    KyShaderProgram program;
    program.create(vertexFile, fragmentFile, "faults");
    if (macro != nullptr) program.pushMacro(macro);
    program.compile(3);  // false, and no more than that, is what the caller learns
}

void nestedError() {
    build("plain.vert", "lit.frag");
}

void missingInclude() {
    build("plain.vert", "fog.frag");
}

void includeCycle() {
    build("plain.vert", "cycle.frag");
}

void varyings() {
    build("plain.vert", "solid.frag");
}

void lateVersion() {
    build("plain.vert", "dated.frag", "FOG");
}

void wrongFolder() {
    KyShader::mFolderPath = EXAMPLES_ROOT "/build";
    build("plain.vert", "plain.frag");
}

template <typename Value>
void applyWith(const char* uniform, Value value) {
    KyShaderProgram program;
    program.create("plain.vert", "plain.frag", "faults");
    program.setUniform(uniform, value);
    for (int frame = 0; frame < 100; ++frame)
        program.apply(3);
    program.unUse();
}

void floatForInt() {
    applyWith("steps", 4.0F);
}

void mistypedName() {
    applyWith("heigth", 0.5F);
}

void idNeverSet() {
    KyShaderProgram program;
    program.create("plain.vert", "plain.frag", "faults");
    program.apply(7);
    program.unUse();
}

void nobodyDrains() {
    for (int i = 0; i < 20000; ++i) {
        GLuint name = 0;
        glGenTextures(1, &name);
        KyDeferredDeleteMap::pushTextureHandle(name, 3);
    }
}

void wrongDrain() {
    const GlxBuffer other(16);
    kyglSetContext(5);
    KyDeferredDeleteMap::deferredDelete(3);
}

void missingFont() {
    KyGLText::setFont(18, true, false, "helvetika");
}

void staleError() {
    glEnable(GL_TEXTURE);  // no such capability
    build("plain.vert", "plain.frag");
}

void idUsedAgain() {
    const GlxBuffer next(16);
    kyglSetContext(3);
}

struct Fault {
    const char* name;
    const char* what;
    void (*commit)();
};
constexpr Fault kFaults[] = {
    {"nested-error", "a syntax error in a file that an included file includes", nestedError},
    {"missing-include", "an included file that is not there", missingInclude},
    {"include-cycle", "a file that includes itself by way of another", includeCycle},
    {"float-for-int", "a float for a uniform that is an int, in each of 100 frames", floatForInt},
    {"mistyped-name", "a uniform by a wrong name, in each of 100 frames", mistypedName},
    {"varyings", "a varying with two types", varyings},
    {"late-version", "a #version after the macros of the program", lateVersion},
    {"id-never-set", "a context id that kyglSetContext never got", idNeverSet},
    {"nobody-drains", "20,000 textures let go of, and no drain", nobodyDrains},
    {"wrong-drain", "a drain while another GL context is current", wrongDrain},
    {"missing-font", "a font that the X server does not have", missingFont},
    {"stale-error", "a GL error that was left unchecked before a build", staleError},
    {"wrong-folder", "the wrong shader folder", wrongFolder},
    {"id-used-again", "the id of one GL context set for another", idUsedAgain},
};

// ---- one after the other

// Each has GL objects and ids of its own. What the fault left is cleared away unobserved.
void run(const Fault& fault) {
    std::printf("%s: %s\n", fault.name, fault.what);
    KyShader::mFolderPath = EXAMPLES_ROOT;
    KyDiagnostics::enable(print);
    const GlxBuffer gl(16);
    kyglSetContext(3);
    fault.commit();
    KyDiagnostics::disable();
    gl.makeCurrent();
    KyDeferredDeleteMap::deferredDelete(3);
    kyglClearAllContexts();
}

void runNamed(const std::string& name) {
    const auto* const fault = std::find_if(std::begin(kFaults), std::end(kFaults),
                                           [&](const Fault& each) { return each.name == name; });
    if (fault == std::end(kFaults)) throw std::runtime_error("no fault " + name);
    run(*fault);
}

}  // namespace

int main(int argc, char** argv) try {
    // What the library reports on its own, unasked, is a GL error by its number, for each frame.
    KyResult::setReporter([](const KyResult&, KyResult::Report) {});
    for (int i = 1; i < argc; ++i)
        runNamed(argv[i]);
    for (const Fault& fault : kFaults)
        if (argc == 1) run(fault);
    return 0;
} catch (const std::exception& e) {
    std::fprintf(stderr, "faults: %s\n", e.what());
    return 1;
}
