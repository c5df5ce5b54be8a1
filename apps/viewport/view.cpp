#include <apps/viewport/view.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

#include <fmt/format.h>

#include <apps/RefinedFile.h>
#include <apps/TerminalProgress.h>
#include <apps/preparedMesh.h>
#include <apps/readSize.h>
#include <apps/viewport/Colouring.h>
#include <apps/viewport/GLContext.h>
#include <apps/viewport/Target.h>
#include <apps/viewport/window/runWindow.h>

namespace rq::app
{
namespace
{
using namespace viewport;

ExitCode fail(ExitCode code, const std::string &message)
{
    fmt::print(stderr, "rq: error: {}\n", message);
    return code;
}

std::optional<UpAxis> upOf(const ViewOptions &options)
{
    if (options.up == "auto")
        return std::nullopt;
    return options.up == "y" ? UpAxis::Y : UpAxis::Z;
}

OrbitCamera cameraFor(const Scene &scene, const ViewOptions &options, double aspect)
{
    OrbitCamera camera;
    camera.setUpAxis(upOf(options).value_or(likelyUpAxis(scene.bounds())));
    camera.setAngles(options.azimuth, options.elevation);
    camera.frame(scene.bounds(), aspect);
    camera.zoom(options.zoom);
    return camera;
}

double secondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void printStatistics(const DisplayStatistics &statistics, double seconds)
{
    fmt::print(stderr,
               "{} of {} triangles, {} segments, {} points in {} draws; {} bytes uploaded in {} buffers, {} of them copied; "
               "{:.3f} s\n",
               statistics.trianglesDrawn, statistics.triangles, statistics.segments, statistics.points, statistics.draws,
               statistics.uploadedBytes, statistics.buffersRefreshed, statistics.copiedBytes, seconds);
}

void warnOfColour(const Scene &scene, const ColourSource &colour, const ViewOptions &options)
{
    const auto isColoured = [&colour](const Item &item) { return colourOf(item, colour).mode != ColourMode::Plain; };
    if (colour.by == ColourBy::Attribute && std::ranges::none_of(scene.items(), isColoured))
        fmt::print(stderr, "{}: warning: nothing has an attribute \"{}\" that can be shown\n", options.files.front(),
                   options.colour);
}

// Without a display, in a picture's memory.
ExitCode takeScreenshot(const SceneHandle &scene, const DrawStyle &style, const ViewOptions &options, int width, int height)
{
    std::string error;
    const std::unique_ptr<GLContext> context = GLContext::create(error);
    const std::unique_ptr<Display> display = context ? Display::create(error) : nullptr;
    const std::unique_ptr<Target> target = display ? Target::create(width, height, samplesOf(*scene), error) : nullptr;
    if (!target)
        return fail(ExitFailure, error);
    const auto start = std::chrono::steady_clock::now();
    display->setScene(scene);
    target->bind();
    if (!display->draw(cameraFor(*scene, options, double(width) / height), style, width, height, &error))
        fmt::print(stderr, "{}: warning: {}\n", options.files.front(), error);
    Picture picture = target->read();
    if (options.statistics)
        printStatistics(display->statistics(), secondsSince(start));
    warnOfColour(*scene, style.colour, options);
    drawLegend(picture, display->legend());
    return writePNG(options.screenshot, picture, error) ? ExitDone : fail(ExitFailure, options.screenshot + ": " + error);
}

/// What the files refine to, ready to draw.
ExitCode makeScene(const CommonOptions &common, const ViewOptions &options, const RQ_RefineParms &parms,
                   const Preparation &preparation, SceneHandle &scene)
{
    const TerminalProgress progress;
    std::vector<Shown> shown;
    double loading = 0.0, refining = 0.0;
    for (const std::string &file : options.files)
    {
        RefinedFile refined;
        if (const ExitCode code = refineFile(file, common, parms, refined); code != ExitDone)
            return code;
        loading += refined.loadSeconds;
        refining += refined.refineSeconds;
        for (const RefinedPrimitive &entry : refined.primitives)
            shown.push_back({entry.primitive, BAS_Mat4d()});
    }
    const std::string &name = options.files.front();
    const auto start = std::chrono::steady_clock::now();
    scene = Scene::make(shown, preparation, &parms);
    if (!scene)
        return fail(ExitFailure, "interrupted");
    for (const std::string &complaint : scene->complaints())
        fmt::print(stderr, "{}: warning: {}\n", name, complaint);
    if (options.statistics)
        fmt::print(stderr, "load {:.3f} s, refine {:.3f} s, prepare {:.3f} s\n", loading, refining, secondsSince(start));
    return scene->bounds().isEmpty() ? fail(ExitFailure, name + ": there is nothing to draw") : ExitDone;
}

// What the options that are common to all subcommands make of a primitive.
PrimitiveChange changeOf(const CommonOptions &common, const std::string &name)
{
    if (common.subdivide < 0 && common.scheme.empty() && common.convex == 0)
        return {};
    return [common, name](const RQ_PrimitiveHandle &primitive) { return preparedPrimitive(primitive, common, name); };
}

ExitCode openWindow(WindowOptions &window, const CommonOptions &common, const ViewOptions &options)
{
    window.change = changeOf(common, options.files.empty() ? "rq" : options.files.front());
    window.files = options.files;
    window.camera.setAngles(options.azimuth, options.elevation);
    window.up = upOf(options);
    window.zoom = options.zoom;
    const WindowOutcome outcome = runWindow(window);
    if (!outcome.error.empty())
        return fail(ExitFailure, outcome.error + "; --screenshot PNG needs no window");
    std::fputs(outcome.complaint.c_str(), stderr);
    return outcome.complaint.empty() ? ExitDone : ExitBadInput;
}
}  // namespace

ExitCode runView(const CommonOptions &common, const ViewOptions &options)
{
    const bool inWindow = options.screenshot.empty();
    const std::string size = !options.size.empty() ? options.size : inWindow ? "1280x800" : "960x540";
    WindowOptions window;
    std::string error;
    if (!readParms(common, window.parms, error) || !readStyle(options, window.style, window.preparation, error))
        return fail(ExitUsage, error);
    if (!readSize(size, window.width, window.height, error))
        return fail(ExitUsage, error);
    if (inWindow)
        return openWindow(window, common, options);
    if (options.files.empty())
        return fail(ExitUsage, "FILE is required with --screenshot");
    SceneHandle scene;
    const ExitCode code = makeScene(common, options, window.parms, window.preparation, scene);
    return code == ExitDone ? takeScreenshot(scene, window.style, options, window.width, window.height) : code;
}
}  // namespace rq::app
