#include <rq/bridge/PrimPlacedVolume.h>

#include <host/msh/Detail.h>
#include <rq/bridge/detail/PlacedPrimitives.h>
#include <rq/data/DAConstantValue.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/detail/lists.h>

RQ_PrimPlacedVolume::RQ_PrimPlacedVolume(const RQ_MSHDetailList &details, ELM_Offset volume, const RQ_RefineParms *parms)
    : payload_(details.getDetail()->payload(volume))
{
    const RQ_MSHOffsetList self(ELM_OffsetList(volume, 1));
    setPrimitiveTransform(rq::placementsOf(details, self)->get(0));
    const RQ_AttributeListHandle own = rq::attributesOfPlaced(details, self, parms);
    const RQ_AttributeListHandle whole = details.getDetailAttributes(nullptr, parms);
    detail_ = own ? own->mergeNewAttributes(whole) : whole;
}

RQ_PrimPlacedVolume::RQ_PrimPlacedVolume(const RQ_PrimPlacedVolume &other) = default;
RQ_PrimPlacedVolume::~RQ_PrimPlacedVolume() = default;

RQ_CurveMeshHandle RQ_PrimPlacedVolume::createOutline() const
{
    constexpr int kEdges = 12;
    const BAS_IntrusivePtr<RQ_DANumeric<float>> ends(new RQ_DANumeric<float>(2 * kEdges, 3, RQ_TYPE_POINT));
    float *out = ends->data();
    for (int axis = 0; axis < 3; ++axis)
        for (int corner = 0; corner < 8; ++corner)
            if (!(corner >> axis & 1))
                for (const int end : {corner, corner | 1 << axis})
                    for (int c = 0; c < 3; ++c)
                        *out++ = end >> c & 1 ? 1.0f : -1.0f;
    const RQ_AttributeMapHandle map(new RQ_AttributeMap);
    map->add("P", true);
    const RQ_AttributeListHandle vertex(new RQ_AttributeList(map, 1));
    vertex->set(0, ends, 0);
    const RQ_DataArrayHandle counts(new RQ_DAConstantValue<int32_t>(kEdges, 2, 1, RQ_TYPE_NONE));
    const RQ_CurveMeshHandle outline(new RQ_PrimCurveMesh(RQ_BASIS_LINEAR, counts, vertex, {}, detail_));
    outline->refineCopyTransformFrom(*this);
    return outline;
}

void RQ_PrimPlacedVolume::enlargeBounds(BAS_BoundingBox *boxes, int segments) const
{
    for (int segment = 0; segment < segments; ++segment)
    {
        BAS_Mat4d matrix;
        if (getPrimitiveTransform())
            getPrimitiveTransform()->getMatrix(matrix, segment);
        for (int corner = 0; corner < 8; ++corner)
        {
            BAS_Vec3d point;
            for (int axis = 0; axis < 3; ++axis)
                point[axis] = corner >> axis & 1 ? 1.0 : -1.0;
            boxes[segment].enlarge(BAS_Vec3f(host::transformPoint(point, matrix)));
        }
    }
}

bool RQ_PrimPlacedVolume::refine(RQ_Refine &sink, const RQ_RefineParms *) const
{
    sink.addPrimitive(const_cast<RQ_PrimPlacedVolume *>(this));
    return false;
}

int RQ_PrimPlacedVolume::getMotionSegments() const { return rq::motionSegments(*this, {&detail_}); }

int64_t RQ_PrimPlacedVolume::getMemoryUsage() const { return int64_t(sizeof(*this)) + rq::memoryUsage({&detail_}); }

RQ_PrimitiveHandle RQ_PrimPlacedVolume::doHarden() const
{
    // The host's values never change, and keep nothing else alive.
    const RQ_PrimitiveHandle copy = doSoftCopy();
    auto &own = static_cast<RQ_PrimPlacedVolume &>(*copy);
    rq::hardenLists({&own.detail_});
    own.dropDataIdHash();
    return copy;
}
