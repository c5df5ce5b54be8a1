#pragma once

#include <cstdio>

#include <host/bas/JSONWriter.h>

namespace rq
{
/// Print what `object` saves to standard output, with `label` (may be null) in front.
template <class T> void dumpSaved(const T &object, const char *label)
{
    if (label && *label)
        std::printf("%s: ", label);
    BAS_JSONWriter writer(stdout);
    object.save(writer);
    writer.flush();
    std::fflush(stdout);
}
}  // namespace rq
