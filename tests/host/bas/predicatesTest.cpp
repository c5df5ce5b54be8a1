#include <random>

#include <boost/multiprecision/cpp_int.hpp>
#include <gtest/gtest.h>

#include <host/bas/predicates.h>

namespace
{
using Exact = boost::multiprecision::cpp_rational;

int exactSign(const BAS_Vec2d &a, const BAS_Vec2d &b, const BAS_Vec2d &c)
{
    const Exact det =
        (Exact(a.x) - Exact(c.x)) * (Exact(b.y) - Exact(c.y)) - (Exact(a.y) - Exact(c.y)) * (Exact(b.x) - Exact(c.x));
    return det.sign();
}

int sign(double value) { return (value > 0.0) - (value < 0.0); }

TEST(Predicates, OrientationHasTheExactSign)
{
    std::mt19937 random(7);
    const auto unit = [&] { return double(random()) / 4294967296.0 - 0.5; };
    int zeros = 0, small = 0;
    for (int i = 0; i < 20000; ++i)
    {
        // Points near one line: the third is moved off it by a few last places, on grids fine and coarse, near and far.
        const double grid = i % 3 == 0 ? 8.0 : std::ldexp(1.0, int(random() % 50));
        const auto snap = [&](double v) { return std::round(v * grid) / grid; };
        const double shift = i % 5 == 0 ? 1e6 : 0.0, scale = std::pow(10.0, int(random() % 13) - 6);
        const double slope = unit(), along = 3.0 * unit(), off = i % 7 == 0 ? 0.0 : double(int(random() % 5) - 2) * 0x1p-52;
        const BAS_Vec2d a(snap(unit()) * scale + shift, snap(unit()) * scale);
        const BAS_Vec2d b(a.x + snap(scale), a.y + snap(slope) * scale);
        const BAS_Vec2d c(a.x + along * (b.x - a.x), (a.y + along * (b.y - a.y)) * (1.0 + off));
        const double value = host::orientation(a, b, c);
        ASSERT_EQ(sign(value), exactSign(a, b, c)) << "case " << i;
        ASSERT_EQ(sign(host::exactOrientation(a, b, c)), exactSign(a, b, c)) << "case " << i;
        zeros += value == 0.0;
        small += value != 0.0 && std::abs(value) < 1e-12 * scale * scale;
    }
    EXPECT_GT(zeros, 100);
    EXPECT_GT(small, 1000);
}

TEST(Predicates, ExactSumKeepsWhatRoundingLoses)
{
    host::ExactSum sum;
    for (const double value : {1e30, 1.0, -1e-30, -1e30, -1.0})
        sum.add(value);
    EXPECT_EQ(sum.leading(), -1e-30);
    sum.addProduct(0x1p-50 + 1.0, 0x1p-50 - 1.0);
    EXPECT_EQ(sum.leading(), -1.0);
}
}  // namespace
