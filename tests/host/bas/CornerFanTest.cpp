#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <string_view>
#include <vector>

#include <host/bas/CornerFan.h>

namespace
{
using Vectors = std::vector<BAS_Vec3d>;

Vectors vectors(const char *kind, int count)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> anywhere(-1.0, 1.0);
    Vectors all;
    for (int i = 0; i < count; ++i)
    {
        const double angle = 2.0 * std::numbers::pi * i / count;
        const std::string_view name(kind);
        if (name == "a cone")
            all.push_back(BAS_Vec3d(std::cos(angle), std::sin(angle), 0.7).normalized());
        else if (name == "the sphere")
            all.push_back(BAS_Vec3d(anywhere(random), anywhere(random), anywhere(random)).normalized());
        else if (name == "three ways, and none")
            all.push_back(i % 4 == 3 ? BAS_Vec3d(0.0) : BAS_Vec3d(i % 4 == 0, i % 4 == 1, i % 4 == 2));
    }
    return all;
}

TEST(CornerFan, SumsThoseWithinTheAngleHoweverManyThereAre)
{
    for (const char *kind : {"a cone", "the sphere", "three ways, and none"})
        for (const int count : {1, 9, 511, 513, 3000})
            for (const double degrees : {0.0, 1.0, 60.0, 90.0, 150.0})
            {
                SCOPED_TRACE(testing::Message() << kind << ' ' << count << ' ' << degrees);
                const Vectors normals = vectors(kind, count);
                host::CornerFan fan;
                fan.resize(count);
                for (int i = 0; i < count; ++i)
                    fan.set(i, normals[size_t(i)], 1.0);
                const host::CuspCosines cusp(degrees);
                int written = 0, different = 0;
                fan.separate(cusp, false, [&](int64_t own, const BAS_Vec3d &found) {
                    BAS_Vec3d sum(0.0);
                    for (const BAS_Vec3d &normal : normals)
                        if (normals[size_t(own)].dot(normal) >= cusp.pair)
                            sum += normal;
                    different += (found - sum).length() > 1e-10;
                    ++written;
                });
                EXPECT_EQ(written, count);
                EXPECT_EQ(different, 0);
            }
}

TEST(CornerFan, SeparatesALargeConeInReasonableTime)
{
    const int count = 200'000;  // pair by pair this would take a minute and more
    const Vectors normals = vectors("a cone", count);
    host::CornerFan fan;
    fan.resize(count);
    for (int i = 0; i < count; ++i)
        fan.set(i, normals[size_t(i)], 1.0);
    double off = 0.0;
    fan.separate(host::CuspCosines(20.0), true, [&](int64_t i, const BAS_Vec3d &normal) {
        // Those on both sides weigh alike: the sum stays in the plane of its own normal and the axis.
        off = std::max(off, std::abs(normal.dot(BAS_Vec3d(0, 0, 1) % normals[size_t(i)])));
    });
    EXPECT_LT(off, 1e-4);
}
}  // namespace
