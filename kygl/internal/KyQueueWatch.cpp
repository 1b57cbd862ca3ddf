#include "KyQueueWatch.h"

#include "KyDiagnosis.h"

#include <algorithm>
#include <utility>

namespace {

using Pending = KyDeferredDeleteMap::Pending;

void report(unsigned int context, const Pending& pending) {
    KyDiagnosis::report(KyDiagnostics::Queue, [&]() -> KyFinding {
        const std::string id = std::to_string(context);
        const std::string text =
            std::to_string(pending.total()) + " GL names of id " + id + " wait for deletion (" +
            kyglPendingText(pending) +
            ") and nobody deletes them; call KyDeferredDeleteMap::deferredDelete(" + id +
            ") regularly while its GL context is current, or discard(" + id +
            ") where that context is gone";
        return {
            KyQueueWatch::subject(context), {{KyDiagnostics::Severity::Warning, text}}, context};
    });
}

}  // namespace

std::string KyQueueWatch::subject(unsigned int context) {
    return "queue|" + std::to_string(context);
}

void KyQueueWatch::pushed(const Lists& lists) noexcept {
    if (mLimit != KyDiagnosis::queueLimit() || mEnables != KyDiagnosis::enables()) startAnew();
    const long total = lists.total();
    if (total < mLookAt) return;
    mLookAt = total + total / 64 + 1;
    try {
        look(lists);
    } catch (const std::exception&) {
    }
}

void KyQueueWatch::emptied(unsigned int context) {
    mLimits.erase(context);
    mLookAt = mLimit + 1;
}

void KyQueueWatch::startAnew() {
    mLimit = KyDiagnosis::queueLimit();
    mEnables = KyDiagnosis::enables();
    mLimits.clear();
    mLookAt = mLimit + 1;
}

void KyQueueWatch::look(const Lists& lists) {
    std::map<unsigned int, Pending> counts;
    const auto count = [&](const List& list, long Pending::*kind) {
        for (long i = 0; i < list.size; ++i)
            ++(counts[list[i].context].*kind);
    };
    count(lists.shaders, &Pending::shaders);
    count(lists.programs, &Pending::programs);
    count(lists.textures, &Pending::textures);
    count(lists.buffers, &Pending::buffers);
    long room = mLimit;
    for (const auto& [context, pending] : counts) {
        long& limit = mLimits.try_emplace(context, mLimit).first->second;
        if (pending.total() > limit) {
            report(context, pending);
            limit = 2 * pending.total();
        }
        room = std::min(room, limit - pending.total());
    }
    mLookAt = std::max(mLookAt, lists.total() + room + 1);
}

std::string kyglPendingText(const Pending& pending) {
    const std::pair<long, const char*> kinds[] = {{pending.shaders, " shader"},
                                                  {pending.programs, " program"},
                                                  {pending.textures, " texture"},
                                                  {pending.buffers, " buffer"}};
    std::string text;
    for (const auto& [count, name] : kinds) {
        if (count == 0) continue;
        if (!text.empty()) text += ", ";
        text += std::to_string(count) + name + (count > 1 ? "s" : "");
    }
    return text;
}
