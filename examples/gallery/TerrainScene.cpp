#define GL_GLEXT_PROTOTYPES
#include "TerrainScene.h"

#include "BuildFailure.h"
#include "Numbers.h"

#include <kygl/KyDeferredDeleteMap.h>

#include <algorithm>
#include <cmath>
#include <regex>
#include <stdexcept>

#include <GL/gl.h>
#include <GL/glext.h>

namespace {

constexpr float kRadians = 3.14159265F / 180;
constexpr float kContours = 20;  // at most
constexpr std::size_t kBackdrop = 0;
constexpr std::size_t kSurface = 1;
constexpr std::size_t kBlock = 2;

struct Vector {
    float x, y, z;
};

float dot(const Vector& a, const Vector& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

// The direction to a point of the sky, in degrees from north and from the horizon.
Vector direction(float azimuth, float altitude) {
    const float flat = std::cos(altitude * kRadians);
    return {std::sin(azimuth * kRadians) * flat, std::cos(azimuth * kRadians) * flat,
            std::sin(altitude * kRadians)};
}

// The picture's axes for an eye that stands in that direction.
struct Axes {
    Axes(float azimuth, float altitude)
        : right(direction(azimuth - 90, 0)),
          up(direction(azimuth + 180, 90 - altitude)),
          towards(direction(azimuth, altitude)) {}
    Vector right, up, towards;
};

void loadProjection(float tangentX, float tangentY, float nearest, float farthest) {
    const float x = tangentX * nearest;
    const float y = tangentY * nearest;
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glFrustum(-x, x, -y, y, nearest, farthest);
}

void loadView(const Axes& axes, float right, float up, float back) {
    const Vector& r = axes.right;
    const Vector& u = axes.up;
    const Vector& t = axes.towards;
    const float matrix[16] = {r.x, u.x, t.x, 0, r.y,    u.y, t.y,   0,
                              r.z, u.z, t.z, 0, -right, -up, -back, 1};
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixf(matrix);
}

// Along one axis of the picture: how far aside and how far back the eye must stand for all points
// to fit into an opening of `tangent` to either side.
class Fit {
public:
    explicit Fit(float tangent) : mTangent(tangent) {}
    void add(float across, float towards) {
        mRight = std::max(mRight, across + towards * mTangent);
        mLeft = std::max(mLeft, -across + towards * mTangent);
    }
    float largest() const { return mRight; }
    float least() const { return -mLeft; }
    float aside() const { return (mRight - mLeft) / 2; }
    float back() const { return (mRight + mLeft) / (2 * mTangent); }

private:
    float mTangent;
    float mRight = -1e30F;
    float mLeft = -1e30F;
};

}  // namespace

TerrainScene::TerrainScene(const TerrainMesh& mesh, const View& view, ColourTable& colours)
    : mMesh(mesh), mView(view), mColours(colours) {
    mProgram.create("terrain.vert", "terrain.frag", "gallery");
    setMacros();
    setConstants();
    fillBuffer(GL_ARRAY_BUFFER, mesh.vertices);
    fillBuffer(GL_ELEMENT_ARRAY_BUFFER, mesh.surface);
    glInterleavedArrays(GL_N3F_V3F, sizeof(TerrainMesh::Vertex), nullptr);
}

TerrainScene::~TerrainScene() {
    for (const GlObject& buffer : mBuffers)
        KyDeferredDeleteMap::pushBufferHandle(buffer.name, mView.context);
}

template <typename Item>
void TerrainScene::fillBuffer(unsigned int target, const std::vector<Item>& items) {
    GlObject buffer = {GlObject::kBuffer, 0};
    glGenBuffers(1, &buffer.name);
    mBuffers.push_back(buffer);
    glBindBuffer(target, buffer.name);
    glBufferData(target, static_cast<GLsizeiptr>(items.size() * sizeof(Item)), items.data(),
                 GL_STATIC_DRAW);
}

void TerrainScene::setMacros() {
    mMacros[kBackdrop].pushMacro("BACKDROP");
    for (const char* const macro : mView.macros)
        mMacros[kSurface].pushMacro(macro);
    mMacros[kBlock].pushMacro("STRATA");
    for (const std::size_t pass : {kSurface, kBlock})
        if (mView.clipped) KyShaderProgram::enableClipPlane(mMacros[pass]);
    mClipped = mMacros[kSurface].hasMacro("ENABLE_CLIPVERTEX");
    for (std::size_t pass = 0; pass < mPasses.size(); ++pass)
        mPasses[pass].macros = std::regex_replace(mMacros[pass].getDefineMacros().getString(),
                                                  std::regex("#define (.*)\n"), "$1 ");
}

void TerrainScene::setConstants() {
    mProgram.setUniform("lowest", mMesh.lowest);
    mProgram.setUniform("highest", mMesh.colourTop);
    mProgram.setUniform("exaggeration", mMesh.exaggeration);
    mProgram.setUniform("contourInterval", niceStep(mMesh.colourTop - mMesh.lowest, kContours));
    mProgram.setUniform("indexEvery", 5);
    mProgram.setUniform("layerThickness", (mMesh.highest - mMesh.base) / 14);
    mProgram.setUniform("blockSize", mMesh.halfX + mMesh.halfY);
    mProgram.setUniform("sunX", kSun[0]);
    mProgram.setUniform("sunY", kSun[1]);
    mProgram.setUniform("sunZ", kSun[2]);
    mProgram.setUniform("colours", 0);
}

void TerrainScene::draw(const Frame& frame, const Stage& stage) {
    ++mFrame;
    mStage = stage;
    glViewport(0, 0, frame.width, frame.height);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    drawBackdrop();
    setCut(frame.swing);
    const auto w = static_cast<float>(stage.width);
    const auto h = static_cast<float>(stage.height);
    placeEye(frame.swing, w / h);
    loadEye(2 * frame.shiftX / w, 2 * frame.shiftY / h);
    if (mClipped) {
        const GLdouble plane[] = {-mCut.x, -mCut.y, 0, mCut.offset};
        glClipPlane(GL_CLIP_PLANE0, plane);
        glEnable(GL_CLIP_PLANE0);
    }
    drawSurface();
    drawBlock();
    glDisable(GL_CLIP_PLANE0);
}

void TerrainScene::enter() const {
    loadEye(0, 0);
}

// Cuts away what lies in front of a plane that looks towards the eye, a little to its side.
void TerrainScene::setCut(float swing) {
    if (!mClipped) return;
    const Vector normal = direction(mView.azimuth - 22, 0);
    mCut = {normal.x, normal.y, (0.25F + 0.4F * swing) * std::min(mMesh.halfX, mMesh.halfY)};
    mProgram.setUniform("cutX", mCut.x);
    mProgram.setUniform("cutY", mCut.y);
    mProgram.setUniform("cutOffset", mCut.offset);
}

bool TerrainScene::cutAway(float x, float y) const {
    return mCut.x * x + mCut.y * y > mCut.offset + mMesh.cell;
}

bool TerrainScene::facesEye(float normalX, float normalY) const {
    return dot(direction(mAzimuth, 0), {normalX, normalY, 0}) > 0.1F;
}

bool TerrainScene::looksRight(float normalX, float normalY) const {
    return dot(direction(mAzimuth - 90, 0), {normalX, normalY, 0}) > 0;
}

// Looks at the block from the view's side, from as near as lets what is left of it fill the
// picture.
void TerrainScene::placeEye(float swing, float aspect) {
    mAzimuth = mView.azimuth + 15 * swing;
    const Axes axes(mAzimuth, mView.altitude);
    const float scale = 1 / std::max(mMesh.halfX, mMesh.halfY);
    const float scaleUp = scale * mMesh.exaggeration;
    const float middle = (mMesh.highest + mMesh.base) / 2;

    const float tangentY = std::tan(13 * kRadians);
    const float tangentX = tangentY * aspect;
    constexpr float kMargin = 0.94F;
    Fit fitX(tangentX * kMargin);
    Fit fitY(tangentY * kMargin);
    Fit depth(1);
    for (const TerrainMesh::Vertex& vertex : mMesh.vertices) {
        if (cutAway(vertex.x, vertex.y)) continue;
        const Vector point = {vertex.x * scale, vertex.y * scale, (vertex.z - middle) * scaleUp};
        const float towards = dot(axes.towards, point);
        fitX.add(dot(axes.right, point), towards);
        fitY.add(dot(axes.up, point), towards);
        depth.add(towards, 0);
    }
    const float back = std::max(fitX.back(), fitY.back());

    const float air = 0.02F * back;
    loadProjection(tangentX, tangentY, back - depth.largest() - air, back - depth.least() + air);
    loadView(axes, fitX.aside(), fitY.aside(), back);
    glScalef(scale, scale, scaleUp);
    glTranslatef(0, 0, -middle);
    glGetFloatv(GL_PROJECTION_MATRIX, mProjection.data());
    glGetFloatv(GL_MODELVIEW_MATRIX, mModelView.data());
}

void TerrainScene::loadEye(float shiftX, float shiftY) const {
    glViewport(mStage.left, mStage.bottom, mStage.width, mStage.height);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glTranslatef(shiftX, shiftY, 0);
    glMultMatrixf(mProjection.data());
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixf(mModelView.data());
}

// Puts the program in use with the macros of one pass, and notes whether it was built or found.
void TerrainScene::apply(std::size_t index) {
    Pass& pass = mPasses[index];
    const std::vector<GlObject>& created = createdGlObjects();
    const std::size_t before = created.size();
    mProgram.setParameter(mMacros[index]);
    if (!mProgram.compile(mView.context)) throw std::runtime_error(lastBuildFailure());
    mProgram.apply(mView.context);
    pass.objects.insert(pass.objects.end(), created.begin() + static_cast<std::ptrdiff_t>(before),
                        created.end());
    if (created.size() == before)
        ++pass.timesFound;
    else
        pass.frameBuilt = mFrame;
}

void TerrainScene::drawBackdrop() {
    apply(kBackdrop);
    glDisable(GL_DEPTH_TEST);
    glRectf(-1, -1, 1, 1);
    glEnable(GL_DEPTH_TEST);
    mProgram.unUse();
}

void TerrainScene::drawSurface() {
    apply(kSurface);
    mColours.bind(mView.context);
    noteTexture();
    glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(mMesh.surface.size()), GL_UNSIGNED_INT,
                   nullptr);
    mProgram.unUse();
}

// Every change of the table gives a new texture, whose name may have been another's before.
void TerrainScene::noteTexture() {
    int name = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_1D, &name);
    const GlObject texture = {GlObject::kTexture, static_cast<unsigned int>(name)};
    if (std::none_of(mTextures.begin(), mTextures.end(),
                     [&](const GlObject& noted) { return noted.name == texture.name; }))
        mTextures.push_back(texture);
}

void TerrainScene::drawBlock() {
    apply(kBlock);
    for (const TerrainMesh::Face& face : mMesh.faces) {
        mProgram.applyUniform("faceX", face.normalX);
        mProgram.applyUniform("faceY", face.normalY);
        glDrawArrays(GL_TRIANGLE_STRIP, face.first, face.count);
    }
    mProgram.unUse();
}
