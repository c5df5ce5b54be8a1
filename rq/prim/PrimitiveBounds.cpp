#include <algorithm>
#include <cmath>

#include <host/bas/Parallel.h>
#include <rq/data/Positions.h>
#include <rq/prim/Primitive.h>

namespace
{
// A position costs 3 to 10 ns here, so a block is some 50 to 150 us of work.
constexpr int64_t kPositionsPerBlock = 16384;

// Enlarge `box` by `positionAt(i)` for all i.  Merging boxes is exact in any order.
template <class PositionAt> void enlargeByAll(BAS_BoundingBox &box, int64_t count, PositionAt &&positionAt)
{
    const auto map = [&](int64_t begin, int64_t end) {
        BAS_BoundingBox part;
        for (int64_t i = begin; i < end; ++i)
            part.enlarge(BAS_Vec3f(positionAt(i)));
        return part;
    };
    const auto merge = [](BAS_BoundingBox &into, const BAS_BoundingBox &from) { into.enlarge(from); };
    box.enlarge(host::parallelReduce(count, kPositionsPerBlock, BAS_BoundingBox(), map, merge));
}

const RQ_DataArrayHandle &positionsOf(const RQ_AttributeListHandle &points, int segment)
{
    static const BAS_StringHolder kName = BAS_StringHolder::literal("P");
    static const RQ_DataArrayHandle none;
    return points ? points->get(kName, segment) : none;
}

bool isHomogeneous(const RQ_DataArray &positions)
{
    return positions.getTypeInfo() == RQ_TYPE_HPOINT && positions.getTupleSize() > 3;
}

// The largest absolute value of the first component, 0 when no value is finite.
double largestMagnitude(const RQ_DataArrayHandle &array)
{
    if (!array || array->entries() < 1)
        return 0.0;

    double low, high;
    array->getRange(low, high, 0);
    if (std::isfinite(low) && std::isfinite(high))
        return low <= high ? std::max(std::abs(low), std::abs(high)) : 0.0;

    // Some value is infinite: look at the others one by one.
    double largest = 0.0;
    for (int64_t i = 0; i < array->entries(); ++i)
    {
        const double magnitude = std::abs(array->getF64(i, 0));
        largest = std::isfinite(magnitude) ? std::max(largest, magnitude) : largest;
    }
    return largest;
}

// An empty box stays empty.
void expand(BAS_BoundingBox &box, float margin)
{
    if (!box.isEmpty())
        box.expand(margin);
}
}  // namespace

void RQ_Primitive::enlargeP(BAS_BoundingBox *boxes, int segments, const RQ_AttributeListHandle &points) const
{
    for (int s = 0; s < segments; ++s)
    {
        if (!transform_ || transform_->isIdentity())
        {
            enlargeP(boxes[s], points, s);
            continue;
        }
        // Placing the corners of a box instead would not be tight under a rotation.
        BAS_Mat4d matrix;
        transform_->getMatrix(matrix, s);
        const rq::Positions positions(positionsOf(points, s));
        positions.visit([&](auto &&position) {
            enlargeByAll(boxes[s], positions.entries(),
                         [&](int64_t i) { return host::transformPoint(BAS_Vec3d(position(i)), matrix); });
        });
    }
}

void RQ_Primitive::enlargeP(BAS_BoundingBox &box, const RQ_AttributeListHandle &points, int segment)
{
    if (const RQ_DataArrayHandle &positions = positionsOf(points, segment))
    {
        if (isHomogeneous(*positions))
            enlargePw(box, *positions);
        else
            enlargeP(box, *positions);
    }
}

void RQ_Primitive::enlargeP(BAS_BoundingBox &box, const RQ_DataArray &positions)
{
    if (!isHomogeneous(positions))
        return positions.enlargeBounds(box);
    enlargeByAll(box, positions.entries(), [&](int64_t i) {
        BAS_Vec3d position;
        positions.get(i, position.getValue(), 3);
        return position;
    });
}

void RQ_Primitive::enlargePw(BAS_BoundingBox &box, const RQ_DataArray &positions)
{
    if (isHomogeneous(positions))
        return positions.enlargeBounds(box);
    enlargeByAll(box, positions.entries(), [&](int64_t i) {
        double v[4];
        positions.get(i, v, 4);
        return BAS_Vec3d(v[0], v[1], v[2]) * (v[3] == 0.0 ? 0.0 : 1.0 / v[3]);
    });
}

bool RQ_Primitive::enlargeWidth(BAS_BoundingBox *boxes, int segments, float defaultWidth) const
{
    static const BAS_StringHolder kWidth = BAS_StringHolder::literal("width");
    static const BAS_StringHolder kScale = BAS_StringHolder::literal("pscale");
    constexpr float kLeastDefault = 0.05f;

    RQ_Owner owner;
    if (findAttribute(kWidth, owner, 0) || findAttribute(kScale, owner, 0))
    {
        for (int s = 0; s < segments; ++s)
            expand(boxes[s], float(std::max(largestMagnitude(findAttribute(kWidth, owner, s)),
                                            largestMagnitude(findAttribute(kScale, owner, s)))));
        return true;
    }

    const float width = std::isfinite(defaultWidth) ? defaultWidth : 0.0f;
    for (int s = 0; s < segments; ++s)
        expand(boxes[s], defaultWidth < 0.0f ? kLeastDefault : width);
    return false;
}
