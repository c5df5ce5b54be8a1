#include <rq/prim/Primitive.h>

#include <algorithm>
#include <cstdio>
#include <initializer_list>

#include <rq/data/mixId.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/prim/ViewportRefineOptions.h>

namespace
{
constexpr uint32_t kSegmentMask = 0x3FFFFFFFu;
constexpr int kStaticShift = 30;

// What lookups without a result answer by reference.
const RQ_AttributeListHandle &noList()
{
    static const RQ_AttributeListHandle none;
    return none;
}

const RQ_DataArrayHandle &noArray()
{
    static const RQ_DataArrayHandle none;
    return none;
}

// Replace the bits of `mask`, leaving the others to whoever else changes them.
void setBits(std::atomic<uint32_t> &word, uint32_t mask, uint32_t bits, std::memory_order order)
{
    uint32_t old = word.load(std::memory_order_relaxed);
    while (!word.compare_exchange_weak(old, (old & ~mask) | (bits & mask), order, std::memory_order_relaxed))
    {}
}
}  // namespace

RQ_Primitive::RQ_Primitive() : transform_(RQ_Transform::identity()) {}

RQ_Primitive::RQ_Primitive(const RQ_Primitive &other) : BAS_IntrusiveRefCounter<RQ_Primitive>(other) { *this = other; }

RQ_Primitive &RQ_Primitive::operator=(const RQ_Primitive &other)
{
    // The segment first: whoever sees it sees the hash that goes with it.
    const uint32_t state = other.state_.load(std::memory_order_acquire);
    dataIdHash_.store(other.dataIdHash_.load(std::memory_order_relaxed), std::memory_order_relaxed);
    state_.store(state, std::memory_order_release);
    transform_ = other.transform_;
    return *this;
}

RQ_Primitive::~RQ_Primitive() = default;

int RQ_Primitive::cachedSegment() const
{
    // Shifting up and down again extends the sign of the 30-bit field.
    return int(int32_t(state_.load(std::memory_order_acquire) << 2) >> 2);
}

void RQ_Primitive::dropDataIdHash() { setBits(state_, kSegmentMask, kSegmentMask, std::memory_order_relaxed); }

void RQ_Primitive::setStaticGeometry(bool isStatic)
{
    setBits(state_, ~kSegmentMask, uint32_t(isStatic) << kStaticShift, std::memory_order_relaxed);
}

bool RQ_Primitive::getDataIdHash(uint64_t &hash, int segment, bool cache) const
{
    segment = std::max(segment, 0);
    if (cachedSegment() == segment)
    {
        hash = dataIdHash_.load(std::memory_order_relaxed);
        return true;
    }

    hash = 0;
    const RQ_AttributeListHandle &detail = getDetailAttributes();
    if (detail && !detail->getDataIdHash(hash, segment))
        return false;
    for (const RQ_Owner owner : {RQ_OWNER_UNIFORM, RQ_OWNER_POINT, RQ_OWNER_VERTEX})
    {
        const RQ_AttributeListHandle &list = getAttributeList(owner);
        uint64_t own = 0;
        if (list && !list->getDataIdHash(own, segment))
            return false;
        if (list)
            hash = RQmixId(hash) + own;
    }

    // A segment beyond the signed field would be read back as another one.
    if (cache && segment <= int(kSegmentMask >> 1))
    {
        dataIdHash_.store(hash, std::memory_order_relaxed);
        setBits(state_, kSegmentMask, uint32_t(segment), std::memory_order_release);
    }
    return true;
}

int RQ_Primitive::getPrimitiveType() const { return RQ_PRIM_UNDEFINED; }

bool RQ_Primitive::getUniqueID(int64_t &) const { return false; }

void RQ_Primitive::enlargeRenderBounds(BAS_BoundingBox *boxes, int segments) const { enlargeBounds(boxes, segments); }

bool RQ_Primitive::refine(RQ_Refine &, const RQ_RefineParms *) const { return false; }

const RQ_AttributeListHandle &RQ_Primitive::getPointAttributes() const { return noList(); }

const RQ_AttributeListHandle &RQ_Primitive::getVertexAttributes() const { return noList(); }

const RQ_AttributeListHandle &RQ_Primitive::getUniformAttributes() const { return noList(); }

const RQ_AttributeListHandle &RQ_Primitive::getDetailAttributes() const { return noList(); }

const RQ_ViewportRefineOptions &RQ_Primitive::viewportRefineOptions() const
{
    static const RQ_ViewportRefineOptions options;
    return options;
}

const RQ_DataArrayHandle &RQ_Primitive::getVertexList() const { return noArray(); }

RQ_DataArrayHandle RQ_Primitive::createPointNormals(int, const char *, bool, const float *, RQ_Storage) const { return {}; }

RQ_PrimitiveHandle RQ_Primitive::doHarden() const
{
    std::fprintf(stderr, "%s\n", className());
    return {};
}

RQ_PrimitiveHandle RQ_Primitive::doAttributeMerge(const RQ_Primitive &, const BAS_StringMMPattern *,
                                                  const BAS_StringMMPattern *, const BAS_StringMMPattern *,
                                                  const BAS_StringMMPattern *) const
{
    return RQ_PrimitiveHandle(const_cast<RQ_Primitive *>(this));
}

RQ_PrimitiveHandle RQ_Primitive::attributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *vertex,
                                                const BAS_StringMMPattern *point, const BAS_StringMMPattern *uniform,
                                                const BAS_StringMMPattern *detail) const
{
    return doAttributeMerge(source, vertex, point, uniform, detail);
}

RQ_PrimitiveHandle RQ_Primitive::copyTransformed(const RQ_TransformHandle &transform, bool force) const
{
    const bool unchanged = transform ? transform->isIdentity() : !transform_;
    // Primitives are never edited once shared, so a handle to this very one is as good as a copy.
    if (unchanged && !force)
        return RQ_PrimitiveHandle(const_cast<RQ_Primitive *>(this));

    const RQ_PrimitiveHandle copy = doSoftCopy();
    if (copy && transform)
        copy->transform_ = copy->transform_ ? copy->transform_->multiply(transform) : transform;
    return copy;
}

void RQ_Primitive::refineCopyTransformFrom(const RQ_Primitive &source)
{
    if (!transform_ || transform_->isIdentity())
        transform_ = source.transform_;
    else if (source.transform_)
        transform_ = transform_->multiply(source.transform_);
}
