#pragma once

#include <cstring>
#include <type_traits>
#include <utility>

#include <host/bas/CornerFan.h>
#include <host/bas/PointSums.h>

namespace host
{
/// Where normals of corners stand one after the other.
template <class Real> struct PackedCorners
{
    Real *values;

    Real *operator()(int64_t corner) const { return values + 3 * corner; }
};

/// The normals of the corners at the points of a window.
///
/// Most points are smooth, and all their corners have one normal: it is worked out once, and copied face by face.  Only the
/// corners at creases are gathered point by point.  `Index` numbers corners.
///
/// Use  `add` each block of the window in order; `finishPoints`; `write` the same faces in the same order; `separate`
template <class Real, class Index> class WindowCorners
{
public:
    using Vector = Imath::Vec3<Real>;

    /// For points [firstPoint, lastPoint), and at most so many faces, and corners.
    WindowCorners(int64_t firstPoint, int64_t lastPoint, int64_t faces, int64_t corners, bool isWeighted)
        : sums_(firstPoint, lastPoint, isWeighted), isWeighted_(isWeighted), points_(size_t(sums_.count())),
          faceNormals_(size_t(faces))
    {
        weights_.reserve(size_t(isWeighted ? corners : 0));
    }

    template <class Topology>
    void add(const Topology topology, const FaceBlock<Real> &block, int64_t firstFace, int64_t lastFace)
    {
        sums_.add(topology, block, firstFace, lastFace);
        storeLanes(block.normals(), lastFace - firstFace, &faceNormals_[size_t(faces_)].x);
        faces_ += lastFace - firstFace;
        if (!isWeighted_)
            return;
        if (const double *const weights = block.cornerWeights())
            weights_.insert(weights_.end(), weights, weights + (topology.end(lastFace - 1) - topology.begin(firstFace)));
        else
            for (int64_t face = firstFace; face < lastFace; ++face)
                weights_.insert(weights_.end(), size_t(topology.end(face) - topology.begin(face)),
                                block.parts()[face - firstFace].w);
    }

    /// Work out the normals of the points, and which are smooth.
    void finishPoints(const CuspCosines &cusp, bool normalize)
    {
        VectorLanes units, sums;
        double lengths[VectorLanes::kCount];
        Vector normals[VectorLanes::kCount];
        for (int64_t begin = 0; begin < sums_.count(); begin += VectorLanes::kCount)
        {
            const int64_t count = std::min(VectorLanes::kCount, sums_.count() - begin);
            loadLanes(sums_.sums(begin), count, units);
            if (!normalize)
                sums = units;
            normalizeLanes(units, count, lengths);
            storeLanes(normalize ? units : sums, count, &normals->x);
            for (int64_t i = 0; i < count; ++i)
            {
                const bool isSmooth = cusp.isSmooth(lengths[i], sums_.sums(begin)[i].w, sums_.least(begin + i));
                points_[size_t(begin + i)] = {normals[i], isSmooth ? kSmooth : kNone};
            }
        }
        faces_ = 0;
    }

    /// Write the corners of a block; with `isInside` it has no points outside the window.
    template <class Topology, class PlaceOf>
    void write(const Topology topology, int64_t firstFace, int64_t lastFace, bool isInside, const PlaceOf placeOf)
    {
        // A line that is not in the cache takes longer to come than to be filled.
        for (int64_t face = firstFace; face < lastFace; ++face)
            if (topology.begin(face) < topology.end(face))
                __builtin_prefetch(placeOf(topology.begin(face)), 1);
        bool isDone = false;
        if constexpr (std::is_same_v<PlaceOf, PackedCorners<Real>>)
            isDone = isInside && copyEven(topology, firstFace, lastFace, placeOf);
        if (!isDone)
            copyOwn(topology, firstFace, lastFace, placeOf);
        faces_ += lastFace - firstFace;
        corners_ += topology.end(lastFace - 1) - topology.begin(firstFace);
    }

    /// Write the corners that differ from others at their point.
    template <class Topology, class PlaceOf>
    void separate(const Topology topology, const CuspCosines &cusp, bool normalize, const PlaceOf &placeOf)
    {
        const auto firstAt = [&](const Corner &corner) -> Index & {
            return points_[size_t(sums_.place(topology.point(corner.corner)))].first;
        };
        for (size_t i = creased_.size(); i-- > 0;)
            creased_[i].next = std::exchange(firstAt(creased_[i]), Index(i));
        CornerFan fan;
        for (size_t i = 0; i < creased_.size(); ++i)
            if (firstAt(creased_[i]) == Index(i))
                separateAround(Index(i), cusp, normalize, fan, placeOf);
    }

private:
    template <class T> using Row = std::vector<T, BAS_BlockAllocator<T>>;

    static constexpr Index kNone = -1, kSmooth = 0;  // until the first corners are known

    // Its normal, and the first of its corners among those at creases.
    struct Point
    {
        Vector normal;
        Index first;
    };

    // A corner at a crease, the place of its face's normal, and the next corner at the same point.
    struct Corner
    {
        int64_t corner, face;
        double weight;
        Index next;
    };

    // Copies the normals of corners inside the window.
    template <class Topology, class PlaceOf>
    void copyOwn(const Topology &topology, int64_t firstFace, int64_t lastFace, const PlaceOf &placeOf)
    {
        for (int64_t face = firstFace; face < lastFace; ++face)
            for (int64_t corner = topology.begin(face), end = topology.end(face); corner < end; ++corner)
                if (const uint64_t at = sums_.place(topology.point(corner)); at < points_.size())
                {
                    std::memcpy(placeOf(corner), &points_[at].normal, sizeof(Vector));
                    if (points_[at].first != kSmooth)
                        noteCreased(corner, face - firstFace, corner - topology.begin(firstFace));
                }
    }

    // The same where all corners are inside; false, and nothing is done, unless the faces are of one size.
    template <class Topology>
    bool copyEven(const Topology &topology, int64_t firstFace, int64_t lastFace, const PackedCorners<Real> &places)
    {
        const int64_t size = topology.cornersOfEach(firstFace, lastFace);
        if (size == 0)
            return false;
        const int64_t first = topology.begin(firstFace), last = topology.end(lastFace - 1);
        // One move takes four numbers as fast as three: the fourth is overwritten by the next corner, if any.
        static_assert(sizeof(Point) >= 4 * sizeof(Real));
        constexpr int64_t kCornersAtOnce = 16;
        const Point *const points = points_.data();
        const int64_t firstPoint = sums_.first();
        for (int64_t begin = first; begin < last; begin += kCornersAtOnce)
        {
            const int64_t end = std::min(begin + kCornersAtOnce, last);
            Index flags = kSmooth;
            for (int64_t corner = begin; corner < end; ++corner)
            {
                const Point &point = points[topology.point(corner) - firstPoint];
                if (corner + 1 < last)
                    std::memcpy(places(corner), &point, 4 * sizeof(Real));
                else
                    std::memcpy(places(corner), &point, sizeof(Vector));
                flags |= point.first;
            }
            if (flags != kSmooth)
                for (int64_t corner = begin; corner < end; ++corner)
                    if (points[topology.point(corner) - firstPoint].first != kSmooth)
                        noteCreased(corner, (corner - first) / size, corner - first);
        }
        return true;
    }

    // The i-th face, or corner, of those that are written now.
    [[gnu::noinline]] void noteCreased(int64_t corner, int64_t faceAt, int64_t cornerAt)
    {
        const double weight = isWeighted_ ? weights_[size_t(corners_ + cornerAt)] : 1.0;
        creased_.push_back({corner, faces_ + faceAt, weight, kNone});
    }

    template <class PlaceOf>
    void separateAround(Index first, const CuspCosines &cusp, bool normalize, CornerFan &fan, const PlaceOf &placeOf)
    {
        around_.clear();
        for (Index i = first; i != kNone; i = creased_[size_t(i)].next)
            around_.push_back(i);
        fan.resize(int64_t(around_.size()));
        for (size_t i = 0; i < around_.size(); ++i)
        {
            const Corner &corner = creased_[size_t(around_[i])];
            fan.set(int64_t(i), BAS_Vec3d(faceNormals_[size_t(corner.face)]), corner.weight);
        }
        fan.separate(cusp, normalize, [&](int64_t i, const BAS_Vec3d &sum) {
            const Vector normal(sum);
            std::memcpy(placeOf(creased_[size_t(around_[size_t(i)])].corner), &normal, sizeof(Vector));
        });
    }

    PointSums<Real> sums_;
    bool isWeighted_;
    Row<Point> points_;
    Row<Vector> faceNormals_;          // in the order of the blocks
    Row<double> weights_;              // of the corners, in this order, unless all are 1
    int64_t faces_ = 0, corners_ = 0;  // so many are added, or written
    Row<Corner> creased_;
    std::vector<Index> around_;
};
}  // namespace host
