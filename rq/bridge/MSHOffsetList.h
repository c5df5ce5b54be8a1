#pragma once

#include <atomic>

#include <host/elm/OffsetList.h>
#include <host/elm/Range.h>
#include <host/mod/DetailHandle.h>
#include <rq/data/DataArray.h>

/// The host elements that a primitive is made of, in order, with two facts about them kept up to date.
///
/// Shape      a run of offsets, or an explicit list shared by copies
/// Failure    indices are not checked; a handle of nothing has no elements
/// Threads    safe to read from any thread; a list belongs to one thread while it grows
/// Cost       a run takes no memory, an explicit list 4 bytes an offset, or 8 from 0x40000000 on
class RQ_API RQ_MSHOffsetList
{
public:
    RQ_MSHOffsetList() = default;
    explicit RQ_MSHOffsetList(const ELM_OffsetList &offsets);
    RQ_MSHOffsetList(const ELM_Offset *offsets, int64_t count);

    /// All elements of an owner, or those of a range that the detail has, in offset order.
    RQ_MSHOffsetList(const MSH_Detail &detail, ELM_Owner owner);
    RQ_MSHOffsetList(const MSH_Detail &detail, const ELM_Range &range);

    /// `count` entries of another list from `start` on.
    RQ_MSHOffsetList(const RQ_MSHOffsetList &source, int64_t start, int64_t count);

    /// The points that the vertices of a list refer to, in the same order.
    static RQ_MSHOffsetList pointFromVertex(const MOD_ConstDetailHandle &detail, const RQ_MSHOffsetList &vertices);

    /// Make room for `count` entries, unless they turn out to be a run.
    void reserve(int64_t count) { list_.reserve(count); }

    void append(ELM_Offset offset);
    void concat(const RQ_MSHOffsetList &other);
    void clear() { *this = RQ_MSHOffsetList(); }

    /// Replace one offset.  A fact that the new one breaks becomes false; `checkMonotonic` finds out whether one is true
    /// again.
    void set(int64_t index, ELM_Offset offset);

    int64_t entries() const { return list_.size(); }
    int64_t size() const { return list_.size(); }
    ELM_Offset get(int64_t i) const { return list_.get(i); }
    ELM_Offset operator[](int64_t i) const { return list_.get(i); }
    ELM_Offset operator()(int64_t i) const { return list_.get(i); }

    bool isTrivial() const { return list_.isTrivial(); }

    /// Every offset is below 2^30: index arrays made of them, and calculated with, fit 32 bits.
    bool is32Bit() const { return is32Bit_; }

    /// No offset is below the one before.
    bool monotonic() const { return monotonic_; }
    void checkMonotonic();

    const ELM_OffsetList &offsetList() const { return list_; }

    /// The same for equal lists: what ids of views through this list are mixed with.  An explicit list is read once; copies
    /// made later know the hash.
    uint64_t hash() const;

    int64_t getMemoryUsage() const { return int64_t(sizeof(*this)) + list_.memoryUsage(); }

    /// The offsets as an array: 32-bit integers when `is32Bit`, else 64-bit ones.
    RQ_DataArrayHandle allocateArray() const;

    /// The point of every vertex of the list: 32-bit integers when both lists of offsets allow, else 64-bit ones.  The
    /// host's own memory where the vertices are a run and the host keeps their points in one block; nothing is copied then.
    RQ_DataArrayHandle createVertexPointArray(const MOD_ConstDetailHandle &detail) const;
    RQ_DataArrayHandle createVertexPointArray(const MSH_Detail &detail) const;

    /// Print to standard error; `closeLine` ends the line.
    void dump(const char *label, bool closeLine) const;

private:
    /// A number that several threads may find out at the same time, 0 while nobody has.
    struct KnownHash
    {
        KnownHash() = default;
        KnownHash(const KnownHash &other) : value(other.value.load(std::memory_order_relaxed)) {}
        KnownHash &operator=(const KnownHash &other)
        {
            value.store(other.value.load(std::memory_order_relaxed), std::memory_order_relaxed);
            return *this;
        }
        std::atomic<uint64_t> value{0};
    };

    void note(ELM_Offset offset, ELM_Offset before);
    void forgetHash() { hash_.value.store(0, std::memory_order_relaxed); }

    ELM_OffsetList list_;
    mutable KnownHash hash_;
    bool is32Bit_ = true;
    bool monotonic_ = true;
};
