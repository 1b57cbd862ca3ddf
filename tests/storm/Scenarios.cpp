#include "Scenarios.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/kygl.h>
#include <kygl/kyglShaderARB.h>
#include <kygl/kyglShaderGLSL.h>
#include <kygl/KyGLText.h>
#include <kygl/KyShader.h>
#include <kygl/KyShaderProgram.h>
#include <kygl/KyShaderTechnique.h>
#include <kygl/KyTexture.h>

namespace {

using Queue = KyDeferredDeleteMap;

// The files are in the folder "storm" of the shader tree, and include others.
constexpr const char* kVertex = "v";
constexpr const char* kFragment = "f";

void enter(unsigned int context) {
    ModelGL::makeCurrent(context);
}

Scenario mainRoad(ModelGL& gl, unsigned int a, unsigned int b) {
    struct World {
        KyShaderProgram program;
        KyShaderParametersMacros set;
        bool compile(unsigned int context) {
            enter(context);
            program.apply(context);
            return program.compile(context) && program.isApplied();
        }
    };
    const auto world = std::make_shared<World>();
    const auto create = [=] {
        world->program.create(kVertex, kFragment, "storm");
        return true;
    };
    using Change = bool (KyShaderProgram::*)(const KyString&);
    const auto fails = [=, &gl](bool ModelGL::*how, Change push, Change remove) {
        gl.*how = false;
        (world->program.*push)("BROKEN");
        const bool failed = !world->compile(a);
        gl.*how = true;
        (world->program.*remove)("BROKEN");
        return failed && world->compile(a);
    };
    return {{{"create", create},
             {"macros",
              [=] {
                  world->program.pushMacro("A");
                  world->program.pushVertexMacro("B 2");
                  return !world->program.pushVertexMacro("A") &&
                         !world->program.pushFragmentMacro("A");
              }},
             {"uniforms",
              [=] {
                  world->program.setUniform("height", 2.5F);
                  return world->program.setUniform("count", 3) != nullptr &&
                         world->program.setUniform("height", 1) == nullptr;
              }},
             {"first apply", [=] { return world->compile(a); }},
             {"other macros",
              [=] {
                  world->program.removeMacro("A");
                  world->program.pushMacro("C");
                  return world->compile(a);
              }},
             {"other context", [=] { return world->compile(b) && world->compile(a); }},
             {"a broken vertex stage",
              [=] {
                  return fails(&ModelGL::compiles, &KyShaderProgram::pushVertexMacro,
                               &KyShaderProgram::removeVertexMacro);
              }},
             {"a broken fragment stage",
              [=] {
                  return fails(&ModelGL::compiles, &KyShaderProgram::pushFragmentMacro,
                               &KyShaderProgram::removeFragmentMacro);
              }},
             {"a broken link",
              [=] {
                  return fails(&ModelGL::links, &KyShaderProgram::pushMacro,
                               &KyShaderProgram::removeMacro);
              }},
             {"a whole set",
              [=] {
                  world->set.pushMacro("D");
                  world->program.setParameter(world->set);
                  return world->compile(b);
              }},
             {"at once",
              [=] {
                  world->program.getAttribLocation("position");
                  const bool sent = world->program.applyUniform("height", 3.0F);
                  world->program.unUse();
                  return sent;
              }},
             {"create anew", [=] { return create() && world->compile(a); }},
             {"delete",
              [=] {
                  world->program.deleteProgram();
                  return !world->program.isApplied();
              }}},
            {},
            {},
            world};
}

Scenario plainTechnique(ModelGL& gl, unsigned int a, unsigned int b) {
    struct World {
        KyVertexShader vertex{kVertex, "storm", false};
        KyVertexShader other{kVertex, "storm", false};
        KyFragmentShader fragment{kFragment, "storm", false};
        KyShaderTechnique technique{&vertex, &fragment};
        bool compile(unsigned int context) {
            enter(context);
            return technique.compile(context);
        }
    };
    const auto world = std::make_shared<World>();
    return {{{"link", [=] { return world->compile(a); }},
             {"link elsewhere", [=] { return world->compile(b); }},
             {"another macro",
              [=] {
                  world->vertex.pushParameter("A");
                  return world->compile(b);
              }},
             {"a broken link",
              [=, &gl] {
                  gl.links = false;
                  world->fragment.clearParameters();
                  world->fragment.pushParameter("BROKEN");
                  const bool failed = !world->compile(b);
                  gl.links = true;
                  return failed && world->compile(b);
              }},
             {"another shader",
              [=] {
                  world->technique.setVertexShader(&world->other);
                  return world->compile(a);
              }},
             {"let go",
              [=] {
                  world->technique.deleteTechnique();
                  world->fragment.deleteShader();
                  return world->technique.getAttribLocation("position") == -1;
              }}},
            {},
            {},
            world};
}

// What was handed out is the caller's.
struct Names {
    unsigned int vertex = 0, fragment = 0, program = 0;
};

template <typename Prepare, typename Link, typename Log>
Scenario backEnd(ModelGL& gl, unsigned int a, Prepare prepare, Link link, Log readLog) {
    const auto names = std::make_shared<Names>();
    const auto letGo = [=, &gl] {
        for (unsigned int* const name : {&names->vertex, &names->fragment, &names->program})
            gl.destroy(std::exchange(*name, 0));
    };
    return {
        {{"prepare and link",
          [=] {
              enter(a);
              letGo();
              return prepare("v", "f", &names->vertex, &names->fragment, &names->program).ok() &&
                     link(names->program).ok();
          }},
         {"logs of any length",
          [=, &gl] {
              bool good = true;
              for (const int length : {-5, 0, 1, 5, 4096}) {
                  gl.logLength = length;
                  KyString log("former");
                  good = readLog(names->program, log).ok() && good;
                  gl.links = false;
                  good = link(names->program).failed() && good;
                  gl.links = true;
                  gl.build(names->program, true);
              }
              return good;
          }},
         {"a broken stage",
          [=, &gl] {
              letGo();
              gl.compiles = false;
              const bool failed =
                  prepare("v", "f", &names->vertex, &names->fragment, &names->program).failed();
              gl.compiles = true;
              return failed;
          }},
         {"let go",
          [=] {
              letGo();
              return true;
          }}},
        {},
        {},
        names};
}

Scenario assembly(ModelGL& gl, unsigned int a, unsigned int) {
    const auto names = std::make_shared<Names>();
    const auto load = [=, &gl](const char* text) {
        enter(a);
        for (unsigned int* const name : {&names->vertex, &names->fragment})
            gl.destroy(std::exchange(*name, 0));
        return kyglShaderARBPrepareProgram(text, text, &names->vertex, &names->fragment).ok();
    };
    return {{{"load", [=] { return load("!!ARB"); }},
             {"a fault",
              [=, &gl] {
                  gl.errorPosition = 3;
                  const bool loaded = load("a\nb");
                  gl.hasStrings = false;
                  const bool again = load("a\nb");
                  gl.hasStrings = true;
                  gl.errorPosition = -1;
                  return loaded && again;
              }},
             {"let go",
              [=, &gl] {
                  for (unsigned int* const name : {&names->vertex, &names->fragment})
                      gl.destroy(std::exchange(*name, 0));
                  return true;
              }}},
            {},
            {},
            names};
}

Scenario text(ModelGL&, unsigned int a, unsigned int b) {
    const auto start = [](unsigned int context) {
        enter(context);
        kyglSetContext(context);
    };
    const auto cleanUp = [=] {
        for (const unsigned int context : {a, b}) {
            start(context);
            KyGLText::cleanUp();
        }
        return true;
    };
    const auto extent = [] {
        int width = 0, height = 0;
        return KyGLText::textExtent("a b\nc", width, height) == 2 && width > 0 && height > 0;
    };
    return {{{"first use",
              [=] {
                  start(a);
                  KyGLText::setPixelOffset(1, 2);
                  return extent();
              }},
             {"another font",
              [=] {
                  KyGLText::setFont(14, false, true, "courier");
                  return extent();
              }},
             {"a drawing",
              [=] {
                  KyGLText::setForeground(1, 1, 1, 0.5F);
                  KyGLText::setBackground(0, 0, 0, 0.5F);
                  KyGLText::setAlignment(0, 0);
                  KyGLText::render(0, 0, 0, "1\n2\n3\n4\n5\n6\n7\n8\n9\\n10");
                  KyGLText::render(0, 0, 0, L"wide");
                  return extent();
              }},
             {"another context",
              [=] {
                  start(b);
                  KyGLText::fontBase(18);
                  KyGLText::render(0, 0, 0, "text");
                  return KyGLText::fontBase(18) > 0;
              }},
             {"clean up", [=] { return cleanUp() && !extent(); }}},
            [=] {
                start(a);
                int width = 0, height = 0;
                KyGLText::textExtent("a b\nc", width, height);
                return std::to_string(width) + ' ' + std::to_string(height);
            },
            [=] { cleanUp(); },
            nullptr};
}

Scenario texture(ModelGL&, unsigned int a, unsigned int b) {
    const auto texture = std::make_shared<KyTexture>();
    static const unsigned char kPixels[64] = {};
    const auto bind = [=](unsigned int context) {
        enter(context);
        return texture->bindTexture(context) == 1;
    };
    const auto change = [=](int size) {
        texture->create1D(kPixels, size);
        return true;
    };
    return {{{"pixels", [=] { return change(16); }},
             {"bind", [=] { return bind(a) && bind(b) && bind(a); }},
             {"other pixels", [=] { return change(8) && bind(b) && bind(a); }},
             {"destroy",
              [=] {
                  texture->destroy();
                  return texture->bindTexture(a) == 0;
              }}},
            {},
            [=] { texture->destroy(); },
            texture};
}

// Each operation is the first of its thread, which has no record yet.
Scenario registry(ModelGL&, unsigned int a, unsigned int b) {
    const auto isA = [=] { return kyglGetContext() == a; };
    return {{{"no context", [] { return kyglGetContext() == KYGL_NO_CONTEXT; }},
             {"first context",
              [=] {
                  enter(a);
                  kyglSetContext(a);
                  return isA();
              }},
             {"capture again",
              [=] {
                  kyglInitContext();
                  return isA() && kyglGLSLAvailable(a);
              }},
             {"an unknown id", [=] { return !kyglVBOsAvailable(b) && isA(); }},
             {"second context",
              [=] {
                  kyglSetContext(b);
                  return kyglGetContext() == b;
              }},
             {"forget",
              [=] {
                  kyglClearContext(a);
                  return kyglGetContext() == b;
              }}},
            [] { return std::to_string(kyglGetContext()); },
            {},
            nullptr};
}

Scenario queue(ModelGL& gl, unsigned int a, unsigned int b) {
    const auto mine = std::make_shared<std::vector<unsigned int>>();
    for (int i = 0; i < 4; ++i) {
        enter(a);
        mine->push_back(gl.make("buffer"));
    }
    return {{{"push",
              [=] {
                  for (; !mine->empty(); mine->pop_back())
                      Queue::pushBufferHandle(mine->back(), a);
                  return Queue::pending(a).total() == 4;
              }},
             {"drain elsewhere",
              [=] {
                  enter(b);
                  Queue::deferredDelete(b);
                  return Queue::pending(a).total() == 4;
              }},
             {"drain",
              [=] {
                  enter(a);
                  Queue::deferredDelete(a);
                  return Queue::pending(a).total() == 0;
              }}},
            {},
            {},
            mine};
}

}  // namespace

const std::vector<Subject> kSubjects = {
    {"main road", mainRoad},
    {"plain technique", plainTechnique},
    {"ARB back-end",
     [](ModelGL& gl, unsigned int a, unsigned int) {
         return backEnd(gl, a, kyglShaderGLSLPrepareProgram, kyglShaderGLSLLinkProgram,
                        kyglShaderGLSLGetProgramsInfoLog);
     }},
    {"core back-end",
     [](ModelGL& gl, unsigned int a, unsigned int) {
         return backEnd(gl, a, kyglShaderGLSLPrepareProgram2, kyglShaderGLSLLinkProgram2,
                        kyglShaderGLSLGetProgramsInfoLog2);
     }},
    {"assembly programs", assembly},
    {"text", text},
    {"texture", texture},
    {"registry", registry},
    {"queue", queue}};
