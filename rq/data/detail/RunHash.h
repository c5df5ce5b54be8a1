#pragma once

#include <algorithm>
#include <bit>
#include <cstring>

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

#include <rq/data/DataArray.h>
#include <rq/data/mixId.h>

namespace rq::hashing
{
inline uint64_t combine(uint64_t hash, uint64_t value) { return RQmixId(hash ^ (value + 0x9e3779b97f4a7c15u)); }

// A stripe feeds every lane one word.  Eight lanes hide the time of the multiplications.
constexpr int kLanes = 8;
constexpr size_t kStripeBytes = kLanes * sizeof(uint64_t);

/// Write the bits that stand for `count` values: equal values have equal bits.
template <class T> void writeBits(const T *values, size_t count, char *bytes)
{
    if constexpr (std::is_integral_v<T>)
        std::memcpy(bytes, values, count * sizeof(T));
    else
        for (size_t i = 0; i < count; ++i)
        {
            // -0 becomes 0.
            if constexpr (std::same_as<T, PLT_Half>)
            {
                const uint16_t bits = values[i].bits() == 0x8000 ? 0 : values[i].bits();
                std::memcpy(bytes + i * sizeof(T), &bits, sizeof(T));
            }
            else
            {
                const T value = values[i] + T(0);
                std::memcpy(bytes + i * sizeof(T), &value, sizeof(T));
            }
        }
}

// A lane spreads each half of what it holds over all bits by a multiplication of its own: processors have no vectors of
// longer products, and what two words change does not cancel out.
constexpr uint32_t kLowFactor = 0x9fb21c65, kHighFactor = 0xe98df25b;

#if defined(__x86_64__)
constexpr int kPairs = kLanes / 2;

struct Lanes
{
    __m128i pairs[kPairs] = {_mm_set_epi64x(2, 1), _mm_set_epi64x(4, 3), _mm_set_epi64x(6, 5), _mm_set_epi64x(8, 7)};

    void add(const char *bytes)
    {
        for (int pair = 0; pair < kPairs; ++pair)
        {
            const __m128i words = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes) + pair);
            const __m128i fed = _mm_xor_si128(pairs[pair], words);
            const __m128i low = _mm_mul_epu32(fed, _mm_set1_epi32(int(kLowFactor)));
            const __m128i high = _mm_mul_epu32(_mm_srli_epi64(fed, 32), _mm_set1_epi32(int(kHighFactor)));
            pairs[pair] = _mm_xor_si128(low, _mm_shuffle_epi32(high, _MM_SHUFFLE(2, 3, 0, 1)));
        }
    }

    uint64_t state(int lane) const
    {
        const __m128i pair = pairs[lane / 2];
        return uint64_t(_mm_cvtsi128_si64(lane % 2 ? _mm_unpackhi_epi64(pair, pair) : pair));
    }
};
#else
struct Lanes
{
    uint64_t states[kLanes] = {1, 2, 3, 4, 5, 6, 7, 8};

    void add(const char *bytes)
    {
        uint64_t words[kLanes];
        std::memcpy(words, bytes, kStripeBytes);
        for (int lane = 0; lane < kLanes; ++lane)
        {
            const uint64_t fed = states[lane] ^ words[lane];
            states[lane] = uint64_t(uint32_t(fed)) * kLowFactor ^ std::rotl((fed >> 32) * kHighFactor, 32);
        }
    }

    uint64_t state(int lane) const { return states[lane]; }
};
#endif

/// Hashes a run of values as a stream of bytes.  Independent of how the run is handed over.
class RunHash
{
public:
    template <class T> void add(const T *values, int64_t count)
    {
        constexpr size_t kPerStripe = kStripeBytes / sizeof(T);
        char bytes[kStripeBytes];
        size_t i = waiting_ == 0 ? addStripes(values, size_t(count) / kPerStripe) * kPerStripe : 0;
        for (size_t length; i < size_t(count); i += length)
        {
            length = std::min(kPerStripe, size_t(count) - i);
            writeBits(values + i, length, bytes);
            addBytes(bytes, length * sizeof(T));
        }
    }

    uint64_t result()
    {
        uint64_t hash = total_ + waiting_;
        std::fill(stripe_ + waiting_, stripe_ + kStripeBytes, char(0));
        addStripe(stripe_);
        for (int lane = 0; lane < kLanes; ++lane)
            hash = combine(hash, lanes_.state(lane));
        return hash;
    }

private:
    // The lanes of a copy stay in registers.
    template <class T> size_t addStripes(const T *values, size_t stripes)
    {
        constexpr size_t kPerStripe = kStripeBytes / sizeof(T);
        alignas(16) char bytes[kStripeBytes];
        Lanes lanes = lanes_;
        for (size_t i = 0; i < stripes; ++i)
        {
            writeBits(values + i * kPerStripe, kPerStripe, bytes);
            lanes.add(bytes);
        }
        lanes_ = lanes;
        total_ += stripes * kStripeBytes;
        return stripes;
    }

    void addBytes(const char *bytes, size_t count)
    {
        const size_t fitting = std::min(count, kStripeBytes - waiting_);
        std::memcpy(stripe_ + waiting_, bytes, fitting);
        waiting_ += fitting;
        if (waiting_ < kStripeBytes)
            return;
        addStripe(stripe_);
        waiting_ = count - fitting;
        std::memcpy(stripe_, bytes + fitting, waiting_);
    }

    void addStripe(const char *bytes)
    {
        lanes_.add(bytes);
        total_ += kStripeBytes;
    }

    Lanes lanes_;
    uint64_t total_ = 0;  // bytes in whole stripes
    size_t waiting_ = 0;  // bytes in the one that is begun
    char stripe_[kStripeBytes];
};
}  // namespace rq::hashing
