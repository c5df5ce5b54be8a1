#include <rq/data/DARange.h>

#include <algorithm>
#include <limits>
#include <type_traits>

#include <host/bas/stream.h>
#include <rq/data/convert.h>
#include <rq/data/detail/TypedArrayImpl.h>
#include <host/bas/clones.h>

namespace
{
template <class T, class Integer> HOST_CLONES void fillSequence(T *out, Integer first, Integer step, int64_t length)
{
    // Unsigned, because the step behind the last value may wrap around.
    using Unsigned = std::make_unsigned_t<Integer>;
    Unsigned value = Unsigned(first);
    for (int64_t i = 0; i < length; ++i, value += Unsigned(step))
        out[i] = RQconvert<T>(Integer(value));
}
}  // namespace

RQ_DARange::RQ_DARange(RQ_Type type) : type_(type) {}
RQ_DARange::RQ_DARange(int64_t end, RQ_Type type) : end_(end), type_(type) {}
RQ_DARange::RQ_DARange(int64_t start, int64_t end, RQ_Type type) : start_(start), end_(end), type_(type) {}
RQ_DARange::RQ_DARange(int64_t start, int64_t end, int64_t step, RQ_Type type)
    : start_(start), end_(end), step_(step == 0 ? 1 : step), type_(type)
{}

const char *RQ_DARange::className() const { return "RQ_DARange"; }

RQ_Storage RQ_DARange::getStorage() const
{
    // Deliberately narrower than 32 bits.
    constexpr int64_t kLimit = 134217727;  // 2^27 - 1
    const bool fits = std::min(start_, end_) >= -kLimit && std::max(start_, end_) <= kLimit;
    return fits ? RQ_STORAGE_INT32 : RQ_STORAGE_INT64;
}

int64_t RQ_DARange::entries() const
{
    // The difference of two 64-bit integers needs 65 bits; the division by far the most common step is spared.
    __extension__ using Wide = __int128;
    const Wide span = Wide(end_) - start_;
    const Wide count = step_ == 1 ? span : (span + step_ + (step_ < 1 ? 1 : -1)) / step_;
    return int64_t(std::clamp<Wide>(count, 0, std::numeric_limits<int64_t>::max()));
}

template <RQ_NumericValue T> T RQ_DARange::valueAs(int64_t offset, int) const
{
    // Entries past the end may wrap around, which only unsigned arithmetic allows.
    return RQconvert<T>(int64_t(uint64_t(start_) + uint64_t(offset) * uint64_t(step_)));
}

template <RQ_NumericValue T> void RQ_DARange::fillBlock(T *out, int64_t start, int64_t length, int, int stride) const
{
    if (stride == 1 && start >= 0 && start + length <= entries())
    {
        // All values lie between start and end, so the arithmetic of the storage does.
        const bool narrow = getStorage() == RQ_STORAGE_INT32;
        return host::writeBlocks(out, length, [&](T *to, int64_t first, int64_t count) {
            if (narrow)
                fillSequence(to, valueAs<int32_t>(start + first, 0), int32_t(step_), count);
            else
                fillSequence(to, valueAs<int64_t>(start + first, 0), step_, count);
        });
    }
    for (int64_t i = 0; i < length; ++i)
        out[i * stride] = valueAs<T>(start + i, 0);
}

bool RQ_DARange::computeMinMax(double *min, double *max) const
{
    int64_t low, high;
    getRange(low, high);
    if (low <= high)
    {
        *min = double(low);
        *max = double(high);
    }
    return true;
}

void RQ_DARange::getRange(double &min, double &max, int) const { RQ_DataArray::getRange(min, max, 0); }

void RQ_DARange::getRange(int64_t &min, int64_t &max, int) const
{
    const int64_t count = entries();
    min = count ? std::min(start_, valueAs<int64_t>(count - 1, 0)) : std::numeric_limits<int64_t>::max();
    max = count ? std::max(start_, valueAs<int64_t>(count - 1, 0)) : std::numeric_limits<int64_t>::min();
}

static_assert(sizeof(RQ_DARange) == 56, "the memory usage is part of the interface");

template class RQ_TypedArray<RQ_DARange, RQ_DANumbers>;
