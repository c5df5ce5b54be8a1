#include <rq/surface/PrimQuadricMesh.h>

#include <algorithm>

#include <host/bas/Parallel.h>
#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/prim/detail/enlargeInBlocks.h>
#include <rq/surface/detail/levelOptions.h>
#include <rq/surface/detail/lists.h>

namespace
{
// The box of a quadric costs 40 ns: a task is 40 us of work.
constexpr int64_t kBoxesPerTask = 1024;

// Making a quadric costs 160 ns: a task is 40 us of work before the sink.
constexpr int64_t kQuadricsPerTask = 256;
}  // namespace

RQ_PrimQuadricMesh::~RQ_PrimQuadricMesh() = default;

bool RQ_PrimQuadricMesh::init(const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &detail,
                              const RQ_TransformArrayHandle &transforms)
{
    if (!transforms)
        return false;
    vertex_ = vertex;
    detail_ = detail;
    transforms_ = transforms;
    dropDataIdHash();
    return true;
}

RQ_TransformHandle RQ_PrimQuadricMesh::getTransform(int64_t quadric) const
{
    return transforms_ ? transforms_->get(quadric) : RQ_TransformHandle();
}

RQ_TransformHandle RQ_PrimQuadricMesh::placementOf(int64_t quadric) const
{
    const RQ_TransformHandle own = getTransform(quadric), &base = getBaseTransform();
    return own && base ? own->multiply(base) : own ? own : base;
}

RQ_AttributeListHandle RQ_PrimQuadricMesh::attributesOf(int64_t quadric) const
{
    const RQ_AttributeListHandle own = vertex_ ? vertex_->createSubArray(quadric, 1) : nullptr;
    return own ? own->mergeNewAttributes(detail_) : detail_;
}

void RQ_PrimQuadricMesh::enlargeBounds(BAS_BoundingBox *boxes, int segments) const
{
    for (int segment = 0; segment < segments; ++segment)
    {
        BAS_Mat4d base;
        const bool moves = getBaseTransform() && !getBaseTransform()->isIdentity();
        if (moves)
            getBaseTransform()->getMatrix(base, segment);
        const auto enlarge = [&](BAS_BoundingBox *part, int64_t begin, int64_t end) {
            for (int64_t i = begin; i < end; ++i)
            {
                BAS_Mat4d matrix;
                transforms_->getMatrix(matrix, i, segment);
                enlargeByShape(*part, moves ? matrix * base : matrix);
            }
        };
        rq::enlargeInBlocks(boxes + segment, 1, getQuadricCount(), kBoxesPerTask, enlarge);
    }
}

const RQ_ViewportRefineOptions &RQ_PrimQuadricMesh::viewportRefineOptions() const { return rq::levelRefineOptions(); }

bool RQ_PrimQuadricMesh::refine(RQ_Refine &sink, const RQ_RefineParms *) const
{
    const int64_t count = getQuadricCount();
    const auto handOver = [&](int64_t begin, int64_t end) {
        for (int64_t i = begin; i < end; ++i)
            sink.addPrimitive(makeQuadric(i));
    };
    if (sink.allowThreading())
        host::parallelForRange(count, kQuadricsPerTask, handOver);
    else
        handOver(0, count);
    return count > 0;
}

int RQ_PrimQuadricMesh::getMotionSegments() const
{
    return std::max(rq::motionSegments(*this, {&vertex_, &detail_}), transforms_ ? transforms_->getMotionSegments() : 1);
}

int64_t RQ_PrimQuadricMesh::getMemoryUsage() const
{
    return int64_t(sizeof(*this)) + (transforms_ ? transforms_->getMemoryUsage() : 0) +
           rq::memoryUsage({&vertex_, &detail_});
}

RQ_PrimitiveHandle RQ_PrimQuadricMesh::doHarden() const
{
    // Transforms own their matrices already.
    const BAS_IntrusivePtr<RQ_PrimQuadricMesh> copy(static_cast<RQ_PrimQuadricMesh *>(doSoftCopy().get()));
    rq::hardenLists({&copy->vertex_, &copy->detail_});
    copy->dropDataIdHash();
    return copy;
}

bool RQ_PrimQuadricMesh::saveShape(BAS_JSONWriter &) const { return true; }

bool RQ_PrimQuadricMesh::save(BAS_JSONWriter &writer) const
{
    return saveQuadricMesh(writer, RQprimitiveType(getPrimitiveType()));
}

bool RQ_PrimQuadricMesh::saveQuadricMesh(BAS_JSONWriter &writer, const char *typeName) const
{
    const jsonWriter record(writer, typeName);
    const bool placed = saveShape(*record) && (transforms_ ? transforms_->save(*record) : record->writeNull());
    return placed && saveAttributeLists(*record);
}
