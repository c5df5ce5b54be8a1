#pragma once

#include <host/elm/Attribute.h>

namespace rq::io
{
/// Read the first `components` numbers of a row of a numeric attribute, converted.
template <class T> void readRow(const ELM_Attribute &attribute, int64_t row, T *to, int components)
{
    attribute.numericTuple()->visit([&](const auto &pages) {
        for (int c = 0; c < components; ++c)
            to[c] = T(pages.value(row, c));
    });
}
}  // namespace rq::io
