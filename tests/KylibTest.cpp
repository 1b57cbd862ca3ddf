#include "support/Allocations.h"
#include "support/Reports.h"

#include <kylib/KyEnvironment.h>
#include <kylib/KyString.h>

#include <gtest/gtest.h>
#include <QString>

#include <map>

TEST(String, keepsOneClosingNulAlsoWhenItFormatsItself) {
    for (const KyString& empty : {KyString(), KyString(nullptr), KyString(0, "%s", "")}) {
        EXPECT_EQ(empty.size, 1);
        EXPECT_STREQ(empty.dataPtr(), "");
    }
    KyString text(0, "%d%%", 5);
    text = text + text;
    for (int i = 0; i < 3; ++i)
        text.printf("<%s|%s>", text.getString(), text.dataPtr() + 1);
    EXPECT_EQ(text.length(), 4 * 8 + 2 * 7);
    EXPECT_EQ(std::string(text.dataPtr()).substr(0, 16), "<<<5%5%|%5%>|5%5");
}

TEST(Result, ownsItsTextsAndCostsNothingForSuccess) {
    std::string texts[] = {"file", "100% wrong", "because"};
    KyResult kept;
    kept = KyResult(3, 12, texts[0].c_str(), texts[1].c_str(), texts[2].c_str());
    for (std::string& text : texts)
        text[0] = '?';
    EXPECT_EQ(kept, KyResult(3, 12, "file", "100% wrong", "because"));
    EXPECT_TRUE(kept.failed() && kept != KyOK);
    for (const char* part : {"file", "12", "100% wrong", "because"})
        EXPECT_NE(std::string(kept.text()).find(part), std::string::npos) << part;
    const long before = Allocations::count;
    kept = KyResult(KyOK);
    EXPECT_EQ(Allocations::count, before);
    EXPECT_TRUE(kept.ok() && kept == KyOK);
}

TEST(Result, reportsFailuresAndNothingElse) {
    const KyResult failure(1, "Shader Error: 0%s\nsecond\n", "", false);
    {
        const Reports reports;
        KyOK.notify();
        KyOK.check();
        failure.notify();
        EXPECT_EQ(&failure.check(), &failure);
        ASSERT_EQ(reports.results.size(), 2U);
        EXPECT_EQ(reports.results[0].kind, KyResult::Report::Notify);
        EXPECT_EQ(reports.results[1].kind, KyResult::Report::Check);
        EXPECT_EQ(reports.results[1].result, failure);
    }
    testing::internal::CaptureStderr();
    failure.notify();
    const std::string line = testing::internal::GetCapturedStderr();
    EXPECT_NE(line.find("Shader Error: 0%s"), std::string::npos);
    EXPECT_EQ(line.find('\n'), line.size() - 1) << "one line by default";
}

TEST(Environment, anUnsetVariableIsFalse) {
    const char* const name = "KYGL_TEST_VARIABLE";
    unsetenv(name);
    EXPECT_FALSE(KyEnvironment::exists(name, false) || KyEnvironment::getBool(name, false, true));
    const std::map<std::string, bool> values = {{"", false}, {"0", false},   {"no", false},
                                                {"1", true}, {"true", true}, {"YES", true},
                                                {"On", true}};
    for (const auto& [value, truth] : values) {
        setenv(name, value.c_str(), 1);
        EXPECT_TRUE(KyEnvironment::exists(name, false));
        EXPECT_EQ(KyEnvironment::getBool(name, false, true), truth) << value;
    }
}
