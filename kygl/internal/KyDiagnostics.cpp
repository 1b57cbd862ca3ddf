#include <kygl/KyDiagnostics.h>

#include "KyDiagnosis.h"
#include "kyglScopedLock.h"
#include "KyListener.h"
#include "KyPrintable.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <map>
#include <optional>
#include <utility>

namespace {

constexpr std::size_t kMostSubjects = 1024;

KyListener<KyDiagnostics::Handler> sListener;
std::atomic<long> sQueueLimit{10000};

std::string placeOf(const KyDiagnostics::Message& message) {
    if (message.file != nullptr) {
        const std::string line = message.line > 0 ? ':' + std::to_string(message.line) : "";
        return message.file + line;
    }
    if (message.context == KyFinding::kNoContext) return "kygl";
    return "context " + std::to_string(message.context);
}

// A single write, so that the lines of several threads do not mix.
void writeToStandardError(const KyDiagnostics::Message& message, void*) {
    static const char* const kSeverities[] = {": note: ", ": warning: ", ": error: "};
    try {
        const std::string line =
            placeOf(message) + kSeverities[static_cast<int>(message.severity)] + message.text;
        const std::string shown = kyPrintable(line) + '\n';
        std::fwrite(shown.data(), 1, shown.size(), stderr);
    } catch (const std::exception&) {
    }
}

}  // namespace

// What was reported, by the name of the subject. A leaf among the locks: nothing that runs while it
// is held takes another one, except that of the listener to replace it.
class KyDiagnosis::Subjects {
public:
    static KyMutex mutex;

    // Never destroyed: other threads may still report while the process ends.
    static Subjects& instance() KY_REQUIRES(mutex) {
        static auto& all = *new Subjects;
        return all;
    }

    /// Counts a finding that was reported.
    bool countAgain(const KyFinding& found) {
        const auto known = mSubjects.find(found.subject);
        if (known == mSubjects.end() || !known->second.finding.isSame(found)) return false;
        ++known->second.count;
        return true;
    }

    /// @return what it takes the place of
    std::optional<Subject> remember(KyDiagnostics::Topic topic, KyFinding&& found) {
        const auto [at, isNew] = mSubjects.try_emplace(found.subject);
        Subject former = std::exchange(at->second, {topic, std::move(found), 1, ++mAge});
        if (!isNew) return former;
        return mSubjects.size() > kMostSubjects ? take(oldest()) : std::nullopt;
    }

    /// One after the other: the subject, and those whose names go on from there with "|".
    std::optional<Subject> forgetOne(const std::string& subject) {
        const auto same = mSubjects.find(subject);
        if (same != mSubjects.end()) return take(same);
        const std::string prefix = subject + '|';
        const auto next = mSubjects.lower_bound(prefix);
        const bool isBelow =
            next != mSubjects.end() && next->first.compare(0, prefix.size(), prefix) == 0;
        return isBelow ? take(next) : std::nullopt;
    }

    std::map<std::string, Subject> forgetAll() { return std::exchange(mSubjects, {}); }

private:
    using Iterator = std::map<std::string, Subject>::iterator;

    Iterator oldest() {
        return std::min_element(
            mSubjects.begin(), mSubjects.end(),
            [](const auto& a, const auto& b) { return a.second.age < b.second.age; });
    }

    std::optional<Subject> take(Iterator at) {
        if (at == mSubjects.end()) return std::nullopt;
        Subject taken = std::move(at->second);
        mSubjects.erase(at);
        return taken;
    }

    std::map<std::string, Subject> mSubjects;
    unsigned long mAge = 0;
};

KyMutex KyDiagnosis::Subjects::mutex(false);

// What cannot be kept is lost as a whole: the entries are made before anything is remembered. A
// text is one line, whatever the names in it hold.
void KyDiagnosis::add(KyDiagnostics::Topic topic, KyFinding&& found) {
    for (KyFinding::Message& message : found.messages)
        message.text = kyPrintable(message.text);
    const Postponed delivery;
    const KyScopedLock hold(Subjects::mutex);
    Subjects& subjects = Subjects::instance();
    if (!wants(topic) || subjects.countAgain(found)) return;
    std::list<Postponed::Entry> entries;
    for (const KyFinding::Message& message : found.messages)
        entries.push_back({topic, found.context, message, 1});
    if (const auto former = subjects.remember(topic, std::move(found))) postponeCount(*former);
    std::list<Postponed::Entry>& waiting = Postponed::tOutermost->mEntries;
    waiting.splice(waiting.end(), entries);
}

void KyDiagnosis::forget(const std::string& subject) {
    const Postponed delivery;
    const KyScopedLock hold(Subjects::mutex);
    while (const auto former = Subjects::instance().forgetOne(subject))
        postponeCount(*former);
}

void KyDiagnosis::postponeCount(const Subject& subject) noexcept {
    if (subject.count < 2) return;
    try {
        KyFinding::Message message = subject.finding.messages.front();
        message.severity = KyDiagnostics::Severity::Note;
        message.text += " (" + std::to_string(subject.count) + " times)";
        Postponed::tOutermost->mEntries.push_back(
            {subject.topic, subject.finding.context, std::move(message), subject.count});
    } catch (const std::exception&) {
    }
}

// What the handler causes joins the end of the list.
void KyDiagnosis::Postponed::deliver() {
    for (; !mEntries.empty(); mEntries.pop_front()) {
        const Entry& entry = mEntries.front();
        const KyFinding::Message& found = entry.message;
        const char* const file = found.file.empty() ? nullptr : found.file.c_str();
        const KyDiagnostics::Message message{
            found.severity, entry.topic,  entry.context,      file,
            found.line,     found.column, found.text.c_str(), entry.count};
        sListener.call(message);
    }
}

void KyDiagnosis::forgetBuilds() {
    if (wantsBuilds()) return;
    if (void (*const forget)() = sForgetBuilds.load()) forget();
}

unsigned int KyDiagnosis::setTopics(unsigned int topics) {
    topics &= KyDiagnostics::All;
    unsigned int former = sTopics.load();
    while (!sTopics.compare_exchange_weak(former, (former & kBuildObserver) | topics)) {
    }
    return former & KyDiagnostics::All;
}

long KyDiagnosis::queueLimit() {
    return sQueueLimit.load(std::memory_order_relaxed);
}

// Of several threads that enable and disable at once, the last one to begin decides on both the
// handler and the topics.
void KyDiagnostics::enable(Handler handler, void* user, unsigned int topics) {
    unsigned long change = 0;
    {
        const KyScopedLock hold(KyDiagnosis::Subjects::mutex);
        KyDiagnosis::Subjects& subjects = KyDiagnosis::Subjects::instance();
        if (KyDiagnosis::setTopics(0) == 0) ++KyDiagnosis::sSession;
        subjects.forgetAll();
        change = ++KyDiagnosis::sEnables;
        sListener.replace({handler != nullptr ? handler : writeToStandardError, user});
    }
    sListener.waitForFormer();
    const KyScopedLock hold(KyDiagnosis::Subjects::mutex);
    if (KyDiagnosis::sEnables == change) KyDiagnosis::setTopics(topics);
    KyDiagnosis::invalidate();
}

// Called by the handler, it removes the listener before the counts are delivered.
void KyDiagnostics::disable() {
    unsigned long change = 0;
    {
        const KyDiagnosis::Postponed delivery;
        const KyScopedLock hold(KyDiagnosis::Subjects::mutex);
        change = ++KyDiagnosis::sEnables;
        if (KyDiagnosis::setTopics(0) != 0)
            for (const auto& [name, subject] : KyDiagnosis::Subjects::instance().forgetAll())
                KyDiagnosis::postponeCount(subject);
    }
    {
        const KyScopedLock hold(KyDiagnosis::Subjects::mutex);
        if (KyDiagnosis::sEnables == change) sListener.replace({});
    }
    sListener.waitForFormer();
    KyDiagnosis::forgetBuilds();
}

void KyDiagnostics::setQueueLimit(long names) {
    constexpr long kMost = std::numeric_limits<long>::max() / 2;  // there is room to add to it
    sQueueLimit.store(std::clamp(names, 1L, kMost));
}
