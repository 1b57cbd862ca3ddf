#include "TerrainMesh.h"

#include <algorithm>
#include <cmath>

namespace {

// A block's height beside its width, as it pleases the eye.
constexpr float kRelief = 0.13F;

bool isSummit(const Grid& grid, int row, int column) {
    for (int r = row - 1; r <= row + 1; ++r)
        for (int c = column - 1; c <= column + 1; ++c)
            if (grid.at(r, c) > grid.at(row, column)) return false;
    return true;
}

}  // namespace

TerrainMesh::TerrainMesh(const Grid& grid)
    : lowest(*std::min_element(grid.heights.begin(), grid.heights.end())),
      highest(*std::max_element(grid.heights.begin(), grid.heights.end())),
      // Less than this would colour nothing but the rounding of the numbers.
      colourTop(std::max({highest, lowest + 1, lowest + 0.01F * std::abs(highest)})),
      halfX(static_cast<float>(grid.cellWidth * (grid.columns - 1) / 2)),
      halfY(static_cast<float>(grid.cellHeight * (grid.rows - 1) / 2)),
      cell(static_cast<float>(std::max(grid.cellWidth, grid.cellHeight))) {
    const float width = 2 * std::min(halfX, halfY);
    const float range = std::max(highest - lowest, 1e-3F * width);
    base = lowest - 0.6F * range;
    exaggeration = std::max(1.0F, kRelief * width / range);
    addVertices(grid);
    addSurface(grid.columns, grid.rows);
    addFaces(grid.columns, grid.rows);
    addSummits(grid);
}

void TerrainMesh::addVertices(const Grid& grid) {
    const auto dx = static_cast<float>(grid.cellWidth);
    const auto dy = static_cast<float>(grid.cellHeight);
    for (int row = 0; row < grid.rows; ++row) {
        const int north = std::max(row - 1, 0);
        const int south = std::min(row + 1, grid.rows - 1);
        for (int column = 0; column < grid.columns; ++column) {
            const int west = std::max(column - 1, 0);
            const int east = std::min(column + 1, grid.columns - 1);
            const float riseX = grid.at(row, east) - grid.at(row, west);
            const float riseY = grid.at(north, column) - grid.at(south, column);
            vertices.push_back({-riseX / (static_cast<float>(east - west) * dx),
                                -riseY / (static_cast<float>(south - north) * dy), 1,
                                static_cast<float>(column) * dx - halfX,
                                halfY - static_cast<float>(row) * dy, grid.at(row, column)});
        }
    }
}

void TerrainMesh::addSurface(int columns, int rows) {
    const auto stride = static_cast<unsigned int>(columns);
    for (int row = 0; row + 1 < rows; ++row) {
        auto northWest = static_cast<unsigned int>(row * columns);
        for (int column = 0; column + 1 < columns; ++column, ++northWest) {
            const unsigned int southEast = northWest + stride + 1;
            surface.insert(surface.end(), {northWest, southEast - 1, southEast});
            surface.insert(surface.end(), {northWest, southEast, northWest + 1});
        }
    }
}

// Walks around the block so that each wall runs from left to right for whoever looks at it.
void TerrainMesh::addFaces(int columns, int rows) {
    const int southWest = columns * (rows - 1);
    addWall(southWest, 1, columns, 0, -1);
    addWall(southWest + columns - 1, -columns, rows, 1, 0);
    addWall(columns - 1, -1, columns, 0, 1);
    addWall(0, columns, rows, -1, 0);
    faces.push_back({static_cast<int>(vertices.size()), 4, 0, 0});
    for (const float x : {-halfX, halfX})
        for (const float y : {-halfY, halfY})
            vertices.push_back({0, 0, 1, x, y, base});
}

void TerrainMesh::addWall(int first, int stride, int count, float normalX, float normalY) {
    faces.push_back({static_cast<int>(vertices.size()), 2 * count, normalX, normalY});
    for (int i = 0, at = first; i < count; ++i, at += stride) {
        Vertex vertex = vertices[static_cast<std::size_t>(at)];
        vertices.push_back(vertex);
        vertex.z = base;
        vertices.push_back(vertex);
    }
}

// Ground at the border may go on rising behind it, so that is left out.
void TerrainMesh::addSummits(const Grid& grid) {
    auto vertex = vertices.begin();
    for (int row = 0; row < grid.rows; ++row) {
        for (int column = 0; column < grid.columns; ++column, ++vertex) {
            const bool inside =
                row > 0 && row + 1 < grid.rows && column > 0 && column + 1 < grid.columns;
            if (inside && vertex->z > lowest && isSummit(grid, row, column))
                summits.push_back(*vertex);
        }
    }
    std::stable_sort(summits.begin(), summits.end(),
                     [](const Vertex& a, const Vertex& b) { return a.z > b.z; });
}
