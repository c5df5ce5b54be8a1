#pragma once

#include <array>
#include <cmath>
#include <map>
#include <random>
#include <vector>

#include <host/bas/Vector.h>

namespace tests
{
using Polygon = std::vector<BAS_Vec2d>;
using Random = std::mt19937;

inline double uniform(Random &random, double low, double high)
{
    return low + (high - low) * double(random()) / 4294967296.0;
}

/// Corners at rising angles and random distances from the middle: simple, with long spikes when `inner` is small.
inline Polygon randomStar(Random &random, int corners, double inner)
{
    Polygon polygon;
    for (int i = 0; i < corners; ++i)
    {
        const double turn = 2.0 * M_PI * (i + uniform(random, 0.0, 0.9)) / corners;
        const double radius = uniform(random, inner, 1.0);
        polygon.emplace_back(radius * std::cos(turn), radius * std::sin(turn));
    }
    return polygon;
}

/// A ribbon wound inwards.
inline Polygon spiral(int corners, int turns)
{
    Polygon polygon;
    const int steps = corners / 2 - 1;
    for (int i = 0; i < 2 * (steps + 1); ++i)
    {
        const bool back = i > steps;
        const double along = double(back ? 2 * steps + 1 - i : i) / steps;
        const double radius = 1.0 + turns * along + (back ? 0.0 : 0.5), turn = 2.0 * M_PI * turns * along;
        polygon.emplace_back(radius * std::cos(turn), radius * std::sin(turn));
    }
    return polygon;
}

/// The outline of a patch that grows triangle by triangle over a grid and never joins what it meets: full of bridges walked
/// twice, corners in one place, straight runs, slits and holes, and yet it never crosses itself.  With `shake` the points of
/// the grid are moved at random, and hardly anything is straight.
inline Polygon tornPatch(Random &random, int width, int height, int triangles, double shake = 0.0)
{
    struct Triangle
    {
        int index, apex;
    };
    std::map<std::pair<int, int>, Triangle> leftOf;  // by directed edge
    std::vector<std::array<int, 3>> all;
    for (int cell = 0; cell < width * height; ++cell)
    {
        const int a = cell / width * (width + 1) + cell % width, b = a + 1, d = b + width, c = d + 1;
        const bool rising = random() & 1;
        all.push_back({a, b, rising ? c : d});
        all.push_back({rising ? a : b, c, d});
    }
    for (size_t t = 0; t < all.size(); ++t)
        for (int i = 0; i < 3; ++i)
            leftOf[{all[t][i], all[t][(i + 1) % 3]}] = {int(t), all[t][(i + 2) % 3]};

    std::vector<bool> used(all.size());
    const size_t seed = random() % all.size();
    used[seed] = true;
    std::vector<int> outline(all[seed].begin(), all[seed].end());
    for (int i = 1, misses = 0; i < triangles && misses < 200; ++misses)
    {
        const size_t edge = random() % outline.size();
        const auto found = leftOf.find({outline[(edge + 1) % outline.size()], outline[edge]});
        if (found == leftOf.end() || used[found->second.index])
            continue;
        used[found->second.index] = true;
        outline.insert(outline.begin() + edge + 1, found->second.apex);
        ++i;
        misses = 0;
    }
    Polygon grid, polygon;
    for (int point = 0; point < (width + 1) * (height + 1); ++point)
    {
        const double x = point % (width + 1), y = point / (width + 1);
        grid.emplace_back(x + uniform(random, -shake, shake), y + uniform(random, -shake, shake));
    }
    for (const int corner : outline)
        polygon.push_back(grid[size_t(corner)]);
    return polygon;
}

/// Some corners repeated up to three times.
inline Polygon withRepeats(Random &random, const Polygon &polygon)
{
    Polygon result;
    for (const BAS_Vec2d &p : polygon)
        result.insert(result.end(), random() % 4 == 0 ? 1 + random() % 3 : 1, p);
    return result;
}

/// A row of teeth of any height on a common back.
inline Polygon comb(Random &random, int teeth)
{
    Polygon polygon{{0.0, -1.0}, {double(teeth), -1.0}};
    for (int i = teeth - 1; i >= 0; --i)
    {
        polygon.emplace_back(i + uniform(random, 0.7, 0.9), uniform(random, -0.5, 0.0));
        polygon.emplace_back(i + uniform(random, 0.4, 0.6), uniform(random, 0.1, 50.0));
        polygon.emplace_back(i + uniform(random, 0.1, 0.3), uniform(random, -0.5, 0.0));
    }
    return polygon;
}

/// A ring whose hole is joined to the outline by an edge that is walked twice.
inline Polygon keyhole(Random &random, int corners)
{
    const Polygon outline = randomStar(random, corners, 0.8), hole = randomStar(random, corners, 0.4);
    const double turn = std::atan2(outline[0].y, outline[0].x) - std::atan2(hole[0].y, hole[0].x);
    const double c = 0.3 * std::cos(turn), s = 0.3 * std::sin(turn);
    Polygon polygon = outline;
    polygon.push_back(outline[0]);
    for (size_t i = 0; i <= hole.size(); ++i)
    {
        const BAS_Vec2d &p = hole[(hole.size() - i) % hole.size()];
        polygon.emplace_back(c * p.x - s * p.y, s * p.x + c * p.y);
    }
    return polygon;
}

/// Every second corner within a few roundings of the line between its neighbours.
inline Polygon nearlyStraight(Random &random, int pairs)
{
    Polygon polygon = randomStar(random, 2 * pairs, 0.3);
    for (size_t i = 1; i < polygon.size(); i += 2)
    {
        const BAS_Vec2d &a = polygon[i - 1], &b = polygon[(i + 1) % polygon.size()];
        const double along = uniform(random, 0.2, 0.8);
        const auto nudged = [&random](double value) { return value * (1.0 + 1e-16 * double(int(random() % 9) - 4)); };
        polygon[i] = {nudged(a.x + along * (b.x - a.x)), nudged(a.y + along * (b.y - a.y))};
    }
    return polygon;
}

inline Polygon moved(const Polygon &polygon, double scale, double x, double y, double turn)
{
    Polygon result;
    const double c = std::cos(turn), s = std::sin(turn);
    for (const BAS_Vec2d &p : polygon)
        result.emplace_back(scale * (c * p.x - s * p.y) + x, scale * (s * p.x + c * p.y) + y);
    return result;
}
}  // namespace tests
