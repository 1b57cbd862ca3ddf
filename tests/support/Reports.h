#pragma once

#include <kylib/KyResult.h>
#include <sogl/SoError.h>
#include <sogl/SoGLEW.h>

#include <gtest/gtest.h>

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

    /// The result is a GL error that the check of `command` found.
    static void expectGLError(const KyResult& result, const std::string& source,
                              const std::string& command) {
        EXPECT_EQ(result, KyResult(result.code(), result.line(), ("internal/" + source).c_str(), "",
                                   ("command=[" + command + "]").c_str()));
        EXPECT_TRUE(result.code() >= GL_INVALID_ENUM && result.line() > 0);
    }
    /// Such a result was reported as the ith.
    void expectGLError(std::size_t i, KyResult::Report kind, const std::string& source,
                       const std::string& command) const {
        ASSERT_LT(i, results.size());
        EXPECT_EQ(results[i].kind, kind);
        expectGLError(results[i].result, source, command);
    }

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
