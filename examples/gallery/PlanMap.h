#pragma once

#include "TerrainScene.h"

/// The terrain from straight above, drawn by a pair of ARB assembly programs. Used by one thread,
/// with one context current; its programs die in that context.
class PlanMap {
public:
    /// A part of the viewport, from its middle, which counts as 0, to its borders at -1 and 1.
    struct Opening {
        float x, y, halfWidth, halfHeight;
    };

    /// Throws `std::runtime_error` where the GL takes no such programs.
    explicit PlanMap(const TerrainMesh& mesh);
    ~PlanMap();
    PlanMap(const PlanMap&) = delete;
    PlanMap& operator=(const PlanMap&) = delete;

    /// Draws the surface whose vertex arrays are current, in the colours of the texture that is
    /// bound. What the cut takes away is pale.
    void draw(const Opening& opening, const Cut& cut) const;

private:
    const TerrainMesh& mMesh;
    unsigned int mVertexProgram = 0;
    unsigned int mFragmentProgram = 0;
};
