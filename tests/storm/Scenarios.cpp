#include "Scenarios.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/KyDiagnostics.h>
#include <kygl/kygl.h>
#include <kygl/kyglShaderARB.h>
#include <kygl/kyglShaderGLSL.h>
#include <kygl/KyGLText.h>
#include <kygl/KyShader.h>
#include <kygl/KyShaderProgram.h>
#include <kygl/KyShaderTechnique.h>
#include <kygl/KyTexture.h>

#include <memory>
#include <utility>

namespace {

using Status = RecordedGL::Status;

unsigned int& current() {
    return RecordedGL::current;
}

// ---- shaders; the files "v" and "f" are in the folder "storm" and include others

struct MainRoad {
    KyShaderProgram program;
    KyShaderParametersMacros set;

    bool create() {
        program.create("v", "f", "storm");
        program.pushMacro("A");
        program.pushVertexMacro("B 2");
        program.setUniform("height", 2.5F);
        return program.setUniform("height", 1) == nullptr && !program.pushMacro("A");
    }
    bool apply(unsigned int context) {
        current() = context;
        program.apply(context);
        return program.compile(context) && program.isApplied();
    }
    bool change(unsigned int a, unsigned int b) {
        program.removeMacro("A");
        program.pushMacro("C");
        const bool good = apply(a) && apply(b);
        set.pushMacro("D");
        program.setParameter(set);
        return good && apply(b) && apply(a);
    }
    using Change = bool (KyShaderProgram::*)(const KyString&);
    bool fail(unsigned int context, Status& status, Change push, Change remove, const char* macro) {
        status.always = 0;
        (program.*push)(macro);
        const bool failed = !apply(context);
        status.always = 1;
        (program.*remove)(macro);
        return failed && apply(context);
    }
    // One kind of build after another, with logs of odd lengths.
    bool fail(unsigned int context, RecordedGL& gl) {
        using Program = KyShaderProgram;
        for (const char* const macro : {"V", "F", "L"})
            program.removeMacro(macro);
        gl.linkStatus.always = 1;
        gl.infoLogLength = -5;
        bool good = fail(context, gl.compileStatus, &Program::pushVertexMacro,
                         &Program::removeVertexMacro, "V");
        gl.infoLogLength = 4096;
        good = good && fail(context, gl.compileStatus, &Program::pushFragmentMacro,
                            &Program::removeFragmentMacro, "F");
        gl.infoLogLength = 3;
        return good &&
               fail(context, gl.linkStatus, &Program::pushMacro, &Program::removeMacro, "L");
    }
    bool send() {
        program.getAttribLocation("position");
        const bool sent = program.applyUniform("height", 3.0F);
        program.unUse();
        return sent;
    }
    bool keep(unsigned int context) {
        program.setUniformMode(KyShaderProgram::UniformMode::ChangesOnly);
        program.setUniform("width", 1.5F);
        const bool good = apply(context) && program.applyUniform("width", 2.5F);
        program.forgetSent();
        return good && apply(context);
    }
    bool end() {
        program.deleteProgram();
        return !program.isApplied();
    }
};

Scenario mainRoad(RecordedGL& gl, unsigned int a, unsigned int b) {
    const auto road = std::make_shared<MainRoad>();
    return {{{"create", [=] { return road->create(); }},
             {"apply", [=] { return road->apply(a); }},
             {"fail", [=, &gl] { return road->fail(a, gl); }},
             {"change", [=] { return road->change(a, b); }},
             {"send", [=] { return road->send(); }},
             {"create anew", [=] { return road->create() && road->apply(b); }},
             {"keep", [=] { return road->keep(b); }},
             {"end", [=] { return road->end(); }}}};
}

struct PlainTechnique {
    KyVertexShader vertex{"v", "storm", false}, other{"v", "storm", false};
    KyFragmentShader fragment{"f", "storm", false};
    KyShaderTechnique technique{&vertex, &fragment};

    bool link(unsigned int context) {
        current() = context;
        return technique.compile(context);
    }
    bool change(unsigned int context) {
        vertex.pushParameter("A");
        const bool good = link(context);
        technique.setVertexShader(&other);
        return good && link(context);
    }
    bool fail(unsigned int context, Status& status) {
        status.always = 0;
        fragment.clearParameters();
        fragment.pushParameter("BROKEN");
        const bool failed = !link(context);
        status.always = 1;
        return failed && link(context);
    }
    bool end() {
        technique.deleteTechnique();
        fragment.deleteShader();
        return technique.getAttribLocation("position") == -1;
    }
};

Scenario plainTechnique(RecordedGL& gl, unsigned int a, unsigned int b) {
    const auto plain = std::make_shared<PlainTechnique>();
    return {{{"link", [=] { return plain->link(a); }},
             {"link elsewhere", [=] { return plain->link(b) && plain->link(a); }},
             {"broken link", [=, &gl] { return plain->fail(a, gl.linkStatus); }},
             {"change", [=] { return plain->change(b); }},
             {"end", [=] { return plain->end(); }}}};
}

// ---- back-ends; the names that they hand out are the caller's

struct Names {
    RecordedGL& gl;
    unsigned int vertex = 0, fragment = 0, program = 0;

    bool end() {
        for (unsigned int* const name : {&vertex, &fragment, &program})
            gl.destroy(std::exchange(*name, 0), false);
        return true;
    }
};

template <auto kPrepare, auto kLink, auto kLog>
Scenario backEnd(RecordedGL& gl, unsigned int a, unsigned int) {
    const auto names = std::make_shared<Names>(Names{gl});
    const auto prepare = [=] {
        current() = a;
        names->end();
        return kPrepare("v", "f", &names->vertex, &names->fragment, &names->program).ok();
    };
    const auto readLogs = [=, &gl] {
        bool good = true;
        for (const int length : {-5, 0, 1, 5, 4096}) {
            gl.infoLogLength = length;
            gl.linkStatus.always = 0;
            KyString log("former");
            good = kLog(names->program, log).ok() && kLink(names->program).failed() && good;
            gl.compileStatus.always = 0;
            good = !prepare() && good;
            gl.compileStatus.always = 1;
            prepare();
        }
        gl.linkStatus.always = 1;
        return good;
    };
    return {{{"prepare", [=] { return prepare() && kLink(names->program).ok(); }},
             {"logs of any length", readLogs},
             {"end", [=] { return names->end(); }}}};
}

Scenario assembly(RecordedGL& gl, unsigned int a, unsigned int) {
    const auto names = std::make_shared<Names>(Names{gl});
    const auto load = [=, &gl](int errorPosition, bool hasStrings) {
        current() = a;
        names->end();
        gl.programErrorPosition = errorPosition;
        if (!hasStrings) gl.strings.clear();
        return kyglShaderARBPrepareProgram("a\nb", "c", &names->vertex, &names->fragment).ok();
    };
    return {{{"load", [=] { return load(-1, true); }},
             {"a fault", [=] { return load(3, true) && load(3, false); }},
             {"end", [=] { return names->end(); }}}};
}

// ---- the rest

struct Text {
    unsigned int a, b;

    static void enter(unsigned int context) {
        current() = context;
        kyglSetContext(context);
    }
    static bool extent() {
        int width = 0, height = 0;
        return KyGLText::textExtent("a b\nc", width, height) == 2 && width > 0 && height > 0;
    }
    bool begin() const {
        enter(a);
        KyGLText::setPixelOffset(1, 2);
        return extent();
    }
    static bool draw() {
        KyGLText::setForeground(1, 1, 1, 0.5F);
        KyGLText::setBackground(0, 0, 0, 0.5F);
        KyGLText::render(0, 0, 0, "1\n2\n3\n4\n5\n6\n7\n8\n9\\n10");
        KyGLText::render(0, 0, 0, L"wide");
        return extent();
    }
    static bool setFont() {
        KyGLText::setFont(14, false, true, "courier");
        return extent();
    }
    bool drawElsewhere() const {
        enter(b);
        KyGLText::fontBase(18);
        KyGLText::render(0, 0, 0, "text");
        return KyGLText::fontBase(18) > 0;
    }
    bool end() const {
        for (const unsigned int context : {a, b}) {
            enter(context);
            KyGLText::cleanUp();
        }
        return !extent();
    }
    std::string state() const {
        enter(a);
        int width = 0, height = 0;
        KyGLText::textExtent("a b\nc", width, height);
        return std::to_string(width) + ' ' + std::to_string(height);
    }
};

Scenario text(RecordedGL&, unsigned int a, unsigned int b) {
    const Text text{a, b};
    return {{{"first use", [=] { return text.begin(); }},
             {"draw", Text::draw},
             {"another font", Text::setFont},
             {"elsewhere", [=] { return text.drawElsewhere(); }},
             {"end", [=] { return text.end(); }}},
            [=] { return text.state(); }};
}

Scenario texture(RecordedGL&, unsigned int a, unsigned int b) {
    const auto texture = std::make_shared<KyTexture>();
    const auto bind = [=](unsigned int context) {
        current() = context;
        return texture->bindTexture(context) == 1;
    };
    const auto change = [=](int size) {
        static const unsigned char kPixels[64] = {};
        texture->create1D(kPixels, size);
        return true;
    };
    const auto end = [=] {
        texture->destroy();
        return texture->bindTexture(a) == 0;
    };
    return {{{"pixels", [=] { return change(16); }},
             {"bind", [=] { return bind(a) && bind(b) && bind(a); }},
             {"other pixels", [=] { return change(8) && bind(b) && bind(a); }},
             {"end", end}}};
}

// Each trial has a thread of its own, which has no record at first.
Scenario registry(RecordedGL& gl, unsigned int a, unsigned int b) {
    const auto set = [](unsigned int id) {
        current() = id;
        kyglSetContext(id);
        return kyglGetContext() == id;
    };
    const auto again = [=, &gl] {
        const auto strings = std::exchange(gl.strings, {});
        kyglInitContext();  // the driver has no words
        gl.strings = strings;
        kyglInitContext();
        return kyglGLSLAvailable(a) && !kyglVBOsAvailable(0) && kyglGetContext() == a;
    };
    const auto forget = [=] {
        kyglClearContext(a);
        return kyglGetContext() == b;
    };
    return {{{"no context", [] { return kyglGetContext() == KYGL_NO_CONTEXT; }},
             {"first context", [=] { return set(a); }},
             {"capture again", again},
             {"second context", [=] { return set(b); }},
             {"forget", forget}},
            [] { return std::to_string(kyglGetContext()); }};
}

Scenario queue(RecordedGL& gl, unsigned int a, unsigned int b) {
    using Queue = KyDeferredDeleteMap;
    const auto mine = std::make_shared<std::vector<unsigned int>>();
    current() = a;
    for (int i = 0; i < 4; ++i)
        mine->push_back(gl.make("a test"));
    const auto push = [=] {
        for (; !mine->empty(); mine->pop_back())
            Queue::pushBufferHandle(mine->back(), a);
        return Queue::pending(a).total() == 4;
    };
    const auto drain = [=](unsigned int context) {
        current() = context;
        Queue::deferredDelete(context);
        return Queue::pending(a).total() == (context == a ? 0 : 4);
    };
    return {{{"push", push}, {"drain elsewhere", [=] { return drain(b); }}, {"drain", [=] {
                                                                                 return drain(a);
                                                                             }}}};
}

// Each mistake once: none of them changes what an operation gives.
Scenario diagnostics(RecordedGL& gl, unsigned int a, unsigned int b) {
    using Queue = KyDeferredDeleteMap;
    const auto road = std::make_shared<MainRoad>();
    const auto turnOn = [] {
        KyDiagnostics::setQueueLimit(1);
        KyDiagnostics::enable([](const KyDiagnostics::Message&, void*) {});
        return true;
    };
    const auto goWrong = [=, &gl] {
        road->apply(a);  // the id was never set
        Text::enter(a);
        Text::enter(b);
        kyglSetContext(a);
        Text::enter(a);
        road->apply(a);
        current() = b;
        gl.errors.push_back(GL_INVALID_ENUM);
        road->program.apply(a);
        for (int i = 0; i < 2; ++i)
            Queue::pushBufferHandle(gl.make("a test"), b);
        Queue::deferredDelete(0);
        kyglClearContext(b);
        gl.errors.clear();
        return road->apply(a);
    };
    const auto turnOff = [] {
        KyDiagnostics::disable();
        KyDiagnostics::setQueueLimit(10000);
        return true;
    };
    return {{{"create", [=] { return road->create(); }},
             {"turn on", turnOn},
             {"go wrong", goWrong},
             {"turn off", turnOff},
             {"end", [=] { return road->end(); }}}};
}

}  // namespace

const std::vector<Subject> kSubjects = {
    {"main road", mainRoad},
    {"plain technique", plainTechnique},
    {"ARB back-end", backEnd<kyglShaderGLSLPrepareProgram, kyglShaderGLSLLinkProgram,
                             kyglShaderGLSLGetProgramsInfoLog>},
    {"core back-end", backEnd<kyglShaderGLSLPrepareProgram2, kyglShaderGLSLLinkProgram2,
                              kyglShaderGLSLGetProgramsInfoLog2>},
    {"assembly programs", assembly},
    {"text", text},
    {"texture", texture},
    {"registry", registry},
    {"queue", queue},
    {"diagnostics", diagnostics}};
