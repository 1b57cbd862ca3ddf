#include <kygl/kyglShaderGLSL.h>

#include "kyglBuildStamp.h"
#include "kyglCheck.h"

#include <sogl/SoGLContext.h>

#include <algorithm>

namespace {

constexpr char kSource[] = "internal/kyglShaderGLSL";

// The two sets of entry points. Each call stands here once, with its check; the texts of the checks
// are the calls as they stand, so casts and names keep the form in which callers know them.
// clang-format off
// NOLINTBEGIN(google-readability-casting,modernize-use-nullptr,cppcoreguidelines-pro-type-cstyle-cast)

/// The entry points of the ARB object extensions.
struct ArbSet {
    static KyResult createShader(unsigned int& id, int inIsVertexShader) {
        return KYGL_CHECKED(id = glCreateShaderObjectARB(inIsVertexShader ? GL_VERTEX_SHADER_ARB : GL_FRAGMENT_SHADER_ARB), 0);
    }
    static KyResult setSource(unsigned int id, const char* str) {
        return KYGL_CHECKED(glShaderSourceARB(id, 1, (const GLcharARB**)(&str), NULL), 0);
    }
    static KyResult compile(unsigned int id) {
        return KYGL_CHECKED(glCompileShaderARB(id), 0);
    }
    static KyResult getCompileStatus(unsigned int id, int& compiled) {
        return KYGL_CHECKED(glGetObjectParameterivARB(id, GL_OBJECT_COMPILE_STATUS_ARB, &compiled), 0);
    }
    static KyResult getShaderLogLength(unsigned int id, int& blen) {
        return KYGL_CHECKED(glGetObjectParameterivARB(id, GL_OBJECT_INFO_LOG_LENGTH_ARB, &blen), 0);
    }
    static KyResult getShaderLog(unsigned int id, int blen, KyString& log) {
        return KYGL_CHECKED(glGetInfoLogARB(id, blen, 0, log.getString()), 1);
    }
    static KyResult createProgram(unsigned int* ioP) {
        return KYGL_CHECKED(*ioP = glCreateProgramObjectARB(), 0);
    }
    static KyResult attachVertex(const unsigned int* ioP, const unsigned int* ioV) {
        return KYGL_CHECKED(glAttachObjectARB(*ioP, *ioV), 0);
    }
    static KyResult attachFragment(const unsigned int* ioP, const unsigned int* ioF) {
        return KYGL_CHECKED(glAttachObjectARB(*ioP, *ioF), 0);
    }
    static void link(unsigned int inProgram) {
        KYGL_CHECKED(glLinkProgramARB(inProgram), 1);
    }
    // A driver that stores nothing leaves the program counted as not linked.
    static int linkStatus(unsigned int inProgram) {
        int linked = 0;
        glGetObjectParameterivARB(inProgram, GL_OBJECT_LINK_STATUS_ARB, &linked);
        return linked;
    }
    static void getLinkLog(unsigned int inProgram, KyString& log) {
        KYGL_CHECKED(kyglShaderGLSLGetProgramsInfoLog(inProgram, log), 2);
    }
    static void getProgramLogLength(unsigned int inProgram, int& blen) {
        glGetObjectParameterivARB(inProgram, GL_OBJECT_INFO_LOG_LENGTH_ARB, &blen);
    }
    static KyResult getProgramLog(unsigned int inProgram, int blen, KyString& outLog) {
        return KYGL_CHECKED(glGetInfoLogARB(inProgram, blen, 0, outLog.getString()), 0);
    }
};

/// The entry points of the core.
struct CoreSet {
    static KyResult createShader(unsigned int& id, int inIsVertexShader) {
        return KYGL_CHECKED(id = glCreateShader(inIsVertexShader ? GL_VERTEX_SHADER : GL_FRAGMENT_SHADER), 0);
    }
    static KyResult setSource(unsigned int id, const char* str) {
        return KYGL_CHECKED(glShaderSource(id, 1, (const GLcharARB**)(&str), NULL), 0);
    }
    static KyResult compile(unsigned int id) {
        return KYGL_CHECKED(glCompileShader(id), 0);
    }
    static KyResult getCompileStatus(unsigned int id, int& compiled) {
        return KYGL_CHECKED(glGetShaderiv(id, GL_COMPILE_STATUS, &compiled), 0);
    }
    static KyResult getShaderLogLength(unsigned int id, int& blen) {
        return KYGL_CHECKED(glGetShaderiv(id, GL_INFO_LOG_LENGTH, &blen), 0);
    }
    static KyResult getShaderLog(unsigned int id, int blen, KyString& log) {
        return KYGL_CHECKED(glGetShaderInfoLog(id, blen, 0, log.getString()), 1);
    }
    static KyResult createProgram(unsigned int* ioP) {
        return KYGL_CHECKED(*ioP = glCreateProgram(), 0);
    }
    static KyResult attachVertex(const unsigned int* ioP, const unsigned int* ioV) {
        return KYGL_CHECKED(glAttachShader(*ioP, *ioV), 0);
    }
    static KyResult attachFragment(const unsigned int* ioP, const unsigned int* ioF) {
        return KYGL_CHECKED(glAttachShader(*ioP, *ioF), 0);
    }
    static void link(unsigned int inProgram) {
        KYGL_CHECKED(glLinkProgram(inProgram), 1);
    }
    // A driver that stores nothing leaves the program counted as linked.
    static int linkStatus(unsigned int inProgram) {
        int linked = 666;
        glGetProgramiv(inProgram, GL_LINK_STATUS, &linked);
        return linked;
    }
    static void getLinkLog(unsigned int inProgram, KyString& log) {
        KYGL_CHECKED(kyglShaderGLSLGetProgramsInfoLog2(inProgram, log), 2);
    }
    static void getProgramLogLength(unsigned int inProgram, int& blen) {
        glGetProgramiv(inProgram, GL_INFO_LOG_LENGTH, &blen);
    }
    static KyResult getProgramLog(unsigned int inProgram, int blen, KyString& outLog) {
        return KYGL_CHECKED(glGetProgramInfoLog(inProgram, blen, 0, outLog.getString()), 0);
    }
};

// NOLINTEND(google-readability-casting,modernize-use-nullptr,cppcoreguidelines-pro-type-cstyle-cast)
// clang-format on

// Room for a log of `length` bytes and a closing NUL, all zero, so that a fetch which writes
// nothing leaves the empty text.
void makeRoom(KyString& log, int length) {
    log.reserve(long{std::max(length, 0)} + 1);
    log.resize(length);
    std::fill(log.data, log.data + log.size, '\0');
    log.append('\0');
}

template <typename Set>
KyResult compileError(unsigned int id) {
    int blen = 0;
    KyString log;
    const KyResult asked = Set::getShaderLogLength(id, blen);
    if (asked.failed()) return asked;
    makeRoom(log, blen);
    Set::getShaderLog(id, blen, log);
    const KyString message(0, "Shader Error: %s", log.dataPtr());
    return KyResult(1, message.dataPtr(), "", false);
}

template <typename Set>
KyResult createObject(const KyString& source, unsigned int& outShader, int inIsVertexShader) {
    outShader = 0;
    unsigned int id = 0;
    int compiled = 0;
    KyResult step = Set::createShader(id, inIsVertexShader);
    if (step.failed()) return step;
    step = Set::setSource(id, source.getString());
    if (step.failed()) return step;
    step = Set::compile(id);
    if (step.failed()) return step;
    step = Set::getCompileStatus(id, compiled);
    if (step.failed()) return step;
    if (compiled == 0) return compileError<Set>(id);
    outShader = id;
    return KyOK;
}

template <typename Set>
KyResult prepareProgram(const KyString& vertexSource, const KyString& fragmentSource,
                        unsigned int* ioV, unsigned int* ioF, unsigned int* ioP) {
    KYGL_CHECK_GROUP(1);
    if (ioP == nullptr) return KyResult(1, "", "", false);
    KyResult step = Set::createProgram(ioP);
    if (step.failed()) return step;
    if (ioV != nullptr) step = createObject<Set>(vertexSource, *ioV, 1);
    if (step.failed()) return step;
    if (ioF != nullptr) step = createObject<Set>(fragmentSource, *ioF, 0);
    if (step.failed()) return step;
    KYGL_CHECK_GROUP(2);
    if (ioV != nullptr && *ioV != 0) step = Set::attachVertex(ioP, ioV);
    if (step.failed()) return step;
    if (ioF != nullptr && *ioF != 0) step = Set::attachFragment(ioP, ioF);
    if (step.failed()) return step;
    return KyOK;
}

template <typename Set>
KyResult linkProgram(unsigned int inProgram) {
    Set::link(inProgram);
    if (Set::linkStatus(inProgram) != 0) return KyOK;
    KyString log;
    Set::getLinkLog(inProgram, log);
    const KyString message(0, "Shader Error: %s", log.dataPtr());
    const KyString detail(0, "assertion=[%s] %s", "0", kyglBuildStamp);
    return KyResult(1, __LINE__, kSource, message.dataPtr(), detail.dataPtr());
}

template <typename Set>
KyResult getProgramsInfoLog(unsigned int inProgram, KyString& outLog) {
    KYGL_CHECK_GROUP(1);
    int blen = 0;
    Set::getProgramLogLength(inProgram, blen);
    makeRoom(outLog, blen);
    return Set::getProgramLog(inProgram, blen, outLog);
}

}  // namespace

bool kyglShaderGLSLAvailable() {
    const GLEWContextStruct* const flags = SoGLContext::glewGetCurrentContextIV(false);
    return flags != nullptr && flags->ARB_shading_language_100 != 0 &&
           flags->ARB_shader_objects != 0 && flags->ARB_fragment_shader != 0 &&
           flags->ARB_vertex_shader != 0;
}

KyResult kyglShaderGLSLCreateObject(const KyString& source, unsigned int& outShader,
                                    int inIsVertexShader) {
    return createObject<ArbSet>(source, outShader, inIsVertexShader);
}

KyResult kyglShaderGLSLCreateObject2(const KyString& source, unsigned int& outShader,
                                     int inIsVertexShader) {
    return createObject<CoreSet>(source, outShader, inIsVertexShader);
}

KyResult kyglShaderGLSLPrepareProgram(const KyString& vertexSource, const KyString& fragmentSource,
                                      unsigned int* ioV, unsigned int* ioF, unsigned int* ioP) {
    return prepareProgram<ArbSet>(vertexSource, fragmentSource, ioV, ioF, ioP);
}

KyResult kyglShaderGLSLPrepareProgram2(const KyString& vertexSource, const KyString& fragmentSource,
                                       unsigned int* ioV, unsigned int* ioF, unsigned int* ioP) {
    return prepareProgram<CoreSet>(vertexSource, fragmentSource, ioV, ioF, ioP);
}

KyResult kyglShaderGLSLLinkProgram(unsigned int inProgram) {
    return linkProgram<ArbSet>(inProgram);
}

KyResult kyglShaderGLSLLinkProgram2(unsigned int inProgram) {
    return linkProgram<CoreSet>(inProgram);
}

KyResult kyglShaderGLSLGetProgramsInfoLog(unsigned int inProgram, KyString& outLog) {
    return getProgramsInfoLog<ArbSet>(inProgram, outLog);
}

KyResult kyglShaderGLSLGetProgramsInfoLog2(unsigned int inProgram, KyString& outLog) {
    return getProgramsInfoLog<CoreSet>(inProgram, outLog);
}
