#include <kylib/KyResult.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <string>

const KyResult KyOK;

struct KyResult::Failure {
    int code;
    int line;
    std::string file;
    std::string message;
    std::string detail;
    std::string text;
};

namespace {

std::atomic<KyResult::Reporter> sReporter{nullptr};

const char* orEmpty(const char* text) {
    return text != nullptr ? text : "";
}

// Drivers end their logs in line feeds and put several messages into one: a report stays one line.
void appendAsOneLine(std::string& line, const std::string& part) {
    const std::size_t end = part.find_last_not_of(" \t\r\n");
    if (end == std::string::npos) return;
    if (!line.empty()) line += ' ';
    for (std::size_t i = 0; i <= end; ++i) {
        if (part[i] == '\n')
            line += " | ";
        else if (part[i] != '\r')
            line += part[i];
    }
}

std::string makeText(int code, int line, const std::string& file, const std::string& message,
                     const std::string& detail) {
    std::string text;
    if (!file.empty()) text = file + ':' + std::to_string(line) + ':';
    appendAsOneLine(text, message);
    appendAsOneLine(text, detail);
    appendAsOneLine(text, "code=" + std::to_string(code));
    return text;
}

void reportToStandardError(const KyResult& result, KyResult::Report kind) {
    const char* const head = kind == KyResult::Report::Check ? "check failed" : "notice";
    std::fprintf(stderr, "kygl: %s: %s\n", head, result.text());
}

}  // namespace

KyResult::KyResult(int code, int line, const char* file, const char* message, const char* detail) {
    if (code == 0) return;
    Failure made{code, line, orEmpty(file), orEmpty(message), orEmpty(detail), {}};
    made.text = makeText(code, line, made.file, made.message, made.detail);
    mFailure = new Failure(std::move(made));
}

KyResult::KyResult(int code, const char* message, const char* detail, bool)
    : KyResult(code, 0, "", message, detail) {}

KyResult& KyResult::operator=(const KyResult& other) {
    if (this == &other) return *this;
    Failure* const fresh = other.ok() ? nullptr : copy(*other.mFailure);
    if (mFailure != nullptr) release(mFailure);
    mFailure = fresh;
    return *this;
}

KyResult::Failure* KyResult::copy(const Failure& failure) {
    return new Failure(failure);
}

void KyResult::release(Failure* failure) noexcept {
    delete failure;
}

int KyResult::code() const noexcept {
    return ok() ? 0 : mFailure->code;
}
int KyResult::line() const noexcept {
    return ok() ? 0 : mFailure->line;
}
const char* KyResult::file() const noexcept {
    return ok() ? "" : mFailure->file.c_str();
}
const char* KyResult::message() const noexcept {
    return ok() ? "" : mFailure->message.c_str();
}
const char* KyResult::detail() const noexcept {
    return ok() ? "" : mFailure->detail.c_str();
}
const char* KyResult::text() const noexcept {
    return ok() ? "ok" : mFailure->text.c_str();
}

void KyResult::notify() const {
    report(Report::Notify);
}

const KyResult& KyResult::check() const {
    report(Report::Check);
    return *this;
}

void KyResult::report(Report kind) const {
    if (ok()) return;
    const Reporter reporter = sReporter.load(std::memory_order_acquire);
    (reporter != nullptr ? reporter : reportToStandardError)(*this, kind);
}

KyResult::Reporter KyResult::setReporter(Reporter reporter) noexcept {
    return sReporter.exchange(reporter, std::memory_order_acq_rel);
}

bool kyResultsEqual(const KyResult& a, const KyResult& b) noexcept {
    return a.code() == b.code() && a.line() == b.line() && std::strcmp(a.file(), b.file()) == 0 &&
           std::strcmp(a.message(), b.message()) == 0 && std::strcmp(a.detail(), b.detail()) == 0;
}
