/// Draws a grid of elevations twice, in two GL contexts that share nothing, each on its own thread:
/// left as a relief map, right cut open and seen from another side. Both take their colours from
/// one `KyTexture`, which changes between two frames, and `KyGLText` writes around them. Writes
/// both as one picture or shows them in two windows, and tells what `KyShaderProgram` built and
/// found and what the drains of `KyDeferredDeleteMap` deleted.
#include "Annotations.h"
#include "BuildFailure.h"
#include "GlxSurface.h"
#include "Picture.h"
#include "TerrainScene.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/kygl.h>
#include <kygl/KyShader.h>

#include <unistd.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
    std::string grid;
    std::string out = "gallery.png";
    std::string root = GALLERY_ROOT;
    std::string size = "1400x640";
    int width = 0;
    int height = 0;
    std::string title;
    std::string listFonts;
    long frames = 0;
    bool window = false;
};

const View kLeft = {"left",
                    1,
                    205,
                    46,
                    {"RELIEF", "HYPSOMETRY", "CONTOURS"},
                    false,
                    0,
                    "Relief and contour lines, from the south-southwest"};
const View kRight = {"right",
                     2,
                     288,
                     47,
                     {"RELIEF", "HYPSOMETRY"},
                     true,
                     1,
                     "From the west, after the colour table has changed"};

// What the two drawing threads and the waiting one tell each other.
struct Progress {
    std::atomic<bool> stop{false};
    std::atomic<long> framesDrawn{0};
    std::atomic<int> atChange{0}, atEnd{0};  // sides that have come so far

    // Waits until both sides have come there, or somebody wants to stop.
    void meet(std::atomic<int>& there) const {
        ++there;
        while (there < 2 && !stop)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
};

void parseSize(Options& options) {
    int end = 0;
    const int found =
        std::sscanf(options.size.c_str(), "%4dx%4d%n", &options.width, &options.height, &end);
    if (found != 2 || static_cast<std::size_t>(end) != options.size.size())
        throw std::runtime_error("--size " + options.size + ": not of the form 1400x640");
    if (std::min(options.width, options.height) < 16 ||
        std::max(options.width, options.height) > 4096)
        throw std::runtime_error("--size " + options.size + ": each side has 16 to 4096 pixels");
}

// @return false when the program has nothing more to do, as after --help
bool parseOptions(int argc, char** argv, Options& options) {
    CLI::App app("Draws real terrain with libkygl in two GL contexts on two threads.");
    app.add_option("--grid", options.grid, "ESRI ASCII grid of elevations in metres")
        ->type_name("FILE");
    auto* const out = app.add_option("--out", options.out, "picture to write")
                          ->type_name("FILE.png")
                          ->capture_default_str();
    app.add_option("--size", options.size, "size of the whole picture")
        ->type_name("WxH")
        ->capture_default_str();
    app.add_option("--frames", options.frames, "frames to draw [16; in windows without end]")
        ->type_name("N")
        ->check(CLI::Range(1, 10000));
    app.add_flag("--window", options.window, "show two windows until q or Escape, and no picture")
        ->excludes(out);
    app.add_option("--root", options.root, "folder that holds share/shaders and share/data")
        ->type_name("FOLDER");
    app.add_option("--title", options.title, "title of the picture [the name of the grid]")
        ->type_name("TEXT");
    app.add_option(
           "--list-fonts", options.listFonts,
           "print the pixel sizes of a font family that the X server offers, and no picture")
        ->type_name("FAMILY");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        app.exit(help);
        return false;
    }
    parseSize(options);
    if (options.grid.empty()) {
        options.grid = options.root + "/share/data/jacksboro.asc";
        if (options.title.empty()) options.title = "Jacksboro Fault, Tennessee";
    }
    if (options.title.empty()) options.title = std::filesystem::path(options.grid).stem();
    if (options.frames == 0 && !options.window) options.frames = 16;
    return true;
}

std::string row(const std::string& what, const std::string& built, const std::string& found,
                const std::string& deleted) {
    char line[160];
    std::snprintf(line, sizeof line, "  %-36s %-40s %-9s %s\n", what.c_str(), built.c_str(),
                  found.c_str(), deleted.c_str());
    return line;
}

// Asks the GL how many of the objects it knows no longer.
std::string countDeleted(const std::vector<GlObject>& objects) {
    const auto gone = std::count_if(objects.begin(), objects.end(),
                                    [](const GlObject& object) { return !object.exists(); });
    return std::to_string(gone) + " of " + std::to_string(objects.size()) + " objects";
}

std::string listNames(const std::vector<GlObject>& objects) {
    static const char* const kKinds[] = {"shader ", "program ", "buffer ", "texture "};
    std::string list;
    for (const GlObject& object : objects)
        list += (list.empty() ? "" : ", ") + std::string(kKinds[object.kind]) +
                std::to_string(object.name);
    return list;
}

// One half of the picture, or one of the windows, with its own context on its own thread.
class Side {
public:
    Side(const View& view, const Options& options, std::string title, int x, int width)
        : mView(view), mOptions(options), mTitle(std::move(title)), mX(x), mWidth(width) {}

    // Draws until all frames are drawn or somebody wants to stop. @return what was built, found
    // and deleted
    std::string draw(const TerrainMesh& mesh, ColourTable& colours, Picture& picture,
                     Progress& progress) const {
        GlxSurface surface(mOptions.window, std::string("kygl gallery, ") + mView.name, mX, mWidth,
                           mOptions.height);
        kyglSetContext(mView.context);
        if (!kyglGLSLAvailable(mView.context)) throw std::runtime_error("this OpenGL has no GLSL");
        if (!kyglVBOsAvailable(mView.context))
            throw std::runtime_error("this OpenGL has no vertex buffer objects");
        auto scene = std::make_unique<TerrainScene>(mesh, mView, colours);
        {
            Annotations annotations(mesh, mView, colours, mTitle);
            if (mOptions.window)
                drawLive(*scene, annotations, colours, surface, progress);
            else
                drawStill(*scene, annotations, colours, surface, progress, picture);
        }
        const std::array<TerrainScene::Pass, 3> passes = scene->passes();
        const std::vector<GlObject> buffers = scene->buffers();
        const std::vector<GlObject> textures = scene->textures();
        scene.reset();
        progress.meet(progress.atEnd);
        colours.release();
        KyDeferredDeleteMap::deferredDelete(mView.context);
        return report(passes, buffers, textures);
    }

private:
    // Both sides draw in both tables, and change between two frames at the same time. The picture
    // is taken of one table, and one frame is enough to draw of the other.
    void drawStill(TerrainScene& scene, Annotations& annotations, ColourTable& colours,
                   GlxSurface& surface, Progress& progress, Picture& picture) const {
        Exposure exposure(mWidth, mOptions.height);
        for (int table = 0; table < ColourTable::kTables; ++table) {
            if (table > 0) progress.meet(progress.atChange);
            colours.show(table);
            const bool taken = table == mView.table;
            for (long i = 1; i <= (taken ? mOptions.frames : 1); ++i) {
                if (progress.stop) return;
                const Frame frame = {surface.width(), surface.height(), 0, Exposure::shift(i, 2),
                                     Exposure::shift(i, 3)};
                drawFrame(scene, annotations, frame);
                if (taken) exposure.add();
                endFrame(surface, progress);
            }
        }
        exposure.copyTo(picture, mX);
    }

    // Here the table changes every few seconds, when either side finds that it is time.
    void drawLive(TerrainScene& scene, Annotations& annotations, ColourTable& colours,
                  GlxSurface& surface, Progress& progress) const {
        const Clock::time_point start = Clock::now();
        for (long frame = 0; !progress.stop && (mOptions.frames == 0 || frame < mOptions.frames);
             ++frame) {
            const std::chrono::duration<float> time = Clock::now() - start;
            colours.show(static_cast<int>(time.count() / 5) % ColourTable::kTables);
            drawFrame(scene, annotations,
                      {surface.width(), surface.height(), std::sin(time.count() / 3)});
            endFrame(surface, progress);
            if (surface.wantsToEnd()) progress.stop = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }

    static void drawFrame(TerrainScene& scene, Annotations& annotations, const Frame& frame) {
        scene.draw(frame, Annotations::stage(frame.width, frame.height));
        annotations.draw(scene, frame);
    }

    void endFrame(GlxSurface& surface, Progress& progress) const {
        surface.show();
        const KyResult result = kyglErrorCheck("", "gallery/main", __LINE__, 0);
        if (result.failed())
            throw std::runtime_error("OpenGL error " + std::to_string(result.code()) + " on the " +
                                     mView.name + " side");
        KyDeferredDeleteMap::deferredDelete(mView.context);
        ++progress.framesDrawn;
    }

    std::string report(const std::array<TerrainScene::Pass, 3>& passes,
                       const std::vector<GlObject>& buffers,
                       const std::vector<GlObject>& textures) const {
        std::string text = std::string(mView.name) + " side, GL context " +
                           std::to_string(mView.context) + "\n" +
                           row("macros", "built", "found", "deleted");
        for (const TerrainScene::Pass& pass : passes)
            text += row(pass.macros,
                        "frame " + std::to_string(pass.frameBuilt) + ": " + listNames(pass.objects),
                        std::to_string(pass.timesFound) + " times", countDeleted(pass.objects));
        return text + row("(vertices and indices)", listNames(buffers), "", countDeleted(buffers)) +
               row("(colour tables)", listNames(textures), "", countDeleted(textures));
    }

    const View& mView;
    const Options& mOptions;
    std::string mTitle;
    int mX;
    int mWidth;
};

// Waits for both threads, with a word on the terminal when that takes longer than a second.
void waitFor(const std::vector<std::future<std::string>>& sides, const Options& options,
             const Progress& progress) {
    const bool talks = isatty(STDERR_FILENO) == 1 && !options.window;
    const Clock::time_point start = Clock::now();
    bool talked = false;
    for (const std::future<std::string>& side : sides) {
        while (side.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready) {
            if (!talks || Clock::now() - start < std::chrono::seconds(1)) continue;
            std::fprintf(stderr, "\rdrew %ld of %ld frames", progress.framesDrawn.load(),
                         2 * (options.frames + ColourTable::kTables - 1));
            talked = true;
        }
    }
    if (talked) std::fputs("\r\033[K", stderr);
}

void run(const Options& options) {
    if (!options.window) checkWritable(options.out);
    const TerrainMesh mesh(readGrid(options.grid));
    KyShader::mFolderPath = options.root.c_str();
    watchBuilds();
    watchGlObjects();
    GlxSurface::prepareThreads();

    const int half = options.width / 2;
    const Side both[] = {{kLeft, options, options.title, 0, half},
                         {kRight, options, "Cut open", half, options.width - half}};
    ColourTable colours;
    Picture picture(options.width, options.height);
    Progress progress;
    std::vector<std::future<std::string>> reports;
    for (const Side& side : both) {
        reports.push_back(std::async(std::launch::async, [&] {
            try {
                return side.draw(mesh, colours, picture, progress);
            } catch (...) {
                progress.stop = true;
                throw;
            }
        }));
    }
    waitFor(reports, options, progress);
    kyglClearAllContexts();
    std::string text;
    for (std::future<std::string>& report : reports)
        text += report.get();
    if (!options.window) writePicture(picture, options.out);
    std::fputs(text.c_str(), stdout);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        Options options;
        if (!parseOptions(argc, argv, options)) return 0;
        if (options.listFonts.empty())
            run(options);
        else
            listFonts(options.listFonts);
        return 0;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "gallery: %s\n", e.what());
        return 1;
    }
}
