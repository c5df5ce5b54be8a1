#include <rq/surface/PrimPolygonMesh.h>

#include <algorithm>

#include <rq/data/Counts.h>
#include <rq/data/DANumeric.h>
#include <rq/data/DARange.h>
#include <rq/surface/detail/FanSums.h>
#include <rq/surface/detail/SharedTopology.h>
#include <rq/surface/detail/TangentWriter.h>
#include <rq/surface/detail/tangentWeld.h>
#include <rq/surface/detail/topology.h>

namespace
{
using Numbers = BAS_IntrusivePtr<RQ_DANumeric<float>>;

BAS_Vec3f *vectors(const Numbers &numbers) { return reinterpret_cast<BAS_Vec3f *>(numbers->data()); }

template <class Topology>
void writeTangents(const rq::TangentInput &input, const Topology &topology,
                   const host::CornerAdjacency<typename Topology::Index> &points, BAS_Vec3f *tangentU, BAS_Vec3f *tangentV)
{
    const rq::WeldedCorners welded(input, topology, points);
    if (welded.isOfPoints())
    {
        rq::TangentSpaces(input, topology, topology, points, tangentU, tangentV);
        return;
    }
    const Topology vertices{topology.ranges, welded.ids()};
    const host::CornerAdjacency<typename Topology::Index> around(welded.count(), vertices);
    rq::TangentSpaces(input, topology, vertices, around, tangentU, tangentV);
}

// A mesh is cut together with the numbers of its corners, which tell where the corners of the pieces came from.
constexpr const char *kCorner = "__corner";

/// The faces of more than four corners as triangles, all others as they are.
RQ_PolygonMeshHandle cutLargeFaces(const RQ_PrimPolygonMesh &mesh, const RQ_AttributeListHandle &shared)
{
    std::vector<int64_t> large;
    const rq::Counts counts(mesh.getFaceCountArray());
    for (int64_t face = 0; face < counts.entries(); ++face)
        if (counts.end(face) - counts.begin(face) > 4)
            large.push_back(face);
    RQ_FaceSet faces;
    faces.addFaces(large.data(), int64_t(large.size()));
    const RQ_AttributeListHandle vertex =
        mesh.getVertex() ? mesh.getVertex() : RQ_AttributeListHandle(new RQ_AttributeList(new RQ_AttributeMap));
    const RQ_DataArrayHandle corners(new RQ_DARange(mesh.getVertexCount()));
    const RQ_PolygonMeshHandle numbered(new RQ_PrimPolygonMesh(mesh.getFaceCountArray(), mesh.getVertexList(), shared,
                                                               vertex->addAttribute(kCorner, corners, true)));
    return numbered->convex(3, true, false, false, &faces);
}

/// A corner that went into several pieces takes the mean direction of what they have there.
RQ_DataArrayHandle collectPieces(const rq::Values<int64_t> &corners, const RQ_DataArrayHandle &ofPieces, int64_t count)
{
    const rq::Values<float> values(ofPieces);
    const Numbers collected(new RQ_DANumeric<float>(count, 3, RQ_TYPE_VECTOR));
    BAS_Vec3f *const out = vectors(collected);
    const auto *const in = reinterpret_cast<const BAS_Vec3f *>(values.data());
    std::fill(out, out + count, BAS_Vec3f(0.0f));
    for (int64_t i = 0; i < corners.entries(); ++i)
    {
        BAS_Vec3f &tangent = out[corners[i]];
        tangent = tangent == BAS_Vec3f(0.0f) ? in[i] : rq::FanSums::average(tangent, in[i]);
    }
    return collected;
}
}  // namespace

bool RQ_PrimPolygonMesh::makeTangents(int segment, RQ_DataArrayHandle &tangentU, RQ_DataArrayHandle &tangentV) const
{
    const rq::Positions positions(shared_ && vertexList_ ? shared_->get("P", segment) : nullptr);
    const rq::CornerValues texture(*this, "uv", segment);
    if (!positions.isValid() || !texture.has(2))
        return false;
    rq::CornerValues normals(*this, "N", segment);
    RQ_DataArrayHandle added;
    if (!normals.has(3))
    {
        added = createPointNormals(segment, "P", true, nullptr, RQ_STORAGE_REAL32);
        normals = rq::CornerValues(added, positions.entries(), true);
    }
    if (!normals.has(3))
        return false;
    if (getMaxVertexCount() > 4)
    {
        const RQ_PolygonMeshHandle cut = cutLargeFaces(*this, added ? shared_->addAttribute("N", added, true) : shared_);
        RQ_DataArrayHandle u, v;
        if (!cut || !cut->makeTangents(segment, u, v))
            return false;
        const rq::Values<int64_t> corners(cut->getVertex()->get(kCorner));
        tangentU = collectPieces(corners, u, getVertexCount());
        tangentV = collectPieces(corners, v, getVertexCount());
        return true;
    }
    const Numbers u(new RQ_DANumeric<float>(getVertexCount(), 3, RQ_TYPE_VECTOR));
    const Numbers v(new RQ_DANumeric<float>(getVertexCount(), 3, RQ_TYPE_VECTOR));
    const rq::TangentInput input(positions, texture, normals);
    rq::visitTopology(counts_, *vertexList_, [&](const auto &topology) {
        const rq::SharedTopology::Adjacency points(*topology_, positions.entries(), topology);
        writeTangents(input, topology, *points, vectors(u), vectors(v));
    });
    tangentU = u;
    tangentV = v;
    return true;
}

bool RQ_PrimPolygonMesh::createFastTangents(RQ_DataArrayHandle &tangentU, RQ_DataArrayHandle &tangentV) const
{
    return makeTangents(0, tangentU, tangentV);
}
