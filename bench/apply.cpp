// A steady apply and unUse: beside the same GL calls written by hand, and beside a table that finds
// its program by context and macros. Also in a program with many variants, and
// with every uniform set to another value first.

#include "support.h"

#include <kygl/KyDiagnostics.h>
#include <kygl/kygl.h>
#include <kygl/kyglShaderGLSL.h>
#include <kygl/KyShaderProgram.h>
#include <kygl/KyShaderUniform.h>
#include <sogl/SoGLContext.h>
#include <sogl/SoGLEW.h>

#include <stdexcept>
#include <unordered_map>
#include <vector>

namespace {

using UniformMode = KyShaderProgram::UniformMode;

constexpr unsigned int kContext = 1;
constexpr const char* kVertex = "void main() { gl_Position = gl_Vertex; }\n";

std::string uniformName(int i) {
    return "weight" + std::to_string(i);
}

std::string fragmentText(int uniforms) {
    std::string declarations;
    std::string sum = "0.0";
    for (int i = 0; i < uniforms; ++i) {
        declarations += "uniform float " + uniformName(i) + ";\n";
        sum += " + " + uniformName(i);
    }
    return declarations + "void main() { gl_FragColor = vec4(" + sum + "); }\n";
}

template <typename GL>
struct Library {
    GL gl;
    KyShaderProgram program;

    explicit Library(int uniforms, UniformMode mode = UniformMode::ByName) {
        writeShader("apply.vert", kVertex);
        writeShader("apply.frag", fragmentText(uniforms));
        program.create("apply.vert", "apply.frag", "bench");
        program.pushMacro("FOG");
        program.pushMacro("LIGHTS 3");
        for (int i = 0; i < uniforms; ++i)
            program.setUniform(uniformName(i).c_str(), 0.5F);
        program.setUniformMode(mode);
        if (!program.compile(kContext)) throw std::runtime_error("the program does not build");
    }

    void operator()() {
        program.apply(kContext);
        program.unUse();
    }
};

// With diagnostics on and nothing to report. This GL does not list the uniforms of a program.
struct Diagnosed : Library<NoOpGLInContext> {
    explicit Diagnosed(int uniforms) : Library(uniforms) {
        KyDiagnostics::enable(nullptr, nullptr, KyDiagnostics::All & ~KyDiagnostics::Uniform);
        kyglSetContext(kContext);
    }
    ~Diagnosed() {
        KyDiagnostics::disable();
        kyglClearAllContexts();
    }
};

// The part of it that asks GLX which context is current.
struct AskingForContext {
    NoOpGLInContext gl;
    void operator()() const { benchmark::DoNotOptimize(SoGLContext::getCurrent(false)); }
};

// The program has built other variants as well.
struct AmongVariants : Library<NoOpGL> {
    explicit AmongVariants(int variants) : Library(4) {
        for (int i = 1; i < variants; ++i) {
            const KyString macro(0, "VARIANT %d", i);
            program.pushMacro(macro);
            if (!program.compile(kContext)) throw std::runtime_error("a variant does not build");
            program.removeMacro(macro);
        }
    }
};

// Sets the uniforms by name.
template <typename GL>
struct Named : Library<GL> {
    std::vector<KyString> names;

    explicit Named(int uniforms, UniformMode mode = UniformMode::ByName)
        : Library<GL>(uniforms, mode) {
        for (int i = 0; i < uniforms; ++i)
            names.emplace_back(uniformName(i).c_str());
    }

    void set(float value) {
        for (const KyString& name : names)
            this->program.setUniform(name, value);
    }
};

// Sets the uniforms through the pointers that `setUniform` returned.
template <typename GL>
struct Kept : Library<GL> {
    std::vector<KyShaderUniformFloat*> kept;

    explicit Kept(int uniforms, UniformMode mode = UniformMode::ByName)
        : Library<GL>(uniforms, mode) {
        for (int i = 0; i < uniforms; ++i)
            kept.push_back(dynamic_cast<KyShaderUniformFloat*>(
                this->program.setUniform(uniformName(i).c_str(), 0.5F)));
    }

    void set(float value) {
        for (KyShaderUniformFloat* const uniform : kept)
            uniform->setValue(value);
    }
};

void check() {
    if (const GLenum error = glGetError()) std::fprintf(stderr, "GL error %#x\n", error);
}

template <typename GL>
struct Raw {
    struct Uniform {
        std::string name;
        float value;
    };
    GL gl;
    GLuint program = 0;
    std::vector<Uniform> uniforms;

    explicit Raw(int count) {
        unsigned int vertex = 0;
        unsigned int fragment = 0;
        kyglShaderGLSLPrepareProgram(kVertex, fragmentText(count).c_str(), &vertex, &fragment,
                                     &program);
        if (!kyglShaderGLSLLinkProgram(program).ok())
            throw std::runtime_error("the program does not build");
        for (int i = 0; i < count; ++i)
            uniforms.push_back({uniformName(i), 0.5F});
    }

    void set(float value) {
        for (Uniform& uniform : uniforms)
            uniform.value = value;
    }

    void operator()() const {
        glUseProgram(program);
        check();
        for (const Uniform& uniform : uniforms) {
            const GLint location = glGetUniformLocation(program, uniform.name.c_str());
            check();
            if (location < 0) continue;
            glUniform1f(location, uniform.value);
            check();
        }
        glUseProgram(0);
        check();
    }
};

// Gives each uniform another value before each step.
template <typename Side>
struct Changing : Side {
    using Side::Side;
    float value = 0.25F;

    void operator()() {
        value = 1 - value;
        Side::set(value);
        Side::operator()();
    }
};

// Sets each uniform to the value that it has before each step.
template <typename Side>
struct Setting : Side {
    using Side::Side;

    void operator()() {
        Side::set(0.5F);
        Side::operator()();
    }
};

struct Table {
    struct Key {
        unsigned int context;
        std::string macros;
        bool operator==(const Key& other) const {
            return context == other.context && macros == other.macros;
        }
    };
    struct Hash {
        std::size_t operator()(const Key& key) const {
            return std::hash<std::string>()(key.macros) * 31 + key.context;
        }
    };
    std::unordered_map<Key, Raw<NoOpGL>, Hash> programs;
    Key wanted{kContext, "FOG\nLIGHTS 3\n"};

    explicit Table(int uniforms) {
        for (const unsigned int context : {kContext, kContext + 1})
            for (const char* const macros : {"FOG\n", "FOG\nLIGHTS 3\n"})
                programs.try_emplace(Key{context, macros}, uniforms);
    }

    void operator()() const { programs.find(wanted)->second(); }
};

template <typename GL>
void addChanging(const std::string& name, int uniforms, double limit) {
    addSide(name + "/library", [=] { return Changing<Named<GL>>(uniforms); });
    addSide(name + "/kept", [=] { return Changing<Kept<GL>>(uniforms); });
    addSide(name + "/raw", [=] { return Changing<Raw<GL>>(uniforms); });
    addRatio({name + "/library", name + "/raw", limit});
    addRatio({name + "/kept", name + "/raw", limit});
}

// The modes that save GL calls, beside the calls by name.
template <typename GL>
void addModes(const std::string& suffix, double keptLimit, double changesLimit) {
    const std::string kept = "keptLocations16" + suffix;
    addSide(kept + "/library", [] { return Changing<Kept<GL>>(16, UniformMode::KeptLocations); });
    addSide(kept + "/steady", [] { return Library<GL>(16, UniformMode::KeptLocations); });
    addRatio({kept + "/library", "changing16" + suffix + "/raw", keptLimit});
    addRatio({kept + "/steady", "apply16" + suffix + "/raw"});

    const std::string changes = "changesOnly16" + suffix;
    addSide(changes + "/library", [] { return Library<GL>(16, UniformMode::ChangesOnly); });
    addSide(changes + "/again", [] { return Setting<Named<GL>>(16, UniformMode::ChangesOnly); });
    addRatio({changes + "/library", "apply16" + suffix + "/raw", changesLimit});
    addRatio({changes + "/again", "changing16" + suffix + "/raw"});
}

}  // namespace

void addApply() {
    for (const int uniforms : {4, 16}) {
        const std::string name = "apply" + std::to_string(uniforms);
        addSide(name + "/library", [=] { return Library<NoOpGL>(uniforms); });
        addSide(name + "/raw", [=] { return Raw<NoOpGL>(uniforms); });
        addSide(name + "/table", [=] { return Table(uniforms); });
        addRatio({name + "/library", name + "/raw"});
        addRatio({name + "/library", name + "/table"});
        addSide(name + "/diagnosed", [=] { return Diagnosed(uniforms); });
        addRatio({name + "/diagnosed", name + "/library"});

        const std::string driver = name + "Driver";
        addSide(driver + "/library", [=] { return Library<RealGL>(uniforms); });
        addSide(driver + "/raw", [=] { return Raw<RealGL>(uniforms); });
        addRatio({driver + "/library", driver + "/raw", 1.05});
    }
    addSide("currentContext", [] { return AskingForContext(); });
    for (const int variants : {1, 1000})
        addSide("apply4/variants" + std::to_string(variants),
                [=] { return AmongVariants(variants); });
    addRatio({"apply4/variants1000", "apply4/variants1", 1.05});
    for (const int uniforms : {4, 16}) {
        const std::string name = "changing" + std::to_string(uniforms);
        addChanging<NoOpGL>(name, uniforms, 0);
        addChanging<RealGL>(name + "Driver", uniforms, 1.05);
    }
    addModes<NoOpGL>("", 0, 0);
    addModes<RealGL>("Driver", 0.58, 0.20);
}
