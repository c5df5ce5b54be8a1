#include <apps/viewport/view.h>

#include <cstdio>

#include <fmt/format.h>

#include <apps/RefinedFile.h>
#include <apps/TerminalProgress.h>
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

void printStatistics(const DisplayStatistics &statistics)
{
    fmt::print(stderr,
               "{} triangles, {} segments, {} points in {} draws; {} bytes uploaded in {} buffers, {} of them copied\n",
               statistics.triangles, statistics.segments, statistics.points, statistics.draws, statistics.uploadedBytes,
               statistics.buffersRefreshed, statistics.copiedBytes);
}

// Without a display, in a picture's memory.
ExitCode takeScreenshot(const SceneHandle &scene, const DrawStyle &style, const ViewOptions &options, int width, int height)
{
    std::string error;
    const std::unique_ptr<GLContext> context = GLContext::create(error);
    const std::unique_ptr<Display> display = context ? Display::create(error) : nullptr;
    const std::unique_ptr<Target> target = display ? Target::create(width, height, error) : nullptr;
    if (!target)
        return fail(ExitFailure, error);
    display->setScene(scene);
    target->bind();
    if (!display->draw(cameraFor(*scene, options, double(width) / height), style, width, height, &error))
        fmt::print(stderr, "{}: warning: {}\n", options.files.front(), error);
    Picture picture = target->read();
    drawLegend(picture, display->legend());
    if (options.statistics)
        printStatistics(display->statistics());
    return writePNG(options.screenshot, picture, error) ? ExitDone : fail(ExitFailure, options.screenshot + ": " + error);
}

/// What the files refine to, ready to draw.
ExitCode makeScene(const CommonOptions &common, const std::vector<std::string> &files, const RQ_RefineParms &parms,
                   const Preparation &preparation, SceneHandle &scene)
{
    std::vector<Shown> shown;
    for (const std::string &file : files)
    {
        RefinedFile refined;
        if (const ExitCode code = refineFile(file, common, parms, refined); code != ExitDone)
            return code;
        for (const RefinedPrimitive &entry : refined.primitives)
            shown.push_back({entry.primitive, BAS_Mat4d()});
    }
    const TerminalProgress progress;
    scene = Scene::make(shown, preparation, &parms);
    if (!scene)
        return fail(ExitFailure, "interrupted");
    for (const std::string &complaint : scene->complaints())
        fmt::print(stderr, "{}: warning: {}\n", files.front(), complaint);
    return scene->bounds().isEmpty() ? fail(ExitFailure, files.front() + ": there is nothing to draw") : ExitDone;
}

ExitCode openWindow(WindowOptions &window, const ViewOptions &options)
{
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
    if (!readSize(size, window.width, window.height))
        return fail(ExitUsage, fmt::format("--size {}: expected WIDTHxHEIGHT", size));
    if (inWindow)
        return openWindow(window, options);
    if (options.files.empty())
        return fail(ExitUsage, "FILE is required with --screenshot");
    SceneHandle scene;
    const ExitCode code = makeScene(common, options.files, window.parms, window.preparation, scene);
    return code == ExitDone ? takeScreenshot(scene, window.style, options, window.width, window.height) : code;
}
}  // namespace rq::app
