#pragma once

#include <algorithm>
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

    /// Find the corners before and after each.  False when an edge has more than two faces.
    bool link()
    {
        std::fill_n(after_, count_, int8_t(-1));
        std::fill_n(before_, count_, int8_t(-1));
        int links = 0;
        for (int i = 0; i < count_; ++i)
            for (int j = 0; j < count_; ++j)
                if (next_[j] == previous_[i])
                {
                    ++links;
                    after_[i] = int8_t(j);
                    before_[j] = int8_t(i);
                }
        int ends = 0;
        for (int i = 0; i < count_; ++i)
            ends += (after_[i] >= 0) + (before_[i] >= 0);
        return ends == 2 * links;
    }

    /// How many corners the way past the first one has.
    int length() const
    {
        int length = 1, i = after_[0];
        for (; i > 0; i = after_[i])
            ++length;
        if (i == 0)
            return length;
        for (i = before_[0]; i > 0; i = before_[i])
            ++length;
        return length;
    }

    int count_ = 0, diagonals_ = 0;
    Index next_[kMost], previous_[kMost], diagonal_[kMost];
    int8_t after_[kMost], before_[kMost];
};
}  // namespace rq
