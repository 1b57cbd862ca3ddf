#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// Elevations on a regular grid, the northernmost row first.
struct Grid {
    int columns = 0;
    int rows = 0;
    double cellWidth = 1;   ///< metres from column to column
    double cellHeight = 1;  ///< metres from row to row
    std::vector<float> heights;

    float at(int row, int column) const {
        return heights[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) +
                       static_cast<std::size_t>(column)];
    }
};

/// Reads an ESRI ASCII grid without gaps. Throws `std::runtime_error` with file, line and reason
/// for anything that is not one. Memory follows what the file holds, not what its header promises.
Grid readGrid(const std::string& path);
