#include <host/bas/detail/EarQueue.h>

#include <algorithm>
#include <functional>

namespace host
{
void EarQueue::begin(int count)
{
    count_ = count;
    hasHeap_ = false;
    if (ranks_.size() < size_t(count))
        ranks_.resize(count);
}

void EarQueue::makeHeap()
{
    hasHeap_ = true;
    heap_.clear();
    for (int i = 0; i < count_; ++i)
        heap_.emplace_back(ranks_[i], i);
    std::make_heap(heap_.begin(), heap_.end(), std::greater<>());
}

int EarQueue::best()
{
    if (!hasHeap_)
        return int(std::min_element(ranks_.begin(), ranks_.begin() + count_) - ranks_.begin());
    while (true)
    {
        const auto [rank, corner] = heap_.front();
        std::pop_heap(heap_.begin(), heap_.end(), std::greater<>());
        heap_.pop_back();
        if (rank == ranks_[corner])
            return corner;
    }
}

void EarQueue::setRank(int corner, uint64_t rank)
{
    ranks_[corner] = rank;
    if (hasHeap_)
    {
        heap_.emplace_back(rank, corner);
        std::push_heap(heap_.begin(), heap_.end(), std::greater<>());
    }
}
}  // namespace host
