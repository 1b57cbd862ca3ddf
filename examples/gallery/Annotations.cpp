#include "Annotations.h"

#include "Numbers.h"

#include <kygl/belmorapackage_kygl.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include <GL/gl.h>

namespace {

constexpr Style kPlain = {12, false, false, "helvetica", 0};
constexpr Style kSmall = {10, false, false, "helvetica", 0};
constexpr Style kLetter = {12, true, false, "helvetica", 0};
constexpr Style kSummit = {14, true, true, "times", 0.55F};
constexpr float kMargin = 14;  // between what is written and the picture's borders
constexpr std::size_t kSummits = 7;
constexpr std::size_t kCandidates = 2000;  // rough ground has many, and the rest are low

constexpr Style titleStyle(float width) {
    return {width < 500 ? 14 : 24, true, false, "helvetica", 0};
}

struct Place {
    float x, y;
};

// ---- shapes in pixels

void usePixels(const Frame& frame) {
    glViewport(0, 0, frame.width, frame.height);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, frame.width, 0, frame.height, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

void useInk(float opacity) {
    glColor4f(0.13F, 0.17F, 0.22F, opacity);
}

void drawPaper(const Box& box) {
    glColor4f(0.97F, 0.97F, 0.96F, 0.65F);
    glRectf(box.left, box.bottom, box.right, box.top);
}

void drawFrame(const Box& box) {
    useInk(0.7F);
    glBegin(GL_LINE_LOOP);
    glVertex2f(box.left - 0.5F, box.bottom - 0.5F);
    glVertex2f(box.right + 0.5F, box.bottom - 0.5F);
    glVertex2f(box.right + 0.5F, box.top + 0.5F);
    glVertex2f(box.left - 0.5F, box.top + 0.5F);
    glEnd();
}

// A straight line through a map with that place and scale.
void drawCut(const Cut& cut, const Place& middle, float scale, const Box& map) {
    const float x = middle.x + scale * cut.x * cut.offset;
    const float y = middle.y + scale * cut.y * cut.offset;
    const float across = (map.right - map.left) + (map.top - map.bottom);
    glEnable(GL_SCISSOR_TEST);
    glScissor(static_cast<int>(map.left), static_cast<int>(map.bottom),
              static_cast<int>(map.right - map.left), static_cast<int>(map.top - map.bottom));
    glBegin(GL_LINES);
    glVertex2f(x - across * cut.y, y + across * cut.x);
    glVertex2f(x + across * cut.y, y - across * cut.x);
    glEnd();
    glDisable(GL_SCISSOR_TEST);
}

// From the lowest at the foot to the highest on top, in the texture that is bound.
void drawColours(const Box& box) {
    glEnable(GL_TEXTURE_1D);
    glColor3f(1, 1, 1);
    glBegin(GL_QUADS);
    glTexCoord1i(0);
    glVertex2f(box.left, box.bottom);
    glVertex2f(box.right, box.bottom);
    glTexCoord1i(1);
    glVertex2f(box.right, box.top);
    glVertex2f(box.left, box.top);
    glEnd();
    glDisable(GL_TEXTURE_1D);
}

// ---- where things are

/// The lower edge of a wall.
struct Foot {
    Foot(const TerrainMesh& mesh, const TerrainMesh::Face& face)
        : block(mesh),
          wall(face),
          alongX(face.normalX == 0),
          length(2 * (alongX ? mesh.halfX : mesh.halfY)) {}

    // A point so far along it from the south or west, and outwards by a part of the block's size.
    Place at(float along, float outwards) const {
        const float out = outwards * std::max(block.halfX, block.halfY);
        const float fromMiddle = along - length / 2;
        return {wall.normalX * (block.halfX + out) + (alongX ? fromMiddle : 0),
                wall.normalY * (block.halfY + out) + (alongX ? 0 : fromMiddle)};
    }

    const TerrainMesh& block;
    const TerrainMesh::Face& wall;
    bool alongX;
    float length;
};

// The highest points that are far apart. A lower one beside a higher one is no summit of its own.
std::vector<TerrainMesh::Vertex> highest(const TerrainMesh& mesh, const TerrainScene& scene) {
    const float apart = 0.3F * std::min(mesh.halfX, mesh.halfY);
    std::vector<TerrainMesh::Vertex> seen;
    std::vector<TerrainMesh::Vertex> found;
    for (const TerrainMesh::Vertex& summit : mesh.summits) {
        if (found.size() == kSummits || seen.size() == kCandidates) break;
        if (scene.cutAway(summit.x, summit.y)) continue;
        const bool alone = std::none_of(seen.begin(), seen.end(), [&](const auto& higher) {
            const float x = higher.x - summit.x;
            const float y = higher.y - summit.y;
            return x * x + y * y < apart * apart;
        });
        seen.push_back(summit);
        if (alone) found.push_back(summit);
    }
    return found;
}

// ---- texts

std::string elevation(float height) {
    return grouped(height) + " m";
}

// The value of a key in the library's build record.
std::string recorded(const std::string& key) {
    const std::string record = belmorapackage_kygl();
    const std::string pair = "|" + key + "|";
    const std::size_t at = record.find(pair);
    if (at == std::string::npos) return "?";
    const std::size_t begin = at + pair.size();
    return record.substr(begin, record.find('|', begin) - begin);
}

}  // namespace

Annotations::Annotations(const TerrainMesh& mesh, const View& view, ColourTable& colours,
                         std::string title)
    : mMesh(mesh), mView(view), mColours(colours), mTitle(std::move(title)) {
    if (view.clipped) mPlan.emplace(mesh);
}

Stage Annotations::stage(int width, int height) {
    const int top = std::min(60, height / 8);
    const int bottom = std::min(34, height / 12);
    const int left = std::min(60, width / 10);
    const int right = std::min(24, width / 20);
    return {left, bottom, width - left - right, height - top - bottom};
}

void Annotations::draw(const TerrainScene& scene, const Frame& frame) {
    mLabels = Labels(frame.width, frame.height);
    mWidth = static_cast<float>(frame.width);
    mHeight = static_cast<float>(frame.height);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    usePixels(frame);
    drawTitle();
    drawLegend();
    drawCaption();
    drawRecord();
    if (mPlan) drawPlan(scene.cut(), frame);
    scene.enter();
    drawAxes(scene);
    drawSummits(scene);
    glDisable(GL_BLEND);
    glEnable(GL_DEPTH_TEST);
}

// In one line, or a word a line where that is too wide.
void Annotations::drawTitle() {
    useStyle(titleStyle(mWidth));
    const Anchor corner = {kMargin, mHeight - kMargin, 0, -1, 1};
    std::string words = mTitle;
    std::replace(words.begin(), words.end(), ' ', '\n');
    if (!mLabels.draw(corner, mTitle)) mLabels.draw(corner, words);
}

// Below a title of one line, if the terrain does not reach up there.
void Annotations::drawCaption() {
    useStyle(titleStyle(mWidth));
    const float top = mHeight - kMargin - extentOf("").height - 4;
    useStyle(kPlain);
    const Stage place = stage(static_cast<int>(mWidth), static_cast<int>(mHeight));
    if (top - extentOf("").height >= static_cast<float>(place.bottom + place.height))
        mLabels.draw({kMargin, top, 0, -1, 1}, mView.caption);
}

// A bar of all colours with the elevations beside it, in the upper right corner.
void Annotations::drawLegend() {
    useStyle(kPlain);
    const float range = mMesh.colourTop - mMesh.lowest;
    const std::vector<float> marks = niceMarks(mMesh.lowest, mMesh.colourTop, 5);
    const auto textOf = [&](float mark) {
        return range < 5 ? plain(mark) + " m" : elevation(mark);
    };
    float widest = 0;
    for (const float mark : marks)
        widest = std::max(widest, extentOf(textOf(mark)).width);
    const float length = std::min(150.0F, std::floor(mHeight / 5));
    constexpr float kInner = 8;
    constexpr float kBar = 14;
    const float left = mWidth - kMargin - kInner - widest - kInner - kBar;
    const float top = mHeight - kMargin - kInner;
    const Box bar = {left, top - length, left + kBar, top};
    const Box paper = {left - kInner, bar.bottom - kInner, mWidth - kMargin, top + kInner};
    const bool isLarge = length < 5 * extentOf("").height || 3 * (mWidth - paper.left) > mWidth;
    if (isLarge || !mLabels.take(paper)) return;

    drawPaper(paper);
    mColours.bind(mView.context);
    drawColours(bar);
    drawFrame(bar);
    for (const float mark : marks) {
        const float y = bar.bottom + std::round(length * (mark - mMesh.lowest) / range);
        glRectf(bar.right + 1, y, bar.right + 4, y + 1);
        drawText({bar.right + kInner, y, 0, -1, 0, 0, -1}, textOf(mark));
    }
}

// The terrain from above with the line of the cut, in the lower right corner.
void Annotations::drawPlan(const Cut& cut, const Frame& frame) {
    const float height = std::min(140.0F, std::floor(mHeight / 4.5F));
    const float width = std::round(height * mMesh.halfX / mMesh.halfY);
    if (height < 60 || width > mWidth / 3) return;
    const Box map = {mWidth - kMargin - width, kMargin + 26, mWidth - kMargin,
                     kMargin + 26 + height};
    if (!mLabels.take({map.left - 1, map.bottom - 1, map.right + 1, map.top + 1})) return;

    const Place middle = {(map.left + map.right) / 2, (map.bottom + map.top) / 2};
    mColours.bind(mView.context);
    mPlan->draw({2 * (middle.x + frame.shiftX) / mWidth - 1,
                 2 * (middle.y + frame.shiftY) / mHeight - 1, width / mWidth, height / mHeight},
                cut);
    drawFrame(map);
    useStyle(kLetter);
    mLabels.draw({middle.x, map.top + 4, 0, 0, -2}, "N");
    drawCut(cut, {middle.x + frame.shiftX, middle.y + frame.shiftY}, width / (2 * mMesh.halfX),
            map);
}

void Annotations::drawRecord() {
    if (!mPlan) return;
    useStyle(kSmall);
    mLabels.draw({mWidth - kMargin, kMargin - 6, 0, 1, -2},
                 recorded("product") + " " + recorded("version_major") + "." +
                     recorded("version_minor") + "." + recorded("version_patch") + ", " +
                     recorded("compiler") + ", " + recorded("build_cfg"));
}

void Annotations::drawAxes(const TerrainScene& scene) {
    useStyle(kPlain);
    for (const TerrainMesh::Face& face : mMesh.faces)
        if (scene.facesEye(face.normalX, face.normalY)) drawAxis(scene, face);
}

// Marks at the foot of a wall, in kilometres from the south-west corner.
void Annotations::drawAxis(const TerrainScene& scene, const TerrainMesh::Face& wall) {
    const Foot foot(mMesh, wall);
    const int alignment = scene.looksRight(wall.normalX, wall.normalY) ? -1 : 1;
    const auto write = [&](const Place& place, const std::string& text, int right, int up) {
        mLabels.draw({place.x, place.y, mMesh.base, alignment, 0, -alignment * right, up}, text);
    };
    std::vector<float> seen;
    for (const float mark : niceMarks(0, foot.length, 6)) {
        const Place from = foot.at(mark, 0);
        const Place to = foot.at(mark, 0.03F);
        if (scene.cutAway(from.x, from.y)) continue;
        useInk(0.7F);
        glBegin(GL_LINES);
        glVertex3f(from.x, from.y, mMesh.base);
        glVertex3f(to.x, to.y, mMesh.base);
        glEnd();
        write(to, plain(mark / 1000), 3, -4);
        seen.push_back(mark);
    }
    if (seen.size() < 2) return;
    write(foot.at((seen.front() + seen.back()) / 2, 0.1F), foot.alongX ? "km east" : "km north", 20,
          -8);
}

void Annotations::drawSummits(const TerrainScene& scene) {
    useStyle(kSummit);
    glPointSize(5);
    glEnable(GL_POINT_SMOOTH);
    for (const TerrainMesh::Vertex& summit : highest(mMesh, scene)) {
        constexpr int kUp = 14;
        const std::string height = elevation(summit.z);
        const bool first = summit.z == mMesh.highest;
        if (!mLabels.draw({summit.x, summit.y, summit.z, 0, -1, 0, kUp},
                          first ? "highest point\n" + height : height))
            continue;
        useInk(1);
        glBegin(GL_POINTS);
        glVertex3f(summit.x, summit.y, summit.z);
        glEnd();
    }
}
