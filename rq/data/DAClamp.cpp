#include <rq/data/DAClamp.h>

#include <algorithm>

#include <rq/data/DASubArray.h>
#include <rq/data/detail/TypedArrayImpl.h>
#include <rq/data/detail/repeatRow.h>

RQ_DAClamp::RQ_DAClamp(const RQ_DataArrayHandle &source, int64_t size)
    : RQ_TypedArray(source), last_(source->entries() - 1), size_(size)
{}

RQ_DataArrayHandle RQ_DAClamp::createClamp(const RQ_DataArrayHandle &source, int64_t size)
{
    if (!source)
        return {};
    size = std::max<int64_t>(0, size);
    if (size <= source->entries())
        return RQ_DASubArray::createSubArray(source, 0, size);
    if (source->entries() < 1)
        return {};
    if (const auto *inner = dynamic_cast<const RQ_DAClamp *>(source.get()))
        return RQ_DataArrayHandle(new RQ_DAClamp(inner->source_, size));
    return RQ_DataArrayHandle(new RQ_DAClamp(source, size));
}

const char *RQ_DAClamp::className() const { return "RQ_DAClamp"; }

void RQ_DAClamp::updateGeoDetail(const MOD_ConstDetailHandle &detail, const char *name, RQ_Owner owner, int segment)
{
    RQ_DAInherit::updateGeoDetail(detail, name, owner, segment);
    last_ = source_->entries() - 1;
}

template <RQ_NumericValue T> T RQ_DAClamp::valueAs(int64_t offset, int component) const
{
    return source_->getValue<T>(getIndirect(offset), component);
}

template <RQ_NumericValue T>
void RQ_DAClamp::fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const
{
    const int64_t inside = std::clamp<int64_t>(last_ + 1 - start, 0, length);
    if (inside > 0)
        source_->fillArray(out, start, inside, components, stride);
    if (inside == length)
        return;
    T *rest = out + inside * stride;
    source_->fillArray(rest, last_, 1, components, stride);
    rq::repeatRow(rest, length - inside, components, stride);
}

bool RQ_DAClamp::computeMinMax(double *min, double *max) const
{
    // Every entry of the source is shown, unless a newer one has grown past the view.
    return last_ < size_ ? source_->getMinMax(min, max) : RQ_TypedArray::computeMinMax(min, max);
}

template class RQ_TypedArray<RQ_DAClamp, RQ_DAInherit>;
