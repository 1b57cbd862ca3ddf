// The variants of one program: what the first build of each takes.

#include "variants.h"

#include "support.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/KyShader.h>
#include <kygl/KyShaderMacro.h>
#include <kygl/KyShaderProgram.h>
#include <sogl/SoGLEW.h>

#include <deque>
#include <stdexcept>
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
    if (glGetError() != GL_NO_ERROR) throw std::runtime_error("GL error");
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

}  // namespace

void addVariants() {
    addFirstBuild<NoOpGL>("firstBuild");
    addFirstBuild<RealGL>("firstBuildDriver");
}
