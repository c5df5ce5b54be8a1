#include <rq/surface/PrimPolygonMesh.h>

#include <host/bas/Parallel.h>
#include <host/bas/faceGeometry.h>
#include <rq/data/Positions.h>
#include <rq/surface/detail/topology.h>

namespace
{
// Sums run over fixed blocks merged in block order: the block is part of the result.
constexpr int64_t kFacesPerBlock = 1024;

/// Add up `measure(corners, position)` over all faces, after the mesh's own transform.
template <class Measure> double sumOverFaces(const RQ_PrimPolygonMesh &mesh, int segment, Measure &&measure)
{
    const rq::Positions positions(mesh.getShared() ? mesh.getShared()->get("P", segment) : nullptr);
    if (!positions.isValid() || !mesh.getVertexList())
        return 0.0;
    const bool placed = mesh.getPrimitiveTransform() && !mesh.getPrimitiveTransform()->isIdentity();
    BAS_Mat4d matrix;
    if (placed)
        mesh.getPrimitiveTransform()->getMatrix(matrix, segment);

    double sum = 0.0;
    rq::visitTopology(mesh.getFaceCountArray(), *mesh.getVertexList(), [&](const auto &topology) {
        const auto sumBlock = [&](int64_t first, int64_t last) {
            double part = 0.0;
            for (int64_t face = first; face < last; ++face)
            {
                const int64_t begin = topology.begin(face);
                part += measure(topology.end(face) - begin, [&](int64_t i) {
                    const BAS_Vec3d point = positions[topology.point(begin + i)];
                    return placed ? host::transformPoint(point, matrix) : point;
                });
            }
            return part;
        };
        sum = host::parallelReduce(topology.faces(), kFacesPerBlock, 0.0, sumBlock,
                                   [](double &into, double from) { into += from; });
    });
    return sum;
}
}  // namespace

double RQ_PrimPolygonMesh::computePerimeter(int segment) const
{
    return sumOverFaces(*this, segment,
                        [](int64_t corners, const auto &position) { return host::facePerimeter(corners, position); });
}

double RQ_PrimPolygonMesh::computeSurfaceArea(int segment) const
{
    return sumOverFaces(*this, segment, [](int64_t corners, const auto &position) {
        return 0.5 * host::newellVector(corners, position).length();
    });
}

double RQ_PrimPolygonMesh::computeVolume(const BAS_Vec3f &reference, int segment) const
{
    return sumOverFaces(*this, segment, [&](int64_t corners, const auto &position) {
        return host::faceVolume(corners, position, BAS_Vec3d(reference));
    });
}
