#include <rq/surface/PrimPolygonMesh.h>

#include <host/bas/Parallel.h>
#include <rq/data/DAConstant.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DASubArray.h>
#include <rq/prim/Refine.h>
#include <rq/surface/detail/faceMerges.h>

const RQ_PrimPolygonMesh::FaceMerges &RQ_PrimPolygonMesh::faceMerges() const
{
    return merges_.getOrBuild([this] { return BAS_IntrusivePtr<const FaceMerges>(new FaceMerges(*this)); });
}

namespace
{
/// The attributes that `merge` pairs, each from the first list where that has it and else from the second.
template <class FromFirst, class FromSecond>
RQ_AttributeListHandle mergedList(const RQ_AttributeMerge &merge, const RQ_AttributeListHandle &first,
                                  const RQ_AttributeListHandle &second, FromFirst &&fromFirst, FromSecond &&fromSecond)
{
    const int segments = std::max(first ? first->getSegments() : 1, second ? second->getSegments() : 1);
    RQ_AttributeListHandle list(new RQ_AttributeList(merge.map, segments));
    for (int segment = 0; segment < segments; ++segment)
        for (int i = 0; i < list->entries(); ++i)
        {
            if (const int own = merge.first[size_t(i)]; own >= 0 && first->get(own, segment))
                list->set(i, fromFirst(first->get(own, segment)), segment);
            else if (const int other = merge.second[size_t(i)]; other >= 0 && second->get(other, segment))
                list->set(i, fromSecond(second->get(other, segment)), segment);
        }
    return list;
}
}  // namespace

RQ_PolygonHandle RQ_PrimPolygonMesh::makeFace(const FaceMerges &merges, int64_t face) const
{
    const auto [begin, count] = counts_.getOffsetCount(face);
    const RQ_DataArrayHandle points = RQ_DASubArray::createSubArray(vertexList_, begin, count);
    const RQ_AttributeListHandle corners = mergedList(
        merges.corner, vertex_, shared_,
        [begin = begin, count = count](const RQ_DataArrayHandle &array) {
            return RQ_DASubArray::createSubArray(array, begin, count);
        },
        [&points](const RQ_DataArrayHandle &array) { return RQ_DAIndirect::createIndirect(array, points); });
    const RQ_AttributeListHandle whole = mergedList(
        merges.whole, uniform_, detail_,
        [face](const RQ_DataArrayHandle &array) { return RQ_DAConstant::createConstant(array, face, 1); },
        [](const RQ_DataArrayHandle &array) { return array; });
    return new RQ_PrimPolygon(corners, whole);
}

RQ_PolygonHandle RQ_PrimPolygonMesh::getFace(int64_t face) const { return makeFace(faceMerges(), face); }

bool RQ_PrimPolygonMesh::refine(RQ_Refine &sink, const RQ_RefineParms *) const
{
    // The least; the scheduler cuts larger pieces while all workers are busy.
    constexpr int64_t kFacesPerTask = 1;
    const int64_t faces = getFaceCount();
    if (faces < 1)
        return false;
    const FaceMerges &merges = faceMerges();
    const auto handOver = [&](int64_t face) {
        const RQ_PolygonHandle polygon = makeFace(merges, face);
        polygon->refineCopyTransformFrom(*this);
        sink.addPrimitive(polygon);
    };
    if (sink.allowThreading())
        host::parallelFor(faces, kFacesPerTask, handOver);
    else
        for (int64_t face = 0; face < faces; ++face)
            handOver(face);
    return true;
}
