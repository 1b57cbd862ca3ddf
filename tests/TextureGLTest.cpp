#include "support/RealGLX.h"
#include "support/Reports.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/KyTexture.h>

#include <GL/gl.h>

#include <vector>

using Pixels = std::vector<unsigned char>;

struct TextureGLTest : RealGLXTest {};

TEST_F(TextureGLTest, eachContextHasTheTextureUntilItIsDrained) {
    const RealGLX other(gl.get());
    KyTexture texture;
    for (const auto shade : {Pixels::value_type{10}, Pixels::value_type{200}}) {
        texture.create1D(Pixels(32, shade).data(), 8);  // gone before the first bind
        for (const RealGLX* const context : {static_cast<const RealGLX*>(gl.get()), &other}) {
            context->makeCurrent();
            ASSERT_EQ(texture.bindTexture(context == &other ? 2 : 1), 1);
            Pixels read(32);
            glGetTexImage(GL_TEXTURE_1D, 0, GL_RGBA, GL_UNSIGNED_BYTE, read.data());
            EXPECT_EQ(read, Pixels(32, shade));
        }
    }
    GLint name = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_1D, &name);
    texture.destroy();
    EXPECT_TRUE(glIsTexture(static_cast<GLuint>(name)));
    KyDeferredDeleteMap::deferredDelete(2);
    EXPECT_FALSE(glIsTexture(static_cast<GLuint>(name)));
    gl->makeCurrent();
    KyDeferredDeleteMap::deferredDelete(1);
}

TEST_F(TextureGLTest, aSizeThatTheDriverRefusesIsToldOnce) {
    const Reports reports;
    KyTexture texture;
    texture.create1D(Pixels(std::size_t{4} << 20).data(), 1 << 20);
    EXPECT_EQ(texture.bindTexture(1) + texture.bindTexture(1), 2);
    ASSERT_EQ(reports.results.size(), 1U);
    EXPECT_EQ(reports.results[0].result.code(), GL_INVALID_VALUE);
    texture.destroy();
    KyDeferredDeleteMap::deferredDelete(1);
}
