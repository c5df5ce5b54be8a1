#pragma once

#include <string>

#include <host/bas/JSONWriter.h>

namespace tests
{
/// What `save` writes.
template <class T, class... Options> std::string jsonOf(const T &object, Options... options)
{
    std::string text;
    BAS_JSONWriter writer(text);
    object.save(writer, options...);
    writer.flush();
    return text;
}
}  // namespace tests
