#include <apps/convert.h>

#include <cstdio>

#include <apps/TerminalProgress.h>
#include <apps/exchangeShapes.h>
#include <apps/nameDiagnostics.h>
#include <host/mod/DetailHandle.h>
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
    nameDiagnostics(options.input);
    MOD_DetailHandle detail;
    if (!io::load(options.input, detail, messages, true))
        return ExitBadInput;
    const io::Holding holding = io::holdingOf(options.output, form);
    const Exchanged exchanged{.polygons = common.subdivide >= 0 || common.convex > 0,
                              .shapes = holding != io::Holding::Everything,
                              .curves = holding == io::Holding::Lines};
    if (std::string error; !exchangeShapes(detail, exchanged, common, options.input, error))
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
