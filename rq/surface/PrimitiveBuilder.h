#pragma once

#include <rq/attrib/BuilderStatus.h>
#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/PrimPolygonMesh.h>

/// Make primitives from arrays of unknown origin: what does not hold together is refused with a message.
///
/// Failure    a null handle, and the reason in the status that the builder was given
/// Ownership  primitives share what they are made of; the status must outlive the builder
/// Threads    belongs to one thread, as its status does
class RQ_API RQ_PrimitiveBuilder
{
public:
    explicit RQ_PrimitiveBuilder(RQ_BuilderStatus &status) : status_(status) {}

    /// A mesh of at least one face.  `counts` holds the corners of each face, `vertexList` the point of each corner.
    RQ_PolygonMeshHandle polygonMesh(const RQ_DataArrayHandle &counts, const RQ_DataArrayHandle &vertexList,
                                     const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex = {},
                                     const RQ_AttributeListHandle &uniform = {}, const RQ_AttributeListHandle &detail = {});

    /// A polygon of at least three corners, which are the entries of `vertex`.
    RQ_PolygonHandle polygon(const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform = {});

    /// A mesh of at least one curve.  `counts` holds the vertices of each curve.
    RQ_CurveMeshHandle curveMesh(RQ_Basis basis, const RQ_DataArrayHandle &counts, const RQ_AttributeListHandle &vertex,
                                 const RQ_AttributeListHandle &uniform = {}, const RQ_AttributeListHandle &detail = {},
                                 bool wrap = false);

    /// A curve of at least three vertices, which are the entries of `vertex`.
    RQ_CurveHandle curve(RQ_Basis basis, const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform = {},
                         bool wrap = false);

private:
    bool checkCounts(const char *mesh, const char *item, const char *element, const RQ_DataArrayHandle &counts);

    RQ_BuilderStatus &status_;
};
