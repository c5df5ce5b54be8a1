#pragma once

#include <string_view>
#include <vector>
#include <string>

#include <host/plt/types.h>

/// A list of blank-separated name patterns: `*`, `?`, `[a-z]`; a leading `^` excludes.  The last pattern that matches
/// decides.
///
/// Threads  immutable after construction
class HOST_API BAS_StringMMPattern
{
public:
    explicit BAS_StringMMPattern(std::string_view patterns);

    /// True when the last pattern that fits `name` is one that includes.
    bool matches(std::string_view name) const;

private:
    struct Glob
    {
        std::string text;
        bool include;
    };
    std::vector<Glob> globs_;
};
