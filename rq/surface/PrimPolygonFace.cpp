#include <rq/surface/PrimPolygon.h>

#include <algorithm>

#include <host/bas/faceGeometry.h>
#include <rq/data/Positions.h>

namespace
{
// The corners of one face, placed; everything that a measure needs to know of it.
class Face
{
public:
    Face(const RQ_DataArrayHandle &positions, const RQ_DataArrayHandle &vertexList, int64_t count, int64_t first,
         const BAS_Mat4d *transform = nullptr)
        : positions_(positions), points_(vertexList.get()), first_(first), transform_(transform)
    {
        const int64_t rows = vertexList ? vertexList->entries() : positions_.entries();
        const int64_t most = positions_.isValid() && first >= 0 ? std::max<int64_t>(0, rows - first) : 0;
        count_ = count < 0 ? most : std::min(count, most);
    }

    int64_t corners() const { return count_; }

    BAS_Vec3d operator()(int64_t corner) const
    {
        const BAS_Vec3d position = positions_[points_ ? points_->getI64(first_ + corner) : first_ + corner];
        return transform_ ? host::transformPoint(position, *transform_) : position;
    }

    BAS_Vec3d normal() const { return host::newellVector(corners(), *this); }
    BAS_Vec3d fastNormal() const { return host::fastNormal(positions_.entries() < 3 ? 0 : corners(), *this); }
    void frame(BAS_Vec3d &axisX, BAS_Vec3d &axisY) const { host::faceFrame(normal(), axisX, axisY); }
    double perimeter() const { return host::facePerimeter(corners(), *this); }
    double area() const { return 0.5 * normal().length(); }
    double volume(const BAS_Vec3f &reference) const { return host::faceVolume(corners(), *this, BAS_Vec3d(reference)); }

private:
    rq::Positions positions_;
    const RQ_DataArray *points_;
    int64_t first_;
    int64_t count_;
    const BAS_Mat4d *transform_;
};
}  // namespace

void RQ_PrimPolygon::computeNormal(BAS_Vec3f &normal, const RQ_DataArrayHandle &positions,
                                   const RQ_DataArrayHandle &vertexList, int64_t count, int64_t first)
{
    normal = BAS_Vec3f(Face(positions, vertexList, count, first).normal());
}

void RQ_PrimPolygon::computeNormal(BAS_Vec3d &normal, const RQ_DataArrayHandle &positions,
                                   const RQ_DataArrayHandle &vertexList, int64_t count, int64_t first)
{
    normal = Face(positions, vertexList, count, first).normal();
}

void RQ_PrimPolygon::computeFastNormal(BAS_Vec3f &normal, const RQ_DataArrayHandle &positions,
                                       const RQ_DataArrayHandle &vertexList, int64_t count, int64_t first)
{
    normal = BAS_Vec3f(Face(positions, vertexList, count, first).fastNormal());
}

void RQ_PrimPolygon::computeFastNormal(BAS_Vec3d &normal, const RQ_DataArrayHandle &positions,
                                       const RQ_DataArrayHandle &vertexList, int64_t count, int64_t first)
{
    normal = Face(positions, vertexList, count, first).fastNormal();
}

void RQ_PrimPolygon::computeFrameOfReference(BAS_Vec3d &axisX, BAS_Vec3d &axisY, const RQ_DataArrayHandle &positions,
                                             const RQ_DataArrayHandle &vertexList, int64_t count, int64_t first)
{
    Face(positions, vertexList, count, first).frame(axisX, axisY);
}

double RQ_PrimPolygon::facePerimeter(const RQ_DataArrayHandle &positions, const BAS_Mat4d *transform)
{
    return Face(positions, {}, -1, 0, transform).perimeter();
}

double RQ_PrimPolygon::facePerimeter(const RQ_DataArrayHandle &positions, const RQ_DataArrayHandle &vertexList,
                                     int64_t count, int64_t first, const BAS_Mat4d *transform)
{
    return Face(positions, vertexList, count, first, transform).perimeter();
}

double RQ_PrimPolygon::faceSurfaceArea(const RQ_DataArrayHandle &positions, const BAS_Mat4d *transform)
{
    return Face(positions, {}, -1, 0, transform).area();
}

double RQ_PrimPolygon::faceSurfaceArea(const RQ_DataArrayHandle &positions, const RQ_DataArrayHandle &vertexList,
                                       int64_t count, int64_t first, const BAS_Mat4d *transform)
{
    return Face(positions, vertexList, count, first, transform).area();
}

double RQ_PrimPolygon::faceVolume(const BAS_Vec3f &reference, const RQ_DataArrayHandle &positions,
                                  const BAS_Mat4d *transform)
{
    return Face(positions, {}, -1, 0, transform).volume(reference);
}

double RQ_PrimPolygon::faceVolume(const BAS_Vec3f &reference, const RQ_DataArrayHandle &positions,
                                  const RQ_DataArrayHandle &vertexList, int64_t count, int64_t first,
                                  const BAS_Mat4d *transform)
{
    return Face(positions, vertexList, count, first, transform).volume(reference);
}
