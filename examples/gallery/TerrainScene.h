#pragma once

#include "GlObjects.h"
#include "TerrainMesh.h"

#include <kygl/KyShaderMacro.h>
#include <kygl/KyShaderProgram.h>

#include <array>
#include <string>
#include <vector>

/// How one side of the gallery looks at the terrain.
struct View {
    const char* name;
    unsigned int context;             ///< id of its GL context
    float azimuth, altitude;          ///< where the eye stands, in degrees from north and horizon
    std::vector<const char*> macros;  ///< how the surface is shaded
    bool clipped;                     ///< cut open towards the eye
};

/// One terrain in one GL context: its buffers and its shader program, which is drawn with several
/// macro sets in turn. Used by one thread, with that context current.
class TerrainScene {
public:
    /// What was seen of one way in which the program is used.
    struct Pass {
        std::string macros;
        long frameBuilt = 0;
        long timesFound = 0;
        std::vector<GlObject> objects;  ///< what the building made
    };

    TerrainScene(const TerrainMesh& mesh, const View& view);
    ~TerrainScene();
    TerrainScene(const TerrainScene&) = delete;
    TerrainScene& operator=(const TerrainScene&) = delete;

    /// Draws one frame. Throws `std::runtime_error` when a shader does not build.
    /// @param swing from -1 to 1: how far the eye and the cut are from their places
    /// @param shiftX,shiftY by how much of a pixel the picture is shifted
    void draw(float swing, float shiftX, float shiftY, int width, int height);

    const std::array<Pass, 3>& passes() const { return mPasses; }
    const std::vector<GlObject>& buffers() const { return mBuffers; }

private:
    template <typename Item>
    void fillBuffer(unsigned int target, const std::vector<Item>& items);
    void setMacros();
    void setConstants();
    void setCut(float swing);
    bool cutAway(const TerrainMesh::Vertex& vertex) const;
    void placeEye(float swing, float shiftX, float shiftY, float aspect) const;
    void apply(std::size_t index);
    void drawBackdrop();
    void drawSurface();
    void drawBlock();

    const TerrainMesh& mMesh;
    const View& mView;
    KyShaderProgram mProgram;
    std::array<Pass, 3> mPasses;
    std::array<KyShaderParametersMacros, 3> mMacros;
    std::vector<GlObject> mBuffers;
    bool mClipped = false;
    float mCutX = 0, mCutY = 0, mCutOffset = 0;  // the plane: where it looks to, how far out it is
    long mFrame = 0;
};
