#include <rq/surface/PrimCurveMesh.h>

#include <rq/surface/detail/curveHull.h>
#include <rq/surface/detail/lists.h>

void RQ_PrimCurveMesh::enlargeByHull(BAS_BoundingBox *boxes, int segments) const
{
    const rq::SpanShapes shapes(*this);
    const bool placed = getPrimitiveTransform() && !getPrimitiveTransform()->isIdentity();
    for (int segment = 0; segment < segments; ++segment)
    {
        const rq::Positions plain(vertex_->get("P", segment));
        const bool isPacked = plain.flat() && plain.entries() >= getVertexCount() && !vertex_->hasName("Pw");
        if (isPacked && !placed && shapes.alike() && basis_ == RQ_BASIS_CATMULLROM)
        {
            rq::enlargeByHull(boxes[segment], shapes, plain.flat());
            continue;
        }
        BAS_Mat4d matrix;
        if (placed)
            getPrimitiveTransform()->getMatrix(matrix, segment);
        const rq::CurvePositions positions(*vertex_, segment, getVertexCount());
        if (positions.isValid())
            rq::enlargeByHull(boxes[segment], shapes, positions, placed ? &matrix : nullptr);
    }
}

void RQ_PrimCurveMesh::enlargeBounds(BAS_BoundingBox *boxes, int segments) const
{
    rq::enlargeWithWidths(*this, boxes, segments, [&](BAS_BoundingBox *own) {
        if (rq::liesInHull(basis_))
            enlargeP(own, segments, vertex_);
        else if (vertex_)
            enlargeByHull(own, segments);
    });
}
