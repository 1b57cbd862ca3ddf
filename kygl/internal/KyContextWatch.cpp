#include "KyContextWatch.h"

#include "KyDiagnosis.h"
#include "kyglRegistry.h"
#include "kyglScopedLock.h"
#include "KyQueueWatch.h"

#include <sogl/SoGLContext.h>
#include <sogl/SoGLEW.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <new>
#include <string>

#include <GL/glx.h>  // last: its macros break others

extern "C" GLXContextID glXGetContextIDEXT(GLXContext context);

namespace {

using Operation = KyContextWatch::Operation;
using Severity = KyDiagnostics::Severity;

// ---- what was learned

// A GL context, not only its address, which the next one often gets when it is destroyed. The
// toolkit's object is another one then, and a later object of the toolkit that gets the address of
// the first goes with another XID.
struct Identity {
    const SoGLContext* object;  // null for no context
    GLXContextID id;

    static Identity current() {
        const GLXContext address = glXGetCurrentContext();
        if (address == nullptr) return {};
        return {SoGLContext::getCurrent(false), glXGetContextIDEXT(address)};
    }
    bool operator==(const Identity& other) const {
        return object == other.object && id == other.id;
    }
};

struct Learned {
    Identity context;
    unsigned long session;  // of diagnostics
};
using LearnedById = std::map<unsigned int, Learned>;

// A leaf among the locks: nothing that runs while it is held takes another one.
KyMutex sMutex(false);

// Never destroyed: other threads may still ask while the process ends.
LearnedById& learned() KY_REQUIRES(sMutex) {
    static auto& all = *new LearnedById;
    return all;
}

// The last operation of this thread about which there was nothing to say. In the static block of
// the thread, where its first use takes no memory.
//
// The toolkit takes five times as long to answer as GLX takes for the address of the context. So
// the address decides, and the toolkit is asked now and then, because a new context may have the
// address of one that was destroyed.
constexpr int kQuickVerdicts = 1000;
struct LastGood {
    GLXContext address;
    Identity context;
    unsigned long epoch;  // 0 before the first
    unsigned int id;
    int left;            // quick verdicts to come
    bool hasErrorCheck;  // there is a context, and the topic is wanted
};
[[gnu::tls_model("initial-exec")]] thread_local LastGood tLastGood{};

struct Verdict {
    bool isLearned = false;
    bool isRight = false;                        // the current context is that of the id
    unsigned int other = KyFinding::kNoContext;  // the id that the current context is known by
};

Verdict verdictOn(unsigned int id, const Identity& current) {
    const KyScopedLock hold(sMutex);
    Verdict verdict;
    for (const auto& [known, one] : learned()) {
        if (one.session != KyDiagnosis::session()) continue;
        const bool isCurrent = one.context == current;
        if (known == id)
            verdict = {true, isCurrent, verdict.other};
        else if (isCurrent)
            verdict.other = known;
    }
    return verdict;
}

void keep(unsigned int id, const Identity& context) {
    const KyScopedLock hold(sMutex);
    learned()[id] = {context, KyDiagnosis::session()};
    KyDiagnosis::invalidate();
}

void drop(unsigned int id) {
    const KyScopedLock hold(sMutex);
    learned().erase(id);
    KyDiagnosis::invalidate();
}

// ---- texts

std::string idText(unsigned int id) {
    return "id " + std::to_string(id);
}

std::string call(const char* name, unsigned int id) {
    return std::string(name) + '(' + std::to_string(id) + ')';
}

// "apply(3) of relief.vert and relief.frag"
std::string describe(const Operation& operation, unsigned int id) {
    std::string text =
        operation.takesId ? call(operation.name, id) : operation.name + (" with " + idText(id));
    if (operation.file != nullptr) text += std::string(" of ") + operation.file;
    if (operation.otherFile != nullptr) text += std::string(" and ") + operation.otherFile;
    return text;
}

std::string contextText(unsigned int id, const Verdict& verdict) {
    if (verdict.other == KyFinding::kNoContext)
        return "a GL context is current that is not the one of " + idText(id);
    return "the GL context of " + idText(verdict.other) + " is current";
}

void report(unsigned int id, Severity severity, const std::string& what, const std::string& text) {
    KyDiagnosis::report(KyDiagnostics::Context, [&]() -> KyFinding {
        return {"context|" + std::to_string(id) + '|' + what, {{severity, text}}, id};
    });
}

void reportNeverSet(const Operation& operation, unsigned int id) {
    const std::string what = describe(operation, id);
    report(id, Severity::Warning, what,
           what + " uses an id that was never set; call " + call("kyglSetContext", id) +
               " first, while its GL context is current");
}

void reportWrongContext(const Operation& operation, unsigned int id, bool isNone,
                        const Verdict& verdict) {
    const std::string what = describe(operation, id);
    const std::string fault =
        isNone ? " runs while no GL context is current: its GL calls have no effect"
               : " runs while " + contextText(id, verdict) + ": " + operation.effect;
    report(id, Severity::Error, what + '|' + (isNone ? "none" : std::to_string(verdict.other)),
           what + fault + "; make the context of " + idText(id) + " current first");
}

void reportSetWithoutContext(unsigned int id) {
    const std::string what = call("kyglSetContext", id);
    report(id, Severity::Warning, what,
           what +
               " registers the id while no GL context is current, so it can do nothing; make its "
               "context current first, or call kyglInitContext() once it is");
}

void reportSetForAnother(unsigned int id, const Verdict& former) {
    const std::string what = call("kyglSetContext", id);
    report(id, Severity::Warning, what + '|' + std::to_string(former.other),
           what + " runs while " + contextText(id, former) +
               ": what was built for the former context of this id is taken for objects of this "
               "one; make the context of the id current before the call, or, where it is gone, "
               "destroy what was built for it and call " +
               call("KyDeferredDeleteMap::discard", id) + " and " + call("kyglClearContext", id) +
               " first");
}

void reportNamesThatWait(unsigned int id, const std::string& operation,
                         const KyDeferredDeleteMap::Pending& pending) {
    report(id, Severity::Warning, "cleared",
           operation + " forgets " + idText(id) + " while " + std::to_string(pending.total()) +
               " of its GL names wait for deletion (" + kyglPendingText(pending) +
               "): another GL context under this id would lose objects of the same names; call " +
               call("KyDeferredDeleteMap::deferredDelete", id) +
               " while its context is current, or " + call("discard", id) +
               " where that is gone, before the id is set again");
}

// ---- GL errors

std::string nameOf(GLenum error) {
    switch (error) {
        case GL_INVALID_ENUM:
            return "GL_INVALID_ENUM";
        case GL_INVALID_VALUE:
            return "GL_INVALID_VALUE";
        case GL_INVALID_OPERATION:
            return "GL_INVALID_OPERATION";
        case GL_STACK_OVERFLOW:
            return "GL_STACK_OVERFLOW";
        case GL_STACK_UNDERFLOW:
            return "GL_STACK_UNDERFLOW";
        case GL_OUT_OF_MEMORY:
            return "GL_OUT_OF_MEMORY";
        case 0x0506:
            return "GL_INVALID_FRAMEBUFFER_OPERATION";
        case 0x0507:
            return "GL_CONTEXT_LOST";
        case GL_TABLE_TOO_LARGE:
            return "GL_TABLE_TOO_LARGE";
        default:
            break;
    }
    char number[16];
    std::snprintf(number, sizeof number, "%#x", error);
    return std::string("GL error ") + number;
}

// Each flag that is set, once.
class PendingErrors {
public:
    // The number of reads is bounded because a lost context may answer with errors for ever.
    explicit PendingErrors(GLenum first) {
        constexpr int kFurtherReads = 10;
        int reads = 0;
        for (GLenum error = first; error != GL_NO_ERROR; error = glGetError()) {
            if (std::find(mErrors, mErrors + mCount, error) == mErrors + mCount)
                mErrors[mCount++] = error;
            if (reads++ == kFurtherReads) break;
        }
    }
    std::string text() const {
        std::string text;
        for (int i = 0; i < mCount; ++i)
            text += (i > 0 ? " and " : "") + nameOf(mErrors[i]);
        return text + (mCount > 1 ? " were" : " was");
    }

private:
    GLenum mErrors[11] = {};
    int mCount = 0;
};

[[gnu::cold]] void reportErrors(GLenum first, const Operation& operation,
                                unsigned int id) noexcept {
    const PendingErrors errors(first);
    KyDiagnosis::report(KyDiagnostics::Error, [&]() -> KyFinding {
        const std::string what = describe(operation, id);
        const std::string text =
            errors.text() + " pending when " + what +
            " began, so an earlier GL call of the application has failed; the error is taken away "
            "here: call glGetError after the application's own calls to find which";
        return {"error|" + what + '|' + errors.text(), {{Severity::Error, text}}, id};
    });
}

// ---- verdicts

bool wantsErrors(GLXContext current) {
    return current != nullptr && KyDiagnosis::wants(KyDiagnostics::Error);
}

bool isStillGood(unsigned int id, const Identity& current, unsigned long now) {
    const LastGood& last = tLastGood;
    return last.epoch == now && last.id == id && last.context == current;
}

// @return whether there is nothing to say
bool judgeContext(const Operation& operation, unsigned int id, const Identity& current) {
    const Verdict verdict = verdictOn(id, current);
    if (verdict.isLearned && !verdict.isRight)
        reportWrongContext(operation, id, current.object == nullptr, verdict);
    else if (!verdict.isLearned && !kyglIsRegistered(id))
        reportNeverSet(operation, id);
    else
        return true;
    return false;
}

// The epoch comes first: what changes from then on makes the verdict out of date.
void judgeContext(const Operation& operation, unsigned int id, GLXContext address) {
    if (!KyDiagnosis::wants(KyDiagnostics::Context)) return;
    const unsigned long now = KyDiagnosis::epoch();
    const Identity current = Identity::current();
    if (isStillGood(id, current, now) || judgeContext(operation, id, current))
        tLastGood = {address, current, now, id, kQuickVerdicts, wantsErrors(address)};
    else
        tLastGood = {};
}

}  // namespace

void KyContextWatch::learn(unsigned int id, bool isNew) noexcept {
    try {
        const Identity current = Identity::current();
        if (current.object == nullptr && isNew) reportSetWithoutContext(id);
        if (current.object == nullptr) return;
        const Verdict former = verdictOn(id, current);
        if (former.isRight) return;
        keep(id, current);
        if (former.isLearned) reportSetForAnother(id, former);
    } catch (const std::bad_alloc&) {
    }
}

void KyContextWatch::forget(unsigned int id, bool withAll) noexcept {
    try {
        drop(id);
        KyDiagnosis::ended(KyDiagnostics::Context, [=] { return "context|" + std::to_string(id); });
        const KyDeferredDeleteMap::Pending pending = KyDeferredDeleteMap::pending(id);
        if (pending.total() == 0) return;
        reportNamesThatWait(id, withAll ? "kyglClearAllContexts()" : call("kyglClearContext", id),
                            pending);
    } catch (const std::bad_alloc&) {
    }
}

void KyContextWatch::judgeAnew(const Operation& operation, unsigned int id,
                               unsigned int error) noexcept {
    const GLXContext address = glXGetCurrentContext();
    try {
        judgeContext(operation, id, address);
    } catch (const std::bad_alloc&) {
    }
    if (!wantsErrors(address)) return;
    if (error == kNotAsked) error = glGetError();
    if (error != GL_NO_ERROR) reportErrors(error, operation, id);
}

// @return 0 if there is nothing to say, the GL error that alone is to be reported, or `kNotAsked`
unsigned int KyContextWatch::askQuickly(unsigned int id) noexcept {
    const GLXContext address = glXGetCurrentContext();
    LastGood& last = tLastGood;
    if (last.address != address || last.id != id || last.epoch != KyDiagnosis::epoch() ||
        last.left == 0)
        return kNotAsked;
    --last.left;
    return last.hasErrorCheck ? glGetError() : GL_NO_ERROR;
}
