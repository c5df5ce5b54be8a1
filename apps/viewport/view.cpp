#include <apps/viewport/view.h>

#include <cstdio>

#include <fmt/format.h>

#include <apps/RefinedFile.h>
#include <apps/TerminalProgress.h>
#include <apps/viewport/GLContext.h>
#include <apps/viewport/Target.h>

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

OrbitCamera cameraFor(const Scene &scene, const ViewOptions &options, double aspect)
{
    OrbitCamera camera;
    camera.setUpAxis(options.up == "y"   ? UpAxis::Y
                     : options.up == "z" ? UpAxis::Z
                                         : likelyUpAxis(scene.bounds()));
    camera.setAngles(options.azimuth, options.elevation);
    camera.frame(scene.bounds(), aspect);
    camera.zoom(options.zoom);
    return camera;
}

void printStatistics(const DisplayStatistics &statistics)
{
    fmt::print(stderr, "{} triangles, {} segments, {} points in {} draws; {} bytes uploaded in {} buffers, {} of them copied\n",
               statistics.triangles, statistics.segments, statistics.points, statistics.draws, statistics.uploadedBytes,
               statistics.buffersRefreshed, statistics.copiedBytes);
}

// Without a display, in a picture's memory.
ExitCode takeScreenshot(const SceneHandle &scene, const DrawStyle &style, const ViewOptions &options)
{
    int width = 0, height = 0;
    readSize(options.size, width, height);
    std::string error;
    const std::unique_ptr<GLContext> context = GLContext::create(error);
    const std::unique_ptr<Display> display = context ? Display::create(error) : nullptr;
    const std::unique_ptr<Target> target = display ? Target::create(width, height, error) : nullptr;
    if (!target)
        return fail(ExitFailure, error);
    display->setScene(scene);
    target->bind();
    if (!display->draw(cameraFor(*scene, options, double(width) / height), style, width, height, &error))
        fmt::print(stderr, "{}: warning: {}\n", options.file, error);
    Picture picture = target->read();
    drawLegend(picture, display->legend());
    if (options.statistics)
        printStatistics(display->statistics());
    return writePNG(options.screenshot, picture, error) ? ExitDone : fail(ExitFailure, options.screenshot + ": " + error);
}
}  // namespace

ExitCode runView(const CommonOptions &common, const ViewOptions &options)
{
    RQ_RefineParms parms;
    std::string error;
    DrawStyle style;
    Preparation preparation;
    if (!readParms(common, parms, error) || !readStyle(options, style, preparation, error))
        return fail(ExitUsage, error);
    int width = 0, height = 0;
    if (!readSize(options.size, width, height))
        return fail(ExitUsage, fmt::format("--size {}: expected WIDTHxHEIGHT", options.size));
    if (options.screenshot.empty())
        return fail(ExitUsage, "there are no windows yet: give --screenshot PNG");

    RefinedFile refined;
    if (const ExitCode code = refineFile(options.file, common, parms, refined); code != ExitDone)
        return code;
    const TerminalProgress progress;
    std::vector<Shown> shown;
    for (const RefinedPrimitive &entry : refined.primitives)
        shown.push_back({entry.primitive, BAS_Mat4d()});
    const SceneHandle scene = Scene::make(shown, preparation, &parms);
    if (!scene)
        return fail(ExitFailure, "interrupted");
    for (const std::string &complaint : scene->complaints())
        fmt::print(stderr, "{}: warning: {}\n", refined.file, complaint);
    if (scene->bounds().isEmpty())
        return fail(ExitFailure, refined.file + ": there is nothing to draw");
    return takeScreenshot(scene, style, options);
}
}  // namespace rq::app
