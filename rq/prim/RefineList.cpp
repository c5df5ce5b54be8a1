#include <rq/prim/RefineList.h>

#include <cassert>

RQ_RefineList::RQ_RefineList() : sink_(*this) {}

// The sink of a copy belongs to the copy.
RQ_RefineList::RQ_RefineList(const RQ_RefineList &other) : sink_(*this), primitives_(other.primitives_) {}

RQ_RefineList &RQ_RefineList::operator=(const RQ_RefineList &other)
{
    primitives_ = other.primitives_;
    return *this;
}

RQ_RefineList::~RQ_RefineList() = default;

void RQ_RefineList::refiner::addPrimitive(const RQ_PrimitiveHandle &primitive)
{
    const std::lock_guard lock(mutex_);
    list_->primitives_.push_back(primitive);
}

bool RQ_RefineList::refine(const RQ_Primitive *primitive, const RQ_RefineParms *parms)
{
    return primitive && primitive->refine(sink_, parms);
}

const RQ_PrimitiveHandle &RQ_RefineList::getPrimitive(int index) const
{
    assert(index >= 0 && index < entries());
    return primitives_[size_t(index)];
}

void RQ_RefineList::clear() { BAS_Array<RQ_PrimitiveHandle>().swap(primitives_); }

RQ_RefineList::iterator RQ_RefineList::begin() const { return iterator(*this); }
