#pragma once

#include <kylib/kylibApi.h>

/// The outcome of an operation, passed by value.
///
/// Success holds nothing: making it, copying it and asking it cost a null pointer. A failure owns
/// its texts, so it may outlive all that it was made from; copying one copies them. A value
/// belongs to one thread at a time; `KyOK` and the reporter may be used from any thread.
class KYLIB_API KyResult {
public:
    /// Success.
    constexpr KyResult() noexcept = default;

    /// A failure with its place in the source. The texts are copied; null counts as "".
    /// @param code what went wrong; 0 makes a success, and the other arguments are dropped
    KyResult(int code, int line, const char* file, const char* message, const char* detail);

    /// A failure without a place. The flag is false at all calls and has no effect.
    KyResult(int code, const char* message, const char* detail, bool);

    /// A copy owns copies of the texts; a value that was moved from is a success.
    ///@{
    KyResult(const KyResult& other) : mFailure(other.ok() ? nullptr : copy(*other.mFailure)) {}
    KyResult(KyResult&& other) noexcept : mFailure(other.mFailure) { other.mFailure = nullptr; }
    KyResult& operator=(const KyResult& other);
    ///@}
    ~KyResult() {
        if (mFailure != nullptr) release(mFailure);
    }

    /// Which of the two it is.
    ///@{
    bool ok() const noexcept { return mFailure == nullptr; }
    bool failed() const noexcept { return mFailure != nullptr; }
    ///@}

    int code() const noexcept;             ///< 0 for success
    int line() const noexcept;             ///< 0 for success and where no place is known
    const char* file() const noexcept;     ///< "" for success and where no place is known
    const char* message() const noexcept;  ///< never null
    const char* detail() const noexcept;   ///< never null

    /// The whole outcome as one printable line without line end: "ok", or place, message, detail
    /// and code. Line ends inside message and detail are shown as " | ", controls and bytes that
    /// are not UTF-8 as "\x1b". Valid as long as this value.
    const char* text() const noexcept;

    /// Hands a failure to the reporter; does nothing on success.
    void notify() const;

    /// Hands a failure to the reporter as one that the caller did not expect; does nothing on
    /// success. The library goes on afterwards. @return this value
    const KyResult& check() const;

    /// How a result came to the reporter.
    enum class Report {
        Notify,  ///< through `notify`
        Check    ///< through `check`
    };
    /// What `setReporter` takes.
    using Reporter = void (*)(const KyResult& result, Report kind);

    /// Sends reports to `reporter` from now on, on the thread on which they arise; null restores
    /// the default, which writes one line to standard error. A reporter may be called on several
    /// threads at once and while the library holds a lock, so it must not call the library.
    /// @return the previous reporter, null for the default
    static Reporter setReporter(Reporter reporter) noexcept;

private:
    struct Failure;
    static Failure* copy(const Failure& failure);
    static void release(Failure* failure) noexcept;
    void report(Report kind) const;

    Failure* mFailure = nullptr;
};

/// Equal outcomes: both success, or the same code, place and texts.
KYLIB_API bool kyResultsEqual(const KyResult& a, const KyResult& b) noexcept;

/// Equal outcomes, as for `kyResultsEqual`; two successes are told at once.
///@{
inline bool operator==(const KyResult& a, const KyResult& b) noexcept {
    return a.ok() || b.ok() ? a.ok() == b.ok() : kyResultsEqual(a, b);
}
inline bool operator!=(const KyResult& a, const KyResult& b) noexcept {
    return !(a == b);
}
///@}

/// The success value.
KYLIB_API extern const KyResult KyOK;
