#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <map>
#include <unordered_map>
#include <vector>

#include <Imath/ImathVec.h>

namespace bench
{
/// The tangents of M. S. Mikkelsen's method ("Simulation of Wrinkled Surfaces Revisited", 2008), one step after the other
/// over the whole mesh as one would write it down: what ours are held against, in results and in time.
class PlainTangents
{
public:
    using Vec3 = Imath::V3f;

    /// What a face-vertex holds.
    struct Corner
    {
        std::array<float, 8> values;  // position, normal, u, v

        Vec3 position() const { return {values[0], values[1], values[2]}; }
        Vec3 normal() const { return {values[3], values[4], values[5]}; }
        float u() const { return values[6]; }
        float v() const { return values[7]; }
    };

    struct Result
    {
        Vec3 tangent{1.0f, 0.0f, 0.0f};
        bool isPreserving = false;
        int written = 0;
    };

    /// `counts` are 3 or 4; others are passed over.
    static std::vector<Result> make(const std::vector<int> &counts, const std::vector<Corner> &corners)
    {
        PlainTangents plain(corners);
        plain.cut(counts);
        plain.weld();
        plain.link();
        plain.group();
        plain.sum();
        plain.complete();
        return plain.results_;
    }

private:
    using Key = std::array<float, 8>;
    struct KeyHash
    {
        size_t operator()(const Key &key) const
        {
            size_t hash = 0;
            for (const float value : key)
                hash = (hash ^ std::bit_cast<uint32_t>(value)) * 0x9E3779B97F4A7C15ull;
            return hash ^ hash >> 32;
        }
    };

    struct Triangle
    {
        int face;
        std::array<int, 3> corners;
        bool isDegenerate = false, isFree = true, isPreserving = false;
        int missing = -1;  // the corner of a quad whose other half is degenerate
        std::array<int, 3> neighbours{-1, -1, -1}, groups{-1, -1, -1};
        Vec3 alongU{0.0f}, alongV{0.0f};
        float area = 0.0f;
    };

    struct Group
    {
        int vertex;
        bool isPreserving;
        std::vector<int> triangles;
    };

    explicit PlainTangents(const std::vector<Corner> &corners) : corners_(corners), results_(corners.size()) {}

    const Corner &corner(const Triangle &t, int at) const { return corners_[size_t(t.corners[size_t(at)])]; }
    int vertex(int triangle, int at) const { return vertices_[size_t(triangles_[size_t(triangle)].corners[size_t(at)])]; }

    int placeOf(int triangle, int vertexWanted) const
    {
        return vertex(triangle, 0) == vertexWanted ? 0 : vertex(triangle, 1) == vertexWanted ? 1 : 2;
    }

    static bool isSome(float value) { return std::abs(value) > FLT_MIN; }
    static Vec3 unit(const Vec3 &v)
    {
        return isSome(v.x) || isSome(v.y) || isSome(v.z) ? v * (1.0f / std::sqrt(v.length2())) : v;
    }
    static Vec3 project(const Vec3 &v, const Vec3 &normal) { return unit(v - normal * normal.dot(v)); }

    Triangle look(int face, int a, int b, int c) const
    {
        Triangle t{face, {a, b, c}};
        const Corner &first = corner(t, 0), &second = corner(t, 1), &third = corner(t, 2);
        const Vec3 edge1 = second.position() - first.position(), edge2 = third.position() - first.position();
        const float u1 = second.u() - first.u(), v1 = second.v() - first.v();
        const float u2 = third.u() - first.u(), v2 = third.v() - first.v();
        const float turn = u1 * v2 - v1 * u2;
        t.area = std::abs(turn);
        t.isPreserving = turn > 0.0f;
        t.isDegenerate = first.position() == second.position() || first.position() == third.position() ||
                         second.position() == third.position();
        t.alongU = edge1 * v2 - edge2 * v1;
        t.alongV = edge2 * u1 - edge1 * u2;
        if (!isSome(turn))
            return t;
        const float lengthU = std::sqrt(t.alongU.length2()), lengthV = std::sqrt(t.alongV.length2());
        const float sign = t.isPreserving ? 1.0f : -1.0f;
        t.alongU *= isSome(lengthU) ? sign / lengthU : 1.0f;
        t.alongV *= isSome(lengthV) ? sign / lengthV : 1.0f;
        t.isFree = !isSome(lengthU / t.area) || !isSome(lengthV / t.area);
        return t;
    }

    bool isCutFromSecond(int begin) const
    {
        const auto texture = [&](int a, int b) {
            const Corner &from = corners_[size_t(begin + a)], &to = corners_[size_t(begin + b)];
            const float u = to.u() - from.u(), v = to.v() - from.v();
            return u * u + v * v;
        };
        const auto space = [&](int a, int b) {
            return (corners_[size_t(begin + b)].position() - corners_[size_t(begin + a)].position()).length2();
        };
        const float first = texture(0, 2), second = texture(1, 3);
        return first < second ? false : second < first ? true : space(1, 3) < space(0, 2);
    }

    void cut(const std::vector<int> &counts)
    {
        std::vector<Triangle> degenerate;
        int begin = 0;
        for (int face = 0; face < int(counts.size()); begin += counts[size_t(face++)])
        {
            const int count = counts[size_t(face)], c = begin;
            std::vector<Triangle> halves;
            if (count == 3)
                halves = {look(face, c, c + 1, c + 2)};
            else if (count == 4 && isCutFromSecond(begin))
                halves = {look(face, c, c + 1, c + 3), look(face, c + 1, c + 2, c + 3)};
            else if (count == 4)
                halves = {look(face, c, c + 1, c + 2), look(face, c, c + 2, c + 3)};
            if (count == 4)
                pairHalves(halves[0], halves[1], begin);
            for (const Triangle &half : halves)
                (half.isDegenerate ? degenerate : triangles_).push_back(half);
        }
        good_ = int(triangles_.size());
        triangles_.insert(triangles_.end(), degenerate.begin(), degenerate.end());
    }

    static void pairHalves(Triangle &a, Triangle &b, int begin)
    {
        if (!a.isDegenerate && !b.isDegenerate)
        {
            const bool isFirst = b.isFree || a.area >= b.area;
            (isFirst ? b : a).isPreserving = (isFirst ? a : b).isPreserving;
        }
        else if (a.isDegenerate != b.isDegenerate)
        {
            const auto &kept = (a.isDegenerate ? b : a).corners;
            int missing = begin;
            while (std::find(kept.begin(), kept.end(), missing) != kept.end())
                ++missing;
            a.missing = b.missing = missing;
        }
    }

    void weld()
    {
        std::unordered_map<Key, int, KeyHash> known(2 * corners_.size());
        for (const Corner &c : corners_)
        {
            Key key = c.values;
            for (float &value : key)
                value += 0.0f;  // zeros lose their sign
            vertices_.push_back(known.emplace(key, int(known.size())).first->second);
        }
    }

    void link()
    {
        struct Edge
        {
            int low, high, triangle, at;
        };
        std::vector<Edge> edges;
        for (int t = 0; t < good_; ++t)
            for (int at = 0; at < 3; ++at)
            {
                const int a = vertex(t, at), b = vertex(t, (at + 1) % 3);
                edges.push_back({std::min(a, b), std::max(a, b), t, at});
            }
        const auto key = [](const Edge &e) { return std::array<int, 3>{e.low, e.high, e.triangle}; };
        std::sort(edges.begin(), edges.end(), [&](const Edge &a, const Edge &b) { return key(a) < key(b); });
        const auto place = [&](const Edge &e) -> int & { return triangles_[size_t(e.triangle)].neighbours[size_t(e.at)]; };
        for (size_t i = 0; i < edges.size(); ++i)
            for (size_t j = i + 1;
                 j < edges.size() && place(edges[i]) < 0 && edges[j].low == edges[i].low && edges[j].high == edges[i].high;
                 ++j)
                if (place(edges[j]) < 0 && vertex(edges[j].triangle, edges[j].at) != vertex(edges[i].triangle, edges[i].at))
                {
                    place(edges[i]) = edges[j].triangle;
                    place(edges[j]) = edges[i].triangle;
                }
    }

    void group()
    {
        for (int t = 0; t < good_; ++t)
            for (int at = 0; at < 3; ++at)
            {
                const Triangle &triangle = triangles_[size_t(t)];
                if (triangle.isFree || triangle.groups[size_t(at)] >= 0)
                    continue;
                groups_.push_back({vertex(t, at), triangle.isPreserving, {}});
                std::vector<int> reached{t};
                while (!reached.empty())
                {
                    const int next = reached.back();
                    reached.pop_back();
                    join(next, reached);
                }
            }
    }

    void join(int t, std::vector<int> &reached)
    {
        Triangle &triangle = triangles_[size_t(t)];
        Group &own = groups_.back();
        const size_t at = size_t(placeOf(t, own.vertex));
        if (triangle.groups[at] >= 0)
            return;
        if (triangle.isFree && triangle.groups == std::array<int, 3>{-1, -1, -1})
            triangle.isPreserving = own.isPreserving;
        if (triangle.isPreserving != own.isPreserving)
            return;
        triangle.groups[at] = int(groups_.size()) - 1;
        own.triangles.push_back(t);
        for (const size_t side : {(at + 2) % 3, at})
            if (triangle.neighbours[side] >= 0)
                reached.push_back(triangle.neighbours[side]);
    }

    void sum()
    {
        for (Group &own : groups_)
        {
            std::sort(own.triangles.begin(), own.triangles.end());
            for (const int t : own.triangles)
            {
                const int at = placeOf(t, own.vertex);
                const Triangle &triangle = triangles_[size_t(t)];
                const Vec3 tangent = sumFor(own, triangle, corner(triangle, at).normal());
                Result &result = results_[size_t(triangle.corners[size_t(at)])];
                const bool isSame = result.tangent == tangent;
                result.tangent = result.written++ && !isSame ? unit(result.tangent + tangent) : tangent;
                result.isPreserving = own.isPreserving;
            }
        }
    }

    Vec3 sumFor(const Group &own, const Triangle &of, const Vec3 &normal) const
    {
        const Vec3 ownU = project(of.alongU, normal), ownV = project(of.alongV, normal);
        Vec3 total(0.0f);
        for (const int t : own.triangles)
        {
            const Triangle &other = triangles_[size_t(t)];
            if (other.isFree)
                continue;
            const Vec3 alongU = project(other.alongU, normal), alongV = project(other.alongV, normal);
            if (!of.isFree && of.face != other.face && !(ownU.dot(alongU) > -1.0f && ownV.dot(alongV) > -1.0f))
                continue;
            const int at = placeOf(t, own.vertex);
            const Vec3 p = corner(other, at).position();
            const Vec3 before = project(corner(other, (at + 2) % 3).position() - p, normal);
            const Vec3 after = project(corner(other, (at + 1) % 3).position() - p, normal);
            total += alongU * float(std::acos(double(std::clamp(before.dot(after), -1.0f, 1.0f))));
        }
        return unit(total);
    }

    void complete()
    {
        std::map<int, int> firstOf;  // corner by vertex
        for (int t = 0; t < good_; ++t)
            for (const int c : triangles_[size_t(t)].corners)
                firstOf.emplace(vertices_[size_t(c)], c);
        for (size_t t = size_t(good_); t < triangles_.size(); ++t)
            for (const int c : triangles_[t].corners)
                if (const auto first = firstOf.find(vertices_[size_t(c)]);
                    triangles_[t].missing < 0 && first != firstOf.end())
                    results_[size_t(c)] = results_[size_t(first->second)];
        for (const Triangle &triangle : triangles_)
            for (int at = 2; at >= 0 && triangle.missing >= 0 && !triangle.isDegenerate; --at)
                if (corner(triangle, at).position() == corners_[size_t(triangle.missing)].position())
                    results_[size_t(triangle.missing)] = results_[size_t(triangle.corners[size_t(at)])];
    }

    const std::vector<Corner> &corners_;
    std::vector<Result> results_;
    std::vector<Triangle> triangles_;  // the degenerate ones last
    int good_ = 0;
    std::vector<int> vertices_;
    std::vector<Group> groups_;
};
}  // namespace bench
