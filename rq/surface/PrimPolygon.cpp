#include <rq/surface/PrimPolygon.h>

#include <optional>
#include <utility>

#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/surface/Convexer.h>
#include <rq/surface/PrimPolygonMesh.h>
#include <rq/surface/detail/lists.h>

RQ_PrimPolygon::RQ_PrimPolygon() = default;

RQ_PrimPolygon::RQ_PrimPolygon(RQ_AttributeListHandle vertex, RQ_AttributeListHandle uniform)
    : vertex_(std::move(vertex)), uniform_(std::move(uniform))
{}

RQ_PrimPolygon::RQ_PrimPolygon(const RQ_PrimPolygon &other) = default;
RQ_PrimPolygon::~RQ_PrimPolygon() = default;

void RQ_PrimPolygon::init(const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform)
{
    vertex_ = vertex;
    uniform_ = uniform;
    dropDataIdHash();
}

int64_t RQ_PrimPolygon::getVertexCount() const { return rq::entriesOf(vertex_); }

RQ_DataArrayHandle RQ_PrimPolygon::positions(int segment) const
{
    static const BAS_StringHolder kPositions = BAS_StringHolder::literal("P");
    return vertex_ ? vertex_->get(kPositions, segment) : nullptr;
}

RQ_PrimitiveHandle RQ_PrimPolygon::convex(int maxVertices) const
{
    RQ_PrimPolygon *self = const_cast<RQ_PrimPolygon *>(this);
    const RQ_DataArrayHandle corners = positions(0);
    const int64_t count = corners ? corners->entries() : 0;
    if (count < 3)
        return {};
    if (count == 3)
        return self;

    RQ_Convexer convexer;
    convexer.processFace(corners, count, 0, {}, maxVertices, false);
    if (convexer.getFaceCount() == 0)
        return {};
    const int64_t *piece = convexer.getVertexList(0);
    bool whole = convexer.getFaceCount() == 1 && convexer.getVertexCount(0) == count;
    for (int64_t i = 0; whole && i < count; ++i)
        whole = piece[i] == i;
    if (whole)
        return self;

    const RQ_DataArrayHandle order = convexer.getPolyMeshVertexList();
    RQ_PrimitiveHandle result;
    if (convexer.getFaceCount() == 1)
        result = new RQ_PrimPolygon(vertex_->createIndirect(order), uniform_);
    else
        result = new RQ_PrimPolygonMesh(convexer.getPolyMeshFaceList(), order, vertex_, {}, {}, uniform_);
    result->refineCopyTransformFrom(*this);
    if (isFrameInfoAvailable())
        result->setStaticGeometry(isStaticGeometry());
    return result;
}

const char *RQ_PrimPolygon::className() const { return "RQ_PrimPolygon"; }
int RQ_PrimPolygon::getPrimitiveType() const { return RQ_PRIM_POLYGON; }
void RQ_PrimPolygon::enlargeBounds(BAS_BoundingBox *boxes, int segments) const { enlargeP(boxes, segments, vertex_); }

int RQ_PrimPolygon::getMotionSegments() const { return rq::motionSegments(*this, {&vertex_, &uniform_}); }

int64_t RQ_PrimPolygon::getMemoryUsage() const { return int64_t(sizeof(*this)) + rq::memoryUsage({&vertex_, &uniform_}); }

bool RQ_PrimPolygon::save(BAS_JSONWriter &writer) const
{
    const jsonWriter record(writer, RQprimitiveType(RQ_PRIM_POLYGON));
    return saveAttributeLists(*record);
}

namespace
{
// The transform of a segment, where there is one that moves something.
std::optional<BAS_Mat4d> placement(const RQ_Primitive &primitive, int segment)
{
    const RQ_TransformHandle &transform = primitive.getPrimitiveTransform();
    if (!transform || transform->isIdentity())
        return {};
    BAS_Mat4d matrix;
    transform->getMatrix(matrix, segment);
    return matrix;
}
}  // namespace

double RQ_PrimPolygon::computePerimeter(int segment) const
{
    const std::optional<BAS_Mat4d> placed = placement(*this, segment);
    return facePerimeter(positions(segment), placed ? &*placed : nullptr);
}

double RQ_PrimPolygon::computeSurfaceArea(int segment) const
{
    const std::optional<BAS_Mat4d> placed = placement(*this, segment);
    return faceSurfaceArea(positions(segment), placed ? &*placed : nullptr);
}

double RQ_PrimPolygon::computeVolume(const BAS_Vec3f &reference, int segment) const
{
    const std::optional<BAS_Mat4d> placed = placement(*this, segment);
    return faceVolume(reference, positions(segment), placed ? &*placed : nullptr);
}

RQ_PrimitiveHandle RQ_PrimPolygon::doHarden() const
{
    const RQ_PolygonHandle copy(new RQ_PrimPolygon(*this));
    rq::hardenLists({&copy->vertex_, &copy->uniform_});
    copy->dropDataIdHash();
    return copy;
}

RQ_PrimitiveHandle RQ_PrimPolygon::doSoftCopy() const { return new RQ_PrimPolygon(*this); }

RQ_PrimitiveHandle RQ_PrimPolygon::doAttributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *vertex,
                                                    const BAS_StringMMPattern *point, const BAS_StringMMPattern *uniform,
                                                    const BAS_StringMMPattern *detail) const
{
    bool changed = false;
    const RQ_AttributeListHandle corners =
        mergeAttributeLists(changed, vertex_, source.getVertexAttributes(), vertex, point);
    const RQ_AttributeListHandle whole =
        mergeAttributeLists(changed, uniform_, source.getUniformAttributes(), uniform, detail);
    if (!changed)
        return const_cast<RQ_PrimPolygon *>(this);
    const RQ_PolygonHandle copy(new RQ_PrimPolygon(*this));
    copy->init(corners, whole);
    return copy;
}
