#pragma once

#include <stdexcept>

/// The tool was used wrongly, or what it needs is not there.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// There is no X display.
struct NoDisplay : UsageError {
    using UsageError::UsageError;
};
