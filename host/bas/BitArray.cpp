#include <host/bas/BitArray.h>

#include <algorithm>
#include <bit>

namespace
{
int64_t wordsFor(int64_t size) { return (size + 63) >> 6; }

uint64_t tailMask(int64_t size) { return size & 63 ? (uint64_t(1) << (size & 63)) - 1 : ~uint64_t(0); }
}  // namespace

BAS_BitArray::BAS_BitArray(int64_t size, bool value) { resize(size, value); }

void BAS_BitArray::resize(int64_t size, bool value)
{
    size = std::max<int64_t>(size, 0);
    if (value && size > size_ && !words_.empty())
        words_.back() |= ~tailMask(size_);
    words_.resize(size_t(wordsFor(size)), value ? ~uint64_t(0) : 0);
    size_ = size;
    if (!words_.empty())
        words_.back() &= tailMask(size);
}

void BAS_BitArray::setAll(bool value)
{
    std::fill(words_.begin(), words_.end(), value ? ~uint64_t(0) : 0);
    if (!words_.empty())
        words_.back() &= tailMask(size_);
}

int64_t BAS_BitArray::count() const
{
    int64_t sum = 0;
    for (const uint64_t word : words_)
        sum += std::popcount(word);
    return sum;
}

int64_t BAS_BitArray::next(int64_t from) const
{
    from = std::max<int64_t>(from, 0);
    if (from >= size_)
        return size_;
    size_t at = size_t(from) >> 6;
    uint64_t word = words_[at] & (~uint64_t(0) << (from & 63));
    while (word == 0)
    {
        if (++at == words_.size())
            return size_;
        word = words_[at];
    }
    return int64_t(at << 6) + std::countr_zero(word);
}
