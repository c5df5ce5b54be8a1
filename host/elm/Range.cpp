#include <host/elm/Range.h>

#include <algorithm>
#include <bit>

int64_t ELM_Range::size() const
{
    if (!bits_)
        return end_ - begin_;
    int64_t members = 0;
    for (const auto [begin, end] : blocks())
        members += end - begin;
    return members;
}

uint64_t ELM_Range::word(ELM_Offset at) const
{
    if (at >= end_ || at + 64 <= begin_)
        return 0;
    uint64_t word = bits_ ? bits_->word(at) : ~uint64_t(0);
    if (begin_ > at)
        word &= ~uint64_t(0) << (begin_ - at);
    if (end_ - at < 64)
        word &= (uint64_t(1) << (end_ - at)) - 1;
    return word;
}

ELM_Range ELM_Range::slice(ELM_Offset begin, ELM_Offset end) const
{
    ELM_Range part = *this;
    part.begin_ = std::clamp(begin, begin_, end_);
    part.end_ = std::clamp(end, part.begin_, end_);
    return part;
}

ELM_Range::Block ELM_Range::nextBlock(ELM_Offset from) const
{
    ELM_Offset begin = std::max(from, begin_);
    if (bits_ && begin < end_)
        begin = bits_->base + bits_->bits.next(begin - bits_->base);
    if (begin >= end_)
        return {end_, end_};
    const ELM_Offset limit = std::min(end_, (begin | (ELM_PAGE_SIZE - 1)) + 1);
    if (!bits_)
        return {begin, limit};

    // The members that follow each other, a word at a time.
    ELM_Offset end = begin;
    while (end < limit)
    {
        const int64_t bit = end & 63;
        const int ones = std::countr_one(bits_->word(end - bit) >> bit);
        end += ones;
        if (ones < 64 - bit)
            break;
    }
    return {begin, std::min(end, limit)};
}
