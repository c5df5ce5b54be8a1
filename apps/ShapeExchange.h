#pragma once

#include <initializer_list>

#include <host/bas/BitArray.h>
#include <host/elm/Range.h>
#include <host/mod/Edit.h>
#include <host/msh/Detail.h>
#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace rq::app
{
/// The attribute of a detail's primitives that numbers them while an exchange goes on, for what becomes of them to be known by.
constexpr const char *kExchangeSource = "__source";

/// Polygons in the place of primitives, on an edit of the detail that holds these.
///
/// Failure  false where the edit refuses; its message tells why
class ShapeExchange
{
public:
    ShapeExchange(const MOD_ConstDetailHandle &from, MOD_Edit &edit);

    /// Take out primitives, and the points that nothing else uses.
    bool remove(const ELM_Range &primitives);

    /// Add the faces of a mesh, or linear curves as open polygons, with all that attributes of the detail say of them, and
    /// in their groups.
    ///
    /// What melts together has no source: of attributes of primitives its faces have those that its points have.
    bool append(const RQ_PrimPolygonMesh &mesh);
    bool append(const RQ_PrimCurveMesh &lines);

    /// How many of the primitives, polygons and cells aside, nothing came of.
    int64_t countLost(const ELM_Range &primitives) const;

    /// Drop what only helped, and what a surface does not have once its cage is gone: normals and tags.
    bool finish(bool subdivided);

private:
    /// Where the elements that are appended next will be.
    struct Place
    {
        explicit Place(const MOD_Edit &edit)
            : point(edit.pointCount()), vertex(edit.vertexCount()), primitive(edit.primitiveCount())
        {}

        int64_t point, vertex, primitive;
    };

    /// A list that may have an attribute, and its entry for each element; null where element i has entry i.
    struct Rows
    {
        const RQ_AttributeListHandle &list;
        RQ_DataArrayHandle entries;
    };

    void write(ELM_Owner owner, int64_t first, int64_t count, std::initializer_list<Rows> lists,
               const RQ_AttributeListHandle &detail);
    void writePieces(const RQ_DataArray &sources, int64_t first);
    ELM_Attribute &own(const ELM_Attribute &like);
    void joinGroups(const RQ_DataArray &sources, int64_t first);

    const MOD_ConstDetailHandle handle_;
    const MSH_Detail &from_;
    MOD_Edit &edit_;
    BAS_BitArray arrived_;    // the primitives that something came of
    bool hasMolten_ = false;  // something came of metaballs
};
}  // namespace rq::app
