#include <apps/offline/render.h>

#include <charconv>
#include <cstdio>

#include <fmt/format.h>

#include <apps/RefinedFile.h>
#include <apps/TerminalProgress.h>
#include <apps/offline/Integrator.h>

namespace rq::app
{
namespace
{
// Each pixel takes 15 bytes on its way to the file: at most 1 GB.
constexpr int64_t kMostPixels = int64_t(1) << 26;

ExitCode fail(ExitCode code, const std::string &message)
{
    fmt::print(stderr, "rq: error: {}\n", message);
    return code;
}

/// Read "WIDTHxHEIGHT".
bool readSize(const std::string &text, offline::Settings &settings)
{
    const char *const end = text.data() + text.size();
    const auto [x, widthError] = std::from_chars(text.data(), end, settings.width);
    if (widthError != std::errc() || x == end || *x != 'x')
        return false;
    const auto [last, heightError] = std::from_chars(x + 1, end, settings.height);
    return heightError == std::errc() && last == end && settings.width >= 1 && settings.height >= 1 &&
           int64_t(settings.width) * settings.height <= kMostPixels;
}

ExitCode draw(const offline::Scene &scene, const offline::Settings &settings, const std::string &output)
{
    const offline::Camera camera(scene.outline().points(), float(settings.width) / float(settings.height));
    const std::unique_ptr<offline::Image> image = offline::render(scene, camera, settings);
    std::string error = "interrupted";
    if (!image || !image->writePNG(output, error))
        return fail(ExitFailure, output + ": " + error);
    return ExitDone;
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
        return fail(ExitUsage,
                    fmt::format("--size {}: expected WIDTHxHEIGHT, at most {} pixels", options.size, kMostPixels));

    RefinedFile refined;
    if (const ExitCode code = refineFile(options.file, common, parms, refined); code != ExitDone)
        return code;

    const TerminalProgress progress;
    offline::Scene scene;
    for (const RefinedPrimitive &entry : refined.primitives)
        scene.add(entry.primitive, &parms);
    scene.commit(options.up == "y" ? offline::UpAxis::Y : options.up == "z" ? offline::UpAxis::Z : offline::UpAxis::Auto);
    for (const std::string &complaint : scene.complaints())
        fmt::print(stderr, "{}: warning: {}\n", refined.file, complaint);
    if (scene.notDrawn() > 0)
        fmt::print(stderr, "{}: warning: {} primitives cannot be drawn\n", refined.file, scene.notDrawn());
    if (scene.outline().points().empty())
        return fail(ExitFailure, refined.file + ": there is nothing to draw");
    return draw(scene, settings, options.output);
}
}  // namespace rq::app
