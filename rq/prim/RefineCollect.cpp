#include <rq/prim/RefineCollect.h>

RQ_RefineCollect::RQ_RefineCollect() : collect_(new RQ_PrimCollect) {}

RQ_RefineCollect::RQ_RefineCollect(const RQ_PrimitiveHandle &primitive)
    : collect_(dynamic_cast<RQ_PrimCollect *>(primitive.get()))
{
    if (!collect_)
        collect_ = new RQ_PrimCollect;
}

RQ_RefineCollect::RQ_RefineCollect(const RQ_RefineCollect &other) = default;
RQ_RefineCollect &RQ_RefineCollect::operator=(const RQ_RefineCollect &other) = default;
RQ_RefineCollect::~RQ_RefineCollect() = default;

void RQ_RefineCollect::addPrimitive(const RQ_PrimitiveHandle &primitive)
{
    if (primitive)
        collect_->appendPrimitive(primitive);
}

int64_t RQ_RefineCollect::entries() const { return collect_->entries(); }

RQ_PrimitiveHandle RQ_RefineCollect::getPrim(int64_t index) const { return collect_->getPrim(index); }

RQ_PrimitiveHandle RQ_RefineCollect::getPrim() const { return collect_; }

void RQ_RefineCollect::clear() { collect_->clear(); }
