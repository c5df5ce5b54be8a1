#pragma once

#include <host/mod/PackedImpl.h>

/// "PackedGeometry": a detail, placed as a whole.  Two that place the same snapshot share it.
struct HOST_API MOD_PackedGeometryData
{
    MSH_DetailList detail;  ///< one

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit) { visit("detail", self.detail); }
    static ELM_PrimitiveTypeId type() { return ELM_PRIMITIVE_PACKED_GEOMETRY; }
    bool check(std::string &why) const;
    bool instanceKey(BAS_Options &key) const;
    MOD_PackedContent load(std::string &why) const;
};

/// "PackedFragment": the primitives of a detail whose string attribute has one value.
struct HOST_API MOD_PackedFragmentData
{
    MSH_DetailList detail;  ///< one
    BAS_StringHolder attribute;
    BAS_StringHolder value;

    MOD_PackedFragmentData() = default;
    MOD_PackedFragmentData(MSH_DetailList details, BAS_StringHolder name, BAS_StringHolder text)
        : detail(std::move(details)), attribute(std::move(name)), value(std::move(text))
    {}

    /// Those primitives, as a range of the detail's; kept from the first time on.  Empty when there is no such attribute.
    const ELM_Range &range() const;

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit)
    {
        visit("detail", self.detail);
        visit("attribute", self.attribute);
        visit("value", self.value);
    }
    static ELM_PrimitiveTypeId type() { return ELM_PRIMITIVE_PACKED_FRAGMENT; }
    bool check(std::string &why) const;
    bool instanceKey(BAS_Options &key) const;
    MOD_PackedContent load(std::string &why) const;

private:
    struct CachedRange : BAS_IntrusiveRefCounter<CachedRange>
    {
        ELM_Range range;
    };
    host::PublishedCache<CachedRange> range_{};
};

using MOD_PackedGeometry = MOD_PackedImplOf<MOD_PackedGeometryData>;
using MOD_PackedFragment = MOD_PackedImplOf<MOD_PackedFragmentData>;
