#include <apps/RefinedFile.h>

#include <chrono>
#include <cstdio>

#include <apps/nameDiagnostics.h>
#include <apps/preparedMesh.h>
#include <apps/refineShared.h>
#include <io/Reader.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/prim/PrimCollect.h>

namespace rq::app
{
namespace
{
double secondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void open(const RQ_Primitive &primitive, int depth, const CommonOptions &options, const RQ_RefineParms &parms,
          RefinedFile &refined)
{
    for (const RQ_PrimitiveHandle &child : refineShared(primitive, &parms))
        // Refining a collection places its children as the collection is placed.
        if (dynamic_cast<const RQ_PrimCollect *>(child.get()))
            open(*child, depth + 1, options, parms, refined);
        else
            refined.primitives.push_back({preparedPrimitive(child, options, refined.file), depth});
}
}  // namespace

ExitCode loadFile(const std::string &file, RefinedFile &refined)
{
    const auto start = std::chrono::steady_clock::now();
    refined.file = file == "-" ? "<stdin>" : file;
    nameDiagnostics(refined.file);
    MOD_DetailHandle detail;
    io::Messages messages;
    const bool loaded = io::load(file, detail, messages, true);
    std::fputs(messages.toString().c_str(), stderr);
    if (!loaded)
        return ExitBadInput;
    refined.detail = detail.read();
    refined.loadSeconds = secondsSince(start);
    return ExitDone;
}

void refinePrimitive(const RQ_Primitive &primitive, const CommonOptions &options, const RQ_RefineParms &parms,
                     RefinedFile &refined)
{
    const auto start = std::chrono::steady_clock::now();
    nameDiagnostics(refined.file);
    open(primitive, 0, options, parms, refined);
    refined.refineSeconds = secondsSince(start);
}

ExitCode refineFile(const std::string &file, const CommonOptions &options, const RQ_RefineParms &parms, RefinedFile &refined)
{
    const ExitCode code = loadFile(file, refined);
    if (code == ExitDone)
        refinePrimitive(*RQ_MSHDetail::makeDetail(refined.detail), options, parms, refined);
    return code;
}
}  // namespace rq::app
