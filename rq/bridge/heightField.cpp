#include <algorithm>

#include <host/bas/Parallel.h>
#include <rq/bridge/PrimVolume.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/detail/gridFaces.h>

namespace
{
// A point costs about 5 ns.
constexpr int64_t kPointsPerTask = 16384;

BAS_Vec3d rowOf(const BAS_Mat4d &matrix, int row) { return {matrix[row][0], matrix[row][1], matrix[row][2]}; }

/// Where the voxels of a height field come to lie.
class HeightPoints
{
public:
    /// Rows run along the axis after the flat one.
    HeightPoints(const MSH_VolumeData &voxels, int flat, const BAS_Mat4d &matrix)
        : voxels_(voxels), u_((flat + 1) % 3), v_((flat + 2) % 3), origin_(rowOf(matrix, 3)),
          up_(rowOf(matrix, flat).normalized())
    {
        const double nu = double(count(u_)), nv = double(count(v_));
        alongU_ = rowOf(matrix, u_) * (2.0 / nu);
        alongV_ = rowOf(matrix, v_) * (2.0 / nv);
        origin_ += alongU_ * (0.5 - 0.5 * nu) + alongV_ * (0.5 - 0.5 * nv);
    }

    RQ_DataArrayHandle points() const
    {
        const int64_t nu = count(u_), nv = count(v_);
        const BAS_IntrusivePtr<RQ_DANumeric<float>> points(new RQ_DANumeric<float>(nu * nv, 3, RQ_TYPE_POINT));
        host::parallelFor(nv, std::max<int64_t>(1, kPointsPerTask / nu), [&](int64_t j) {
            for (int64_t i = 0; i < nu; ++i)
            {
                int64_t at[] = {0, 0, 0};
                at[u_] = i;
                at[v_] = j;
                const double height = double(voxels_.value(at[0], at[1], at[2]));
                const BAS_Vec3f point(origin_ + alongU_ * double(i) + alongV_ * double(j) + up_ * height);
                std::copy_n(&point.x, 3, points->data() + 3 * (i + nu * j));
            }
        });
        return points;
    }

private:
    int64_t count(int axis) const { return voxels_.resolution[size_t(axis)]; }

    const MSH_VolumeData &voxels_;
    int u_, v_;
    BAS_Vec3d origin_, up_, alongU_, alongV_;
};
}  // namespace

RQ_PolygonMeshHandle RQ_PrimVolume::createHeightField() const
{
    const int flat = flatAxis();
    if (flat < 0)
        return nullptr;
    const RQ_TransformHandle placement = getPrimitiveTransform() ? getPrimitiveTransform() : RQ_Transform::identity();
    const RQ_AttributeMapHandle map(new RQ_AttributeMap);
    map->add("P", true);
    const RQ_AttributeListHandle shared(new RQ_AttributeList(map, std::max(1, placement->getSegments())));
    BAS_Mat4d matrix;
    for (int segment = shared->getSegments(); segment-- > 0;)
    {
        placement->getMatrix(matrix, segment);
        shared->set(0, HeightPoints(getVoxels(), flat, matrix).points(), segment);
    }
    // A mirrored grid is wound the other way, to face where its heights go.
    const bool isMirrored = rowOf(matrix, 0).cross(rowOf(matrix, 1)).dot(rowOf(matrix, 2)) < 0.0;
    const RQ_PolygonMeshHandle faces =
        rq::gridFaces(getResolution((flat + 1) % 3), getResolution((flat + 2) % 3), !isMirrored);
    return new RQ_PrimPolygonMesh(*faces, shared, nullptr, nullptr, getDetailAttributes());
}
