#pragma once

#include <set>

#include <io/Message.h>

namespace rq::io
{
/// Say what many had to say alike once.
inline void sayOnce(const Messages &said, Messages &messages)
{
    std::set<std::string> known;
    for (const Message &message : said.all())
        if (message.severity == Message::Error)
            messages.fail(message.file, message.place, message.text);
        else if (known.insert(message.text).second)
            messages.warn(message.file, message.place, message.text);
}
}  // namespace rq::io
