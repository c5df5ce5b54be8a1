#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <string_view>
#include <vector>

#include <host/bas/CornerFan.h>
#include <host/bas/CreaseLanes.h>
#include <host/bas/flaggedFaces.h>

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

// Both serve the corners of one mesh, some points by the one and some by the other.
TEST(CornerFan, SeparatesFourPointsAsItDoesOne)
{
    using Lanes = host::CreaseLanes;
    std::mt19937 random(3);
    std::uniform_real_distribution<double> anywhere(-1.0, 1.0);
    const double oddWeights[] = {0.0, 1e-200, 1e200, std::nan("")};
    for (int corners = 1; corners <= Lanes::kMostCorners; ++corners)
        for (const double degrees : {0.1, 60.0, 90.0, 179.0})
            for (const bool normalize : {true, false})
            {
                const host::CuspCosines cusp(degrees);
                Lanes lanes;
                host::CornerFan fans[Lanes::kPoints];
                for (int point = 0; point < Lanes::kPoints; ++point)
                {
                    fans[point].resize(corners);
                    for (int i = 0; i < corners; ++i)
                    {
                        const BAS_Vec3d some(anywhere(random), anywhere(random), point == 1 ? 3.0 : anywhere(random));
                        const BAS_Vec3d normal = i == 5 ? BAS_Vec3d(0.0) : some.normalized();
                        const double weight = point == 2 && i < 4 ? oddWeights[i] : 1.0 + anywhere(random);
                        fans[point].set(i, normal, weight);
                        for (int axis = 0; axis < 3; ++axis)
                            lanes.normals[i][axis][point] = normal[axis];
                        lanes.weights[i][point] = weight;
                    }
                }
                host::VectorLanes found;
                lanes.separate(corners, cusp.pair, normalize, found);
                int different = 0;
                for (int point = 0; point < Lanes::kPoints; ++point)
                    fans[point].separate(cusp, normalize, [&](int64_t i, const BAS_Vec3d &expected) {
                        const BAS_Vec3d own = found[i * Lanes::kPoints + point];
                        for (int axis = 0; axis < 3; ++axis)
                            different +=
                                own[axis] != expected[axis] && !(own[axis] != own[axis] && expected[axis] != expected[axis]);
                    });
                EXPECT_EQ(different, 0) << corners << " corners, " << degrees << " degrees, " << normalize;
            }
}

TEST(FlaggedFaces, AreThoseWithAFlaggedPoint)
{
    const int64_t first = 1000, count = 300;
    std::mt19937 random(11);
    for (const int corners : {3, 4})
        for (int run = 0; run < 200; ++run)
        {
            BAS_BitArray flags(count + 64);
            for (int64_t i = 0; i < count; ++i)
                flags.set(i, random() % (1u + unsigned(run)) == 0);
            // Rows of faces of some length, up to the last point.
            const int64_t faces = 1 + int64_t(random() % 64);
            std::vector<int32_t> points;
            for (int64_t face = 0; face < faces; ++face)
                for (int k = 0; k < corners; ++k)
                {
                    const bool follows =
                        face > 0 && (face + run) % 23 != 0 && points[points.size() - size_t(corners)] + 1 < first + count;
                    points.push_back(follows ? points[points.size() - size_t(corners)] + 1
                                             : int32_t(first + random() % count));
                }
            uint64_t expected = 0;
            for (size_t i = 0; i < points.size(); ++i)
                expected |= uint64_t(flags.get(points[i] - first)) << (i / size_t(corners));
            const std::vector<int64_t> wide(points.begin(), points.end());
            EXPECT_EQ(host::flaggedFaces(points.data(), corners, faces, flags, first), expected);
            EXPECT_EQ(host::flaggedFaces(wide.data(), corners, faces, flags, first), expected);
        }
}
}  // namespace
