#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

namespace bench
{
/// The splitmix64 sequence (Steele, Lea and Flood, "Fast splittable pseudorandom number generators", 2014).
class Random
{
public:
    explicit Random(uint64_t seed) : state_(seed) {}

    uint64_t next()
    {
        uint64_t z = state_ += 0x9E3779B97F4A7C15ull;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }

    /// In -1 to 1.
    float symmetric() { return 2.0f * float(next() >> 40) / 16777216.0f - 1.0f; }

private:
    uint64_t state_;
};

/// A height field over [0, size] x [0, size] whose rim is straight: its faces, seen from above, cover size * size exactly.
struct QuadMesh
{
    std::vector<float> positions;
    std::vector<int32_t> indices;
    int size;

    explicit QuadMesh(int cells) : size(cells)
    {
        Random random(1);
        for (int j = 0; j <= cells; ++j)
            for (int i = 0; i <= cells; ++i)
                addPoint(i, j, i == 0 || j == 0 || i == cells || j == cells, random);
        for (int j = 0; j < cells; ++j)
            for (int i = 0; i < cells; ++i)
            {
                const int32_t a = j * (cells + 1) + i, above = a + cells + 1;
                indices.insert(indices.end(), {a, a + 1, above + 1, above});
            }
    }

    int64_t points() const { return int64_t(positions.size() / 3); }
    int64_t faces() const { return int64_t(indices.size() / 4); }

private:
    void addPoint(int i, int j, bool rim, Random &random)
    {
        const float x = float(i) + (rim ? 0.0f : 0.2f * random.symmetric());
        const float y = float(j) + (rim ? 0.0f : 0.2f * random.symmetric());
        // Steps every 64 cells make real creases.
        const float step = (i / 64 + j / 64) % 2 ? 4.0f : 0.0f;
        const float z = 6.0f * std::sin(float(i) * 0.021f) * std::cos(float(j) * 0.017f) + step;
        positions.insert(positions.end(), {x, y, z + (rim ? 0.0f : 0.08f * random.symmetric())});
    }
};
}  // namespace bench
