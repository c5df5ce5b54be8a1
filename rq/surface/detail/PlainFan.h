#pragma once

#include <bit>
#include <cstdint>

namespace rq
{
/// The corners of plain faces around a vertex, of which most vertices have a few: whether one way leads past all of them,
/// from a face to the next across an edge that no other face has.
template <class Index> class PlainFan
{
public:
    static constexpr int kMost = 16;

    void clear() { count_ = diagonals_ = 0; }

    /// Add a corner between the vertices that follow and precede it in its face.
    void add(Index next, Index previous)
    {
        next_[count_] = next;
        previous_[count_++] = previous;
    }

    /// Add the vertex at the other end of a diagonal from the last corner, if one is there.
    void addDiagonal(Index end, bool isThere)
    {
        diagonal_[diagonals_] = end;
        diagonals_ += isThere;
    }

    /// Whether there is such a way; at borders of the mesh it has ends.
    bool isOneWay() { return areDiagonalsAlone() && link() && length() == count_; }

private:
    /// No other edge goes where a diagonal does.
    bool areDiagonalsAlone() const
    {
        int others = 0;
        for (int d = 0; d < diagonals_; ++d)
        {
            for (int i = 0; i < count_; ++i)
                others += (next_[i] == diagonal_[d]) + (previous_[i] == diagonal_[d]);
            for (int i = 0; i < d; ++i)
                others += diagonal_[i] == diagonal_[d];
        }
        return others == 0;
    }

    /// Find the corner behind each.  False when an edge has more than two faces.
    bool link()
    {
        uint32_t shared = 0;
        behind_ = 0;
        for (int i = 0; i < count_; ++i)
        {
            uint32_t matches = 0;
            for (int j = 0; j < count_; ++j)
                matches |= uint32_t(next_[j] == previous_[i]) << j;
            shared |= (matches & (matches - 1)) | (matches & behind_);
            behind_ |= matches;
            after_[i] = uint8_t(std::countr_zero(matches));
        }
        return shared == 0;
    }

    /// How many corners the way has that begins at one that is behind no other or, if there is none, at the first.
    int length() const
    {
        const int open = std::countr_one(behind_), first = open < count_ ? open : 0;
        int length = 1;
        for (int i = after_[first]; i < count_ && i != first; i = after_[i])
            ++length;
        return length;
    }

    int count_ = 0, diagonals_ = 0;
    Index next_[kMost], previous_[kMost], diagonal_[kMost];
    uint8_t after_[kMost];  // beyond the last corner for one that has none behind
    uint32_t behind_ = 0;   // the corners that are behind others, one bit each
};
}  // namespace rq
