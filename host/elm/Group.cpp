#include <host/elm/Group.h>

#include <algorithm>

ELM_OffsetBits &ELM_Group::own()
{
    if (members_->use_count() > 1)
        members_ = new ELM_OffsetBits(*members_);
    return *members_;
}

// Have bits for [first, end).  The row of bits grows in steps at its front, as at its back.
void ELM_Group::cover(ELM_Offset first, ELM_Offset end)
{
    ELM_OffsetBits &members = own();
    const bool isEmpty = members.bits.size() == 0;
    if (isEmpty)
        members.base = first & ~ELM_Offset(63);
    if (first < members.base)
    {
        const ELM_Offset base =
            std::max<ELM_Offset>(0, std::min(first, members.base - members.bits.size())) & ~ELM_Offset(63);
        BAS_BitArray moved(members.end() - base);
        std::copy_n(members.bits.words(), members.bits.wordCount(), moved.words() + ((members.base - base) >> 6));
        members.bits = std::move(moved);
        members.base = base;
    }
    if (end > members.end())
        members.bits.resize(end - members.base);
}

void ELM_Group::setRange(ELM_Offset first, int64_t count, bool member)
{
    ELM_Offset last = std::max<ELM_Offset>(0, first + count);
    first = std::max<ELM_Offset>(0, first);
    if (!member)
    {
        first = std::max(first, members_->base);
        last = std::min(last, members_->end());
    }
    if (first >= last)
        return;
    if (member)
        cover(first, last);
    ELM_OffsetBits &members = own();
    uint64_t *const words = members.bits.words();
    const int64_t stop = last - members.base;
    for (int64_t bit = first - members.base, next; bit < stop; bit = next)
    {
        next = std::min(stop, (bit | 63) + 1);
        const uint64_t mask = ~uint64_t(0) >> (64 - (next - bit)) << (bit & 63);
        words[bit >> 6] = member ? words[bit >> 6] | mask : words[bit >> 6] & ~mask;
    }
}

// Replace each word of the members by `change(word, the range's word)`.
template <class Change> bool ELM_Group::changeWords(const ELM_Range &other, Change change)
{
    if (other.owner() != owner_)
        return false;
    const ELM_Range kept = other;  // which may be of these members
    ELM_OffsetBits &members = own();
    for (int64_t i = 0; i < members.bits.wordCount(); ++i)
        members.bits.words()[i] = change(members.bits.words()[i], kept.word(members.base + (i << 6)));
    return true;
}

bool ELM_Group::unite(const ELM_Range &other)
{
    const ELM_Range kept = other;
    if (kept.owner() == owner_ && kept.begin() < kept.end())
        cover(kept.begin(), kept.end());
    return changeWords(kept, [](uint64_t mine, uint64_t its) { return mine | its; });
}

bool ELM_Group::intersect(const ELM_Range &other)
{
    return changeWords(other, [](uint64_t mine, uint64_t its) { return mine & its; });
}

bool ELM_Group::subtract(const ELM_Range &other)
{
    return changeWords(other, [](uint64_t mine, uint64_t its) { return mine & ~its; });
}

bool ELM_Group::complement(const ELM_Range &all)
{
    const ELM_Range kept = all;
    if (kept.owner() == owner_ && kept.begin() < kept.end())
        cover(kept.begin(), kept.end());
    return changeWords(kept, [](uint64_t mine, uint64_t its) { return ~mine & its; });
}

bool ELM_Group::meets(const ELM_Range &range) const
{
    const ELM_Offset begin = std::max(members_->base, range.begin() & ~ELM_Offset(63));
    const ELM_Offset stop = std::min(members_->end(), range.end());
    for (ELM_Offset at = begin; at < stop; at += 64)
        if (members_->word(at) & range.word(at))
            return true;
    return false;
}

void ELM_Group::rearrange(const ELM_OffsetList &rows)
{
    const ELM_OffsetBitsHandle before = members_;
    members_ = new ELM_OffsetBits;
    for (int64_t i = 0; i < rows.size(); ++i)
        if (before->contains(rows[i]))
            set(i);
}

void ELM_Group::trim(ELM_Offset end)
{
    if (members_->end() > end)
        own().bits.resize(end - members_->base);
}
