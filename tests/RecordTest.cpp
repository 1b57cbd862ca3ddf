#include <kygl/belmorapackage_kygl.h>

#include <gtest/gtest.h>

TEST(RecordTest, theRecordOfTheBuildIsHandedOutWhole) {
    const std::string text = belmorapackage_kygl();
    EXPECT_EQ(text.rfind("|version_tag|\\|comment|", 0), 0U) << text;
    EXPECT_NE(text.find("|filename|libkygl.so|path|/"), std::string::npos) << text;
    EXPECT_EQ(text.substr(text.rfind("|version_major|")),
              "|version_major|1|version_minor|0|version_patch|0");
}
