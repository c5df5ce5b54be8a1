#pragma once

#include <algorithm>
#include <numeric>

#include <rq/bridge/MSHOffsetList.h>

namespace rq
{
/// What is known of a list of offsets before it is written: how many there are, and whether they are one run.
struct OffsetTally
{
    int64_t count = 0;
    ELM_Offset first = 0, next = 0;
    bool isRun = true;
    bool isNarrow = true;

    void addRun(ELM_Offset offset, int64_t added)
    {
        if (added > 0)
            add({added, offset, offset + added, true, offset + added <= ELM_INDEX32_LIMIT});
    }

    /// Offsets in any order, none above `last`.  They are written, whether they turn out to be a run or not.
    void addAny(int64_t added, ELM_Offset last)
    {
        isRun = false;
        add({added, last, last + 1, false, last < ELM_INDEX32_LIMIT});
    }

    void add(const OffsetTally &following)
    {
        if (following.count == 0)
        {
            isRun = isRun && following.isRun;
            return;
        }
        isRun = following.isRun && (count == 0 || (isRun && following.first == next));
        isNarrow = isNarrow && following.isNarrow;
        first = count == 0 ? following.first : first;
        next = following.next;
        count += following.count;
    }
};

/// Offsets that are written in any order, by several threads; nothing is stored for a run.
class OffsetWriter
{
public:
    explicit OffsetWriter(const OffsetTally &offsets) : offsets_(offsets)
    {
        if (!offsets.isRun && offsets.isNarrow)
            narrow_.resize(size_t(offsets.count));
        else if (!offsets.isRun)
            wide_.resize(size_t(offsets.count));
    }

    bool isNeeded() const { return !offsets_.isRun; }

    /// Call `write(offsets)` with the place of the offset at `at`; not at all for a run.
    template <class Write> void writeAt(int64_t at, Write &&write)
    {
        if (!offsets_.isRun && offsets_.isNarrow)
            write(narrow_.data() + at);
        else if (!offsets_.isRun)
            write(wide_.data() + at);
    }

    void writeRun(int64_t at, ELM_Offset first, int64_t count)
    {
        writeAt(at, [=]<class Offset>(Offset *offsets) { std::iota(offsets, offsets + count, Offset(first)); });
    }

    RQ_MSHOffsetList finish()
    {
        if (offsets_.isRun)
            return RQ_MSHOffsetList(ELM_OffsetList(offsets_.first, offsets_.count));
        return RQ_MSHOffsetList(offsets_.isNarrow ? ELM_OffsetList(std::move(narrow_)) : ELM_OffsetList(std::move(wide_)));
    }

private:
    OffsetTally offsets_;
    ELM_OffsetList::Values<int32_t> narrow_;
    ELM_OffsetList::Values<int64_t> wide_;
};
}  // namespace rq
