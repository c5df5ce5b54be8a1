#pragma once

#include <algorithm>

#include <host/bas/detail/lanes.h>

// Faces mostly come in rows, as those of a grid do: the points of each are those of the one before, plus one.  What lies
// around such faces is read and written in one piece.

namespace host
{
/// Whether each of these triangles or quads but the first follows the one before it in such a row.
template <int kCorners, int kFaces, class Index> HOST_LANES bool areInRow(const Index *points)
{
    constexpr int kEntries = kCorners * (kFaces - 1);
    using Four = Lanes<std::make_unsigned_t<Index>, 4>;
    Four differences = {};
    for (int i = 0; i < kEntries; i += 4)
    {
        // The last four overlap those before.
        const int at = std::min(i, kEntries - 4);
        Four before, own;
        std::memcpy(&before, points + at, sizeof(before));
        std::memcpy(&own, points + at + kCorners, sizeof(own));
        differences |= (before + 1) ^ own;
    }
    return !isAny(differences);
}

/// How many of these faces, at least one, begin such a row.
template <int kCorners, class Index> HOST_LANES int64_t countInRow(const Index *points, int64_t faces)
{
    // Of most faces that begin no row the first point tells.
    if (faces < 2 || int64_t(points[0]) + 1 != int64_t(points[kCorners]))
        return 1;
    int64_t count = 1;
    while (count + 4 <= faces && areInRow<kCorners, 5>(points + (count - 1) * kCorners))
        count += 4;
    const auto follows = [](const Index *face) {
        bool isNext = true;
        for (int k = 0; k < kCorners; ++k)
            isNext &= int64_t(face[k - kCorners]) + 1 == int64_t(face[k]);
        return isNext;
    };
    while (count < faces && follows(points + count * kCorners))
        ++count;
    return count;
}
}  // namespace host
