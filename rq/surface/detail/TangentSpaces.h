#pragma once

#include <algorithm>
#include <utility>

#include <host/bas/CornerAdjacency.h>
#include <rq/surface/detail/TangentFaces.h>
#include <rq/surface/detail/tangentFan.h>

namespace rq
{
/// The tangents of a mesh of triangles and quads (M. S. Mikkelsen, "Simulation of Wrinkled Surfaces Revisited", 2008).
///
/// Faces are looked at by themselves first.  All that the method asks of the neighbourhood of edges can be seen from the
/// vertices at their ends, so vertices are worked on by themselves then, with nothing kept from one to another.
template <class Topology> class TangentSpaces
{
    using Adjacency = host::CornerAdjacency<typename Topology::Index>;

public:
    /// `vertices` has the faces of `points`, and numbers their corners by what they hold; `around` are its corners.  Both
    /// tangents of each corner are written.
    TangentSpaces(const TangentInput &input, const Topology &points, const Topology &vertices, const Adjacency &around,
                  BAS_Vec3f *tangentU, BAS_Vec3f *tangentV)
        : input_(input), points_(points), vertices_(vertices), around_(around), tangentU_(tangentU), tangentV_(tangentV),
          faces_(input, points, tangentU, tangentV)
    {
        if (faces_.hasFree())
            decideFree();
        constexpr int64_t kVerticesPerTask = 1024, kFacesPerTask = 16384;
        host::parallelForRange(around_.points(), kVerticesPerTask, [&](int64_t begin, int64_t end) {
            Writer writer(*this);
            for (int64_t vertex = begin; vertex < end; ++vertex)
                writer.write(vertex);
        });
        host::parallelFor(points_.faces(), kFacesPerTask, [this](int64_t face) { completeQuad(face); });
    }

private:
    class Writer;

    /// A free triangle with directed neighbours in a fan: the group that begins at `rank` reaches it.
    struct Reach
    {
        int64_t rank, vertex;
        int first;
    };

    /// What all corners of a vertex have in common.
    uint32_t commonMarks(int64_t vertex) const
    {
        const auto *const corners = around_.around(vertex);
        uint32_t common = ~uint32_t(0);
        for (int64_t i = 0; i < around_.valence(vertex); ++i)
            common &= faces_.marks(corners[i]);
        return common;
    }

    /// Whether all triangles of a corner's face are.
    bool isDegenerate(int64_t corner) const
    {
        const TangentFace face = faces_[around_.faceOf(vertices_, corner)];
        return face.isDegenerate(0) && (face.triangles() < 2 || face.isDegenerate(1));
    }

    void gather(int64_t vertex, FanTriangles &triangles) const;
    void decideFree();
    std::vector<Reach> reachesFree() const;
    void completeQuad(int64_t face);

    const TangentInput &input_;
    const Topology &points_, &vertices_;
    const Adjacency &around_;
    BAS_Vec3f *tangentU_, *tangentV_;
    TangentFaces<Topology> faces_;
};

/// Collect the triangles around a vertex that have no two positions in one place.
template <class Topology> void TangentSpaces<Topology>::gather(int64_t vertex, FanTriangles &triangles) const
{
    const auto *const corners = around_.around(vertex);
    const int64_t valence = around_.valence(vertex);
    size_t count = 0;
    triangles.resize(2 * size_t(valence));
    for (int64_t i = 0; i < valence; ++i)
    {
        const int64_t corner = corners[i], face = around_.faceOf(vertices_, corner), begin = vertices_.begin(face);
        const TangentFace flags = faces_[face];
        for (int half = 0; half < flags.triangles(); ++half)
        {
            // Whether a quad's corner lies on the cut cannot be foretold: its place is filled, and then kept or not.
            const int found = flags.find(half, int(corner - begin)), at = std::max(found, 0);
            FanTriangle &made = triangles[count];
            count += size_t((found >= 0) & !flags.isDegenerate(half));
            for (int k = 0; k < 3; ++k)
                made.corners[size_t(k)] = uint8_t(flags.corner(half, k));
            made.face = face;
            made.begin = begin;
            made.next = vertices_.point(begin + flags.corner(half, at < 2 ? at + 1 : 0));
            made.previous = vertices_.point(begin + flags.corner(half, at > 0 ? at - 1 : 2));
            made.weighted = faces_.weighted(corner, half == 1 && flags.hasBoth(corner - begin));
            made.marks = faces_.marks(corner);
            made.half = uint8_t(half);
            made.at = uint8_t(at);
            made.isPreserving = flags.isPreserving(half);
            made.isFree = flags.isFree(half);
            made.across[0] = made.across[1] = made.group = -1;
        }
    }
    triangles.resize(count);
}

template <class Topology> std::vector<typename TangentSpaces<Topology>::Reach> TangentSpaces<Topology>::reachesFree() const
{
    using Reaches = std::vector<Reach>;
    constexpr int64_t kVerticesPerBlock = 4096;
    const auto look = [this](int64_t begin, int64_t end) {
        Reaches reaches;
        FanTriangles fan;
        for (int64_t vertex = begin; vertex < end; ++vertex)
        {
            if (commonMarks(vertex) & (MARK_PRESERVING | MARK_MIRRORED))
                continue;
            gather(vertex, fan);
            if (std::none_of(fan.begin(), fan.end(), [](const FanTriangle &t) { return t.isFree; }))
                continue;
            linkFan(fan);
            groupFan(fan, false);
            for (const FanTriangle &triangle : fan)
                for (const int other : triangle.across)
                    if (triangle.isFree && other >= 0 && !fan[size_t(other)].isFree)
                        reaches.push_back({fan[size_t(fan[size_t(other)].group)].rank(), vertex, fan[size_t(other)].group});
        }
        return reaches;
    };
    return host::parallelReduce(
        around_.points(), kVerticesPerBlock, Reaches(), look,
        [](Reaches &into, const Reaches &from) { into.insert(into.end(), from.begin(), from.end()); });
}

/// Let each free triangle be mirrored as the first group that comes to it.  That is a matter of order alone, so it is done
/// by one thread.
template <class Topology> void TangentSpaces<Topology>::decideFree()
{
    std::vector<Reach> reaches = reachesFree();
    std::sort(reaches.begin(), reaches.end(), [](const Reach &a, const Reach &b) { return a.rank < b.rank; });
    FanTriangles fan;
    int64_t last = -1;
    for (const Reach &reach : reaches)
    {
        if (reach.rank == std::exchange(last, reach.rank))
            continue;
        gather(reach.vertex, fan);
        linkFan(fan);
        const bool isPreserving = fan[size_t(reach.first)].isPreserving;
        for (const int side : {0, 1})
            for (int i = fan[size_t(reach.first)].across[side]; i >= 0 && i != reach.first; i = fan[size_t(i)].across[side])
            {
                TangentFace &face = faces_[fan[size_t(i)].face];
                if (fan[size_t(i)].isFree && !face.isDecided(fan[size_t(i)].half))
                    face.decide(fan[size_t(i)].half, isPreserving);
                if (face.isPreserving(fan[size_t(i)].half) != isPreserving)
                    break;
            }
    }
}

/// A quad with one degenerate half has a corner without a triangle: it takes the tangents of the corner in the same place.
template <class Topology> void TangentSpaces<Topology>::completeQuad(int64_t face)
{
    const TangentFace flags = faces_[face];
    if (flags.triangles() < 2 || flags.isDegenerate(0) == flags.isDegenerate(1))
        return;
    const int good = flags.isDegenerate(0) ? 1 : 0;
    const int64_t begin = points_.begin(face);
    int64_t missing = begin;
    while (flags.find(good, int(missing - begin)) >= 0)
        ++missing;
    for (int k = 0; k < 3; ++k)
        if (const int64_t corner = begin + flags.corner(good, k);
            input_.position(points_.point(corner)) == input_.position(points_.point(missing)))
        {
            tangentU_[missing] = tangentU_[corner];
            tangentV_[missing] = tangentV_[corner];
            return;
        }
}
}  // namespace rq
