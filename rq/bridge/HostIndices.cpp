#include <rq/bridge/detail/HostIndices.h>

#include <rq/data/convert.h>
#include <rq/data/detail/TypedArrayImpl.h>

const char *rq::HostIndices::className() const { return "RQ_MSHVertexPoints"; }

template <RQ_NumericValue T> T rq::HostIndices::valueAs(int64_t offset, int) const { return RQconvert<T>(values_[offset]); }

template <RQ_NumericValue T>
void rq::HostIndices::fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const
{
    rq::convertRows(values_ + start, RQ_STORAGE_INT32, 1, out, RQstorageOf<T>, stride, components, length);
}

template class RQ_TypedArray<rq::HostIndices, RQ_DANumbers>;
