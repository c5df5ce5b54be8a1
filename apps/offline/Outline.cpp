#include <apps/offline/Outline.h>

namespace rq::offline
{
namespace
{
// What is smaller than this in a scene of radius 1 frames like a point.
constexpr float kSmall = 2e-3f;
}  // namespace

void Outline::add(const BAS_Vec3f &given, float givenRadius, bool frames)
{
    const BAS_Vec3f centre = placing_.point(given);
    const float radius = givenRadius > 0.0f ? givenRadius * float(placing_.scale()) : givenRadius;
    if (!isFinite(centre) || !std::isfinite(radius))
        return;
    lowest_ = std::min(lowest_, centre.y - radius);
    if (!frames)
        return;
    if (radius < kSmall)
        return points_.push_back(centre);
    // The faces and the corners of a cube cover a ball up to an eighth of its radius.
    for (int x = -1; x <= 1; ++x)
        for (int y = -1; y <= 1; ++y)
            for (int z = -1; z <= 1; ++z)
                if (const int ends = x * x + y * y + z * z; ends == 1 || ends == 3)
                    points_.push_back(centre + BAS_Vec3f(float(x), float(y), float(z)) * (radius / std::sqrt(float(ends))));
}
}  // namespace rq::offline
