#pragma once

#include <sogl/soglApi.h>

/// The toolkit's own reports. Any thread may call.
class SOGL_API SoError {
public:
    SoError() = delete;

    /// Reports one error, formatted as by `printf`; longer texts are cut at 1,023 bytes.
    /// Allocates nothing.
    static void post(const char* format, ...) __attribute__((format(printf, 1, 2)));

    /// What `setHandler` takes.
    using Handler = void (*)(const char* text);

    /// Sends reports to `handler` from now on, on the thread on which they arise; null restores
    /// the default, which writes one line to standard error. A handler may be called on several
    /// threads at once and while a lock is held, so it must call neither this library nor those
    /// above it.
    /// @return the previous handler, null for the default
    static Handler setHandler(Handler handler) noexcept;
};
