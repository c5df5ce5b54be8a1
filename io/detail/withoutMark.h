#pragma once

#include <string_view>

namespace rq::io
{
/// A text without the byte order mark that some editors put in front.  Columns count from the first character behind it.
inline std::string_view withoutMark(std::string_view text)
{
    constexpr std::string_view kMark = "\xef\xbb\xbf";
    return text.substr(text.starts_with(kMark) ? kMark.size() : 0);
}
}  // namespace rq::io
