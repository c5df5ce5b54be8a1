#pragma once

#include <bit>
#include <cstring>
#include <type_traits>

#include <host/bas/CreasedCorners.h>
#include <host/bas/PointSums.h>
#include <host/bas/sumNormals.h>
#include <host/bas/stream.h>

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
/// Use  `add` each block of the window in order; `finishPoints`; `noteCreased` the same blocks; `separate`; `write` them
template <class Real, class Index> class WindowCorners
{
public:
    using Vector = Imath::Vec3<Real>;

    /// For points [firstPoint, lastPoint), and at most so many faces, and corners.
    WindowCorners(int64_t firstPoint, int64_t lastPoint, int64_t faces, int64_t corners, bool isWeighted)
        : sums_(firstPoint, lastPoint, isWeighted), isWeighted_(isWeighted), normals_(size_t(sums_.count())),
          faceNormals_(size_t(faces)), creased_(sums_.count())
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
        constexpr int64_t kAtOnce = 64;
        for (int64_t begin = 0; begin < sums_.count(); begin += kAtOnce)
        {
            const uint64_t creased =
                sumNormals(sums_.sums(begin), sums_.least(begin), std::min(kAtOnce, sums_.count() - begin), cusp, normalize,
                           normals_.data() + begin);
            creased_.flags.words()[begin / kAtOnce] = creased;
            hasCreases_ |= creased != 0;
        }
        faces_ = 0;
    }

    /// Note which corners of a block lie at creases; with `isInside` it has no points outside the window.
    template <class Topology> void noteCreased(const Topology topology, int64_t firstFace, int64_t lastFace, bool isInside)
    {
        if (!hasCreases_)
            return;
        const int64_t first = topology.begin(firstFace), size = topology.cornersOfEach(firstFace, lastFace);
        const auto noteFace = [&](int64_t face) {
            for (int64_t corner = topology.begin(face), end = topology.end(face); corner < end; ++corner)
                if (const uint64_t at = sums_.place(topology.point(corner));
                    at < normals_.size() && creased_.flags.get(int64_t(at)))
                    creased_.note(corner, int64_t(at), faces_ + face - firstFace,
                                  isWeighted_ ? weights_[size_t(corners_ + corner - first)] : 1.0);
        };
        if (isInside && (size == 3 || size == 4))
            for (uint64_t faces =
                     flaggedFaces(topology.points + first, size, lastFace - firstFace, creased_.flags, sums_.first());
                 faces != 0; faces &= faces - 1)
                noteFace(firstFace + std::countr_zero(faces));
        else
            for (int64_t face = firstFace; face < lastFace; ++face)
                noteFace(face);
        faces_ += lastFace - firstFace;
        corners_ += topology.end(lastFace - 1) - first;
    }

    /// Find the normals of the corners at creases.
    void separate(const CuspCosines &cusp, bool normalize) { creased_.separate(cusp, normalize, faceNormals_.data()); }

    /// Write the corners of a block; `streams` past the caches where that is possible.
    template <class Topology, class PlaceOf>
    void write(const Topology topology, int64_t firstFace, int64_t lastFace, bool isInside, bool streams,
               const PlaceOf placeOf)
    {
        const int64_t first = topology.begin(firstFace), last = topology.end(lastFace - 1);
        if constexpr (std::is_same_v<PlaceOf, PackedCorners<Real>>)
            if (isInside)
                return copyAll(topology, first, last, streams, placeOf);
        // A line that is not in the cache takes longer to come than to be filled.
        for (int64_t face = firstFace; face < lastFace; ++face)
            if (topology.begin(face) < topology.end(face))
                __builtin_prefetch(placeOf(topology.begin(face)), 1);
        for (int64_t corner = first; corner < last; ++corner)
            if (const uint64_t at = sums_.place(topology.point(corner)); at < normals_.size())
                std::memcpy(placeOf(corner), &normals_[at], sizeof(Vector));
        writeCreased(last, placeOf);
    }

private:
    template <class T> using Row = std::vector<T, BAS_BlockAllocator<T>>;

    // Copies the normals of corners that are all inside, some at a time through a buffer in the first cache.
    template <class Topology>
    void copyAll(const Topology &topology, int64_t first, int64_t last, bool streams, const PackedCorners<Real> &places)
    {
        constexpr int64_t kCornersAtOnce = 256;
        alignas(64) Real buffer[3 * kCornersAtOnce + 1];
        for (int64_t begin = first; begin < last; begin += kCornersAtOnce)
        {
            const int64_t end = std::min(begin + kCornersAtOnce, last);
            gatherVectors(normals_.data(), topology.points + begin, end - begin, sums_.first(), buffer);
            writeCreased(end, [&](int64_t corner) { return buffer + 3 * (corner - begin); });
            const size_t bytes = size_t(end - begin) * sizeof(Vector);
            if (streams)
                streamCopy(reinterpret_cast<char *>(places(begin)), reinterpret_cast<const char *>(buffer), bytes);
            else
                std::memcpy(places(begin), buffer, bytes);
        }
    }

    // Writes those before `end` that are not written yet.
    template <class PlaceOf> void writeCreased(int64_t end, const PlaceOf &placeOf)
    {
        for (; written_ < creased_.corners().size() && creased_.corners()[written_].corner < end; ++written_)
            std::memcpy(placeOf(creased_.corners()[written_].corner), &creased_.corners()[written_].normal, sizeof(Vector));
    }

    PointSums<Real> sums_;
    bool isWeighted_;
    Row<PaddedVector<Real>> normals_;  // of the points
    Row<Vector> faceNormals_;          // in the order of the blocks
    Row<double> weights_;              // of the corners, in this order, unless all are 1
    int64_t faces_ = 0, corners_ = 0;  // so many are added, or looked at
    bool hasCreases_ = false;
    CreasedCorners<Real, Index> creased_;
    size_t written_ = 0;  // so many of these
};
}  // namespace host
