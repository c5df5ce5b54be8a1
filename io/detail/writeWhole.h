#pragma once

#include <new>
#include <string>

#include <io/Message.h>
#include <io/detail/compacted.h>
#include <io/detail/unpacked.h>

namespace rq::io
{
/// Call `write` with a detail without vacant offsets.  False with an error when there is no detail, or no memory.
template <class Write>
bool writeWhole(const MOD_ConstDetailHandle &detail, const std::string &name, Messages &messages, Write &&write)
{
    try
    {
        return detail ? write(compacted(detail)) : messages.fail(name, {}, "there is nothing to write");
    }
    catch (const std::bad_alloc &)
    {
        return messages.fail(name, {}, "needs more memory than there is");
    }
}

/// The same with a detail without packed geometry.
template <class Write>
bool writeUnpacked(const MOD_ConstDetailHandle &detail, const std::string &name, Messages &messages, Write &&write)
{
    return writeWhole(detail, name, messages, [&](const MOD_ConstDetailHandle &whole) {
        const MOD_ConstDetailHandle flat = unpacked(whole, name, messages);
        return flat && write(flat);
    });
}
}  // namespace rq::io
