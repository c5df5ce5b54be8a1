#include <rq/surface/PrimQuadric.h>

#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/surface/detail/lists.h>

RQ_PrimQuadric::~RQ_PrimQuadric() = default;

bool RQ_PrimQuadric::init(const RQ_AttributeListHandle &attributes, const RQ_TransformHandle &transform,
                          const RQ_Parametric &range)
{
    if (!range.isFinite())
        return false;
    attributes_ = attributes;
    range_ = range;
    setPrimitiveTransform(transform ? transform : RQ_Transform::identity());
    dropDataIdHash();
    return true;
}

bool RQ_PrimQuadric::split(double RQ_Parametric::*begin, double RQ_Parametric::*end, double at, RQ_QuadricHandle &low,
                           RQ_QuadricHandle &high) const
{
    if (!(at > 0.0 && at < 1.0))
        return false;
    RQ_Parametric below = range_, above = range_;
    below.*end = above.*begin = range_.*begin + (range_.*end - range_.*begin) * at;
    low = clone(below);
    high = clone(above);
    return true;
}

bool RQ_PrimQuadric::splitU(RQ_QuadricHandle &low, RQ_QuadricHandle &high, double at) const
{
    return split(&RQ_Parametric::umin, &RQ_Parametric::umax, at, low, high);
}

bool RQ_PrimQuadric::splitV(RQ_QuadricHandle &low, RQ_QuadricHandle &high, double at) const
{
    return split(&RQ_Parametric::vmin, &RQ_Parametric::vmax, at, low, high);
}

RQ_QuadricHandle RQ_PrimQuadric::clone(const RQ_Parametric &range) const
{
    const RQ_QuadricHandle copy(static_cast<RQ_PrimQuadric *>(doSoftCopy().get()));
    copy->range_ = range.isFinite() ? range : range_;
    return copy;
}

int RQ_PrimQuadric::getMotionSegments() const { return rq::motionSegments(*this, {&attributes_}); }

int64_t RQ_PrimQuadric::getMemoryUsage() const { return int64_t(sizeof(*this)) + rq::memoryUsage({&attributes_}); }

RQ_PrimitiveHandle RQ_PrimQuadric::doHarden() const
{
    const RQ_QuadricHandle copy = clone(range_);
    rq::hardenLists({&copy->attributes_});
    copy->dropDataIdHash();
    return copy;
}

bool RQ_PrimQuadric::saveShape(BAS_JSONWriter &) const { return true; }

bool RQ_PrimQuadric::save(BAS_JSONWriter &writer) const { return saveQuadric(writer, RQprimitiveType(getPrimitiveType())); }

bool RQ_PrimQuadric::saveQuadric(BAS_JSONWriter &writer, const char *typeName) const
{
    const jsonWriter record(writer, typeName);
    const double range[] = {range_.umin, range_.umax, range_.vmin, range_.vmax};
    return saveShape(*record) && record->uniformArray(range, 4) && saveAttributeLists(*record);
}
