#pragma once

#include <rq/surface/detail/TangentSpaces.h>

namespace rq
{
/// The vertices whose triangles are in the lanes together.
template <class Topology> class TangentSpaces<Topology>::Batch
{
public:
    Batch(const TangentSpaces &spaces, BAS_Vec3f *tangentU, BAS_Vec3f *tangentV)
        : spaces_(spaces), tangentU_(tangentU), tangentV_(tangentV)
    {}

    void add(int64_t vertex)
    {
        if (lanes_.count() > kMost)
            finish();
        const size_t begin = triangles_.size();
        spaces_.gather(vertex, triangles_);
        fans_.push_back({vertex, begin, triangles_.size()});
        const std::span<FanTriangle> fan = trianglesOf(fans_.back());
        linkFan(fan);
        groupFan(fan, true);
        if (fan.empty())
            return;
        const BAS_Vec3f normal = normalOf(vertex);
        for (const FanTriangle &triangle : fan)
            fill(triangle, normal);
    }

    /// Write the tangents of all that was added.
    void finish()
    {
        lanes_.run();
        for (const Fan &fan : fans_)
            write(fan);
        triangles_.clear();
        fans_.clear();
        lanes_.clear();
    }

private:
    // Full rows of triangles, but few enough to stay in a near cache.
    static constexpr int64_t kMost = 480;

    struct Fan
    {
        int64_t vertex;
        size_t begin, end;
    };

    std::span<FanTriangle> trianglesOf(const Fan &fan)
    {
        return std::span(triangles_).subspan(fan.begin, fan.end - fan.begin);
    }

    BAS_Vec3f normalOf(int64_t vertex) const
    {
        const int64_t corner = spaces_.around_.around(vertex)[0];
        return spaces_.input_.normal(corner, spaces_.points_.point(corner));
    }

    void fill(const FanTriangle &triangle, const BAS_Vec3f &normal)
    {
        BAS_Vec3f p[3];
        const float *texture[3];
        for (size_t k = 0; k < 3; ++k)
        {
            const int64_t corner = triangle.corner(int(k)), point = spaces_.points_.point(corner);
            p[k] = spaces_.input_.position(point);
            texture[k] = spaces_.input_.texture(corner, point);
        }
        const int at = triangle.at, next = at < 2 ? at + 1 : 0, previous = at > 0 ? at - 1 : 2;
        lanes_.add({p[1] - p[0], p[2] - p[0], texture[1][0] - texture[0][0], texture[1][1] - texture[0][1],
                    texture[2][0] - texture[0][0], texture[2][1] - texture[0][1], p[next] - p[at], p[previous] - p[at],
                    normal});
    }

    void write(const Fan &fan)
    {
        const std::span<const FanTriangle> triangles = trianglesOf(fan);
        const int64_t valence = spaces_.around_.valence(fan.vertex);
        if (valence == 0)
            return;
        sums_.run(triangles, lanes_, int64_t(fan.begin));
        const BAS_Vec3f normal = normalOf(fan.vertex);
        const auto *const corners = spaces_.around_.around(fan.vertex);
        size_t at = 0;
        for (int64_t i = 0; i < valence; ++i)
        {
            const int64_t corner = corners[i];
            const size_t begin = at;
            while (at < triangles.size() && triangles[at].corner() == corner)
                ++at;
            // A corner of nothing but degenerate triangles follows the vertex's first good one.
            const bool isLost = begin == at && !triangles.empty() && spaces_.isDegenerate(corner);
            if (isLost)
                missing_.push_back(corner);
            else
                write(corner, triangles, begin, at, normal);
        }
        for (const int64_t corner : missing_)
        {
            tangentU_[corner] = tangentU_[triangles[0].corner()];
            tangentV_[corner] = tangentV_[triangles[0].corner()];
        }
        missing_.clear();
    }

    /// Write what the triangles [begin, end) of a fan, which are those of one corner, say of it.
    void write(int64_t corner, std::span<const FanTriangle> fan, size_t begin, size_t end, const BAS_Vec3f &normal)
    {
        BAS_Vec3f tangent(1.0f, 0.0f, 0.0f);
        int group = -1;
        for (size_t i = begin; i < end; ++i)
        {
            if (fan[i].group < 0)
                continue;
            const BAS_Vec3f &own = sums_.tangent(int64_t(i));
            tangent = group < 0 ? own : FanSums::average(tangent, own);
            group = std::max(group, fan[i].group);
        }
        const bool isPreserving = group >= 0 && fan[size_t(group)].isPreserving;
        tangentU_[corner] = tangent;
        tangentV_[corner] = isPreserving ? normal % tangent : tangent % normal;
    }

    const TangentSpaces &spaces_;
    BAS_Vec3f *tangentU_, *tangentV_;
    TangentLanes lanes_;
    FanSums sums_;
    FanTriangles triangles_;
    std::vector<Fan> fans_;
    std::vector<int64_t> missing_;
};
}  // namespace rq
