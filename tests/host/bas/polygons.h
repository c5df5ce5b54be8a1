#pragma once

#include <algorithm>
#include <cmath>
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

/// A bar with `teeth` long teeth.
inline Polygon comb(int teeth)
{
    Polygon polygon = {{2.0 * teeth, -1.0}};
    for (int i = teeth; i > 0; --i)
    {
        polygon.emplace_back(2.0 * i, 0.0);
        polygon.emplace_back(2.0 * i - 1.0, double(teeth));
    }
    polygon.emplace_back(0.0, 0.0);
    polygon.emplace_back(0.0, -1.0);
    return polygon;
}

/// The outline of a patch that grows triangle by triangle over a grid and never joins what it meets: full of bridges walked
/// twice, corners in one place, straight runs, slits and holes, and yet it never crosses itself.
inline Polygon tornPatch(Random &random, int width, int height, int triangles)
{
    const int cells = width * height;
    std::vector<uint8_t> rising(cells), used(2 * size_t(cells));
    for (uint8_t &bit : rising)
        bit = random() & 1;
    const auto corner = [width](int x, int y) { return y * (width + 1) + x; };
    const auto cornersOf = [&](int triangle, int(&out)[3]) {
        const int x = triangle / 2 % width, y = triangle / 2 / width;
        const int a = corner(x, y), b = corner(x + 1, y), c = corner(x + 1, y + 1), d = corner(x, y + 1);
        const int choices[2][2][3] = {{{a, b, d}, {b, c, d}}, {{a, b, c}, {a, c, d}}};
        std::copy_n(choices[rising[triangle / 2]][triangle % 2], 3, out);
    };
    // The triangle on the left of the edge from -> to, -1 outside of the grid.
    const auto leftOf = [&](int from, int to, int &apex) {
        const int x = std::min(from % (width + 1), to % (width + 1)), y = std::min(from / (width + 1), to / (width + 1));
        for (int cellY = std::max(0, y - 1); cellY <= std::min(height - 1, y); ++cellY)
            for (int cellX = std::max(0, x - 1); cellX <= std::min(width - 1, x); ++cellX)
                for (int k = 0; k < 2; ++k)
                {
                    int t[3];
                    const int triangle = 2 * (cellY * width + cellX) + k;
                    cornersOf(triangle, t);
                    for (int i = 0; i < 3; ++i)
                        if (t[i] == from && t[(i + 1) % 3] == to)
                        {
                            apex = t[(i + 2) % 3];
                            return triangle;
                        }
                }
        return -1;
    };

    int first[3];
    const int seed = int(random() % (2 * size_t(cells)));
    cornersOf(seed, first);
    used[seed] = 1;
    std::vector<int> outline(first, first + 3);
    for (int i = 1, misses = 0; i < triangles && misses < 200; ++misses)
    {
        const size_t edge = random() % outline.size();
        int apex = -1;
        const int triangle = leftOf(outline[(edge + 1) % outline.size()], outline[edge], apex);
        if (triangle < 0 || used[triangle])
            continue;
        used[triangle] = 1;
        outline.insert(outline.begin() + edge + 1, apex);
        ++i;
        misses = 0;
    }
    Polygon polygon;
    for (const int c : outline)
        polygon.emplace_back(c % (width + 1), c / (width + 1));
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

/// Up to three points more on some edges, exactly on the line when the coordinates are small integers.
inline Polygon withRuns(Random &random, const Polygon &polygon)
{
    Polygon result;
    for (size_t i = 0; i < polygon.size(); ++i)
    {
        const BAS_Vec2d &a = polygon[i], &b = polygon[(i + 1) % polygon.size()];
        result.push_back(a);
        const int extra = int(random() % 4);
        for (int k = 1; extra == 3 ? k < 4 : k <= extra; ++k)
            result.push_back(extra == 2 ? a + (b - a) * (0.25 * k) : a + (b - a) * (double(k) / (extra + 1)));
    }
    return result;
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
