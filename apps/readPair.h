#pragma once

#include <charconv>
#include <string>

namespace rq::app
{
/// Read two numbers with a character between them, and nothing else.
template <class T> bool readPair(const std::string &text, char between, T &first, T &second)
{
    const char *const end = text.data() + text.size();
    const auto [middle, firstError] = std::from_chars(text.data(), end, first);
    if (firstError != std::errc() || middle == end || *middle != between)
        return false;
    const auto [last, secondError] = std::from_chars(middle + 1, end, second);
    return secondError == std::errc() && last == end;
}
}  // namespace rq::app
