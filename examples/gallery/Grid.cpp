#include "Grid.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace {

constexpr std::uintmax_t kMostBytes = 256U << 20U;
constexpr double kMostCells = 4e6;
constexpr double kHighest = 1e5;
constexpr char kBlanks[] = " \t\r";

// A word of the file as it may stand in a message: binary files end up here too.
std::string quoted(std::string_view word) {
    std::string text(word.substr(0, 32));
    for (char& c : text)
        if (std::isprint(static_cast<unsigned char>(c)) == 0) c = '?';
    return "'" + text + "'";
}

class GridReader {
public:
    explicit GridReader(std::string path) : mPath(std::move(path)) { open(); }

    Grid read() {
        readHeader();
        for (int row = 0; row < mGrid.rows; ++row, nextLine()) {
            if (mEnd) fail(std::to_string(row) + " rows, nrows is " + std::to_string(mGrid.rows));
            readRow();
        }
        if (!mEnd) fail("more rows than nrows, which is " + std::to_string(mGrid.rows));
        return std::move(mGrid);
    }

private:
    [[noreturn]] void fail(const std::string& reason) const {
        const std::string column = mColumn == 0 ? "" : "column " + std::to_string(mColumn) + ": ";
        throw std::runtime_error(mPath + ":" + std::to_string(mLine) + ": " + column + reason);
    }

    // Only regular files of bearable size: a device or a pipe may never end.
    void open() {
        namespace fs = std::filesystem;
        std::error_code none;
        const char* reason = nullptr;
        if (!fs::exists(mPath, none))
            reason = ": no such file";
        else if (!fs::is_regular_file(mPath, none))
            reason = ": not a regular file";
        else if (fs::file_size(mPath, none) > kMostBytes)
            reason = ": larger than 256 MiB";
        else if (mFile.open(mPath); !mFile)
            reason = ": cannot be read";
        if (reason != nullptr) throw std::runtime_error(mPath + reason);
        nextLine();
    }

    // Goes to the next line that holds anything.
    void nextLine() {
        mColumn = 0;
        for (std::string line; std::getline(mFile, line); line.clear()) {
            ++mLine;
            mText.swap(line);
            mRest = mText;
            if (mRest.find_first_not_of(kBlanks) != std::string_view::npos) return;
        }
        mEnd = true;
    }

    // The next word of the line; empty at its end.
    std::string_view word() {
        mRest.remove_prefix(std::min(mRest.find_first_not_of(kBlanks), mRest.size()));
        const std::string_view found = mRest.substr(0, mRest.find_first_of(kBlanks));
        mRest.remove_prefix(found.size());
        return found;
    }

    double number(std::string_view text) const {
        const char* const end = text.data() + text.size();
        double value = 0;
        const auto [stop, error] = std::from_chars(text.data(), end, value);
        if (error == std::errc::invalid_argument || stop != end)
            fail(quoted(text) + " is not a number");
        if (error != std::errc() || !std::isfinite(value))
            fail(quoted(text) + " is not a finite number");
        return value;
    }

    // Lines of a keyword and a number, up to the first line that is none.
    void readHeader() {
        static const std::string_view kKeys[] = {"ncols",     "nrows",       "xllcorner",
                                                 "xllcenter", "yllcorner",   "yllcenter",
                                                 "cellsize",  "nodata_value"};
        std::map<std::string, double> header;
        for (; !mEnd; nextLine()) {
            std::string key(word());
            std::transform(key.begin(), key.end(), key.begin(),
                           [](unsigned char c) { return std::tolower(c); });
            if (std::find(std::begin(kKeys), std::end(kKeys), key) == std::end(kKeys)) break;
            if (!header.emplace(key, number(word())).second) fail(key + " stands here again");
            if (!word().empty()) fail("more than one value for " + key);
        }
        mRest = mText;
        if (header.count("nodata_value") != 0) mNoData = header["nodata_value"];
        for (const std::string axis : {"x", "y"})
            if (header.count(axis + "llcenter") != 0)
                header.emplace(axis + "llcorner", header[axis + "llcenter"]);
        for (const char* const key : {"ncols", "nrows", "xllcorner", "yllcorner", "cellsize"})
            if (header.count(key) == 0) fail(std::string("the header lacks ") + key);
        setExtent(header["ncols"], header["nrows"]);
        setCellSize(header["cellsize"], header["xllcorner"], header["yllcorner"]);
    }

    void setExtent(double columns, double rows) {
        if (columns != std::floor(columns) || rows != std::floor(rows) || columns < 2 || rows < 2)
            fail("ncols and nrows must be whole numbers from 2 on");
        if (columns * rows > kMostCells) fail("ncols and nrows make more than 4 million cells");
        mGrid.columns = static_cast<int>(columns);
        mGrid.rows = static_cast<int>(rows);
    }

    // The format does not tell its unit. Small cells within the bounds of the globe are degrees,
    // and a degree of longitude is shorter the farther from the equator it lies.
    void setCellSize(double cell, double west, double south) {
        if (cell < 1e-6 || cell > 1e6) fail("cellsize is not between 1e-6 and 1e6");
        const double north = south + cell * mGrid.rows;
        mGrid.cellWidth = mGrid.cellHeight = cell;
        if (cell > 0.1 || std::abs(west) > 360 || south < -90 || north > 90) return;
        constexpr double kMetresPerDegree = 111320;
        constexpr double kRadiansPerDegree = 3.14159265358979 / 180;
        mGrid.cellHeight = cell * kMetresPerDegree;
        mGrid.cellWidth = mGrid.cellHeight * std::cos((south + north) / 2 * kRadiansPerDegree);
    }

    void readRow() {
        for (std::string_view text = word(); !text.empty(); text = word()) {
            if (++mColumn > mGrid.columns) break;
            const double height = number(text);
            if (height == mNoData) fail("a NODATA cell, and terrain with gaps cannot be drawn");
            if (std::abs(height) > kHighest) fail(quoted(text) + " is no elevation in metres");
            mGrid.heights.push_back(static_cast<float>(height));
        }
        const int count = std::exchange(mColumn, 0);
        if (count == mGrid.columns) return;
        fail((count > mGrid.columns ? "more" : "only " + std::to_string(count)) +
             " values in a row, ncols is " + std::to_string(mGrid.columns));
    }

    std::string mPath;
    std::ifstream mFile;
    std::string mText;       // the line
    std::string_view mRest;  // what is unread of it
    long mLine = 0;
    int mColumn = 0;  // of the value being read, from 1; 0 outside the rows
    bool mEnd = false;
    double mNoData = -9999;  // the format's own default
    Grid mGrid;
};

}  // namespace

Grid readGrid(const std::string& path) {
    return GridReader(path).read();
}
