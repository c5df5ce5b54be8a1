#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

namespace
{
/// Two arrays of numbers of different sizes, filled in one loop: their addresses are worked out from each other.
struct Layers
{
    uint64_t inside[12] = {};
    uint64_t cut[3][8] = {};
    int32_t before[3][8] = {};

    [[gnu::noinline]] void fill();
};

void Layers::fill()
{
    int32_t count = 0;
    for (int axis = 0; axis < 3; ++axis)
        for (int z = 0; z < 8; ++z)
        {
            uint64_t &bits = cut[axis][z];
            for (int y = 0; y < 8; ++y)
                for (int x = 0; x < 8; ++x)
                {
                    const size_t a = size_t((z * 9 + y) * 9 + x);
                    const size_t b = size_t(((z + (axis == 2)) * 9 + y + (axis == 1)) * 9 + x + (axis == 0));
                    const uint64_t differ = (inside[a / 64] >> a % 64 ^ inside[b / 64] >> b % 64) & 1;
                    bits |= differ << (8 * y + x);
                }
            before[axis][z] = count;
            count += std::popcount(bits);
        }
}

// The flags that the project is compiled with keep GCC 12 from taking such a function for one that writes nothing, as it does
// at -O2 and above.
TEST(Compiler, KeepsCallsThatFillTwoArrays)
{
    Layers layers;
    layers.inside[0] = 1;
    layers.fill();
    for (const auto &axis : layers.cut)
        EXPECT_EQ(axis[0], 1u);
    EXPECT_EQ(layers.before[2][7], 3);
}
}  // namespace
