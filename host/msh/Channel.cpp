#include <host/msh/Channel.h>

#include <cmath>

#include <fmt/format.h>

bool MSH_ChannelData::check(const MSH_PayloadUse &use, std::string &why) const
{
    const size_t keys = times.size();
    if (values.size() != keys || slopesBefore.size() != keys || slopesBehind.size() != keys || segments.size() != keys)
        why = fmt::format("a channel of {} keys has {} values, {} and {} slopes, {} segments", keys, values.size(),
                          slopesBefore.size(), slopesBehind.size(), segments.size());
    else if (use.vertices != 0 && use.vertices != int64_t(keys))
        why = fmt::format("a channel of {} keys has {} vertices", keys, use.vertices);
    else if (!std::is_sorted(times.begin(), times.end(), std::less_equal<double>()) ||
             !std::all_of(times.begin(), times.end(), [](double time) { return std::isfinite(time); }))
        why = "the times of a channel do not rise";
    else if (!std::all_of(segments.begin(), segments.end(),
                          [](int32_t kind) { return kind >= 0 && kind < MSH_CHANNEL_SEGMENTS; }))
        why = "a segment of a channel is of no known kind";
    else
        return true;
    return false;
}
