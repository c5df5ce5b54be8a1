#include <rq/surface/PrimTubeMesh.h>

#include <cmath>

#include <host/bas/JSONWriter.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/surface/PrimCircle.h>

bool RQ_PrimTubeMesh::init(double taper, bool caps, const RQ_AttributeListHandle &vertex,
                           const RQ_AttributeListHandle &detail, const RQ_TransformArrayHandle &transforms)
{
    if (!std::isfinite(taper) || !RQ_PrimQuadricMesh::init(vertex, detail, transforms))
        return false;
    taper_ = taper;
    caps_ = caps;
    return true;
}

const char *RQ_PrimTubeMesh::className() const { return "RQ_PrimTubeMesh"; }
int RQ_PrimTubeMesh::getPrimitiveType() const { return RQ_PRIM_TUBE_MESH; }
RQ_PrimitiveHandle RQ_PrimTubeMesh::doSoftCopy() const { return new RQ_PrimTubeMesh(*this); }

bool RQ_PrimTubeMesh::saveShape(BAS_JSONWriter &writer) const
{
    return writer.writeReal64(taper_) && writer.writeBool(caps_);
}

RQ_QuadricHandle RQ_PrimTubeMesh::makeQuadric(int64_t quadric) const { return make<RQ_PrimTube>(quadric, taper_, caps_); }

// The ends reach as far as anything between them.
void RQ_PrimTubeMesh::enlargeByShape(BAS_BoundingBox &box, const BAS_Mat4d &matrix) const
{
    for (const auto &[radius, z] : {std::pair(1.0, -0.5), std::pair(taper_, 0.5)})
    {
        BAS_Mat4d end = matrix;
        for (int c = 0; c < 3; ++c)
        {
            end[0][c] *= radius;
            end[1][c] *= radius;
            end[3][c] += z * matrix[2][c];
        }
        RQ_PrimCircle::computeCircleBounds(box, end);
    }
}
