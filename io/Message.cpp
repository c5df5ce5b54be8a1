#include <io/Message.h>

#include <algorithm>

#include <fmt/format.h>

namespace rq::io
{
std::string Message::toString() const
{
    const char *kind = severity == Error ? "error" : "warning";
    if (place.line > 0)
        return fmt::format("{}:{}:{}: {}: {}", file, place.line, place.column, kind, text);
    if (place.offset >= 0)
        return fmt::format("{}:@{}: {}: {}", file, place.offset, kind, text);
    return fmt::format("{}: {}: {}", file, kind, text);
}

void Messages::warn(const std::string &file, Place place, std::string text)
{
    messages_.push_back({Message::Warning, file, place, std::move(text)});
    ++warnings_;
}

bool Messages::fail(const std::string &file, Place place, std::string text)
{
    messages_.push_back({Message::Error, file, place, std::move(text)});
    return false;
}

void Messages::noteFile(const std::string &path)
{
    if (std::ranges::find(files_, path) == files_.end())
        files_.push_back(path);
}

std::string Messages::toString() const
{
    std::string text;
    for (const Message &message : messages_)
        text += message.toString() + '\n';
    return text;
}
}  // namespace rq::io
