#pragma once

#include <algorithm>
#include <atomic>
#include <vector>

#include <rq/surface/detail/tangentFace.h>
#include <rq/surface/detail/tangentInput.h>

namespace rq
{
/// What can be said of each face and its corners by itself.
///
/// A face is plain when it has tangents and none of its triangles is free or degenerate.
template <class Topology> class TangentFaces
{
public:
    /// The weighted directions of the triangles lie where the tangents of their corners are written later: those of one
    /// vertex are read together, and then no one else needs them.  No further memory is needed so.
    TangentFaces(const TangentInput &input, const Topology &topology, BAS_Vec3f *tangentU, BAS_Vec3f *tangentV)
        : input_(input), topology_(topology), first_(tangentU), second_(tangentV), faces_(size_t(topology.faces())),
          marks_(size_t(topology.begin(topology.faces())))
    {
        // A face costs about 100 ns.
        constexpr int64_t kFacesPerTask = 1024;
        host::parallelForRange(topology.faces(), kFacesPerTask, [this](int64_t begin, int64_t end) {
            Block block(*this);
            for (int64_t face = begin; face < end; ++face)
                block.add(face);
            block.finish();
        });
    }

    TangentFace &operator[](int64_t face) { return faces_[size_t(face)]; }
    const TangentFace &operator[](int64_t face) const { return faces_[size_t(face)]; }

    uint32_t marks(int64_t corner) const { return marks_[size_t(corner)]; }

    /// The weighted direction of the triangle of a corner; where that has both, of the half asked for.
    const BAS_Vec3f &weighted(int64_t corner, bool isSecondOfBoth) const
    {
        return (isSecondOfBoth ? second_ : first_)[corner];
    }

    /// Whether some triangles that are not degenerate have no direction.
    bool hasFree() const { return hasFree_.load(std::memory_order_relaxed); }

    /// Put a triangle of a face, whose first corner is `begin`, into a lane.
    void fill(TangentLanes &lanes, int64_t lane, int64_t face, int64_t begin, int triangle) const
    {
        for (int k = 0; k < 3; ++k)
            lanes.set(lane, k, cornerAt(begin + (*this)[face].corner(triangle, k)));
    }

private:
    class Block;

    TangentCorner cornerAt(int64_t corner) const { return input_.corner(corner, topology_.point(corner)); }

    const TangentInput &input_;
    const Topology &topology_;
    BAS_Vec3f *first_, *second_;
    std::vector<TangentFace, BAS_BlockAllocator<TangentFace>> faces_;
    std::vector<uint16_t, BAS_BlockAllocator<uint16_t>> marks_;
    std::atomic<bool> hasFree_ = false;
};

/// The faces whose triangles are in the lanes together.
template <class Topology> class TangentFaces<Topology>::Block
{
public:
    explicit Block(TangentFaces &faces) : faces_(faces) {}

    void add(int64_t face)
    {
        const int64_t begin = faces_.topology_.begin(face), count = faces_.topology_.end(face) - begin;
        if (count != 3 && count != 4)
        {
            faces_[face] = TangentFace();
            std::fill_n(&faces_.marks_[size_t(begin)], count, uint16_t(0));
            return;
        }
        if (lanesUsed_ + 2 > TangentLanes::kCount)
            finish();
        TangentCorner corners[4];
        for (int64_t i = 0; i < count; ++i)
            corners[i] = faces_.cornerAt(begin + i);
        const TangentFace cut(count == 3 ? TangentFace::TRIANGLE : TangentFace::shorterDiagonal(corners));
        indices_[pending_] = face;
        begins_[pending_] = begin;
        cuts_[pending_++] = cut;
        for (int t = 0; t < cut.triangles(); ++t, ++lanesUsed_)
            for (int k = 0; k < 3; ++k)
                lanes_.set(lanesUsed_, k, corners[cut.corner(t, k)]);
    }

    void finish()
    {
        lanes_.run(lanesUsed_);
        int64_t lane = 0;
        for (size_t i = 0; i < pending_; ++i)
        {
            const int triangles = cuts_[i].triangles();
            triangles == 2 ? write<2>(i, lane) : write<1>(i, lane);
            lane += triangles;
        }
        pending_ = 0;
        lanesUsed_ = 0;
    }

private:
    template <int triangles> void write(size_t at, int64_t lane)
    {
        TangentFace face = cuts_[at];
        face.describe(lanes_, lane);
        faces_[indices_[at]] = face;
        const bool isPlain = face.isPlain();
        const TangentMark mirroring = face.isPreserving(0) ? MARK_PRESERVING : MARK_MIRRORED;
        const uint32_t ofAll = MARK_SIDES_U | MARK_SIDES_V | (isPlain ? mirroring : 0u);
        uint32_t marks[4] = {ofAll, ofAll, ofAll, ofAll};
        for (int t = 0; t < triangles; ++t)
        {
            if (face.isFree(t) && !face.isDegenerate(t))
                faces_.hasFree_.store(true, std::memory_order_relaxed);
            const bool isDirected = isPlain || (!face.isDegenerate(t) && !face.isFree(t));
            for (int k = 0; k < 3; ++k)
            {
                const int corner = face.corner(t, k);
                BAS_Vec3f *const place = t == 1 && face.hasBoth(corner) ? faces_.second_ : faces_.first_;
                place[begins_[at] + corner] = lanes_.weighted(lane + t, k);
                marks[corner] &= isDirected ? uint32_t(lanes_.sides(lane + t, k)) | ~(MARK_SIDES_U | MARK_SIDES_V) : ~0u;
            }
        }
        for (int corner = 0; corner < triangles + 2; ++corner)
            faces_.marks_[size_t(begins_[at] + corner)] = uint16_t(marks[corner] | (face.hasBoth(corner) ? MARK_BOTH : 0u));
    }

    TangentFaces &faces_;
    TangentLanes lanes_;
    int64_t lanesUsed_ = 0;

    // Of the faces in the lanes.
    size_t pending_ = 0;
    int64_t indices_[TangentLanes::kCount], begins_[TangentLanes::kCount];
    TangentFace cuts_[TangentLanes::kCount];
};
}  // namespace rq
