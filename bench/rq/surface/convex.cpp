#include <cmath>
#include <memory>

#include <bench/Job.h>
#include <bench/meshes.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace
{
RQ_PolygonMeshHandle makeMesh(const bench::QuadMesh &quads)
{
    RQ_AttributeMapHandle map(new RQ_AttributeMap);
    map->add("P", true);
    RQ_AttributeListHandle shared(new RQ_AttributeList(map, 1));
    shared->set(0, new RQ_DANumeric<float>(quads.positions.data(), quads.points(), 3, RQ_TYPE_POINT), 0);
    const RQ_DataArrayHandle list(new RQ_DANumeric<int32_t>(quads.indices.data(), int64_t(quads.indices.size())));
    return new RQ_PrimPolygonMesh(RQ_CountArray(quads.faces(), 4), list, shared);
}

/// How far the triangles' areas, seen from above and taken as absolute values, are from the square that they cover.
double areaError(const bench::QuadMesh &quads, const RQ_DataArray &triangles)
{
    double sum = 0.0;
    for (int64_t at = 0; at < triangles.entries(); at += 3)
    {
        const auto corner = [&](int64_t i) { return quads.positions.data() + 3 * triangles.getI64(at + i); };
        const float *a = corner(0), *b = corner(1), *c = corner(2);
        sum += 0.5 * std::abs((double(b[0]) - a[0]) * (double(c[1]) - a[1]) - (double(c[0]) - a[0]) * (double(b[1]) - a[1]));
    }
    const double square = double(quads.size) * quads.size;
    return std::abs(sum - square) / square;
}

const bool registered = [] {
    const auto quads = std::make_shared<bench::QuadMesh>(1000);
    const RQ_PolygonMeshHandle mesh = makeMesh(*quads);
    // Read: positions and vertex list.  Written: three corners, their source and the source face of every triangle.
    const double triangles = 2.0 * double(quads->faces());
    const double bytes = double(quads->positions.size() + quads->indices.size()) * 4.0 + triangles * 28.0;
    for (const int threads : {1, 2})
        bench::add({"convex3", "quads1M", "ours", threads, triangles, bytes,
                    [mesh]() -> std::function<void()> {
                        auto arrays = std::make_shared<RQ_ConvexArrays>();
                        mesh->getConvexArrays(*arrays, 3);
                        return [arrays]() mutable { arrays.reset(); };
                    },
                    [mesh, quads] {
                        RQ_ConvexArrays arrays;
                        mesh->getConvexArrays(arrays, 3);
                        return areaError(*quads, *arrays.vertexList);
                    }});
    return true;
}();
}  // namespace
