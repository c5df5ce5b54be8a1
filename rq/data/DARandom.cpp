#include <rq/data/DARandom.h>

#include <algorithm>
#include <bit>
#include <cmath>

#include <host/bas/stream.h>
#include <rq/data/convert.h>
#include <rq/data/detail/TypedArrayImpl.h>
#include <host/bas/clones.h>

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

/// Scatter counters that are kStep apart.
HOST_CLONES void scatterRun(uint64_t *out, uint64_t counter, int64_t count)
{
    for (int64_t i = 0; i < count; ++i, counter += kStep)
        out[i] = scatter(counter);
}

/// Bits and values go in separate loops: both vectorise then.
template <class Bits, class Value, class Mapping>
HOST_CLONES void mapRun(const Bits *bits, Value *out, Mapping mapping, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
        out[i] = mapping(bits[i]);
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
    : state_(scatter(seed + kStep)), mapping_{Drawn(low), Drawn(low), Drawn(low)}, size_(std::max<int64_t>(0, size)),
      tupleSize_(std::max<int64_t>(0, tupleSize)), type_(type)
{
    if (!(Drawn(low) < Drawn(high)))
        return;
    mapping_.high = high;
    mapping_.last = below(high);
    if constexpr (std::is_integral_v<T>)
        mapping_.span = uint64_t(high) - uint64_t(low) + 1;
}

template <RQ_NumericValue T> const char *RQ_DARandom<T>::className() const { return "RQ_DARandom"; }

template <RQ_NumericValue T> typename RQ_DARandom<T>::Drawn RQ_DARandom<T>::Mapping::operator()(Bits bits) const
{
    if constexpr (std::same_as<T, int64_t>)
    {
        __extension__ using Wide = unsigned __int128;
        return int64_t(uint64_t(low) + (span ? uint64_t((Wide(bits) * span) >> 64) : bits));
    }
    else if constexpr (std::is_integral_v<T>)
        return T(int64_t(low) + int64_t(bits * span >> 32));
    else
    {
        // All values of one exponent are evenly spaced: random digits behind a one make [1, 2).
        constexpr int kDigits = std::numeric_limits<Drawn>::digits - 1;
        constexpr Bits kOne = std::bit_cast<Bits>(Drawn(1));
        const Drawn t = std::bit_cast<Drawn>(Bits(bits >> (8 * sizeof(Bits) - kDigits) | kOne)) - Drawn(1);
        return std::min(std::max(low * (Drawn(1) - t) + high * t, low), last);
    }
}

template <RQ_NumericValue T> uint64_t RQ_DARandom<T>::hashOf(uint64_t place) const
{
    return scatter(state_ + place * kStep);
}

// Narrow values share a hash between two.
template <RQ_NumericValue T> typename RQ_DARandom<T>::Bits RQ_DARandom<T>::bitsOf(uint64_t place) const
{
    if constexpr (sizeof(Bits) == 4)
        return Bits(hashOf(place >> 1) >> (place & 1 ? 32 : 0));
    else
        return hashOf(place);
}

template <RQ_NumericValue T> void RQ_DARandom<T>::drawBits(Bits *out, uint64_t first, int64_t count) const
{
    if constexpr (sizeof(Bits) == 8)
        scatterRun(out, state_ + first * kStep, count);
    else
    {
        // One more hash than pairs when the first value is the upper half of one.
        uint64_t hashes[rq::kBlockEntries / 2 + 1];
        scatterRun(hashes, state_ + (first >> 1) * kStep, (count + int64_t(first & 1) + 1) / 2);
        const uint64_t *hash = hashes;
        int64_t i = 0;
        if (first & 1)
            out[i++] = Bits(*hash++ >> 32);
        for (; i + 2 <= count; i += 2, ++hash)
        {
            out[i] = Bits(*hash);
            out[i + 1] = Bits(*hash >> 32);
        }
        if (i < count)
            out[i] = Bits(*hash);
    }
}

template <RQ_NumericValue T> template <class To> void RQ_DARandom<T>::fillRun(To *out, uint64_t first, int64_t count) const
{
    constexpr bool kDirect = std::same_as<To, T> && std::same_as<T, Drawn>;
    const Mapping mapping = mapping_;
    Bits bits[rq::kBlockEntries];
    [[maybe_unused]] Drawn drawn[kDirect ? 1 : rq::kBlockEntries];
    [[maybe_unused]] T rounded[kDirect ? 1 : rq::kBlockEntries];
    for (int64_t done = 0; done < count; done += rq::kBlockEntries)
    {
        const int64_t length = std::min(count - done, rq::kBlockEntries);
        drawBits(bits, first + uint64_t(done), length);
        if constexpr (kDirect && std::same_as<T, int64_t>)
            std::transform(bits, bits + length, out + done, mapping);  // 128-bit products do not vectorise
        else if constexpr (kDirect)
            mapRun(bits, out + done, mapping, length);
        else
        {
            mapRun(bits, drawn, mapping, length);
            rq::convertValues(drawn, RQstorageOf<Drawn>, rounded, RQstorageOf<T>, length);
            rq::convertValues(rounded, RQstorageOf<T>, out + done, RQstorageOf<To>, length);
        }
    }
}

template <RQ_NumericValue T> template <RQ_NumericValue To> To RQ_DARandom<T>::valueAs(int64_t offset, int component) const
{
    return RQconvert<To>(T(mapping_(bitsOf(uint64_t(offset * tupleSize_ + component)))));
}

template <RQ_NumericValue T>
template <RQ_NumericValue To>
void RQ_DARandom<T>::fillBlock(To *out, int64_t start, int64_t length, int components, int stride) const
{
    if (components == tupleSize_ && components == stride)
        return host::writeBlocks(out, length * components, [&](To *to, int64_t first, int64_t count) {
            fillRun(to, uint64_t(start * tupleSize_ + first), count);
        });
    for (int64_t i = 0; i < length; ++i)
        fillRun(out + i * stride, uint64_t((start + i) * tupleSize_), components);
}

#define RQ_INSTANTIATE(T, NAME, ARRAY)                                                                                      \
    template class RQ_TypedArray<RQ_DARandom<T>, RQ_DANumbers>;                                                             \
    template class RQ_DARandom<T>;
RQ_NUMERIC_TYPES(RQ_INSTANTIATE)
