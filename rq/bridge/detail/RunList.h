#pragma once

#include <rq/bridge/MSHOffsetList.h>

namespace rq
{
/// A list of offsets that grows by runs, most of which continue the one before.
///
/// Threads  belongs to one thread while it grows
/// Cost     a run that goes on is counted, and stored when it ends
class RunList
{
public:
    void append(ELM_Offset first, int64_t count)
    {
        if (first != end_)
        {
            flush();
            begin_ = end_ = first;
        }
        end_ += count;
    }
    void append(const RQ_MSHOffsetList &following)
    {
        flush();
        list_.concat(following);
    }

    /// Store what was appended; to be called before `list`.
    void flush()
    {
        list_.concat(RQ_MSHOffsetList(ELM_OffsetList(begin_, end_ - begin_)));
        begin_ = end_ = -1;
    }
    const RQ_MSHOffsetList &list() const { return list_; }

private:
    RQ_MSHOffsetList list_;
    ELM_Offset begin_ = -1, end_ = -1;
};
}  // namespace rq
