#include <rq/data/DARandom.h>

#include <cmath>

#include <rq/data/convert.h>
#include <rq/data/detail/TypedArrayImpl.h>

namespace
{
// The golden ratio of 2^64: multiples of it visit all of 64 bits evenly.
constexpr uint64_t kStep = 0x9e3779b97f4a7c15u;

/// Scatter a counter over all bits: two rounds of multiplication and shifting, as good random generators end with.
constexpr uint64_t scatter(uint64_t bits)
{
    bits = (bits ^ (bits >> 30)) * 0xbf58476d1ce4e5b9u;
    bits = (bits ^ (bits >> 27)) * 0x94d049bb133111ebu;
    return bits ^ (bits >> 31);
}

/// The greatest value below a bound.
template <class T> T below(T bound)
{
    if constexpr (std::is_integral_v<T>)
        return bound;
    else if constexpr (std::same_as<T, PLT_Half>)
    {
        const float value = bound;
        PLT_Half result;
        result.setBits(uint16_t(value > 0.0f ? bound.bits() - 1 : value < 0.0f ? bound.bits() + 1 : 0x8001));
        return result;
    }
    else
        return std::nextafter(bound, -std::numeric_limits<T>::infinity());
}
}  // namespace

template <RQ_NumericValue T>
RQ_DARandom<T>::RQ_DARandom(int64_t size, uint64_t seed, T low, T high, int64_t tupleSize, RQ_Type type)
    : state_(scatter(seed + kStep)), span_(1), size_(std::max<int64_t>(0, size)),
      tupleSize_(std::max<int64_t>(0, tupleSize)), low_(low), high_(low), last_(low), type_(type)
{
    if (!(Drawn(low) < Drawn(high)))
        return;
    high_ = Drawn(high);
    last_ = Drawn(below(high));
    if constexpr (std::is_integral_v<T>)
        span_ = uint64_t(high) - uint64_t(low) + 1;
}

template <RQ_NumericValue T> const char *RQ_DARandom<T>::className() const { return "RQ_DARandom"; }

template <RQ_NumericValue T> uint64_t RQ_DARandom<T>::hashOf(uint64_t place) const
{
    return scatter(state_ + place * kStep);
}

/// The value that stands for 64 random bits, or for the upper 32 where the storage has no more.
template <RQ_NumericValue T> typename RQ_DARandom<T>::Drawn RQ_DARandom<T>::valueOf(uint64_t bits) const
{
    if constexpr (std::same_as<T, int64_t>)
    {
        __extension__ using Wide = unsigned __int128;
        return int64_t(uint64_t(low_) + (span_ ? uint64_t((Wide(bits) * span_) >> 64) : bits));
    }
    else if constexpr (std::is_integral_v<T>)
        return T(int64_t(low_) + int64_t((bits >> 32) * span_ >> 32));
    else
    {
        constexpr int kDigits = std::numeric_limits<Drawn>::digits;
        constexpr Drawn kUnit = Drawn(1) / Drawn(uint64_t(1) << kDigits);
        const Drawn t = Drawn(int64_t(bits >> (64 - kDigits))) * kUnit;
        return std::min(std::max(low_ * (Drawn(1) - t) + high_ * t, low_), last_);
    }
}

template <RQ_NumericValue T> typename RQ_DARandom<T>::Drawn RQ_DARandom<T>::draw(uint64_t place) const
{
    // Narrow values share a hash between two.
    if constexpr (sizeof(Drawn) <= 4)
        return valueOf(hashOf(place >> 1) << (place & 1 ? 32 : 0));
    else
        return valueOf(hashOf(place));
}

template <RQ_NumericValue T> void RQ_DARandom<T>::drawRun(Drawn *out, uint64_t first, int64_t count) const
{
    int64_t i = 0;
    if constexpr (sizeof(Drawn) <= 4)
    {
        if (count > 0 && (first & 1))
            out[i++] = draw(first);
        for (; i + 2 <= count; i += 2)
        {
            const uint64_t bits = hashOf((first + uint64_t(i)) >> 1);
            out[i] = valueOf(bits);
            out[i + 1] = valueOf(bits << 32);
        }
    }
    for (; i < count; ++i)
        out[i] = draw(first + uint64_t(i));
}

template <RQ_NumericValue T> template <class To> void RQ_DARandom<T>::fillRun(To *out, uint64_t first, int64_t count) const
{
    if constexpr (std::same_as<To, T> && std::same_as<T, Drawn>)
        return drawRun(out, first, count);
    Drawn drawn[rq::kBlockEntries];
    T rounded[rq::kBlockEntries];
    for (int64_t i = 0; i < count; i += rq::kBlockEntries)
    {
        const int64_t length = std::min(count - i, rq::kBlockEntries);
        drawRun(drawn, first + uint64_t(i), length);
        rq::convertValues(drawn, RQstorageOf<Drawn>, rounded, RQstorageOf<T>, length);
        rq::convertValues(rounded, RQstorageOf<T>, out + i, RQstorageOf<To>, length);
    }
}

template <RQ_NumericValue T> template <RQ_NumericValue To> To RQ_DARandom<T>::valueAs(int64_t offset, int component) const
{
    return RQconvert<To>(T(draw(uint64_t(offset * tupleSize_ + component))));
}

template <RQ_NumericValue T>
template <RQ_NumericValue To>
void RQ_DARandom<T>::fillBlock(To *out, int64_t start, int64_t length, int components, int stride) const
{
    if (components == tupleSize_ && components == stride)
        return fillRun(out, uint64_t(start * tupleSize_), length * components);
    for (int64_t i = 0; i < length; ++i)
        fillRun(out + i * stride, uint64_t((start + i) * tupleSize_), components);
}

#define RQ_INSTANTIATE(T, NAME, ARRAY)                                                                                      \
    template class RQ_TypedArray<RQ_DARandom<T>, RQ_DANumbers>;                                                             \
    template class RQ_DARandom<T>;
RQ_NUMERIC_TYPES(RQ_INSTANTIATE)
