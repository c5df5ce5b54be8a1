#pragma once

#include <string>

#include <rq/attrib/AttributeList.h>
#include <rq/prim/Primitive.h>

class RQ_PrimPointMesh;
using RQ_PointMeshHandle = BAS_IntrusivePtr<RQ_PrimPointMesh>;

/// A cloud of points.
///
/// Shape      point attributes have one entry a point, detail attributes one
/// Ownership  arrays are shared, never copied
/// Threads    immutable once built, safe to read from any thread
class RQ_API RQ_PrimPointMesh : public RQ_Primitive
{
public:
    RQ_PrimPointMesh();
    explicit RQ_PrimPointMesh(const RQ_AttributeListHandle &points, const RQ_AttributeListHandle &detail = {});
    RQ_PrimPointMesh(const RQ_PrimPointMesh &other);
    ~RQ_PrimPointMesh() override;

    /// Replace the attributes of a mesh that is not yet shared.
    void init(const RQ_AttributeListHandle &points, const RQ_AttributeListHandle &detail = {});

    /// Check that all arrays have as many entries as there are points, or one.  False with the reason.
    bool validate(std::string *why = nullptr) const;

    const RQ_AttributeListHandle &getPoints() const { return points_; }
    int64_t getPointCount() const;

    const char *className() const override;
    int getPrimitiveType() const override;

    /// Positions, and around each the largest "width" or "pscale" where there is one.
    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;
    int getMotionSegments() const override;
    int64_t getMemoryUsage() const override;
    const RQ_AttributeListHandle &getPointAttributes() const override { return points_; }
    const RQ_AttributeListHandle &getDetailAttributes() const override { return detail_; }
    bool save(BAS_JSONWriter &writer) const override;
    RQ_PrimitiveHandle doHarden() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

    /// The patterns for points and for detail attributes choose those; the others have nothing to choose from.
    RQ_PrimitiveHandle doAttributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *vertex,
                                        const BAS_StringMMPattern *point, const BAS_StringMMPattern *uniform,
                                        const BAS_StringMMPattern *detail) const override;

private:
    RQ_AttributeListHandle points_;
    RQ_AttributeListHandle detail_;
};
