#pragma once

#include "ColourTable.h"
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
    int table;                        ///< the colours in which its picture is taken
    const char* caption;
};

/// One frame: the size of the picture, and what differs from frame to frame.
struct Frame {
    int width, height;
    float swing = 0;  ///< from -1 to 1: how far the eye and the cut are from their places
    float shiftX = 0, shiftY = 0;  ///< by how much of a pixel the picture is shifted
};

/// The part of a picture that the terrain fills, in pixels from the lower left corner.
struct Stage {
    int left, bottom, width, height;
};

/// A vertical plane; what lies in front of it is cut away.
struct Cut {
    float x, y, offset;  ///< where it looks to, and how far out it is
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

    TerrainScene(const TerrainMesh& mesh, const View& view, ColourTable& colours);
    ~TerrainScene();
    TerrainScene(const TerrainScene&) = delete;
    TerrainScene& operator=(const TerrainScene&) = delete;

    /// Draws one frame. Throws `std::runtime_error` when a shader does not build.
    void draw(const Frame& frame, const Stage& stage);

    /// Lets what is drawn next stand in the terrain, to the eye of the last frame without its
    /// shift.
    void enter() const;

    /// Where the terrain is cut open; beyond its borders where it is whole.
    const Cut& cut() const { return mCut; }
    /// Whether nothing is left of the ground around a place.
    bool cutAway(float x, float y) const;
    /// Whether a wall that looks to there shows its face.
    bool facesEye(float normalX, float normalY) const;
    /// Whether it looks to the right of the picture, and not to the left.
    bool looksRight(float normalX, float normalY) const;

    const std::array<Pass, 3>& passes() const { return mPasses; }
    const std::vector<GlObject>& buffers() const { return mBuffers; }
    const std::vector<GlObject>& textures() const { return mTextures; }

private:
    template <typename Item>
    void fillBuffer(unsigned int target, const std::vector<Item>& items);
    void setMacros();
    void setConstants();
    void setCut(float swing);
    void placeEye(float swing, float aspect);
    void loadEye(float shiftX, float shiftY) const;
    void noteTexture();
    void apply(std::size_t index);
    void drawBackdrop();
    void drawSurface();
    void drawBlock();

    const TerrainMesh& mMesh;
    const View& mView;
    ColourTable& mColours;
    KyShaderProgram mProgram;
    std::array<Pass, 3> mPasses;
    std::array<KyShaderParametersMacros, 3> mMacros;
    std::vector<GlObject> mBuffers;
    std::vector<GlObject> mTextures;
    bool mClipped = false;
    Cut mCut = {1, 0, 1e9F};
    Stage mStage = {};
    float mAzimuth = 0;                                       // of the eye
    std::array<float, 16> mProjection = {}, mModelView = {};  // without a shift
    long mFrame = 0;
};
