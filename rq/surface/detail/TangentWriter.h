#pragma once

#include <rq/surface/detail/FanSums.h>
#include <rq/surface/detail/PlainFan.h>
#include <rq/surface/detail/TangentSpaces.h>

namespace rq
{
/// Writes the tangents of the corners of vertices.
template <class Topology> class TangentSpaces<Topology>::Writer
{
    using Index = typename Topology::Index;

public:
    explicit Writer(TangentSpaces &spaces)
        : spaces_(spaces),
          sums_([this](std::span<const FanTriangle> fan, FanSums::Directions *directions) { look(fan, directions); })
    {}

    void write(int64_t vertex)
    {
        const Index *const corners = spaces_.around_.around(vertex);
        const int64_t valence = spaces_.around_.valence(vertex);
        if (valence > 0 && !writePlain(vertex, corners, valence))
            writeAny(vertex, corners, valence);
    }

private:
    /// Most vertices have one group, of plain faces with no textures that grow in opposite ways.  False when this one is
    /// another.
    bool writePlain(int64_t vertex, const Index *corners, int64_t valence)
    {
        if (valence > PlainFan<Index>::kMost)
            return false;
        const uint32_t common = spaces_.commonMarks(vertex);
        const bool isPreserving = common & MARK_PRESERVING, isMirrored = common & MARK_MIRRORED;
        if (!(isPreserving | isMirrored) || !(common & MARK_SIDES_U) || !(common & MARK_SIDES_V))
            return false;
        plain_.clear();
        BAS_Vec3f sum(0.0f);
        for (int64_t i = 0; i < valence; ++i)
        {
            const bool hasBoth = spaces_.faces_.marks(corners[i]) & MARK_BOTH;
            addPlain(corners[i], hasBoth);
            // Which corners have both is chance, so it is no branch.
            const BAS_Vec3f none(0.0f);
            const BAS_Vec3f *const second = hasBoth ? &spaces_.faces_.weighted(corners[i], true) : &none;
            sum += spaces_.faces_.weighted(corners[i], false);
            sum += *second;
        }
        if (!plain_.isOneWay())
            return false;
        const BAS_Vec3f normal = normalAt(corners[0]), tangent = FanSums::directionOf(sum);
        const BAS_Vec3f second = isPreserving ? normal % tangent : tangent % normal;
        for (int64_t i = 0; i < valence; ++i)
        {
            spaces_.tangentU_[corners[i]] = tangent;
            spaces_.tangentV_[corners[i]] = second;
        }
        return true;
    }

    void addPlain(int64_t corner, bool hasBoth)
    {
        const Topology &vertices = spaces_.vertices_;
        const int64_t face = spaces_.around_.faceOf(vertices, corner);
        const int64_t begin = vertices.begin(face), end = vertices.end(face);
        plain_.add(Index(vertices.point(corner + 1 < end ? corner + 1 : begin)),
                   Index(vertices.point(corner > begin ? corner - 1 : end - 1)));
        if (end - begin == 4)
            plain_.addDiagonal(Index(vertices.point(begin + ((corner - begin) ^ 2))), hasBoth);
    }

    void writeAny(int64_t vertex, const Index *corners, int64_t valence)
    {
        spaces_.gather(vertex, fan_);
        linkFan(fan_);
        groupFan(fan_, true);
        sums_.run(fan_);
        const BAS_Vec3f normal = normalAt(corners[0]);
        size_t at = 0;
        for (int64_t i = 0; i < valence; ++i)
        {
            const int64_t corner = corners[i];
            const size_t begin = at;
            while (at < fan_.size() && fan_[at].corner() == corner)
                ++at;
            // A corner of nothing but degenerate triangles follows the vertex's first good one.
            const bool isLost = begin == at && !fan_.empty() && spaces_.isDegenerate(corner);
            if (isLost)
                missing_.push_back(corner);
            else
                writeCorner(corner, begin, at, normal);
        }
        for (const int64_t corner : missing_)
        {
            spaces_.tangentU_[corner] = spaces_.tangentU_[fan_[0].corner()];
            spaces_.tangentV_[corner] = spaces_.tangentV_[fan_[0].corner()];
        }
        missing_.clear();
    }

    /// Write what the triangles [begin, end) of the fan, which are those of one corner, say of it.
    void writeCorner(int64_t corner, size_t begin, size_t end, const BAS_Vec3f &normal)
    {
        BAS_Vec3f tangent(1.0f, 0.0f, 0.0f);
        int group = -1;
        for (size_t i = begin; i < end; ++i)
        {
            if (fan_[i].group < 0)
                continue;
            const BAS_Vec3f &own = sums_.tangent(int64_t(i));
            tangent = group < 0 ? own : FanSums::average(tangent, own);
            group = std::max(group, fan_[i].group);
        }
        const bool isPreserving = group >= 0 && fan_[size_t(group)].isPreserving;
        spaces_.tangentU_[corner] = tangent;
        spaces_.tangentV_[corner] = isPreserving ? normal % tangent : tangent % normal;
    }

    /// The normal of a vertex is that of its first corner.
    BAS_Vec3f normalAt(int64_t corner) const { return spaces_.input_.normal(corner, spaces_.points_.point(corner)); }

    void look(std::span<const FanTriangle> fan, FanSums::Directions *directions)
    {
        for (size_t begin = 0; begin < fan.size(); begin += size_t(TangentLanes::kCount))
        {
            const size_t end = std::min(fan.size(), begin + size_t(TangentLanes::kCount));
            for (size_t i = begin; i < end; ++i)
                spaces_.faces_.fill(lanes_, int64_t(i - begin), fan[i].face, fan[i].begin, fan[i].half);
            lanes_.run(int64_t(end - begin));
            for (size_t i = begin; i < end; ++i)
                directions[i] = {lanes_.alongU(int64_t(i - begin), fan[i].at), lanes_.alongV(int64_t(i - begin), fan[i].at)};
        }
    }

    TangentSpaces &spaces_;
    PlainFan<Index> plain_;
    FanTriangles fan_;
    FanSums sums_;
    std::vector<int64_t> missing_;
    TangentLanes lanes_;
};
}  // namespace rq
