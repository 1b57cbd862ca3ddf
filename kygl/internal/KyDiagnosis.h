#pragma once

#include <kygl/KyDiagnostics.h>

#include <atomic>
#include <exception>
#include <list>
#include <string>
#include <vector>

/// What a part of the library has found, to be reported.
struct KyFinding {
    struct Message {
        KyDiagnostics::Severity severity = KyDiagnostics::Severity::Error;
        std::string text = {};
        std::string file = {};  ///< empty for none
        long line = 0;
        long column = 0;

        bool operator==(const Message& other) const {
            return severity == other.severity && line == other.line && column == other.column &&
                   text == other.text && file == other.file;
        }
    };

    static constexpr unsigned int kNoContext = 0xFFFFFFFFU;

    /// What the finding is about, unique among all topics: the same finding about the same subject
    /// is only counted.
    std::string subject;
    std::vector<Message> messages;
    unsigned int context = kNoContext;
    /// What distinguishes it from another finding about the subject, where that is not the
    /// messages: they may hold numbers that grow.
    std::string content = {};

    bool isSame(const KyFinding& other) const {
        return content == other.content && (!content.empty() || messages == other.messages);
    }
};

/// Reports to `KyDiagnostics`, as the library's own sources use it. It knows nothing of GL and of
/// the other parts of the library, so that each of them may use it.
///
///     KyDiagnosis::report(KyDiagnostics::File, [&] {
///         return KyFinding{"file|" + path, {{Severity::Error, path + " is not there"}}};
///     });
///
/// Nothing here throws: a message for which there is no memory is lost.
class KYGL_LOCAL KyDiagnosis {
public:
    /// One load each.
    ///@{
    static bool isOn() { return wants(KyDiagnostics::All); }
    /// Whether diagnostics or an observer of builds want to know of a build.
    static bool wantsBuilds() {
        constexpr unsigned int kOfBuilds = KyDiagnostics::Build | KyDiagnostics::File |
                                           KyDiagnostics::Include | KyDiagnostics::Version |
                                           kBuildObserver;
        return (sTopics.load(std::memory_order_relaxed) & kOfBuilds) != 0;
    }
    static bool wants(KyDiagnostics::Topic topic) {
        return (sTopics.load(std::memory_order_relaxed) & topic) != 0;
    }
    ///@}

    /// Reports the finding that `make()` returns, or counts it. Only makes it if the topic is
    /// wanted.
    template <typename Make>
    static void report(KyDiagnostics::Topic topic, const Make& make) noexcept {
        if (!wants(topic)) return;
        try {
            add(topic, make());
        } catch (const std::exception&) {
        }
    }

    /// The fault of the subject that `makeSubject()` returns is over, and so are those of subjects
    /// whose names go on from there with "|": they are reported anew when they come again.
    template <typename MakeSubject>
    static void ended(KyDiagnostics::Topic topic, const MakeSubject& makeSubject) noexcept {
        if (!wants(topic)) return;
        try {
            forget(makeSubject());
        } catch (const std::exception&) {
        }
    }

    /// While one lives, what its thread reports waits; the outermost one delivers it at its end.
    /// An operation that takes a lock declares one before that, so that the handler runs without.
    class Postponed {
    public:
        Postponed() {
            if (tOutermost == nullptr) tOutermost = this;
        }
        ~Postponed() {
            if (tOutermost != this) return;
            if (!mEntries.empty()) deliver();
            tOutermost = nullptr;
        }
        Postponed(const Postponed&) = delete;
        Postponed& operator=(const Postponed&) = delete;

    private:
        friend class KyDiagnosis;

        struct Entry {
            KyDiagnostics::Topic topic;
            unsigned int context;
            KyFinding::Message message;
            long count;
        };
        void deliver();

        // In the static block of the thread: one that is made at its first use ends the process
        // where there is no memory for it.
        [[gnu::tls_model("initial-exec")]] static inline thread_local Postponed* tOutermost =
            nullptr;
        std::list<Entry> mEntries;
    };

    /// Notes in the same word whether an observer of builds is set: one load answers for both.
    static void setBuildObserved(bool isObserved) {
        if (isObserved)
            sTopics.fetch_or(kBuildObserver);
        else
            sTopics.fetch_and(~kBuildObserver);
    }

    /// Sets what frees the memory that messages of builds need.
    static void setForgetBuilds(void (*forget)()) { sForgetBuilds.store(forget); }
    /// Frees it if nobody wants to know of builds any more.
    static void forgetBuilds();

    /// How many names of one context may wait for deletion.
    static long queueLimit();

    /// Changes with each `enable` and each `invalidate`: a verdict from before may be wrong.
    static unsigned long epoch() { return sEpoch.load(std::memory_order_acquire); }
    static void invalidate() { sEpoch.fetch_add(1, std::memory_order_release); }
    /// How often diagnostics were enabled or disabled: what was reported before is forgotten.
    static unsigned long enables() { return sEnables.load(std::memory_order_acquire); }
    /// How often they were turned on: what was learned before may be out of date, because they were
    /// off in between.
    static unsigned long session() { return sSession.load(std::memory_order_acquire); }

private:
    friend class KyDiagnostics;

    struct Subject {
        KyDiagnostics::Topic topic;
        KyFinding finding;
        long count;
        unsigned long age;
    };
    class Subjects;

    static void add(KyDiagnostics::Topic topic, KyFinding&& found);
    static void forget(const std::string& subject);
    static void postponeCount(const Subject& subject) noexcept;

    static inline std::atomic<void (*)()> sForgetBuilds{nullptr};

    // @return the former ones
    static unsigned int setTopics(unsigned int topics);

    static constexpr unsigned int kBuildObserver = KyDiagnostics::All + 1;
    static inline std::atomic<unsigned int> sTopics{0};  ///< 0 while nobody listens
    static inline std::atomic<unsigned long> sEpoch{1};
    static inline std::atomic<unsigned long> sEnables{0};
    static inline std::atomic<unsigned long> sSession{0};
};
