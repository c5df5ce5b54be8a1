#include <rq/data/DAConstant.h>

#include <algorithm>
#include <vector>

#include <rq/data/DASubArray.h>
#include <rq/data/detail/TypedArrayImpl.h>
#include <rq/data/detail/repeatRow.h>

void RQ_DAConstant::init(const RQ_DataArrayHandle &source, int64_t index, int64_t size)
{
    setSource(source);
    index_ = index;
    size_ = source ? std::max<int64_t>(0, size) : 0;
}

RQ_DataArrayHandle RQ_DAConstant::createConstant(const RQ_DataArrayHandle &source, int64_t index, int64_t size)
{
    if (!source)
        return {};
    const auto *constant = dynamic_cast<const RQ_DAConstant *>(source.get());
    if (constant && constant->index_ == index && constant->size_ == size)
        return source;
    if (index == 0 && size == 1 && source->entries() == 1)
        return source;
    if (size > 0 && (index < 0 || index >= source->entries()))
        return {};
    const BAS_IntrusivePtr<RQ_DAConstant> result(new RQ_DAConstant);
    result->init(source, index, size);
    return result;
}

const char *RQ_DAConstant::className() const { return "RQ_DAConstant"; }

template <RQ_NumericValue T> T RQ_DAConstant::valueAs(int64_t, int component) const
{
    return source_->getValue<T>(index_, component);
}

template <RQ_NumericValue T> void RQ_DAConstant::fillBlock(T *out, int64_t, int64_t length, int components, int stride) const
{
    source_->fillArray(out, index_, 1, components, components);
    rq::repeatRow(out, length, components, stride);
}

bool RQ_DAConstant::computeMinMax(double *min, double *max) const
{
    if (size_ > 0 && hasArrayEntries())
        return RQ_DASubArray::createSubArray(source_, index_, 1)->getMinMax(min, max);
    std::vector<double> row(static_cast<size_t>(getTupleSize()));
    if (size_ > 0)
        source_->fillArray(row.data(), index_, 1);
    for (size_t c = 0; c < row.size() && size_ > 0; ++c)
        if (row[c] == row[c])
            min[c] = max[c] = row[c];
    return true;
}

template class RQ_TypedArray<RQ_DAConstant, RQ_DAInherit>;
