#pragma once

#include <span>
#include <vector>

#include <host/bas/LargeBlocks.h>
#include <host/elm/Range.h>

/// An ordered list of element offsets: a run (start and count), or an explicit array shared copy-on-write.
///
/// Shape      an explicit list takes 4 bytes an entry while every offset is below `ELM_INDEX32_LIMIT`, else 8
/// Ownership  copies share the array; the first write to a copy duplicates it
/// Threads    reads are safe from any thread; writes need the only access to this copy
/// Cost       a run takes no memory, and stays one while appended offsets continue it
class HOST_API ELM_OffsetList
{
public:
    ELM_OffsetList() = default;

    /// The run [start, start + count).
    ELM_OffsetList(ELM_Offset start, int64_t count) : start_(start), count_(count > 0 ? count : 0) {}

    /// A copy of the offsets; a run when they follow each other.
    explicit ELM_OffsetList(std::span<const int64_t> offsets);
    explicit ELM_OffsetList(std::span<const int32_t> offsets);

    /// Take over offsets without a copy, the narrow ones all below `ELM_INDEX32_LIMIT`; a run when they follow each other.
    template <class Offset> using Values = std::vector<Offset, BAS_BlockAllocator<Offset>>;
    explicit ELM_OffsetList(Values<int32_t> &&offsets);
    explicit ELM_OffsetList(Values<int64_t> &&offsets);

    /// The elements of a range, in order.
    explicit ELM_OffsetList(const ELM_Range &range);

    int64_t size() const { return count_; }
    bool isEmpty() const { return count_ == 0; }

    /// True for a run: `get(i)` is `start() + i`.
    bool isTrivial() const { return !explicit_; }
    ELM_Offset start() const { return count_ > 0 ? get(0) : 0; }

    ELM_Offset get(int64_t i) const { return !explicit_ ? start_ + i : data32_ ? data32_[i] : data64_[i]; }
    ELM_Offset operator[](int64_t i) const { return get(i); }

    /// The explicit array in its width; null for runs and for the other width.
    const int32_t *data32() const { return data32_; }
    const int64_t *data64() const { return data64_; }

    /// Call `visit(offsets)` once, with something that `offsets[i]` reads: this list's array, or a run.
    template <class Visit> decltype(auto) visit(Visit &&visit) const
    {
        if (data32_)
            return visit(data32_);
        if (data64_)
            return visit(data64_);
        return visit(Run{start_});
    }

    /// Make room for explicit offsets; a run stays one.
    void reserve(int64_t count);

    void append(ELM_Offset offset);
    void append(const ELM_OffsetList &other);
    void set(int64_t i, ELM_Offset offset);
    void clear() { *this = ELM_OffsetList(); }

    /// The entries [first, first + count).
    ELM_OffsetList subList(int64_t first, int64_t count) const;

    /// Bytes that the list alone allocated, shared or not.
    int64_t memoryUsage() const;

    /// Entry by entry, however the lists are stored.
    bool operator==(const ELM_OffsetList &other) const;

    /// What `visit` hands out for a run.
    struct Run
    {
        ELM_Offset start;
        ELM_Offset operator[](int64_t i) const { return start + i; }
    };

private:
    struct Explicit : BAS_IntrusiveRefCounter<Explicit>
    {
        Values<int32_t> narrow;
        Values<int64_t> wide;  // used instead of `narrow` from the first wide offset on
        bool isWide = false;
    };

    template <class Offset> bool assignRun(std::span<const Offset> offsets);
    template <class Offset> void assign(std::span<const Offset> offsets);
    void makeWritable(int64_t capacity, bool wide);
    void refresh();

    ELM_Offset start_ = 0;
    int64_t count_ = 0;
    int64_t reserved_ = 0;  // room that an explicit array gets at once
    BAS_IntrusivePtr<Explicit> explicit_;
    const int32_t *data32_ = nullptr;  // into `explicit_`
    const int64_t *data64_ = nullptr;
};
