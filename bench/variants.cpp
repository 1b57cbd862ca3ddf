// The variants of one program: what the first build of each takes, and the heap that it holds.

#include "variants.h"

#include "support.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/KyShader.h>
#include <kygl/KyShaderMacro.h>
#include <kygl/KyShaderProgram.h>
#include <sogl/SoGLEW.h>

#include <cstdlib>
#include <deque>
#include <stdexcept>
#include <unordered_map>
#include <vector>

namespace {

constexpr unsigned int kContext = 1;

// Builds one variant after the other. The time of each holds its share of making the program and of
// deleting it with all variants, on both sides.
template <typename GL>
struct FirstBuild {
    static constexpr std::size_t kVariants = 64;

    GL gl;
    std::deque<KyShaderParametersMacros> macroSets;
    std::size_t built = kVariants;

    FirstBuild() {
        writeShader("variant.vert",
                    "#ifdef ENABLE_CLIPVERTEX\n"
                    "void clip() { gl_ClipVertex = gl_ModelViewMatrix * gl_Vertex; }\n"
                    "#else\n"
                    "void clip() {}\n"
                    "#endif\n"
                    "void main() { clip(); gl_Position = ftransform(); }\n");
        writeShader("variant.frag",
                    "#ifdef FOG\n"
                    "float fog() { return gl_FragCoord.z; }\n"
                    "#else\n"
                    "float fog() { return 1.0; }\n"
                    "#endif\n"
                    "void main() { gl_FragColor = vec4(fog() / float(LIGHTS)); }\n");
        for (std::size_t i = 0; i < kVariants; ++i) {
            KyShaderParametersMacros& macros = macroSets.emplace_back();
            for (const std::string& text : kFixedMacros)
                macros.pushMacro(text.c_str());
            macros.pushMacro(lastMacro(i).c_str());
        }
    }
};

template <typename GL>
struct Library : FirstBuild<GL> {
    KyShaderProgram program;

    void operator()() {
        if (this->built == this->kVariants) restart();
        program.setParameter(this->macroSets[this->built++]);
        if (!program.compile(kContext)) throw std::runtime_error("the program does not build");
    }

    void restart() {
        program.create("variant.vert", "variant.frag", "bench");
        KyDeferredDeleteMap::deferredDelete(kContext);
        this->built = 0;
    }
};

void check() {
    if (glGetError() != GL_NO_ERROR) std::abort();
}

template <typename Shader>
std::vector<KyString> readyTexts(const char* file,
                                 const std::deque<KyShaderParametersMacros>& macroSets) {
    Shader shader(file, "bench", false);
    std::vector<KyString> texts;
    for (const KyShaderParametersMacros& macros : macroSets) {
        shader.setParameters(macros);
        texts.push_back(shader.loadFromFile());
    }
    return texts;
}

template <typename GL>
struct Raw : FirstBuild<GL> {
    std::vector<KyString> vertexTexts = readyTexts<KyVertexShader>("variant.vert", this->macroSets);
    std::vector<KyString> fragmentTexts =
        readyTexts<KyFragmentShader>("variant.frag", this->macroSets);
    std::vector<GLuint> shaders;
    std::vector<GLuint> programs;

    ~Raw() { restart(); }

    void operator()() {
        if (this->built == this->kVariants) restart();
        const GLuint vertex = compile(GL_VERTEX_SHADER_ARB, vertexTexts[this->built]);
        const GLuint fragment = compile(GL_FRAGMENT_SHADER_ARB, fragmentTexts[this->built++]);
        const GLuint program = glCreateProgramObjectARB();
        check();
        programs.push_back(program);
        glAttachObjectARB(program, vertex);
        check();
        glAttachObjectARB(program, fragment);
        check();
        glLinkProgramARB(program);
        check();
        GLint linked = 0;
        glGetObjectParameterivARB(program, GL_OBJECT_LINK_STATUS_ARB, &linked);
        if (linked == 0) throw std::runtime_error("the program does not link");
    }

    GLuint compile(GLenum type, const KyString& text) {
        const GLuint shader = glCreateShaderObjectARB(type);
        check();
        shaders.push_back(shader);
        const GLcharARB* source = text.dataPtr();
        glShaderSourceARB(shader, 1, &source, nullptr);
        check();
        glCompileShaderARB(shader);
        check();
        GLint compiled = 0;
        glGetObjectParameterivARB(shader, GL_OBJECT_COMPILE_STATUS_ARB, &compiled);
        check();
        if (compiled == 0) throw std::runtime_error("a shader does not compile");
        check();
        return shader;
    }

    void restart() {
        for (const GLuint shader : shaders) {
            glDeleteObjectARB(shader);
            check();
        }
        for (const GLuint program : programs) {
            glDeleteProgram(program);
            check();
        }
        programs.clear();
        shaders.clear();
        this->built = 0;
    }
};

template <typename GL>
void addFirstBuild(const std::string& name) {
    addSide(name + "/library", [] { return Library<GL>(); });
    addSide(name + "/raw", [] { return Raw<GL>(); });
    addRatio({name + "/library", name + "/raw"});
}

// A program whose next variants differ from the last one in a macro.
struct Program {
    NoOpGL gl;
    KyShaderProgram program;

    explicit Program(std::size_t textSize) {
        std::string text = "void main() {}\n";
        while (text.size() < textSize)
            text += "// A line as long as lines of shaders are.\n";
        writeShader("heap.vert", text);
        writeShader("heap.frag", text);
        program.create("heap.vert", "heap.frag", "bench");
        for (const std::string& macro : kFixedMacros)
            program.pushMacro(macro.c_str());
    }

    void build(std::size_t variant) {
        if (variant > 0) program.removeMacro(lastMacro(variant - 1).c_str());
        program.pushMacro(lastMacro(variant).c_str());
        if (!program.compile(kContext)) throw std::runtime_error("the program does not build");
    }
};

struct Table {
    std::unordered_map<std::string, GLuint> programs;

    explicit Table(std::size_t) {}

    void build(std::size_t variant) {
        std::vector<std::string> macros = kFixedMacros;
        macros.push_back(lastMacro(variant));
        programs.emplace(textKey(kContext, macros), static_cast<GLuint>(variant + 1));
    }
};

// The bytes that each variant but the first takes on the heap. They do not depend on what else the
// machine does, so once will do.
template <typename Holder>
void addHeap(const std::string& name, std::size_t textSize, std::size_t variants) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State& state) {
                                     for (auto _ : state) {
                                         Holder holder(textSize);
                                         holder.build(0);
                                         const long bytes = heapGrowth([&] {
                                             for (std::size_t i = 1; i < variants; ++i)
                                                 holder.build(i);
                                         });
                                         state.counters["bytes"] =
                                             static_cast<double>(bytes) /
                                             static_cast<double>(variants - 1);
                                     }
                                 })
        ->Iterations(1)
        ->Repetitions(1)
        ->Unit(benchmark::kMillisecond);
}

}  // namespace

void addVariants() {
    addFirstBuild<NoOpGL>("firstBuild");
    addFirstBuild<RealGL>("firstBuildDriver");
    for (const std::size_t kilobytes : {1U, 100U}) {
        const std::string name = "heap" + std::to_string(kilobytes) + "K/";
        for (const std::size_t variants : {10U, 100U, 1000U}) {
            const std::string row = name + std::to_string(variants);
            addHeap<Program>(row + "/library", kilobytes * 1000, variants);
            addHeap<Table>(row + "/table", kilobytes * 1000, variants);
            addRatio({row + "/library", row + "/table", kilobytes == 100 ? 2700.0 : 0});
        }
        addRatio({name + "1000/library", name + "10/library"});
    }
}
