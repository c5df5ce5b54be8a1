#pragma once

#include <cstdint>
#include <numeric>

#include <host/bas/Vector.h>
#include <host/bas/hashBytes.h>

namespace rq::offline
{
/// Well spread pairs of numbers in [0, 1): a Hammersley set, shifted by random amounts for every pixel and use.
///
/// Two uses walk the set in different orders, so that they do not depend on each other.
class Samples
{
public:
    explicit Samples(int count) : count_(count) {}

    int count() const { return count_; }

    /// Pair `index` of use `use`; `pixel` tells pixels apart.
    Imath::V2f at(uint64_t pixel, int use, int index) const
    {
        const uint64_t hash = host::hashWord(host::hashWord(0x51ED, pixel), uint64_t(use));
        const uint32_t place = uint32_t((uint64_t(index) * step(use) + (hash >> 48)) % uint64_t(count_));
        return {wrap((float(place) + 0.5f) / float(count_) + unit(uint32_t(hash))),
                wrap(float(reversed(place)) * 0x1p-32f + unit(uint32_t(hash >> 16)))};
    }

private:
    // A stride without common factor visits every place once.
    uint64_t step(int use) const
    {
        uint64_t step = uint64_t(1 + 2 * use);
        while (std::gcd(step, uint64_t(count_)) != 1)
            ++step;
        return step;
    }

    static float unit(uint32_t bits) { return float(bits >> 8) * 0x1p-24f; }
    static float wrap(float value) { return value >= 1.0f ? value - 1.0f : value; }

    static uint32_t reversed(uint32_t bits)
    {
        bits = bits << 16 | bits >> 16;
        bits = (bits & 0x00FF00FFu) << 8 | (bits & 0xFF00FF00u) >> 8;
        bits = (bits & 0x0F0F0F0Fu) << 4 | (bits & 0xF0F0F0F0u) >> 4;
        bits = (bits & 0x33333333u) << 2 | (bits & 0xCCCCCCCCu) >> 2;
        return (bits & 0x55555555u) << 1 | (bits & 0xAAAAAAAAu) >> 1;
    }

    int count_;
};
}  // namespace rq::offline
