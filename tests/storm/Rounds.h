#pragma once

#include <chrono>
#include <cstdlib>

/// Counts rounds: one, or as many as fit into KYGL_STORM_SECONDS of the environment.
class Rounds {
public:
    bool goOn() {
        if (mRounds++ == 0) return true;
        const char* const seconds = std::getenv("KYGL_STORM_SECONDS");
        return seconds != nullptr &&
               Clock::now() - mStart < std::chrono::seconds(std::atoi(seconds));
    }

private:
    using Clock = std::chrono::steady_clock;
    const Clock::time_point mStart = Clock::now();
    long mRounds = 0;
};
