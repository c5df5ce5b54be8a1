#pragma once

#include <rq/surface/PrimQuadricMesh.h>
#include <rq/surface/PrimTube.h>

/// Many tubes of one taper, with or without caps, each placed by a transform of its own.
class RQ_API RQ_PrimTubeMesh final : public RQ_PrimQuadricMesh
{
public:
    /// See `RQ_PrimTube::init` and `RQ_PrimQuadricMesh::init`.
    bool init(double taper, bool caps, const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &detail,
              const RQ_TransformArrayHandle &transforms);

    int64_t getTubeCount() const { return getQuadricCount(); }
    double getTaper() const { return taper_; }
    bool getCaps() const { return caps_; }

    const char *className() const override;
    int getPrimitiveType() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;
    RQ_QuadricHandle makeQuadric(int64_t quadric) const override;

protected:
    void enlargeByShape(BAS_BoundingBox &box, const BAS_Mat4d &matrix) const override;
    bool saveShape(BAS_JSONWriter &writer) const override;

private:
    double taper_ = 1.0;
    bool caps_ = false;
};
