#pragma once

#include <vector>

#include <host/bas/BoundingBox.h>
#include <host/elm/OffsetList.h>
#include <rq/prim/Primitive.h>

/// Gathers boxes, and middles of boxes, that stand for other geometry.
///
/// Shape    boxes become one polygon mesh, 8 points and 6 quads each that look outward; centroids one point mesh.  Both tell
///          what they stand for by "__primitive_id", "__vertex_id" and "__point_id", a number for each face or point
/// Failure  an empty box stands for nothing and is not taken
/// Threads  one object per thread
class RQ_API RQ_MSHPrimCollectBoxes
{
public:
    // `primitive`, and its first vertex and that vertex's point (-1 without), are offsets; the box lies in the space that
    // `transform` leads from.

    void appendBox(const BAS_BoundingBox &box, const BAS_Mat4d &transform, ELM_Offset primitive, ELM_Offset vertex,
                   ELM_Offset point);
    void appendBox(const BAS_BoundingBox &box, const BAS_Mat4f &transform, ELM_Offset primitive, ELM_Offset vertex,
                   ELM_Offset point)
    {
        appendBox(box, BAS_Mat4d(transform), primitive, vertex, point);
    }
    void appendCentroid(const BAS_BoundingBox &box, const BAS_Mat4d &transform, ELM_Offset primitive, ELM_Offset vertex,
                        ELM_Offset point);
    void appendCentroid(const BAS_BoundingBox &box, const BAS_Mat4f &transform, ELM_Offset primitive, ELM_Offset vertex,
                        ELM_Offset point)
    {
        appendCentroid(box, BAS_Mat4d(transform), primitive, vertex, point);
    }

    /// Append what another gathered.
    void append(const RQ_MSHPrimCollectBoxes &following);

    /// The mesh of all boxes, and that of all centroids; null without any.
    RQ_PrimitiveHandle getBoxes() const;
    RQ_PrimitiveHandle getCentroids() const;

    /// What there is: boxes, centroids, or a collection of both, boxes first.  Null without any.
    RQ_PrimitiveHandle getPrimitive() const;

private:
    struct Rows
    {
        std::vector<BAS_Vec3f> points;
        std::vector<int64_t> primitives, vertices, pointOffsets;

        void append(const Rows &following);
        RQ_AttributeListHandle positions() const;
        RQ_AttributeListHandle withIds(const RQ_AttributeListHandle &list, int64_t copies) const;
    };

    Rows boxes_, centroids_;
};
