#include <rq/surface/PrimPointMesh.h>

#include <algorithm>
#include <vector>

#include <host/bas/JSONWriter.h>
#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/PrimitiveType.h>

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

int64_t RQ_PrimPointMesh::getPointCount() const
{
    return points_ && points_->entries() > 0 && points_->get(0, 0) ? points_->get(0, 0)->entries() : 0;
}

const char *RQ_PrimPointMesh::className() const { return "RQ_PrimPointMesh"; }
int RQ_PrimPointMesh::getPrimitiveType() const { return RQ_PRIM_POINT_MESH; }

void RQ_PrimPointMesh::enlargeBounds(BAS_BoundingBox *boxes, int segments) const
{
    // Widths move the sides of this cloud's box, not of what the caller's boxes hold already.
    std::vector<BAS_BoundingBox> own(size_t(std::max(segments, 0)));
    enlargeP(own.data(), segments, points_);
    const std::vector<BAS_BoundingBox> positions = own;
    enlargeWidth(own.data(), segments, 0.0f);
    for (int segment = 0; segment < segments; ++segment)
        if (!positions[size_t(segment)].isEmpty())
            boxes[segment].enlarge(own[size_t(segment)]);
}

int RQ_PrimPointMesh::getMotionSegments() const
{
    int segments = getPrimitiveTransform() ? std::max(1, getPrimitiveTransform()->getSegments()) : 1;
    for (const RQ_AttributeListHandle *list : {&points_, &detail_})
        if (*list)
            segments = std::max(segments, (*list)->getSegments());
    return segments;
}

int64_t RQ_PrimPointMesh::getMemoryUsage() const
{
    return int64_t(sizeof(*this)) + (points_ ? points_->getMemoryUsage() : 0) + (detail_ ? detail_->getMemoryUsage() : 0);
}

bool RQ_PrimPointMesh::save(BAS_JSONWriter &writer) const
{
    const jsonWriter record(writer, RQprimitiveType(RQ_PRIM_POINT_MESH));
    return saveAttributeLists(*record);
}

RQ_PrimitiveHandle RQ_PrimPointMesh::doHarden() const
{
    BAS_IntrusivePtr<RQ_PrimPointMesh> copy(new RQ_PrimPointMesh(*this));
    for (RQ_AttributeListHandle *list : {&copy->points_, &copy->detail_})
        if (*list)
        {
            *list = new RQ_AttributeList(**list);
            (*list)->harden();
        }
    copy->dropDataIdHash();
    return copy;
}

RQ_PrimitiveHandle RQ_PrimPointMesh::doSoftCopy() const { return new RQ_PrimPointMesh(*this); }
