#pragma once

#include <host/mod/Edit.h>
#include <io/detail/PLYAttributes.h>
#include <io/detail/Tally.h>

namespace rq::io
{
/// Build a detail from the records of a PLY file.
class PLYAssembly
{
public:
    /// `headerSource` tells places in the header, `source` those in the body.  `owner` keeps the file's memory; null when
    /// nothing may stay there.
    PLYAssembly(const Source &headerSource, const Source &source, const PLYHeader &header, PLYBody &body,
                const std::shared_ptr<const void> &owner)
        : headerSource_(headerSource), source_(source), header_(header), body_(body), owner_(owner)
    {}

    /// Replace `detail` by a new one.  False after an error.
    bool build(MOD_DetailHandle &detail);

private:
    bool appendPoints(MOD_Edit &edit);
    bool appendPrimitives(MOD_Edit &edit, size_t element);
    bool appendFaces(MOD_Edit &edit, size_t element, const std::shared_ptr<PLYList> &corners);
    bool appendStrips(MOD_Edit &edit, const PLYList &strips);
    bool failAtIndex(size_t element, int property, const PLYList &list);
    bool adopt(MOD_Edit &edit, size_t element, ELM_Owner owner, const PLYAttribute &attribute);
    bool writeAttributes(MOD_Edit &edit, size_t element, ELM_Owner owner, int64_t firstRow);
    bool writeLists(MOD_Edit &edit, size_t element, const PLYAttribute &attribute, ELM_Owner owner, int64_t firstRow);
    void writeCorners(MOD_Edit &edit, const PLYAttribute &attribute, const PLYList &list, int64_t firstVertex);
    void warnOfSmallFaces(size_t element, const PLYList &corners);
    void warnOfTheRest();

    size_t numberOf(const PLYElement &element) const { return size_t(&element - header_.elements.data()); }

    const Source &headerSource_;
    const Source &source_;
    const PLYHeader &header_;
    PLYBody &body_;
    const std::shared_ptr<const void> &owner_;
    int64_t points_ = 0;
    Tally elements_;  // that nobody knows
};
}  // namespace rq::io
