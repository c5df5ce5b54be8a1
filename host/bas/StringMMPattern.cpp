#include <host/bas/StringMMPattern.h>

namespace
{
bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

/// Test one character against the set "[...]" that begins at `at`; `end` becomes the place behind it.  A set that is never
/// closed is an ordinary bracket.
bool inSet(std::string_view glob, size_t at, char c, size_t &end)
{
    // A bracket that comes first belongs to the set.
    const size_t close = glob.find(']', at + 2);
    if (close == std::string_view::npos)
    {
        end = at + 1;
        return c == '[';
    }
    end = close + 1;
    for (size_t i = at + 1; i < close; ++i)
    {
        const bool range = i + 2 < close && glob[i + 1] == '-';
        if (range ? glob[i] <= c && c <= glob[i + 2] : glob[i] == c)
            return true;
        i += range ? 2 : 0;
    }
    return false;
}

/// Match one item of `glob` (not a star) and move behind it.
bool matchOne(std::string_view glob, size_t &at, char c)
{
    if (at >= glob.size())
        return false;
    size_t end = at + 1;
    const bool fits = glob[at] == '[' ? inSet(glob, at, c, end) : glob[at] == '?' || glob[at] == c;
    at = fits ? end : at;
    return fits;
}

/// Only the last star needs to be taken back: what lay before it is matched already.
bool matchGlob(std::string_view glob, std::string_view name)
{
    size_t at = 0, starAt = std::string_view::npos, starName = 0;
    for (size_t i = 0; i < name.size();)
    {
        if (at < glob.size() && glob[at] == '*')
        {
            starAt = at++;
            starName = i;
        }
        else if (matchOne(glob, at, name[i]))
            ++i;
        else if (starAt != std::string_view::npos)
        {
            at = starAt + 1;
            i = ++starName;
        }
        else
            return false;
    }
    return glob.find_first_not_of('*', at) == std::string_view::npos;
}
}  // namespace

BAS_StringMMPattern::BAS_StringMMPattern(std::string_view patterns)
{
    for (size_t at = 0; at < patterns.size();)
    {
        size_t end = at;
        while (end < patterns.size() && !isBlank(patterns[end]))
            ++end;
        const bool include = at < end && patterns[at] != '^';
        const std::string_view text = patterns.substr(at, end - at).substr(include || at == end ? 0 : 1);
        if (!text.empty())
            globs_.push_back({std::string(text), include});
        at = end + 1;
    }
}

bool BAS_StringMMPattern::matches(std::string_view name) const
{
    for (auto glob = globs_.rbegin(); glob != globs_.rend(); ++glob)
        if (matchGlob(glob->text, name))
            return glob->include;
    return false;
}
