#include <rq/data/DAParametric.h>

#include <algorithm>
#include <limits>

#include <rq/data/convert.h>
#include <rq/data/detail/TypedArrayImpl.h>

RQ_DAParametric::RQ_DAParametric(const Samples &u, const Samples &v, RQ_Type type) : u_(u), v_(v), type_(type)
{
    u_.count = std::max<int64_t>(0, u.count);
    v_.count = std::max<int64_t>(0, v.count);
    if (__builtin_mul_overflow(u_.count, v_.count, &entries_))
        entries_ = std::numeric_limits<int64_t>::max();
}

RQ_DAParametric::RQ_DAParametric(const Samples &u, RQ_Type type) : RQ_DAParametric(u, {1, 0.0, 0.0}, type) {}

const char *RQ_DAParametric::className() const { return "RQ_DAParametric"; }

template <RQ_NumericValue T> T RQ_DAParametric::valueAs(int64_t offset, int component) const
{
    return RQconvert<T>(component == 0 ? u_.at(offset % u_.count) : v_.at(offset / u_.count));
}

template <RQ_NumericValue T>
void RQ_DAParametric::fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const
{
    int64_t column = start % u_.count, row = start / u_.count;
    while (length > 0)
    {
        const int64_t run = std::min(length, u_.count - column);
        const T v = RQconvert<T>(v_.at(row));
        for (int64_t i = 0; i < run; ++i, out += stride)
        {
            out[0] = RQconvert<T>(u_.at(column + i));
            if (components > 1)
                out[1] = v;
        }
        length -= run;
        column = 0;
        ++row;
    }
}

template class RQ_TypedArray<RQ_DAParametric, RQ_DANumbers>;
