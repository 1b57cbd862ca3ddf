#include "support/RecordedGL.h"
#include "support/Reports.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/KyTexture.h>

#include <gtest/gtest.h>

#include <vector>

using Calls = std::vector<std::string>;

struct TextureTest : testing::Test {
    Calls bind(unsigned int context) {
        EXPECT_EQ(texture.bindTexture(context), 1);
        return gl.takeCalls();
    }
    Calls drain(unsigned int context) {
        KyDeferredDeleteMap::deferredDelete(context);
        return gl.takeCalls();
    }
    static Calls made(int name, int width) {
        const std::string bound = "glBindTexture(3552, " + std::to_string(name) + ")";
        return {"glGenTextures(1, *)", bound,
                "glTexImage1D(3552, 0, 4, " + std::to_string(width) + ", 0, 6408, 5121, *)", bound};
    }
    RecordedGL gl;
    Reports reports;
    const unsigned char pixels[12] = {};
    KyTexture texture;
};

TEST_F(TextureTest, aChangeCostsEachContextOneNewTextureAndQueuesEachOldNameOnce) {
    texture.create1D(pixels, 0);
    EXPECT_EQ(texture.bindTexture(1), 0) << "there are no pixels";
    texture.create1D(pixels, 2);
    texture.create1D(pixels, 3);
    EXPECT_EQ(bind(7), made(1, 3));
    EXPECT_EQ(bind(8), made(2, 3));
    texture.createPixels(pixels, 2);
    EXPECT_EQ(bind(7), Calls{"glBindTexture(3552, 1)"}) << "the inner step changes nothing else";
    texture.create1D(pixels, 1);
    EXPECT_EQ(drain(7), Calls()) << "nothing is let go of before the next bind";
    EXPECT_EQ(bind(8), made(3, 1));
    EXPECT_EQ(bind(7), made(4, 1));
    EXPECT_EQ(drain(7), Calls{"glDeleteTextures(1, &1)"});
    EXPECT_EQ(drain(8), Calls{"glDeleteTextures(1, &2)"});
    texture.destroy();
    EXPECT_EQ(texture.bindTexture(7), 0);
    EXPECT_EQ(drain(7), Calls{"glDeleteTextures(1, &4)"});
    texture.create1D(pixels, 2);
    texture.create1D(nullptr, 0);
    EXPECT_EQ(bind(8), made(5, 0)) << "a width of nothing keeps the pixels";
    texture.deleteTextures();
    EXPECT_EQ(drain(8), (Calls{"glDeleteTextures(1, &5)", "glDeleteTextures(1, &3)"}));
}

TEST_F(TextureTest, aRefusedUploadIsToldOnceAndNotTriedAgain) {
    gl.failNext("glGenTextures", GL_INVALID_OPERATION);
    gl.failNext("glTexImage1D", GL_INVALID_VALUE);
    gl.failNth("glBindTexture", 2, GL_INVALID_ENUM);
    texture.create1D(pixels, 3);
    EXPECT_EQ(bind(7).size(), 4U);
    EXPECT_EQ(bind(7).size(), 1U);
    EXPECT_EQ(reports.results.size(), 1U);
    reports.expectGLError(0, KyResult::Report::Notify, "KyTexture",
                          "glTexImage1D(target, 0, 4, size, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels)");
    texture.destroy();
    drain(7);
}
