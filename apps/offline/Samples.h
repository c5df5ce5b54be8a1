#pragma once

#include <cstdint>

#include <host/bas/Vector.h>
#include <host/bas/hashBytes.h>

namespace rq::offline
{
/// Well spread pairs of numbers in [0, 1), as many as one likes: however many of the first are taken, they are spread well.
///
/// The two-dimensional sequence of Sobol, shuffled and scrambled by hashes (Burley, "Practical Hash-based Owen Scrambling",
/// 2020) for every pixel and use, so that uses do not depend on each other, nor on who asks first.
class Samples
{
public:
    /// Those of a pixel.
    explicit Samples(uint64_t pixel) : seed_(host::hashWord(0x51ED, pixel)) {}

    Imath::V2f at(int use, uint32_t index) const
    {
        const uint64_t hash = host::hashWord(seed_, uint64_t(use));
        const uint32_t place = scrambled(index, uint32_t(hash));
        return {unit(scrambled(reversed(place), uint32_t(hash >> 32))),
                unit(scrambled(second(place), uint32_t(host::hashWord(hash, 1))))};
    }

private:
    static float unit(uint32_t bits) { return float(bits >> 8) * 0x1p-24f; }

    static uint32_t reversed(uint32_t bits)
    {
        bits = bits << 16 | bits >> 16;
        bits = (bits & 0x00FF00FFu) << 8 | (bits & 0xFF00FF00u) >> 8;
        bits = (bits & 0x0F0F0F0Fu) << 4 | (bits & 0xF0F0F0F0u) >> 4;
        bits = (bits & 0x33333333u) << 2 | (bits & 0xCCCCCCCCu) >> 2;
        return (bits & 0x55555555u) << 1 | (bits & 0xAAAAAAAAu) >> 1;
    }

    // Every bit turns by a hash of those above it; the bits below it do not matter.
    static uint32_t scrambled(uint32_t bits, uint32_t seed)
    {
        bits = reversed(bits);
        bits ^= bits * 0x3D20ADEAu;
        bits += seed;
        bits *= (seed >> 16) | 1u;
        bits ^= bits * 0x05526C56u;
        bits ^= bits * 0x53A22864u;
        return reversed(bits);
    }

    // The second dimension: its generator matrix is Pascal's triangle, odd numbers as ones.
    static uint32_t second(uint32_t index)
    {
        uint32_t value = 0;
        for (uint32_t column = 0x80000000u; index != 0; index >>= 1, column ^= column >> 1)
            if (index & 1u)
                value ^= column;
        return value;
    }

    uint64_t seed_;
};
}  // namespace rq::offline
