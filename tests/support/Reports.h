#pragma once

#include <kylib/KyResult.h>
#include <sogl/SoError.h>

#include <mutex>
#include <string>
#include <vector>

/// While it lives, keeps what would go to the log. One at a time.
struct Reports {
    struct Entry {
        KyResult::Report kind;
        KyResult result;
    };
    std::vector<Entry> results;      ///< of `KyResult::notify` and `check`
    std::vector<std::string> posts;  ///< of `SoError::post`

    Reports() {
        sCurrent = this;
        mReporter = KyResult::setReporter([](const KyResult& result, KyResult::Report kind) {
            const std::lock_guard<std::mutex> lock(sCurrent->mMutex);
            sCurrent->results.push_back({kind, result});
        });
        mHandler = SoError::setHandler([](const char* text) {
            const std::lock_guard<std::mutex> lock(sCurrent->mMutex);
            sCurrent->posts.emplace_back(text);
        });
    }
    ~Reports() {
        KyResult::setReporter(mReporter);
        SoError::setHandler(mHandler);
    }

private:
    static inline Reports* sCurrent;
    KyResult::Reporter mReporter;
    SoError::Handler mHandler;
    std::mutex mMutex;
};
