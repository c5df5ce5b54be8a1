#pragma once

#include <rq/prim/Primitive.h>
#include <rq/prim/TransformArray.h>

/// One primitive drawn many times.
///
/// Shape      instance i is the geometry, placed by its own transform, then by transform i, then by the transform of this
///            primitive.  The instance attributes have one entry per instance and are the uniform list.
/// Failure    without geometry or transforms there are no instances: nothing is refined to, and nothing enlarges a box
/// Ownership  shares the geometry, the transforms and the attributes
/// Cost       a million instances cost their transforms (see `RQ_CompactTransformArray`) and attributes
class RQ_API RQ_PrimInstance : public RQ_Primitive
{
public:
    RQ_PrimInstance(const RQ_PrimitiveHandle &geometry, const RQ_TransformArrayHandle &transforms,
                    const RQ_AttributeListHandle &attributes = {}, const RQ_AttributeListHandle &detail = {});
    RQ_PrimInstance(const RQ_PrimInstance &other);
    ~RQ_PrimInstance() override;

    /// The number of instances.
    int64_t entries() const;

    const RQ_PrimitiveHandle &getGeometry() const { return geometry_; }
    const RQ_TransformArrayHandle &getTransforms() const { return transforms_; }
    const RQ_AttributeListHandle &getInstanceAttributes() const { return attributes_; }

    const char *className() const override;
    int getPrimitiveType() const override;

    /// Enlarge by every instance: by its points while these are few in all, else by the corners of the geometry's box.
    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;
    void enlargeRenderBounds(BAS_BoundingBox *boxes, int segments) const override;

    /// Hand over the geometry once per instance, in order, placed but not refined.  False when there are none.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;

    /// The largest count among the geometry, the transforms and the attributes.
    int getMotionSegments() const override;
    int64_t getMemoryUsage() const override;
    const RQ_AttributeListHandle &getUniformAttributes() const override { return attributes_; }
    const RQ_AttributeListHandle &getDetailAttributes() const override { return detail_; }

    /// Write ["PackedInstance", geometry, transforms, lists].
    bool save(BAS_JSONWriter &writer) const override;

    /// Null geometry, and geometry that cannot be hardened, is shared.
    RQ_PrimitiveHandle doHarden() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

    /// True when every instance is the same single primitive: the geometry is no collection and there are no instance
    /// attributes.
    virtual bool isSimplePrimitive() const;

private:
    RQ_PrimitiveHandle instance(int64_t index) const;
    bool hasFewPoints() const;
    void enlargeByPoints(BAS_BoundingBox *boxes, int segments) const;
    void enlargeByBoxes(BAS_BoundingBox *boxes, int segments, const BAS_BoundingBox *geometry) const;

    RQ_PrimitiveHandle geometry_;
    RQ_TransformArrayHandle transforms_;
    RQ_AttributeListHandle attributes_;
    RQ_AttributeListHandle detail_;
};
