#include <sogl/SoError.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace {

std::atomic<SoError::Handler> sHandler{nullptr};

void writeToStandardError(const char* text) {
    std::fprintf(stderr, "sogl: %s\n", text);
}

}  // namespace

void SoError::post(const char* format, ...) {
    char text[1024] = "";
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const Handler handler = sHandler.load(std::memory_order_acquire);
    (handler != nullptr ? handler : writeToStandardError)(text);
}

SoError::Handler SoError::setHandler(Handler handler) noexcept {
    return sHandler.exchange(handler, std::memory_order_acq_rel);
}
