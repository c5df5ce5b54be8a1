#pragma once

#include <host/mod/PackedImpl.h>
#include <host/msh/Placed.h>

/// A primitive seen as packed geometry.
class HOST_API MOD_PrimPacked : public MSH_Placed
{
public:
    explicit MOD_PrimPacked(const MSH_Primitive &primitive) : MSH_Placed(primitive), payload_(packedPayload()) {}
    MOD_PrimPacked(const MSH_Detail &detail, ELM_Offset offset) : MOD_PrimPacked(MSH_Primitive(detail, offset)) {}

    /// False when the primitive is of another type, or one of an application's without this payload; nothing else may be
    /// asked then.
    bool isValid() const { return payload_ != nullptr; }

    /// What it stands for; lives as long as the detail.
    const MOD_PackedImpl &implementation() const { return payload_->implementation(); }

    /// The point of its geometry that comes to lie at its own point.
    const BAS_Vec3d &pivot() const { return payload_->pivot(); }

    /// Its own viewport level (see host/msh/viewportLOD.h).
    int viewportLOD() const { return payload_->viewportLOD(); }

    /// From the space of its geometry to the detail's: back by the pivot, turned by "transform", moved to its point.
    BAS_Mat4d fullTransform() const;

    /// Its vertex and that vertex's point, -1 without.
    ELM_Offset vertexOrNone() const { return vertexCount() > 0 ? vertex(0) : -1; }
    ELM_Offset pointOrNone() const { return vertexCount() > 0 ? point(0) : -1; }

    // Of the implementation, in the space of its geometry.
    BAS_BoundingBox bounds() const { return implementation().bounds(); }
    bool instanceKey(BAS_Options &key) const { return implementation().instanceKey(key); }
    MOD_ConstDetailHandle unpack(std::string &why) const { return implementation().unpack(why); }
    MOD_ConstDetailHandle pointCloud(std::string &why) const { return implementation().pointCloud(why); }

private:
    const MOD_PackedPayload *packedPayload() const;

    const MOD_PackedPayload *payload_;
};
