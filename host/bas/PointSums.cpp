#include <host/bas/PointSums.h>

#include <algorithm>
#include <array>
#include <numeric>

#include <host/bas/clones.h>
#include <host/bas/detail/faceRows.h>

namespace
{
using host::PointSumFaces;

/// The same as `PointSumPlaces`, number by number.
struct Places
{
    int64_t first, count;
    double *sums, *least;
};

using Four = host::Lanes<double, 4>;

/// Adds the parts of faces in a row, times the weights of their corners.
template <int kCorners, bool isWeighted, bool keepsLeast, class Index> class RowAdder
{
public:
    HOST_LANES RowAdder(const PointSumFaces<Index> &faces, const double *parts, int64_t count, const Places &places)
        : faces_(faces), parts_(parts), count_(count), places_(places)
    {}

    /// To all points of a single face.
    HOST_LANES void addFace() const
    {
        for (int corner = 0; corner < kCorners; ++corner)
            if (const int64_t place = placeOf(corner); uint64_t(place) < uint64_t(places_.count))
                addOne(place, 0, corner);
    }

    /// To all points of several.
    HOST_LANES void addAll() const
    {
        const Index *const points = faces_.points;
        std::array<int, kCorners> corners;
        std::iota(corners.begin(), corners.end(), 0);
        // A point comes first to the corner that is furthest ahead: it gets the parts in the order of the faces.
        for (int k = 1; k < kCorners; ++k)
            for (int i = k; i > 0 && points[corners[i - 1]] < points[corners[i]]; --i)
                std::swap(corners[i - 1], corners[i]);
        for (int k = 0; k < kCorners; ++k)
            if (k + 1 < kCorners && points[corners[k]] - 1 == points[corners[k + 1]])
            {
                addBoth(corners[k], corners[k + 1]);
                ++k;
            }
            else
                add(corners[k]);
    }

private:
    // To the points of their `corner`-th corners.
    HOST_LANES void add(int corner) const
    {
        const int64_t start = placeOf(corner);
        for (int64_t i = std::max<int64_t>(0, -start), end = std::min(count_, places_.count - start); i < end; ++i)
            addOne(start + i, i, corner);
    }

    // The same for two corners, where the `corner` of each face is the `next` of the face after it: most sums are read and
    // written once.
    HOST_LANES void addBoth(int corner, int next) const
    {
        const int64_t start = placeOf(next);
        const auto isInside = [&](int64_t i) { return uint64_t(start + i) < uint64_t(places_.count); };
        if (isInside(0))
            addOne(start, 0, next);
        for (int64_t i = std::max<int64_t>(1, -start), end = std::min(count_, places_.count - start); i < end; ++i)
        {
            noteLeast(start + i, i - 1, corner);
            noteLeast(start + i, i, next);
            storeSum(start + i, sumAt(start + i) + part(i - 1, corner) + part(i, next));
        }
        if (isInside(count_))
            addOne(start + count_, count_ - 1, corner);
    }

    HOST_LANES int64_t placeOf(int corner) const { return int64_t(faces_.points[corner]) - places_.first; }
    HOST_LANES double weight(int64_t face, int corner) const { return faces_.weights[face * kCorners + corner]; }

    HOST_LANES Four part(int64_t face, int corner) const
    {
        const Four part = host::lanesAt<4>(parts_ + 4 * face);
        return isWeighted ? part * weight(face, corner) : part;
    }

    HOST_LANES Four sumAt(int64_t place) const { return host::lanesAt<4>(places_.sums + 4 * place); }
    HOST_LANES void storeSum(int64_t place, const Four &sum) const { host::putLanes(sum, places_.sums + 4 * place); }

    HOST_LANES void noteLeast(int64_t place, int64_t face, int corner) const
    {
        if constexpr (keepsLeast)
            places_.least[place] = std::min(places_.least[place], isWeighted ? weight(face, corner) : parts_[4 * face + 3]);
    }

    HOST_LANES void addOne(int64_t place, int64_t face, int corner) const
    {
        noteLeast(place, face, corner);
        storeSum(place, sumAt(place) + part(face, corner));
    }

    const PointSumFaces<Index> &faces_;
    const double *parts_;
    int64_t count_;
    const Places &places_;
};

/// Adds what all faces give, row after row.
template <int kCorners, bool isWeighted, bool keepsLeast, class Index>
HOST_CLONES void addFaces(PointSumFaces<Index> faces, const double *parts, const Places places)
{
    while (faces.count > 0)
    {
        const Index *const points = faces.points;
        const int64_t count = host::countInRow<kCorners>(points, faces.count);
        const RowAdder<kCorners, isWeighted, keepsLeast, Index> row(faces, parts, count, places);
        if (count > 1)
            row.addAll();
        else
            row.addFace();
        faces.points += count * kCorners;
        faces.weights += isWeighted ? count * kCorners : 0;
        faces.count -= count;
        parts += 4 * count;
    }
}

template <int kCorners, class Index>
void add(const PointSumFaces<Index> &faces, const BAS_Vec4d *parts, const host::PointSumPlaces &places)
{
    const auto run = [&](auto function) {
        function(faces, &parts->x, {places.first, places.count, &places.sums->x, places.least});
    };
    if (places.least)
        faces.weights ? run(addFaces<kCorners, true, true, Index>) : run(addFaces<kCorners, false, true, Index>);
    else
        faces.weights ? run(addFaces<kCorners, true, false, Index>) : run(addFaces<kCorners, false, false, Index>);
}

template <class Index>
void addSome(const PointSumFaces<Index> &faces, const BAS_Vec4d *parts, const host::PointSumPlaces &places)
{
    if (faces.corners == 4)
        add<4>(faces, parts, places);
    else
        add<3>(faces, parts, places);
}
}  // namespace

namespace host
{
void addParts(const PointSumFaces<int32_t> &faces, const BAS_Vec4d *parts, const PointSumPlaces &places)
{
    addSome(faces, parts, places);
}

void addParts(const PointSumFaces<int64_t> &faces, const BAS_Vec4d *parts, const PointSumPlaces &places)
{
    addSome(faces, parts, places);
}
}  // namespace host
