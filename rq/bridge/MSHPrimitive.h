#pragma once

#include <rq/bridge/MSHDetailList.h>
#include <rq/prim/Primitive.h>

/// A host primitive of a type that no collector serves, as it is.
///
/// Shape      the primitive's attributes are uniform; vertex and point attributes have one entry per vertex of the primitive
/// Ownership  keeps the details alive
class RQ_API RQ_MSHPrimitive final : public RQ_Primitive
{
public:
    RQ_MSHPrimitive(const RQ_MSHDetailListHandle &details, ELM_Offset offset, const RQ_RefineParms *parms = nullptr);
    RQ_MSHPrimitive(const RQ_MSHPrimitive &other);
    ~RQ_MSHPrimitive() override;

    /// What it is in the host.
    ELM_Offset getOffset() const { return offset_; }
    ELM_PrimitiveTypeId getHostType() const;
    bool isClosed() const;
    int64_t getVertexCount() const;
    const RQ_MSHDetailListHandle &getDetails() const { return details_; }

    const char *className() const override;
    int getPrimitiveType() const override;
    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;

    /// There is nothing simpler: false.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;
    int getMotionSegments() const override;
    int64_t getMemoryUsage() const override;
    const RQ_AttributeListHandle &getPointAttributes() const override { return point_; }
    const RQ_AttributeListHandle &getVertexAttributes() const override { return vertex_; }
    const RQ_AttributeListHandle &getUniformAttributes() const override { return uniform_; }
    bool save(BAS_JSONWriter &writer) const override;

    /// A snapshot never changes, so a copy that shares it is as good as one of its own.
    RQ_PrimitiveHandle doHarden() const override { return doSoftCopy(); }
    RQ_PrimitiveHandle doSoftCopy() const override;

private:
    RQ_MSHDetailListHandle details_;
    ELM_Offset offset_;
    RQ_AttributeListHandle point_;
    RQ_AttributeListHandle vertex_;
    RQ_AttributeListHandle uniform_;
};
