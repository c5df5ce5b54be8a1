#pragma once

#include <rq/surface/PrimQuadricMesh.h>

/// Many unit circles, each placed by a transform of its own.
class RQ_API RQ_PrimCircleMesh final : public RQ_PrimQuadricMesh
{
public:
    const char *className() const override;
    int getPrimitiveType() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;
    RQ_QuadricHandle makeQuadric(int64_t quadric) const override;

protected:
    void enlargeByShape(BAS_BoundingBox &box, const BAS_Mat4d &matrix) const override;
};
