#pragma once

#include <host/elm/Range.h>
#include <host/mod/Edit.h>
#include <host/msh/Detail.h>
#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace rq::app
{
/// The attribute of a detail's primitives that numbers them while an exchange goes on, for what becomes of them to be known
/// by.
constexpr const char *kExchangeSource = "__source";

/// Polygons in the place of primitives, on an edit of the detail that holds these.
///
/// Failure  false where the edit refuses; its message tells why
class ShapeExchange
{
public:
    ShapeExchange(const MSH_Detail &from, MOD_Edit &edit) : from_(from), edit_(edit) {}

    /// Take out primitives, and the points that nothing else uses.
    bool remove(const ELM_Range &primitives);

    /// Add the faces of a mesh, or linear curves as open polygons, with all that attributes of the detail say of them.
    ///
    /// Attributes of primitives are looked for in every list of the mesh: shapes that become many faces hand theirs on as
    /// details, or mix them in their points, of which the first one of a face counts.
    bool append(const RQ_PrimPolygonMesh &mesh);
    bool append(const RQ_PrimCurveMesh &lines);

    /// Drop what only helped, and what a surface does not have once its cage is gone: normals and tags.
    bool finish(bool subdivided);

private:
    struct Place;
    struct Starts;

    static RQ_DataArrayHandle ofPieces(const RQ_Primitive &mesh, const BAS_StringHolder &name, const Starts &starts);
    void writeList(ELM_Owner owner, const RQ_AttributeListHandle &list, int64_t first);
    void writePieces(const RQ_Primitive &mesh, const Starts &starts, int64_t first);
    void write(ELM_Owner owner, const BAS_StringHolder &name, const RQ_DataArray &values, int64_t first);
    void joinGroups(const RQ_DataArray &sources, int64_t first);

    const MSH_Detail &from_;
    MOD_Edit &edit_;
};
}  // namespace rq::app
