#include <apps/convert.h>

#include <cstdio>

#include <apps/TerminalProgress.h>
#include <apps/exchangeFaces.h>
#include <host/mod/DetailHandle.h>
#include <host/msh/Detail.h>
#include <io/Reader.h>
#include <io/Writer.h>

namespace rq::app
{
namespace
{
ExitCode convert(const CommonOptions &common, const ConvertOptions &options, io::Messages &messages)
{
    const io::SaveOptions form{options.format, options.ascii ? io::NumberForm::Text : io::NumberForm::Binary};
    if (!io::canSave(options.output, messages, form))
        return ExitUsage;
    const TerminalProgress progress;
    MOD_DetailHandle detail;
    if (!io::load(options.input, detail, messages, true))
        return ExitBadInput;
    const Exchanged exchanged{.polygons = common.subdivide >= 0 || common.convex > 0,
                              .shapes = !io::holdsEverything(options.output, form) && hasShapes(*detail.read().readLock())};
    if (std::string error;
        (exchanged.polygons || exchanged.shapes) && !exchangeFaces(detail, exchanged, common, options.input, error))
    {
        std::fprintf(stderr, "rq: error: %s\n", error.c_str());
        return ExitFailure;
    }
    return io::save(options.output, detail.read(), messages, form) ? ExitDone : ExitFailure;
}
}  // namespace

ExitCode runConvert(const CommonOptions &common, const ConvertOptions &options)
{
    io::Messages messages;
    const ExitCode code = convert(common, options, messages);
    std::fputs(messages.toString().c_str(), stderr);
    return code;
}
}  // namespace rq::app
