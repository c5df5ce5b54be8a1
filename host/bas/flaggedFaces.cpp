#include <host/bas/flaggedFaces.h>

#include <host/bas/detail/faceRows.h>

namespace
{
// The flags of 64 points.
uint64_t flagsFrom(const uint64_t *words, int64_t i)
{
    const uint64_t low = words[i >> 6], high = words[(i >> 6) + 1];
    return (low >> (i & 63)) | (high << 1 << (~i & 63));
}

template <int kCorners, class Index>
uint64_t flagged(const Index *points, int64_t faces, const uint64_t *words, int64_t first)
{
    uint64_t all = 0;
    for (int64_t i = 0; i < faces;)
    {
        const Index *const face = points + i * kCorners;
        const int64_t count = host::countInRow<kCorners>(face, faces - i);
        uint64_t row = 0;
        for (int k = 0; k < kCorners; ++k)
        {
            const int64_t point = int64_t(face[k]) - first;
            row |= count > 1 ? flagsFrom(words, point) : words[point >> 6] >> (point & 63);
        }
        all |= (row & (~uint64_t(0) >> (64 - count))) << i;
        i += count;
    }
    return all;
}

template <class Index>
uint64_t flaggedOf(const Index *points, int64_t corners, int64_t faces, const BAS_BitArray &flags, int64_t first)
{
    return corners == 4 ? flagged<4>(points, faces, flags.words(), first) : flagged<3>(points, faces, flags.words(), first);
}
}  // namespace

namespace host
{
uint64_t flaggedFaces(const int32_t *points, int64_t corners, int64_t faces, const BAS_BitArray &flags, int64_t first)
{
    return flaggedOf(points, corners, faces, flags, first);
}

uint64_t flaggedFaces(const int64_t *points, int64_t corners, int64_t faces, const BAS_BitArray &flags, int64_t first)
{
    return flaggedOf(points, corners, faces, flags, first);
}
}  // namespace host
