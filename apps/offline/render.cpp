#include <apps/offline/render.h>

#include <charconv>
#include <chrono>
#include <cstdio>

#include <fmt/format.h>

#include <apps/RefinedFile.h>
#include <apps/offline/Integrator.h>

namespace rq::app
{
namespace
{
// The largest side of a picture: what a PNG of it, in memory, still fits a small machine.
constexpr int kLargestSide = 16384;

/// Read "WIDTHxHEIGHT".
bool readSize(const std::string &text, offline::Settings &settings)
{
    const char *end = text.data() + text.size();
    const auto [x, widthError] = std::from_chars(text.data(), end, settings.width);
    if (widthError != std::errc() || x == end || *x != 'x')
        return false;
    const auto [last, heightError] = std::from_chars(x + 1, end, settings.height);
    return heightError == std::errc() && last == end && std::min(settings.width, settings.height) >= 1 &&
           std::max(settings.width, settings.height) <= kLargestSide;
}

ExitCode fail(ExitCode code, const std::string &message)
{
    fmt::print(stderr, "rq: error: {}\n", message);
    return code;
}
}  // namespace

ExitCode runRender(const CommonOptions &common, const RenderOptions &options)
{
    RQ_RefineParms parms;
    std::string error;
    if (!readParms(common, parms, error))
        return fail(ExitUsage, error);
    offline::Settings settings;
    settings.samples = options.samples;
    settings.ground = options.ground;
    if (!readSize(options.size, settings))
        return fail(ExitUsage, fmt::format("--size {}: expected WIDTHxHEIGHT, each from 1 to {}", options.size, kLargestSide));

    RefinedFile refined;
    if (const ExitCode code = refineFile(options.file, common, parms, refined); code != ExitDone)
        return code;
    offline::Scene scene;
    for (const RefinedPrimitive &entry : refined.primitives)
        scene.add(entry.primitive);
    if (scene.notDrawn() > 0)
        fmt::print(stderr, "{}: warning: {} primitives are of kinds that are not drawn\n", options.file, scene.notDrawn());
    if (scene.bounds().isEmpty())
        return fail(ExitFailure, options.file + ": there is nothing to draw");
    scene.commit();

    const offline::Camera camera(scene.bounds(), float(settings.width) / float(settings.height));
    error = offline::render(scene, camera, settings).writePNG(options.output);
    return error.empty() ? ExitDone : fail(ExitFailure, error);
}
}  // namespace rq::app
