#include <rq/data/DASubArray.h>

#include <typeinfo>

#include <rq/data/detail/TypedArrayImpl.h>

RQ_DASubArray::RQ_DASubArray(const RQ_DataArrayHandle &source, int64_t first, int64_t length)
    : RQ_TypedArray(source), first_(first), length_(length)
{}

RQ_DataArrayHandle RQ_DASubArray::createSubArray(const RQ_DataArrayHandle &source, int64_t first, int64_t length)
{
    if (!source || first < 0 || length < 0 || length > source->entries() || first > source->entries() - length)
        return {};
    if (length == source->entries())
        return source;
    // The class has no descendants; a cast would compare names all the way up, for every face of a mesh.
    const RQ_DataArray &array = *source;
    if (typeid(array) == typeid(RQ_DASubArray))
    {
        const auto &window = static_cast<const RQ_DASubArray &>(array);
        return RQ_DataArrayHandle(new RQ_DASubArray(window.source_, window.first_ + first, length));
    }
    return RQ_DataArrayHandle(new RQ_DASubArray(source, first, length));
}

const char *RQ_DASubArray::className() const { return "RQ_DASubArray"; }

const void *RQ_DASubArray::getBackingData() const
{
    const void *values = source_->getBackingData();
    return values ? static_cast<const char *>(values) + first_ * getTupleSize() * RQsizeof(getStorage()) : nullptr;
}

template <RQ_NumericValue T> T RQ_DASubArray::valueAs(int64_t offset, int component) const
{
    return source_->getValue<T>(first_ + offset, component);
}

template <RQ_NumericValue T>
void RQ_DASubArray::fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const
{
    source_->fillArray(out, first_ + start, length, components, stride);
}

template class RQ_TypedArray<RQ_DASubArray, RQ_DAInherit>;
