#include <apps/offline/render.h>

#include <cstdio>

#include <fmt/format.h>

#include <apps/Interruption.h>
#include <apps/RefinedFile.h>
#include <apps/TerminalProgress.h>
#include <apps/offline/readSettings.h>
#include <io/OutputFile.h>
#include <rq/bridge/MSHDetail.h>

namespace rq::app
{
namespace
{
ExitCode fail(ExitCode code, const std::string &message)
{
    fmt::print(stderr, "rq: error: {}\n", message);
    return code;
}

/// The scene as one primitive, with a segment for each moment that is known of it.
ExitCode readScene(const RenderOptions &options, RefinedFile &refined, RQ_PrimitiveHandle &scene)
{
    std::vector<MOD_ConstDetailHandle> moments;
    ExitCode code = loadFile(options.file, refined);
    for (size_t i = 0; code == ExitDone && i < options.next.size(); ++i)
    {
        RefinedFile next;
        code = loadFile(options.next[i], next);
        moments.push_back(next.detail);
    }
    if (code != ExitDone)
        return code;
    moments.insert(moments.begin(), refined.detail);
    scene = options.motion > 1 ? RQ_MSHDetail::makeMoving(refined.detail, options.motion,
                                                          RQ_MSHDetailList::kFrameSeconds / (options.motion - 1))
                               : RQ_PrimitiveHandle(new RQ_MSHDetail(moments));
    return ExitDone;
}

ExitCode write(const offline::Film &film, const RenderOptions &options)
{
    std::string error;
    const bool isEXR = options.output.ends_with(".exr");
    const std::string bytes = isEXR ? encodeEXR(film, error) : encodePNG(screenPicture(film), error);
    if (bytes.empty() || !io::writeFile(options.output, bytes, error))
        return fail(ExitFailure, options.output + ": " + error);
    return ExitDone;
}

ExitCode compare(const offline::Film &film, const RenderOptions &options, const Picture &reference)
{
    const Picture picture = screenPicture(film);
    if (picture.width != reference.width || picture.height != reference.height)
        return fail(ExitFailure, fmt::format("{}: expected a picture of {}x{} pixels, found {}x{}", options.compare,
                                             picture.width, picture.height, reference.width, reference.height));
    const double off = offline::difference(picture, reference);
    if (off > options.tolerance)
        return fail(ExitFailure,
                    fmt::format("{}: the picture is {:.4f} off, more than {:g}", options.compare, off, options.tolerance));
    return ExitDone;
}

void complain(const offline::Scene &scene, const std::string &file)
{
    for (const std::string &complaint : scene.complaints())
        fmt::print(stderr, "{}: warning: {}\n", file, complaint);
    if (scene.notDrawn() > 0)
        fmt::print(stderr, "{}: warning: {} primitives cannot be drawn\n", file, scene.notDrawn());
}
}  // namespace

ExitCode runRender(const CommonOptions &common, const RenderOptions &options)
{
    RQ_RefineParms parms;
    offline::Settings settings;
    offline::Look look;
    std::string error;
    if (!readParms(common, parms, error) || !readSettings(options, settings, error) || !readLook(options, look, error))
        return fail(ExitUsage, error);
    Picture reference;
    if (!options.compare.empty() && !readPNG(options.compare, reference, error))
        return fail(ExitBadInput, options.compare + ": " + error);

    const TerminalProgress progress;
    const Interruption interruption;
    RefinedFile refined;
    RQ_PrimitiveHandle whole;
    const auto failInterrupted = [&options] { return fail(ExitFailure, options.output + ": interrupted"); };
    if (const ExitCode code = readScene(options, refined, whole); code != ExitDone)
        return interruption.isAsked() ? failInterrupted() : code;
    refinePrimitive(*whole, common, parms, refined);

    offline::View view = viewOf(options);
    offline::Scene scene(&parms, look);
    for (const RefinedPrimitive &entry : refined.primitives)
    {
        view.merge(viewOf(*entry.primitive));
        scene.add(entry.primitive);
    }
    scene.commit(options.up == "y" ? offline::UpAxis::Y : options.up == "z" ? offline::UpAxis::Z : offline::UpAxis::Auto);
    if (interruption.isAsked())
        return failInterrupted();
    complain(scene, refined.file);
    if (scene.outline().points().empty())
        return fail(ExitFailure, refined.file + ": there is nothing to draw");
    if (!view.isWithinReach(scene.fromFile()))
        return fail(ExitFailure, refined.file + ": the camera stands or looks too far away");

    const float aspect = float(settings.width) / float(settings.height);
    const offline::Camera camera(scene.outline().points(), aspect, view, scene.fromFile());
    const std::unique_ptr<offline::Film> film = offline::render(scene, camera, settings);
    if (!film)
        return failInterrupted();
    if (const ExitCode code = write(*film, options); code != ExitDone)
        return code;
    return options.compare.empty() ? ExitDone : compare(*film, options, reference);
}
}  // namespace rq::app
