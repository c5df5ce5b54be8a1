#pragma once

#include <host/elm/OffsetBits.h>

/// A set of elements of one owner, walked in offset order: a run, or those of a run whose bit is set.
///
/// Ownership  shares the bits; a range of a group keeps seeing the members that the group had
/// Threads    immutable, safe to read from any thread
class HOST_API ELM_Range
{
public:
    /// Offsets [begin, end), never across a page border.
    struct Block
    {
        ELM_Offset begin;
        ELM_Offset end;
    };

    ELM_Range() = default;

    /// The run [begin, end).
    ELM_Range(ELM_Owner owner, ELM_Offset begin, ELM_Offset end)
        : owner_(owner), begin_(begin), end_(end > begin ? end : begin)
    {}

    /// The offsets whose bit is set.
    ELM_Range(ELM_Owner owner, const ELM_OffsetBitsHandle &bits) : ELM_Range(owner, bits->base, bits->end())
    {
        bits_ = bits;
    }

    ELM_Owner owner() const { return owner_; }

    /// The run that the elements lie in.
    ELM_Offset begin() const { return begin_; }
    ELM_Offset end() const { return end_; }

    /// True when every offset of the run is in the range.
    bool isRun() const { return !bits_; }
    int64_t size() const;
    bool isEmpty() const { return size() == 0; }
    bool contains(ELM_Offset offset) const
    {
        return offset >= begin_ && offset < end_ && (!bits_ || bits_->contains(offset));
    }

    /// A bit for each of the 64 offsets from `at`, a multiple of 64, on.
    uint64_t word(ELM_Offset at) const;

    /// The part of the range within [begin, end).
    ELM_Range slice(ELM_Offset begin, ELM_Offset end) const;

    /// The first block at or after an offset; empty (begin == end) when there is none.
    Block nextBlock(ELM_Offset from) const;

    /// The blocks in order: `for (auto [begin, end] : range.blocks())`.
    class Blocks;
    Blocks blocks() const;

private:
    ELM_Owner owner_ = ELM_OWNER_INVALID;
    ELM_Offset begin_ = 0;
    ELM_Offset end_ = 0;
    BAS_IntrusivePtr<const ELM_OffsetBits> bits_;  // null: the whole run; else a bit for each offset of it
};

class ELM_Range::Blocks
{
public:
    class Iterator
    {
    public:
        Iterator(const ELM_Range *range, Block block) : range_(range), block_(block) {}
        const Block &operator*() const { return block_; }
        Iterator &operator++()
        {
            block_ = range_->nextBlock(block_.end);
            return *this;
        }
        bool operator!=(std::nullptr_t) const { return block_.begin < block_.end; }

    private:
        const ELM_Range *range_;
        Block block_;
    };

    explicit Blocks(const ELM_Range &range) : range_(range) {}
    Iterator begin() const { return Iterator(&range_, range_.nextBlock(range_.begin())); }
    std::nullptr_t end() const { return nullptr; }

private:
    ELM_Range range_;
};

inline ELM_Range::Blocks ELM_Range::blocks() const { return Blocks(*this); }
