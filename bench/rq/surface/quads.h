#pragma once

#include <algorithm>
#include <numeric>
#include <random>

#include <bench/meshes.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace bench
{
inline RQ_PolygonMeshHandle makeMesh(const QuadMesh &quads)
{
    RQ_AttributeMapHandle map(new RQ_AttributeMap);
    map->add("P", true);
    RQ_AttributeListHandle shared(new RQ_AttributeList(map, 1));
    shared->set(0, new RQ_DANumeric<float>(quads.positions.data(), quads.points(), 3, RQ_TYPE_POINT), 0);
    const RQ_DataArrayHandle list(new RQ_DANumeric<int32_t>(quads.indices.data(), int64_t(quads.indices.size())));
    return new RQ_PrimPolygonMesh(RQ_CountArray(quads.faces(), 4), list, shared);
}

/// The same mesh as if it had just been made: nothing that was worked out for the other is known.
inline RQ_PolygonMeshHandle withOwnTopology(const RQ_PrimPolygonMesh &mesh)
{
    return new RQ_PrimPolygonMesh(mesh.getFaceCountArray(), mesh.getVertexList(), mesh.getShared());
}

/// Let points and faces lie in any order.
inline void shuffle(QuadMesh &quads)
{
    std::mt19937 random(1);
    std::vector<int32_t> number(size_t(quads.points()));
    std::iota(number.begin(), number.end(), 0);
    std::shuffle(number.begin(), number.end(), random);
    const std::vector<float> positions = quads.positions;
    for (size_t i = 0; i < positions.size(); ++i)
        quads.positions[3 * size_t(number[i / 3]) + i % 3] = positions[i];
    for (int32_t &point : quads.indices)
        point = number[size_t(point)];
    for (int64_t face = quads.faces() - 1; face > 0; --face)
        std::swap_ranges(quads.indices.begin() + 4 * face, quads.indices.begin() + 4 * face + 4,
                         quads.indices.begin() + 4 * int64_t(random() % uint64_t(face)));
}
}  // namespace bench
