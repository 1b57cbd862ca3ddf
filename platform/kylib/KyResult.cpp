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

// @return how many bytes the printable UTF-8 character takes that a terminated text begins with; 0
// for controls, those of Latin-1 too, and for bytes that are no character
std::size_t printableLength(const char* text) {
    const auto first = static_cast<unsigned char>(*text);
    if (first < 0x80) return first >= 0x20 && first != 0x7f ? 1 : 0;
    if (first < 0xc2 || first > 0xf4) return 0;
    const std::size_t length = first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    unsigned int code = first & (0x7fU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xc0U) != 0x80) return 0;
        code = (code << 6) | (next & 0x3fU);
    }
    const unsigned int least[] = {0xa0, 0x800, 0x10000};
    const bool surrogate = code >= 0xd800 && code < 0xe000;
    return code >= least[length - 2] && code <= 0x10ffff && !surrogate ? length : 0;
}

// Up to `end`; what is not printable becomes "\x1b".
void appendPrintable(std::string& line, const char* at, const char* end) {
    while (at < end) {
        std::size_t length = printableLength(at);
        if (length != 0) {
            line.append(at, length);
        } else {
            char shown[8];
            std::snprintf(shown, sizeof shown, "\\x%02x", static_cast<unsigned char>(*at));
            line += shown;
            length = 1;
        }
        at += length;
    }
}

// Drivers end their logs in line feeds and put several messages into one: a report stays one line.
void appendAsOneLine(std::string& line, const std::string& part) {
    const std::size_t last = part.find_last_not_of(" \t\r\n");
    if (last == std::string::npos) return;
    if (!line.empty()) line += ' ';
    const char* at = part.c_str();
    const char* const end = at + last + 1;
    while (const void* const found = std::memchr(at, '\n', static_cast<std::size_t>(end - at))) {
        const char* const feed = static_cast<const char*>(found);
        appendPrintable(line, at, feed > at && feed[-1] == '\r' ? feed - 1 : feed);
        line += " | ";
        at = feed + 1;
    }
    appendPrintable(line, at, end);
}

std::string makeText(int code, int line, const std::string& file, const std::string& message,
                     const std::string& detail) {
    std::string text;
    appendPrintable(text, file.c_str(), file.c_str() + file.size());
    if (!file.empty()) text += ':' + std::to_string(line) + ':';
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
