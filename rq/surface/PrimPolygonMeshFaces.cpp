#include <rq/surface/PrimPolygonMesh.h>

#include <host/bas/Parallel.h>
#include <rq/data/DAConstant.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DASubArray.h>
#include <rq/prim/Refine.h>
#include <rq/surface/detail/faceMerges.h>
#include <rq/surface/detail/lists.h>

const RQ_PrimPolygonMesh::FaceMerges &RQ_PrimPolygonMesh::faceMerges() const
{
    return merges_.getOrBuild([this] { return BAS_IntrusivePtr<const FaceMerges>(new FaceMerges(*this)); });
}

RQ_PolygonHandle RQ_PrimPolygonMesh::makeFace(const FaceMerges &merges, int64_t face) const
{
    const auto [begin, count] = counts_.getOffsetCount(face);
    const RQ_DataArrayHandle points = RQ_DASubArray::createSubArray(vertexList_, begin, count);
    const RQ_AttributeListHandle corners = rq::mergedList(
        merges.corner, vertex_, shared_,
        [begin = begin, count = count](const RQ_DataArrayHandle &array) {
            return RQ_DASubArray::createSubArray(array, begin, count);
        },
        [&points](const RQ_DataArrayHandle &array) { return RQ_DAIndirect::createIndirect(array, points); });
    const RQ_AttributeListHandle whole = rq::mergedList(
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
