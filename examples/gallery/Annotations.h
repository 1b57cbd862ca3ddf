#pragma once

#include "Labels.h"
#include "PlanMap.h"
#include "TerrainScene.h"

#include <optional>
#include <string>

/// What is written and drawn around the terrain: title, legend, axes, summits, a plan where the
/// terrain is cut open, and how the library was built. Between them the texts are aligned in every
/// way that `KyGLText` knows. Used by one thread, with one context current.
class Annotations {
public:
    Annotations(const TerrainMesh& mesh, const View& view, ColourTable& colours, std::string title);

    /// What is left to the terrain of a picture of this size.
    static Stage stage(int width, int height);

    /// Draws over a frame of the scene. What finds no room is left out.
    void draw(const TerrainScene& scene, const Frame& frame);

private:
    void drawTitle();
    void drawLegend();
    void drawCaption();
    void drawPlan(const Cut& cut, const Frame& frame);
    void drawRecord();
    void drawAxes(const TerrainScene& scene);
    void drawAxis(const TerrainScene& scene, const TerrainMesh::Face& wall);
    void drawSummits(const TerrainScene& scene);

    const TerrainMesh& mMesh;
    const View& mView;
    ColourTable& mColours;
    std::string mTitle;
    std::optional<PlanMap> mPlan;
    float mWidth = 0, mHeight = 0;
    Labels mLabels{0, 0};
};
