#pragma once

#include <vector>

#include <io/detail/Source.h>

namespace rq::io
{
/// Facets of a text, in flat arrays.
struct STLFacets
{
    std::vector<float> normals;    ///< 3 per facet
    std::vector<float> positions;  ///< 9 per facet

    /// Read the facets of a text, in parallel.  False after an error.
    bool read(const Source &source);
};
}  // namespace rq::io
