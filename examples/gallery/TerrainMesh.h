#pragma once

#include "Grid.h"

/// Where the sun stands: in the north-west, as on maps.
constexpr float kSun[] = {-0.542F, 0.542F, 0.643F};

/// The terrain as a closed block: its surface, four walls and a flat bottom. Metres, x to the east,
/// y to the north, z up, the middle of the block at x = y = 0. Front faces look outwards.
struct TerrainMesh {
    struct Vertex {
        float slopeX, slopeY, one;  ///< normal of the surface that is not exaggerated
        float x, y, z;
    };
    /// A flat face of the block: a triangle strip and where it looks to.
    struct Face {
        int first, count;
        float normalX, normalY;  ///< both 0 for the bottom
    };

    explicit TerrainMesh(const Grid& grid);

    float lowest, highest;  ///< of the surface
    float colourTop;        ///< where the colours end: flat ground has no range of its own
    float halfX, halfY;     ///< from the middle to the walls
    float cell;             ///< the longer side of a cell
    float base;             ///< where the bottom lies
    float exaggeration;     ///< by how much z should be stretched to the eye
    std::vector<Vertex> vertices;
    std::vector<unsigned int> surface;  ///< triangles
    std::vector<Face> faces;
    std::vector<Vertex> summits;  ///< nothing beside them is higher; the highest first

private:
    void addVertices(const Grid& grid);
    void addSurface(int columns, int rows);
    void addFaces(int columns, int rows);
    void addSummits(const Grid& grid);
    void addWall(int first, int stride, int count, float normalX, float normalY);
};
