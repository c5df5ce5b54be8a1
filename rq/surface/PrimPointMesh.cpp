#include <rq/surface/PrimPointMesh.h>

#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/surface/detail/lists.h>

RQ_PrimPointMesh::RQ_PrimPointMesh() = default;

RQ_PrimPointMesh::RQ_PrimPointMesh(const RQ_AttributeListHandle &points, const RQ_AttributeListHandle &detail)
    : points_(points), detail_(detail)
{}

RQ_PrimPointMesh::RQ_PrimPointMesh(const RQ_PrimPointMesh &other) = default;
RQ_PrimPointMesh::~RQ_PrimPointMesh() = default;

void RQ_PrimPointMesh::init(const RQ_AttributeListHandle &points, const RQ_AttributeListHandle &detail)
{
    points_ = points;
    detail_ = detail;
    dropDataIdHash();
}

bool RQ_PrimPointMesh::validate(std::string *why) const
{
    std::string fault = rq::checkLengths("point", points_, getPointCount());
    if (fault.empty())
        fault = rq::checkLengths("detail", detail_, 1);
    if (why)
        *why = fault;
    return fault.empty();
}

int64_t RQ_PrimPointMesh::getPointCount() const { return rq::entriesOf(points_); }

const char *RQ_PrimPointMesh::className() const { return "RQ_PrimPointMesh"; }
int RQ_PrimPointMesh::getPrimitiveType() const { return RQ_PRIM_POINT_MESH; }

void RQ_PrimPointMesh::enlargeBounds(BAS_BoundingBox *boxes, int segments) const
{
    rq::enlargeWithWidths(*this, boxes, segments, [&](BAS_BoundingBox *own) { enlargeP(own, segments, points_); });
}

int RQ_PrimPointMesh::getMotionSegments() const { return rq::motionSegments(*this, {&points_, &detail_}); }

int64_t RQ_PrimPointMesh::getMemoryUsage() const { return int64_t(sizeof(*this)) + rq::memoryUsage({&points_, &detail_}); }

bool RQ_PrimPointMesh::save(BAS_JSONWriter &writer) const
{
    const jsonWriter record(writer, RQprimitiveType(RQ_PRIM_POINT_MESH));
    return saveAttributeLists(*record);
}

RQ_PrimitiveHandle RQ_PrimPointMesh::doHarden() const
{
    const RQ_PointMeshHandle copy(new RQ_PrimPointMesh(*this));
    rq::hardenLists({&copy->points_, &copy->detail_});
    copy->dropDataIdHash();
    return copy;
}

RQ_PrimitiveHandle RQ_PrimPointMesh::doSoftCopy() const { return new RQ_PrimPointMesh(*this); }

RQ_PrimitiveHandle RQ_PrimPointMesh::doAttributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *,
                                                      const BAS_StringMMPattern *point, const BAS_StringMMPattern *,
                                                      const BAS_StringMMPattern *detail) const
{
    bool changed = false;
    const RQ_AttributeListHandle points = mergeAttributeLists(changed, points_, source.getPointAttributes(), point, nullptr);
    const RQ_AttributeListHandle whole =
        mergeAttributeLists(changed, detail_, source.getDetailAttributes(), detail, nullptr);
    if (!changed)
        return const_cast<RQ_PrimPointMesh *>(this);
    const RQ_PointMeshHandle copy(new RQ_PrimPointMesh(*this));
    copy->init(points, whole);
    return copy;
}
