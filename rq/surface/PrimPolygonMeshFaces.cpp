#include <rq/surface/PrimPolygonMesh.h>

#include <algorithm>

#include <host/bas/Parallel.h>
#include <rq/data/DAConstant.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DASubArray.h>
#include <rq/prim/Refine.h>
#include <rq/surface/detail/faceMerges.h>
#include <rq/surface/detail/lists.h>

namespace
{
/// Makes the polygons of a run of faces.
///
/// They share what the run holds, not what the mesh holds: a count of references that all workers raise for every face
/// would pass from processor to processor all the time.
class FaceRun
{
public:
    FaceRun(const RQ_PrimPolygonMesh &mesh, const RQ_AttributeMerge &corner, const RQ_AttributeMerge &whole, int64_t begin,
            int64_t end)
        : mesh_(mesh), whole_(whole), firstCorner_(mesh.getVertexOffset(begin))
    {
        const int64_t count = mesh.getVertexOffset(end - 1) + mesh.getFaceCountArray().getCount(end - 1) - firstCorner_;
        const RQ_DataArrayHandle points = RQ_DASubArray::createSubArray(mesh.getVertexList(), firstCorner_, count);
        corners_ = rq::mergedList(
            corner, mesh.getVertex(), mesh.getShared(),
            [&](const RQ_DataArrayHandle &array) { return RQ_DASubArray::createSubArray(array, firstCorner_, count); },
            [&](const RQ_DataArrayHandle &array) { return RQ_DAIndirect::createIndirect(array, points); });
        const bool isSame = std::all_of(whole.first.begin(), whole.first.end(), [](int own) { return own < 0; });
        if (isSame)
            faces_ = wholeOf(begin);
    }

    RQ_PolygonHandle make(int64_t face) const
    {
        const auto [begin, count] = mesh_.getFaceCountArray().getOffsetCount(face);
        return new RQ_PrimPolygon(corners_->createSubArray(begin - firstCorner_, count), faces_ ? faces_ : wholeOf(face));
    }

private:
    RQ_AttributeListHandle wholeOf(int64_t face) const
    {
        return rq::mergedList(
            whole_, mesh_.getUniform(), mesh_.getDetail(),
            [face](const RQ_DataArrayHandle &array) { return RQ_DAConstant::createConstant(array, face, 1); },
            [](const RQ_DataArrayHandle &array) { return array; });
    }

    const RQ_PrimPolygonMesh &mesh_;
    const RQ_AttributeMerge &whole_;
    int64_t firstCorner_;
    RQ_AttributeListHandle corners_;  // of all faces of the run
    RQ_AttributeListHandle faces_;    // null when every face has a list of its own
};

/// The same merge with a map that no other thread counts.
RQ_AttributeMerge ownMerge(const RQ_AttributeMerge &merge)
{
    RQ_AttributeMerge own = merge;
    if (own.map)
        own.map = new RQ_AttributeMap(*own.map);
    return own;
}
}  // namespace

const RQ_PrimPolygonMesh::FaceMerges &RQ_PrimPolygonMesh::faceMerges() const
{
    return merges_.getOrBuild([this] { return BAS_IntrusivePtr<const FaceMerges>(new FaceMerges(*this)); });
}

RQ_PolygonHandle RQ_PrimPolygonMesh::makeFace(const FaceMerges &merges, int64_t face) const
{
    return FaceRun(*this, merges.corner, merges.whole, face, face + 1).make(face);
}

RQ_PolygonHandle RQ_PrimPolygonMesh::getFace(int64_t face) const { return makeFace(faceMerges(), face); }

bool RQ_PrimPolygonMesh::refine(RQ_Refine &sink, const RQ_RefineParms *) const
{
    // The least; the scheduler cuts larger pieces while all workers are busy.
    constexpr int64_t kFacesPerTask = 1;
    constexpr int64_t kFacesPerRun = 256;
    const int64_t faces = getFaceCount();
    if (faces < 1)
        return false;
    const FaceMerges &merges = faceMerges();
    const auto handOver = [&](int64_t begin, int64_t end) {
        const RQ_AttributeMerge corner = ownMerge(merges.corner), whole = ownMerge(merges.whole);
        for (int64_t first = begin; first < end; first += kFacesPerRun)
        {
            const int64_t last = std::min(end, first + kFacesPerRun);
            const FaceRun run(*this, corner, whole, first, last);
            for (int64_t face = first; face < last; ++face)
            {
                const RQ_PrimitiveHandle polygon = run.make(face);
                polygon->refineCopyTransformFrom(*this);
                sink.addPrimitive(polygon);
            }
        }
    };
    if (sink.allowThreading())
        host::parallelForRange(faces, kFacesPerTask, handOver);
    else
        handOver(0, faces);
    return true;
}
