#include "support/Allocations.h"
#include "support/Reports.h"

#include <kylib/KyEnvironment.h>
#include <kylib/KyMutex.h>
#include <kylib/KyString.h>

#include <gtest/gtest.h>
#include <QString>

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <string>

TEST(String, keepsOneClosingNulAlsoWhenItFormatsItself) {
    for (const KyString& empty : {KyString(), KyString(nullptr), KyString(0, "%s", "")}) {
        EXPECT_EQ(empty.size, 1);
        EXPECT_STREQ(empty.dataPtr(), "");
    }
    KyString text("5%");
    for (int i = 0; i < 3; ++i)
        text.printf("<%s|%s>", text.getString(), text.dataPtr() + 1);
    EXPECT_STREQ(text.dataPtr(), "<<<5%|%>|5%|%>>|<5%|%>|5%|%>>>");
}

TEST(String, formattingAllocatesOnceAtMostAndNeverLosesRoom) {
    KyString text;
    const std::string shorter(100, 's'), longer(3000, 'l'), longest(5000, 'x');
    for (const std::string& result :
         {std::string("a"), std::string(15, 'b'), shorter, std::string(), longer, shorter, longest,
          longer, std::string(7400, 'y')}) {
        const KyString before(text);
        const long count = Allocations::count, capacity = text.capacity, size = text.size;
        const auto need = static_cast<long>(result.size()) + 1;
        const bool grows = need > capacity;
        if (grows || need > 1024) {
            Allocations::failing = 1;
            EXPECT_THROW(text.printf("%s", result.c_str()), std::bad_alloc);
            EXPECT_TRUE(compare(text, before) == 0 && text.capacity == capacity);
        }
        const long failed = Allocations::count - count;
        text.printf("%s", result.c_str());
        EXPECT_EQ(text.dataPtr(), result);
        EXPECT_LE(Allocations::count - count - failed, grows || need > 1024 ? 1 : 0) << need;
        EXPECT_EQ(text.capacity, grows ? std::max(need, size * 3 / 2) : capacity) << need;
    }
    text.printf("%d %ls", 1, L"\x20ac");  // refused: the locale has no such character
    EXPECT_TRUE(text.size == 1 && text.dataPtr() == std::string());

    const long count = Allocations::count;
    const KyString made(0, "%s", shorter.c_str()), sum = made + made;
    EXPECT_EQ(Allocations::count, count + 2);
}

TEST(Result, textIsOnePrintableLineWhateverItsParts) {
    const char* const message = "\tone\x1b[31m\r\ntw\xc3\xb6\r \xe2\x82\xac\xf0\x9f\x98\x80\n";
    const char* const detail =
        "\xff \xc2\x9b \xc0\xaf \xe0\x80\xaf \xed\xa0\x80 \xf4\x90\x80\x80 \xe2\x82";
    const KyResult result(1, 2, "a\r\nb\x7f", message, detail);
    EXPECT_STREQ(
        result.text(),
        "a\\x0d\\x0ab\\x7f:2: \\x09one\\x1b[31m | tw\xc3\xb6\\x0d \xe2\x82\xac\xf0\x9f\x98\x80"
        " \\xff \\xc2\\x9b \\xc0\\xaf \\xe0\\x80\\xaf \\xed\\xa0\\x80 \\xf4\\x90\\x80\\x80 "
        "\\xe2\\x82 code=1");
}

TEST(Result, ownsItsTextsAndReportsFailuresAndNothingElse) {
    std::string texts[] = {"file", "Shader Error: 0%s\nsecond\n", "because"};
    const KyResult made(3, 12, texts[0].c_str(), texts[1].c_str(), texts[2].c_str());
    KyResult failure;
    failure = made;
    for (std::string& text : texts)
        text[0] = '?';
    EXPECT_TRUE(failure == KyResult(3, 12, "file", "Shader Error: 0%s\nsecond\n", "because"));
    EXPECT_TRUE(failure.failed() && failure != KyOK);
    {
        const Reports reports;
        KyOK.check().notify();
        failure.check().notify();
        ASSERT_EQ(reports.results.size(), 2U);
        EXPECT_EQ(reports.results[1].result, failure);
    }
    testing::internal::CaptureStderr();
    failure.notify();
    const std::string line = testing::internal::GetCapturedStderr();
    EXPECT_NE(line.find("Shader Error: 0%s"), std::string::npos);
    EXPECT_EQ(line.find('\n'), line.size() - 1) << "one line by default";
    const long before = Allocations::count;
    failure = KyResult(KyOK);
    EXPECT_TRUE(failure.ok() && failure == KyOK && Allocations::count == before);
}

TEST(Environment, anUnsetVariableIsFalse) {
    const char* const name = "KYGL_TEST_VARIABLE";
    unsetenv(name);
    EXPECT_FALSE(KyEnvironment::exists(name, false) || KyEnvironment::getBool(name, false, true));
    for (const auto& [value, truth] : {std::pair("", false),
                                       {"0", false},
                                       {"no", false},
                                       {"1", true},
                                       {"true", true},
                                       {"YES", true},
                                       {"On", true}}) {
        setenv(name, value, 1);
        EXPECT_TRUE(KyEnvironment::exists(name, false));
        EXPECT_EQ(KyEnvironment::getBool(name, false, true), truth) << value;
    }
}

// The compiler's own check would refuse it.
[[noreturn]] static void lockTwice(bool recursive) KY_THREAD_ATTRIBUTE(no_thread_safety_analysis);
static void lockTwice(bool recursive) {
    ualarm(300'000, 0);
    KyMutex mutex(recursive);
    mutex.lock();
    mutex.lock();
    _exit(0);
}

TEST(Mutex, itsHolderWaitsForEverUnlessItIsRecursive) {
    EXPECT_EXIT(lockTwice(true), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(lockTwice(false), testing::KilledBySignal(SIGALRM), "");
}
