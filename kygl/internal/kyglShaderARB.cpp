#include <kygl/kyglShaderARB.h>

#include "kyglCheck.h"

#include <sogl/SoGLContext.h>

#include <algorithm>
#include <utility>

namespace {

constexpr char kSource[] = "internal/kyglShaderARB";

// The line of a byte position. Drivers differ in what they answer for a fault at the very end, so
// nothing behind the text is looked at; a GL error without a position counts as line 1.
int lineOf(int position, const KyString& source) {
    const long bytes = std::clamp(long{position}, 0L, source.length());
    return 1 + static_cast<int>(std::count(source.data, source.data + bytes, '\n'));
}

void notifyFault(int position, const KyString& source) {
    const auto* const text =
        reinterpret_cast<const char*>(glGetString(GL_PROGRAM_ERROR_STRING_ARB));
    KyResult(1, lineOf(position, source), kSource, KyString(text).dataPtr(), "").notify();
}

KyResult withoutName(unsigned int& id, KyResult failure) {
    id = 0;
    return failure;
}

}  // namespace

bool kyglShaderARBAvailable() {
    const GLEWContextStruct* const flags = SoGLContext::glewGetCurrentContextIV(false);
    return flags != nullptr && flags->ARB_fragment_program != 0 && flags->ARB_vertex_program != 0;
}

KyResult kyglShaderARBCreateObject(const KyString& source, unsigned int& outProgram,
                                   int inIsVertexProgram) {
    unsigned int& id = outProgram;  // where an exception passes, the caller has the name
    id = 0;
    KyResult step = KYGL_CHECKED(glGenProgramsARB(1, &id), 0);
    if (step.failed()) return withoutName(id, std::move(step));
    const GLenum target = inIsVertexProgram != 0 ? GL_VERTEX_PROGRAM_ARB : GL_FRAGMENT_PROGRAM_ARB;
    step = KYGL_CHECKED(glBindProgramARB(target, id), 0);
    if (step.failed()) return withoutName(id, std::move(step));
    glProgramStringARB(target, GL_PROGRAM_FORMAT_ASCII_ARB, static_cast<GLsizei>(source.length()),
                       source.dataPtr());
    int position = -1;
    glGetIntegerv(GL_PROGRAM_ERROR_POSITION_ARB, &position);
    const bool failed = glGetError() != GL_NO_ERROR;
    if (failed || position != -1) notifyFault(position, source);
    return KyOK;
}

KyResult kyglShaderARBPrepareProgram(const KyString& vertexSource, const KyString& fragmentSource,
                                     unsigned int* ioV, unsigned int* ioF) {
    KYGL_CHECK_GROUP(1);
    if (ioV != nullptr) {
        const KyResult result = kyglShaderARBCreateObject(vertexSource, *ioV, 1);
        if (result.check().failed()) return result;
    }
    if (ioF != nullptr) {
        const KyResult result = kyglShaderARBCreateObject(fragmentSource, *ioF, 0);
        if (result.check().failed()) return result;
    }
    KYGL_CHECK_GROUP(2);
    return KyOK;
}
