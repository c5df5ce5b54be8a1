#pragma once

#include <new>

#include <host/mod/Edit.h>

namespace rq::io
{
/// The same without vacant offsets, as files number elements one after the other.  Throws std::bad_alloc when memory is
/// exhausted.
inline MOD_ConstDetailHandle compacted(const MOD_ConstDetailHandle &detail)
{
    const MSH_Detail &d = *detail.readLock();
    if (!d.hasVacantOffsets(ELM_OWNER_POINT) && !d.hasVacantOffsets(ELM_OWNER_VERTEX) &&
        !d.hasVacantOffsets(ELM_OWNER_PRIMITIVE))
        return detail;
    MOD_DetailHandle copy(detail);
    MOD_Edit edit(copy);
    if (!edit.compact())
        throw std::bad_alloc();
    return edit.commit();
}
}  // namespace rq::io
