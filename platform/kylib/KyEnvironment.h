#pragma once

#include <kylib/kylibApi.h>

class QString;

/// Reads the process's environment. Any thread may call while no thread changes the environment.
/// The flags behind the names are part of the foundation's signature; here they have no effect.
class KYLIB_API KyEnvironment {
public:
    KyEnvironment() = delete;

    /// Whether the variable is set, be it to the empty text.
    static bool exists(const QString& name, const bool& flag);

    /// The variable as a truth value: true for a whole number other than 0 and for "true", "yes"
    /// and "on" in any case; false for any other text, and for a variable that is not set
    /// whatever the flags say.
    static bool getBool(const QString& name, const bool& flag, const bool& secondFlag);
};
