#pragma once

#include <algorithm>
#include <vector>

#include <rq/surface/PrimSubdivisionMesh.h>

namespace rq
{
/// What a tag says of elements: `width` indices each, and a sharpness where it has reals.
struct ElementTag
{
    std::vector<int64_t> indices;     ///< `width` an element
    std::vector<double> sharpnesses;  ///< one an element, or none

    /// All arrays of a tag end to end; null gives nothing.  One real stands for all elements; where reals and indices
    /// otherwise differ in number, what has no partner is left out.
    static ElementTag read(const RQ_PrimSubdivisionMesh::Tag *tag, int width);

    /// Give index i the number `rowOf(i)`; an element goes when one of its indices gets a negative one.
    template <class RowOf> void rename(int width, RowOf &&rowOf)
    {
        size_t kept = 0;
        for (size_t element = 0; element < indices.size() / size_t(width); ++element)
        {
            bool all = true;
            for (size_t i = 0; i < size_t(width); ++i)
            {
                const int64_t row = rowOf(indices[element * size_t(width) + i]);
                indices[kept * size_t(width) + i] = row;
                all = all && row >= 0;
            }
            if (!all)
                continue;
            if (!sharpnesses.empty())
                sharpnesses[kept] = sharpnesses[element];
            ++kept;
        }
        indices.resize(kept * size_t(width));
        sharpnesses.resize(std::min(sharpnesses.size(), kept));
    }

    /// Replace what a tag holds.
    void write(RQ_PrimSubdivisionMesh::Tag &tag) const;
};

constexpr const char *kCreaseTag = "crease";
constexpr const char *kCornerTag = "corner";
constexpr const char *kHoleTag = "hole";

/// The tags of one value each, which hold for the whole mesh.
constexpr const char *kMethodTags[] = {"interpolateboundary",          "facevaryinginterpolateboundary",
                                       "osd_vtxboundaryinterpolation", "osd_fvarlinearinterpolation",
                                       "osd_creasingmethod",           "osd_trianglesubdiv"};
}  // namespace rq
