#pragma once

#include <string>

#include <rq/surface/PrimPolygonMesh.h>

namespace rq
{
struct CellKind;
class SharedOuterFaces;
}  // namespace rq

class RQ_PrimCellMesh;
using RQ_CellMeshHandle = BAS_IntrusivePtr<RQ_PrimCellMesh>;

/// A mesh of cells of one shape that share points: what tetrahedra and hexahedra have in common.
///
/// Shape      the corners of cell i are the vertex-list entries from i times their number on, each the row of a point in the
///            shared attributes; vertex attributes have one entry per corner, uniform ones one per cell, detail ones one
/// Failure    constructors trust what they are given; `validate` tells whether it holds together
/// Ownership  arrays are shared, never copied
/// Threads    immutable once built, safe to read from any thread
class RQ_API RQ_PrimCellMesh : public RQ_Primitive
{
public:
    ~RQ_PrimCellMesh() override;

    /// Replace cells and attributes of a mesh that is not yet shared.
    void init(const RQ_DataArrayHandle &vertexList, const RQ_AttributeListHandle &shared,
              const RQ_AttributeListHandle &vertex = {}, const RQ_AttributeListHandle &uniform = {},
              const RQ_AttributeListHandle &detail = {});

    /// Check that every cell has all its corners, every point exists and attribute lengths fit.  False with the reason.
    bool validate(std::string *why = nullptr) const;

    int64_t getCellCount() const { return getVertexCount() / getCornerCount(); }

    /// The corners of a cell.
    int getCornerCount() const;

    int64_t getVertexCount() const { return vertexList_ ? vertexList_->entries() : 0; }
    int64_t getPointCount() const;

    /// The point of corner `i`.  Not checked.
    int64_t getPoint(int64_t cell, int64_t i) const { return vertexList_->getI64(cell * getCornerCount() + i); }

    /// The surface of the cells: the faces that only one cell has, counter-clockwise seen from outside, in the order of the
    /// cells.
    ///
    /// Cells are taken to share points, not positions.  A face that two or more have lies inside, whichever way round they
    /// have it; cells with the same points count as one.  A face with two corners in one point has those that are left; with
    /// fewer than three, or twice in one cell, it is none, so that collapsed cells close with their neighbours.  Faces of
    /// cells whose corners go the wrong way round, at the positions of the first segment, are turned about.
    ///
    /// Point and detail attributes are the lists of this mesh, those of vertices and faces views of it.  Null without cells.
    /// Cost  which faces these are is found once for all meshes of the same cells, which way round at every call, at some
    /// 50 ns a face
    RQ_PolygonMeshHandle getOuterFaces() const;

    /// Drop the points that no cell uses, keeping the order of the others; shared attributes become views.  This mesh when
    /// nothing is dropped.
    RQ_CellMeshHandle removeUnusedPoints() const;

    /// The same cells with other attributes.
    RQ_CellMeshHandle withAttributes(const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex,
                                     const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail) const;

    /// Hand over the outer faces as one mesh, or in pieces.  False without cells.
    ///
    /// Options, see `RQ_RefineParms`: "addvertexnormals" by "cuspangle", "addmikkt" and "maxpolymeshsize", as for polygons.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;

    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;
    int getMotionSegments() const override;
    int64_t getMemoryUsage() const override;
    const RQ_AttributeListHandle &getPointAttributes() const override { return shared_; }
    const RQ_AttributeListHandle &getVertexAttributes() const override { return vertex_; }
    const RQ_AttributeListHandle &getUniformAttributes() const override { return uniform_; }
    const RQ_AttributeListHandle &getDetailAttributes() const override { return detail_; }
    const RQ_DataArrayHandle &getVertexList() const override { return vertexList_; }

    /// Write [name, vertex list, lists]: the name of the type, or of the class where the type has none.
    bool save(BAS_JSONWriter &writer) const override;
    RQ_PrimitiveHandle doHarden() const override;

    /// Each pattern chooses attributes for the list of its name.
    RQ_PrimitiveHandle doAttributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *vertex,
                                        const BAS_StringMMPattern *point, const BAS_StringMMPattern *uniform,
                                        const BAS_StringMMPattern *detail) const override;

protected:
    RQ_PrimCellMesh();
    RQ_PrimCellMesh(const RQ_PrimCellMesh &other);

    virtual const rq::CellKind &kind() const = 0;

private:
    RQ_CellMeshHandle copy() const { return static_cast<RQ_PrimCellMesh *>(doSoftCopy().get()); }

    RQ_DataArrayHandle vertexList_;
    RQ_AttributeListHandle shared_;
    RQ_AttributeListHandle vertex_;
    RQ_AttributeListHandle uniform_;
    RQ_AttributeListHandle detail_;
    BAS_IntrusivePtr<rq::SharedOuterFaces> outer_;  // of the vertex list
};
