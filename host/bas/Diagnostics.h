#pragma once

#include <string_view>

#include <fmt/format.h>

#include <host/plt/types.h>

/// Where the library's warnings go.
///
/// Threads  safe from any thread
class HOST_API BAS_Diagnostics
{
public:
    using Sink = void (*)(std::string_view message);

    /// Replace the sink (null: standard error).
    static void setSink(Sink sink);

    /// How much the application wants to hear; 0 by default.
    static int verboseLevel();
    static void setVerboseLevel(int level);

    static void warn(std::string_view message);

    /// Format and warn when the verbose level is at least `level`.
    template <class... Arguments>
    static void warn(int level, fmt::format_string<Arguments...> format, Arguments &&...arguments)
    {
        if (verboseLevel() >= level)
            warn(std::string_view(fmt::format(format, std::forward<Arguments>(arguments)...)));
    }
};
