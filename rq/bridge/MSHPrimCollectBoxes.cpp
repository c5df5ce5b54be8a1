#include <rq/bridge/MSHPrimCollectBoxes.h>

#include <algorithm>
#include <limits>

#include <rq/data/DANumeric.h>
#include <rq/prim/PrimCollect.h>
#include <rq/prim/detail/placedCorners.h>
#include <rq/surface/PrimPointMesh.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace
{
constexpr int64_t kCorners = 8, kSides = 6, kSideCorners = 4;

// Corners as `placedCorner` numbers them.
constexpr int kSideOfBox[kSides][kSideCorners] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4},
                                                  {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};

template <class Index> RQ_DataArrayHandle cornersOfBoxes(int64_t boxes)
{
    const BAS_IntrusivePtr<RQ_DANumeric<Index>> list(new RQ_DANumeric<Index>(boxes * kSides * kSideCorners));
    Index *next = list->data();
    for (int64_t box = 0; box < boxes; ++box)
        for (const auto &side : kSideOfBox)
            for (const int corner : side)
                *next++ = Index(box * kCorners + corner);
    return list;
}

RQ_DataArrayHandle repeated(const std::vector<int64_t> &values, int64_t copies)
{
    const BAS_IntrusivePtr<RQ_DANumeric<int64_t>> array(new RQ_DANumeric<int64_t>(int64_t(values.size()) * copies));
    int64_t *next = array->data();
    for (const int64_t value : values)
        next = std::fill_n(next, copies, value);
    return array;
}

template <class T> void concat(std::vector<T> &into, const std::vector<T> &following)
{
    into.insert(into.end(), following.begin(), following.end());
}
}  // namespace

void RQ_MSHPrimCollectBoxes::Rows::append(const Rows &following)
{
    concat(points, following.points);
    concat(primitives, following.primitives);
    concat(vertices, following.vertices);
    concat(pointOffsets, following.pointOffsets);
}

RQ_AttributeListHandle RQ_MSHPrimCollectBoxes::Rows::positions() const
{
    const RQ_DataArrayHandle array(new RQ_DANumeric<float>(&points[0].x, int64_t(points.size()), 3, RQ_TYPE_POINT));
    return RQ_AttributeListHandle(new RQ_AttributeList(nullptr))->addAttribute("P", array, true);
}

RQ_AttributeListHandle RQ_MSHPrimCollectBoxes::Rows::withIds(const RQ_AttributeListHandle &list, int64_t copies) const
{
    return list->addAttribute("__primitive_id", repeated(primitives, copies), true)
        ->addAttribute("__vertex_id", repeated(vertices, copies), true)
        ->addAttribute("__point_id", repeated(pointOffsets, copies), true);
}

void RQ_MSHPrimCollectBoxes::appendBox(const BAS_BoundingBox &box, const BAS_Mat4d &transform, ELM_Offset primitive,
                                       ELM_Offset vertex, ELM_Offset point)
{
    if (box.isEmpty())
        return;
    for (int corner = 0; corner < kCorners; ++corner)
        boxes_.points.push_back(rq::placedCorner(box, transform, corner));
    boxes_.primitives.push_back(primitive);
    boxes_.vertices.push_back(vertex);
    boxes_.pointOffsets.push_back(point);
}

void RQ_MSHPrimCollectBoxes::appendCentroid(const BAS_BoundingBox &box, const BAS_Mat4d &transform, ELM_Offset primitive,
                                            ELM_Offset vertex, ELM_Offset point)
{
    if (box.isEmpty())
        return;
    const BAS_Vec3d middle = (BAS_Vec3d(box.minimum()) + BAS_Vec3d(box.maximum())) * 0.5;
    centroids_.points.push_back(BAS_Vec3f(host::transformPoint(middle, transform)));
    centroids_.primitives.push_back(primitive);
    centroids_.vertices.push_back(vertex);
    centroids_.pointOffsets.push_back(point);
}

void RQ_MSHPrimCollectBoxes::append(const RQ_MSHPrimCollectBoxes &following)
{
    boxes_.append(following.boxes_);
    centroids_.append(following.centroids_);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectBoxes::getBoxes() const
{
    const int64_t count = int64_t(boxes_.primitives.size());
    if (count == 0)
        return nullptr;
    const bool fits = count <= std::numeric_limits<int32_t>::max() / kCorners;
    return new RQ_PrimPolygonMesh(RQ_CountArray(count * kSides, kSideCorners),
                                  fits ? cornersOfBoxes<int32_t>(count) : cornersOfBoxes<int64_t>(count), boxes_.positions(),
                                  nullptr, boxes_.withIds(RQ_AttributeListHandle(new RQ_AttributeList(nullptr)), kSides));
}

RQ_PrimitiveHandle RQ_MSHPrimCollectBoxes::getCentroids() const
{
    return centroids_.primitives.empty()
               ? RQ_PrimitiveHandle()
               : RQ_PrimitiveHandle(new RQ_PrimPointMesh(centroids_.withIds(centroids_.positions(), 1)));
}

RQ_PrimitiveHandle RQ_MSHPrimCollectBoxes::getPrimitive() const
{
    const RQ_PrimitiveHandle boxes = getBoxes(), centroids = getCentroids();
    if (!boxes || !centroids)
        return boxes ? boxes : centroids;
    const BAS_IntrusivePtr<RQ_PrimCollect> both(new RQ_PrimCollect);
    both->appendPrimitive(boxes);
    both->appendPrimitive(centroids);
    return both;
}
