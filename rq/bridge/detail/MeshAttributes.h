#pragma once

#include <optional>

#include <rq/bridge/MSHDetailList.h>

namespace rq
{
/// The attributes of a mesh that hold the material of each face, and the table that maps it to what the consumer knows.
inline constexpr const char *kMaterialName = "__material", *kMaterialRemapName = "__material_remap";

/// The attribute lists of the meshes that one refinement makes of polygons: what the filter lets pass, and the materials
/// that the options bring along.  For viewports the materials stand in the place of host attributes of their names.
///
/// Ownership  refers to the details and options, which must outlive it
class MeshAttributes
{
public:
    MeshAttributes(const RQ_MSHDetailList &details, const RQ_RefineParms *parms);

    RQ_AttributeListHandle ofPoints(const RQ_MSHOffsetList &points) const;
    RQ_AttributeListHandle ofVertices(const RQ_MSHOffsetList &vertices,
                                      RQ_MSHIncludePoint point = RQ_MSHIncludePoint::OMIT) const;
    RQ_AttributeListHandle ofPrimitives(const RQ_MSHOffsetList &primitives) const;
    RQ_AttributeListHandle ofDetail() const;

private:
    /// What the caller's filter, or else the standard one, lets pass of all but the handled names.
    class Filter final : public RQ_MSHViewportAttributeFilter
    {
    public:
        explicit Filter(const RQ_MSHAttributeFilter *callers) : callers_(callers) {}
        bool isValid(const ELM_Attribute &attribute) const override;

    private:
        const RQ_MSHAttributeFilter *callers_;
    };

    const RQ_MSHAttributeFilter *filter() const { return filter_ ? &*filter_ : nullptr; }

    const RQ_MSHDetailList &details_;
    const RQ_RefineParms *parms_;
    std::optional<Filter> filter_;
};
}  // namespace rq
