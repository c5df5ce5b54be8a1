#include <rq/surface/PrimCurveMesh.h>

#include <rq/surface/detail/lists.h>

void RQ_PrimCurveMesh::enlargeBounds(BAS_BoundingBox *boxes, int segments) const
{
    rq::enlargeWithWidths(*this, boxes, segments, [&](BAS_BoundingBox *own) { enlargeP(own, segments, vertex_); });
}
