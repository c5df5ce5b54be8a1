#include <apps/RefinedFile.h>

#include <chrono>
#include <cstdio>

#include <apps/preparedMesh.h>
#include <io/Reader.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/prim/PrimCollect.h>
#include <rq/prim/RefineCollect.h>

namespace rq::app
{
namespace
{
double secondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void open(const RQ_RefineCollect &collect, int depth, const CommonOptions &options, const RQ_RefineParms &parms,
          RefinedFile &refined)
{
    for (int64_t i = 0; i < collect.entries(); ++i)
    {
        const RQ_PrimitiveHandle primitive = collect.getPrim(i);
        if (!dynamic_cast<const RQ_PrimCollect *>(primitive.get()))
        {
            refined.primitives.push_back({preparedPrimitive(primitive, options, refined.file), depth});
            continue;
        }
        // Refining a collection places its children as the collection is placed.
        RQ_RefineCollect children;
        primitive->refine(children, &parms);
        open(children, depth + 1, options, parms, refined);
    }
}
}  // namespace

ExitCode loadFile(const std::string &file, RefinedFile &refined)
{
    const auto start = std::chrono::steady_clock::now();
    refined.file = file == "-" ? "<stdin>" : file;
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
    RQ_RefineCollect collect;
    primitive.refine(collect, &parms);
    open(collect, 0, options, parms, refined);
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
