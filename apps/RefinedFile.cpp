#include <apps/RefinedFile.h>

#include <chrono>
#include <cstdio>

#include <fmt/format.h>

#include <apps/offline/subdivide.h>
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

/// Subdivided and cut as the options ask; a mesh that cannot be subdivided stays as it is.
RQ_PrimitiveHandle prepared(const RQ_PrimitiveHandle &primitive, const CommonOptions &options, const std::string &file)
{
    RQ_PolygonMeshHandle mesh = boost::dynamic_pointer_cast<RQ_PrimPolygonMesh>(primitive);
    if (mesh && options.subdivide >= 0)
    {
        auto cage = boost::dynamic_pointer_cast<RQ_PrimSubdivisionMesh>(mesh);
        if (!cage)
            cage = RQ_PrimSubdivisionMesh::createWithStandardTags(*mesh);
        std::vector<std::string> complaints;
        if (const RQ_PolygonMeshHandle smooth = offline::subdivide(*cage, options.subdivide, complaints))
            mesh = smooth;
        for (const std::string &complaint : complaints)
            fmt::print(stderr, "{}: warning: {}\n", file, complaint);
    }
    const RQ_PolygonMeshHandle cut = mesh && options.convex > 0 ? mesh->convex(options.convex) : mesh;
    return cut ? RQ_PrimitiveHandle(cut) : primitive;
}

void open(const RQ_RefineCollect &collect, int depth, const CommonOptions &options, const RQ_RefineParms &parms,
          RefinedFile &refined)
{
    for (int64_t i = 0; i < collect.entries(); ++i)
    {
        const RQ_PrimitiveHandle primitive = collect.getPrim(i);
        if (!dynamic_cast<const RQ_PrimCollect *>(primitive.get()))
        {
            refined.primitives.push_back({prepared(primitive, options, refined.file), depth});
            continue;
        }
        // Refining a collection places its children as the collection is placed.
        RQ_RefineCollect children;
        primitive->refine(children, &parms);
        open(children, depth + 1, options, parms, refined);
    }
}
}  // namespace

ExitCode refineFile(const std::string &file, const CommonOptions &options, const RQ_RefineParms &parms, RefinedFile &refined)
{
    auto start = std::chrono::steady_clock::now();
    refined.file = file == "-" ? "<stdin>" : file;
    MOD_DetailHandle detail;
    io::Messages messages;
    const bool loaded = io::load(file, detail, messages, true);
    std::fputs(messages.toString().c_str(), stderr);
    if (!loaded)
        return ExitBadInput;
    refined.detail = detail.read();
    refined.loadSeconds = secondsSince(start);

    start = std::chrono::steady_clock::now();
    RQ_RefineCollect collect;
    RQ_MSHDetail::makeDetail(refined.detail)->refine(collect, &parms);
    open(collect, 0, options, parms, refined);
    refined.refineSeconds = secondsSince(start);
    return ExitDone;
}
}  // namespace rq::app
