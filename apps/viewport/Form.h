#pragma once

#include <memory>
#include <string>

#include <apps/viewport/Scene.h>
#include <rq/attrib/AttributeList.h>
#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace rq::viewport
{
enum class FormKind
{
    Triangles,
    Segments,
    Points
};

/// The arrays that a shape is drawn from: the primitive's own, and what was derived from them.
struct Form
{
    FormKind kind = FormKind::Points;
    int64_t elements = 0;  ///< triangles, segments or points

    RQ_DataArrayHandle positions;
    RQ_DataArrayHandle corners;        ///< the point of each corner, 3 a triangle and 2 a segment; null: point i
    RQ_DataArrayHandle cornerSources;  ///< the corner of the primitive that each corner was; null: the same
    RQ_DataArrayHandle faceSources;    ///< the face or curve that each element is of; null: the same
    RQ_DataArrayHandle edges;          ///< uint8 a triangle: bit i when the edge from corner i is one of its face; null: all

    RQ_DataArrayHandle normals;
    RQ_Owner normalsOwner = RQ_OWNER_INVALID;

    RQ_FaceSetMapHandle faceSetMap;
    RQ_DataArrayHandle
        faceSets;  ///< the place by name of the first set that each face is in, -1 for none; null without sets

    RQ_PrimitiveHandle primitive;  ///< what the arrays are of, where it was made by refining; null: the item's
    uint64_t key = 0;              ///< equal for forms that are made of the same arrays in the same way; 0: never equal
    uint64_t topology = 0;         ///< of faces that were cut: equal for meshes of the same; 0: never equal

    int64_t cornersPerElement() const { return kind == FormKind::Triangles ? 3 : kind == FormKind::Segments ? 2 : 1; }
};
using FormHandle = std::shared_ptr<const Form>;

// Null with the reason in `why` when there is nothing to draw, or nothing that can be drawn.

/// `alike` is the form of a mesh with the same faces, whose cuts are used again; it and the cache may be null.
FormHandle makeMeshForm(const RQ_PrimPolygonMesh &mesh, const Preparation &preparation, uint64_t key,
                        const FormHandle &alike, RQ_RefineCache *cache, std::string &why);

/// Linear curves.
FormHandle makeCurveForm(const RQ_PrimCurveMesh &curves, uint64_t key, std::string &why);

FormHandle makePointForm(const RQ_Primitive &points, uint64_t key, std::string &why);

/// What `Form::topology` is, and the first part of a key.
uint64_t topologyKey(const RQ_PrimPolygonMesh &mesh);

/// What `Form::key` of a mesh is: its topology, its positions and normals, and how they are prepared.
uint64_t meshKey(const RQ_PrimPolygonMesh &mesh, const Preparation &preparation);

/// The same for a primitive all of whose attributes take part, and other options; `topology` may be null.
uint64_t wholeKey(const RQ_Primitive &primitive, const RQ_DataArrayHandle &topology, const Preparation &preparation,
                  uint64_t options = 0);

/// Positions as they can be uploaded: three components and more, homogeneous ones divided.  Null for others.
RQ_DataArrayHandle drawablePositions(const RQ_Primitive &primitive, RQ_Owner owner);
}  // namespace rq::viewport
