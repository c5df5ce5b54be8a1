#pragma once

#include <rq/prim/Primitive.h>

/// A primitive that control vertices shape: the base of patches, surfaces and channels.
///
/// Shape      vertex attributes have one entry a control vertex, uniform and detail ones one.  "P" places the vertices; "Pw"
///            of one component holds rational weights, which shape all attributes but a homogeneous "P"
/// Ownership  shares its lists; nothing is copied
/// Threads    immutable once shared, safe to read from any thread; what it refines to has the same bits for any number of
///            threads
class RQ_API RQ_PrimNet : public RQ_Primitive
{
public:
    ~RQ_PrimNet() override;

    const RQ_AttributeListHandle &getVertex() const { return vertex_; }
    const RQ_AttributeListHandle &getUniform() const { return uniform_; }
    const RQ_AttributeListHandle &getDetail() const { return detail_; }

    /// The box of the control vertices, which what they shape does not leave where all weights are positive.
    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;
    int getMotionSegments() const override;
    int64_t getMemoryUsage() const override;
    const RQ_AttributeListHandle &getVertexAttributes() const override { return vertex_; }
    const RQ_AttributeListHandle &getUniformAttributes() const override { return uniform_; }
    const RQ_AttributeListHandle &getDetailAttributes() const override { return detail_; }

    /// Write [name of the type, members of the shape..., lists].
    bool save(BAS_JSONWriter &writer) const override;
    const RQ_ViewportRefineOptions &viewportRefineOptions() const override;
    RQ_PrimitiveHandle doHarden() const override;

    /// Each pattern chooses attributes for the list of its name; the one for points chooses vertex attributes too.
    RQ_PrimitiveHandle doAttributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *vertex,
                                        const BAS_StringMMPattern *point, const BAS_StringMMPattern *uniform,
                                        const BAS_StringMMPattern *detail) const override;

protected:
    RQ_PrimNet();
    RQ_PrimNet(const RQ_PrimNet &other);

    void setLists(const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                  const RQ_AttributeListHandle &detail);

    /// The attributes of the one thing that this is: uniform ones before those of the detail.
    RQ_AttributeListHandle wholeAttributes() const;

    /// Place a primitive made of this one as this is, and hand it over.  False for null.
    bool handOver(const RQ_PrimitiveHandle &made, RQ_Refine &sink) const;

    /// Write the members of the shape into the record.
    virtual bool saveShape(BAS_JSONWriter &writer) const = 0;

private:
    RQ_AttributeListHandle vertex_;
    RQ_AttributeListHandle uniform_;
    RQ_AttributeListHandle detail_;
};
