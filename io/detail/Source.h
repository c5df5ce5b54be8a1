#pragma once

#include <fmt/format.h>

#include <io/Message.h>
#include <io/Scanner.h>

namespace rq::io
{
/// A file that is being read, and where to say what is wrong with it.
struct Source
{
    std::string_view text;
    const std::string &name;
    Messages &messages;
    bool binary = false;  ///< messages tell bytes instead of lines

    const char *end() const { return text.data() + text.size(); }

    Place place(const char *at) const
    {
        return binary ? Place{.line = 0, .column = 0, .offset = at - text.data()} : placeOf(text, at);
    }

    /// Always false.
    bool fail(const char *at, std::string what) const { return messages.fail(name, place(at), std::move(what)); }

    /// Say what was expected instead of the word that stands there.  Always false.
    bool failAtWord(const char *at, std::string_view expected) const
    {
        return fail(at, fmt::format("expected {}, found {}", expected, describe(text, at)));
    }

    bool failInterrupted() const { return messages.fail(name, {}, "reading was interrupted"); }

    void warn(const char *at, std::string what) const { messages.warn(name, place(at), std::move(what)); }
};
}  // namespace rq::io
