#pragma once

#include <algorithm>
#include <limits>
#include <vector>

#include <host/plt/types.h>

namespace rq
{
/// Puts things of some size into bins of one size: into the last bin when it has room, else into the first that has, else
/// into a new one, however large the thing is.
///
/// Cost  a place is found in as many steps as a tree over all bins has levels
class FirstFit
{
public:
    explicit FirstFit(int64_t binSize) : binSize_(binSize), mostRoom_(2, kNoBin) {}

    int64_t bins() const { return bins_; }

    /// The bin of the next thing.
    int64_t place(int64_t size)
    {
        int64_t bin = bins_ - 1;
        if (bins_ == 0 || mostRoom_[size_t(leaves() + bin)] < size)
            bin = mostRoom_[1] >= size ? firstWithRoom(size) : add();
        setRoom(bin, mostRoom_[size_t(leaves() + bin)] - size);
        return bin;
    }

private:
    static constexpr int64_t kNoBin = std::numeric_limits<int64_t>::min();

    int64_t leaves() const { return int64_t(mostRoom_.size()) / 2; }

    int64_t firstWithRoom(int64_t size) const
    {
        int64_t node = 1;
        while (node < leaves())
            node = 2 * node + (mostRoom_[size_t(2 * node)] >= size ? 0 : 1);
        return node - leaves();
    }

    int64_t add()
    {
        if (bins_ == leaves())
        {
            const std::vector<int64_t> rooms(mostRoom_.begin() + leaves(), mostRoom_.end());
            mostRoom_.assign(2 * mostRoom_.size(), kNoBin);
            for (int64_t bin = 0; bin < bins_; ++bin)
                setRoom(bin, rooms[size_t(bin)]);
        }
        setRoom(bins_, binSize_);
        return bins_++;
    }

    void setRoom(int64_t bin, int64_t room)
    {
        int64_t node = leaves() + bin;
        mostRoom_[size_t(node)] = room;
        for (node /= 2; node > 0; node /= 2)
            mostRoom_[size_t(node)] = std::max(mostRoom_[size_t(2 * node)], mostRoom_[size_t(2 * node + 1)]);
    }

    int64_t binSize_;
    int64_t bins_ = 0;
    std::vector<int64_t> mostRoom_;  // a tree: node i has the halves 2i and 2i + 1, its leaves are the bins
};
}  // namespace rq
