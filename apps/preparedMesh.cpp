#include <apps/preparedMesh.h>

#include <cstdio>

#include <fmt/format.h>

#include <apps/subdivide.h>
#include <rq/surface/PrimCellMesh.h>

namespace rq::app
{
namespace
{
/// The mesh as a cage with the scheme that was asked for, if any.
RQ_SubdivisionMeshHandle cageOf(const RQ_PolygonMeshHandle &mesh, const std::string &scheme)
{
    auto cage = boost::dynamic_pointer_cast<RQ_PrimSubdivisionMesh>(mesh);
    if (!cage)
        cage = RQ_PrimSubdivisionMesh::createWithStandardTags(*mesh);
    if (!scheme.empty())
    {
        cage = new RQ_PrimSubdivisionMesh(*cage);
        cage->setScheme(RQscheme(scheme.c_str()));
    }
    return cage;
}

RQ_PolygonMeshHandle subdivided(const RQ_PolygonMeshHandle &mesh, const CommonOptions &options, const std::string &file)
{
    const RQ_SubdivisionMeshHandle cage = cageOf(mesh, options.scheme);
    std::vector<std::string> complaints;
    const RQ_PolygonMeshHandle smooth = subdivide(*cage, options.subdivide, complaints);
    for (const std::string &complaint : complaints)
        fmt::print(stderr, "{}: warning: {}\n", file, complaint);
    return smooth ? smooth : mesh;
}
}  // namespace

RQ_PolygonMeshHandle preparedMesh(const RQ_PolygonMeshHandle &mesh, const CommonOptions &options, const std::string &file)
{
    RQ_PolygonMeshHandle prepared = mesh;
    if (options.subdivide >= 0)
        prepared = subdivided(mesh, options, file);
    else if (!options.scheme.empty() && dynamic_cast<const RQ_PrimSubdivisionMesh *>(mesh.get()))
        prepared = cageOf(mesh, options.scheme);
    if (options.convex > 0)
        if (const RQ_PolygonMeshHandle cut = prepared->convex(options.convex))
            prepared = cut;
    return prepared;
}

RQ_PrimitiveHandle preparedPrimitive(const RQ_PrimitiveHandle &primitive, const CommonOptions &options,
                                     const std::string &file)
{
    auto mesh = boost::dynamic_pointer_cast<RQ_PrimPolygonMesh>(primitive);
    // What is to be done to faces is done to those outside.
    if (options.subdivide >= 0 || options.convex > 0)
        if (const auto cells = boost::dynamic_pointer_cast<RQ_PrimCellMesh>(primitive))
            mesh = cells->getOuterFaces();
    return mesh ? RQ_PrimitiveHandle(preparedMesh(mesh, options, file)) : primitive;
}
}  // namespace rq::app
