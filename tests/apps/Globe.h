#pragma once

#include <cmath>
#include <numbers>

#include <apps/offline/Integrator.h>
#include <tests/rq/surface/Fixture.h>

namespace tests
{
using namespace rq::offline;

inline constexpr int kWidth = 96, kHeight = 54;

inline RQ_DataArrayHandle triples(const std::vector<BAS_Vec3f> &values, RQ_Type type)
{
    return RQ_DataArrayHandle(new RQ_DANumeric<float>(&values.data()->x, int64_t(values.size()), 3, type));
}

/// A globe of quads around the origin, closed by triangles at the poles.
struct Globe
{
    std::vector<BAS_Vec3f> points;
    std::vector<int32_t> counts, corners;

    Globe(int around, int up)
    {
        for (int row = 0; row <= up; ++row)
            for (int i = 0; i < around; ++i)
            {
                const float turn = 2.0f * std::numbers::pi_v<float> * float(i) / float(around);
                const float lift = std::numbers::pi_v<float> * (float(row) / float(up) - 0.5f);
                points.emplace_back(std::cos(lift) * std::sin(turn), std::sin(lift), std::cos(lift) * std::cos(turn));
            }
        for (int row = 0; row < up; ++row)
            for (int i = 0; i < around; ++i)
            {
                const int a = row * around, next = (i + 1) % around;
                counts.push_back(4);
                corners.insert(corners.end(), {a + i, a + next, a + around + next, a + around + i});
            }
    }

    RQ_PrimitiveHandle mesh(const RQ_AttributeListHandle &vertex = {}, const RQ_AttributeListHandle &uniform = {}) const
    {
        return RQ_PrimitiveHandle(new RQ_PrimPolygonMesh(
            integers(counts), integers(corners), oneAttribute("P", triples(points, RQ_TYPE_POINT)), vertex, uniform));
    }
};

inline std::unique_ptr<Film> picture(const RQ_PrimitiveHandle &primitive, int samples = 4, Settings settings = {},
                                     const Look &look = {})
{
    Scene scene(nullptr, look);
    scene.add(primitive);
    scene.commit(UpAxis::Y);
    settings.width = kWidth;
    settings.height = kHeight;
    settings.samples = samples;
    return render(scene, Camera(scene.outline().points(), float(kWidth) / float(kHeight)), settings);
}

inline double difference(const Film &a, const Film &b)
{
    double sum = 0.0;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            sum += (a.at(x, y).beauty - b.at(x, y).beauty).length();
    return sum / (kWidth * kHeight);
}
}  // namespace tests
