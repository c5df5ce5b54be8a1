#pragma once

#include <host/elm/Range.h>
#include <host/mod/Edit.h>
#include <host/msh/Detail.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace rq::app
{
/// The attribute of a detail's primitives that numbers them while an exchange goes on, for their faces to be known by.
constexpr const char *kExchangeSource = "__source";

/// Faces in the place of primitives, on an edit of the detail that holds these.
///
/// Failure  false where the edit refuses; its message tells why
class FaceExchange
{
public:
    FaceExchange(const MSH_Detail &from, MOD_Edit &edit) : from_(from), edit_(edit) {}

    /// Take out primitives, and the points that nothing else uses.
    bool remove(const ELM_Range &primitives);

    /// Add the faces of a mesh, with all that attributes of the detail say of them.
    ///
    /// Attributes of primitives are looked for in every list of the mesh: shapes that become many faces hand theirs on as
    /// details, or mix them in their points, of which the first one of a face counts.
    bool append(const RQ_PrimPolygonMesh &mesh);

    /// Drop what only helped, and what a surface does not have once its cage is gone: normals and tags.
    bool finish(bool subdivided);

private:
    void writeLists(const RQ_PrimPolygonMesh &mesh, int64_t point, int64_t vertex, int64_t face);
    void write(ELM_Owner owner, const BAS_StringHolder &name, const RQ_DataArray &values, int64_t first);
    void joinGroups(const RQ_DataArray &sources, int64_t first);

    const MSH_Detail &from_;
    MOD_Edit &edit_;
};
}  // namespace rq::app
