#pragma once

#include <algorithm>
#include <span>
#include <string>

namespace rq::io
{
// Formats told by how names end.  `Format` has a member `ending` in lower case.

/// The format that a name ends with, in any case; null when there is none.
template <class Format, size_t count> const Format *findEnding(std::string path, const Format (&formats)[count])
{
    std::transform(path.begin(), path.end(), path.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    const Format *found = std::find_if(std::begin(formats), std::end(formats),
                                       [&](const Format &format) { return path.ends_with(format.ending); });
    return found == std::end(formats) ? nullptr : found;
}

/// What to say of a name that ends with none of them.
template <class Format, size_t count> std::string expectEnding(const Format (&formats)[count])
{
    std::string endings;
    for (const Format &format : formats)
        endings += (endings.empty() ? "" : ", ") + std::string(format.ending);
    return "expected a file whose name ends with " + endings;
}
}  // namespace rq::io
