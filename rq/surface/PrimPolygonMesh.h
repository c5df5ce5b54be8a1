#pragma once

#include <string>

#include <host/bas/Published.h>
#include <rq/attrib/AttributeList.h>
#include <rq/data/CountArray.h>
#include <rq/data/NumericTypes.h>
#include <rq/prim/Primitive.h>
#include <rq/surface/FaceSetMap.h>
#include <rq/surface/PrimPolygon.h>

namespace rq
{
class SharedTopology;
}

class RQ_PrimPolygonMesh;
using RQ_PolygonMeshHandle = BAS_IntrusivePtr<RQ_PrimPolygonMesh>;

/// What a face counts for in the normals around it.
enum RQ_NormalWeights
{
    RQ_NORMAL_WEIGHTS_ANGLE,  ///< the angle of its corner
    RQ_NORMAL_WEIGHTS_EQUAL,  ///< one
    RQ_NORMAL_WEIGHTS_AREA    ///< its area
};

/// The arrays that cut a mesh's faces into convex pieces; they fit every mesh of the same topology.
struct RQ_ConvexArrays
{
    RQ_DataArrayHandle counts;        ///< corners of each piece, one integer a piece
    RQ_DataArrayHandle vertexList;    ///< point of each corner of each piece
    RQ_DataArrayHandle sourceVertex;  ///< vertex-list position that each corner came from
    RQ_DataArrayHandle sourceFace;    ///< face that each piece came from
    RQ_DataArrayHandle whole;         ///< uint8 a piece: 1 where a face was taken over whole, 0 where it was cut
    int64_t minCount = -1;            ///< fewest corners of a piece
    int64_t maxCount = -1;            ///< most corners of a piece
    int64_t forcedCount = 0;          ///< pieces that had to be cut off improperly, of faces that cross themselves
};

/// A mesh of faces with any number of corners that share points.
///
/// Shape      face i uses vertex-list entries offset(i) .. offset(i) + count(i) - 1, each the row of a point in the shared
///            attributes; vertex attributes have one entry per face corner, uniform ones one per face, detail ones one
/// Failure    constructors trust what they are given; `validate` tells whether it holds together
/// Ownership  arrays are shared, never copied; operations return a new mesh, or this one when nothing changes
/// Threads    immutable once built, safe to read from any thread; operations run in parallel and give the same bits for
///            any number of threads
class RQ_API RQ_PrimPolygonMesh : public RQ_Primitive
{
public:
    RQ_PrimPolygonMesh();

    /// `counts` holds the corners of each face.  Smallest and largest count may be given when known (-1: scan).  `mode` asks
    /// for a vertex list of 32- or 64-bit integers: one of another width is copied, but for points that need 64 bits.
    RQ_PrimPolygonMesh(const RQ_DataArrayHandle &counts, const RQ_DataArrayHandle &vertexList,
                       const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex = {},
                       const RQ_AttributeListHandle &uniform = {}, const RQ_AttributeListHandle &detail = {},
                       RQ_IndexingMode mode = RQ_INDEXING_AUTO, int64_t minCount = -1, int64_t maxCount = -1);

    /// From counts that were summed up before.
    RQ_PrimPolygonMesh(const RQ_CountArray &counts, const RQ_DataArrayHandle &vertexList,
                       const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex = {},
                       const RQ_AttributeListHandle &uniform = {}, const RQ_AttributeListHandle &detail = {});

    /// One face: a polygon's vertex attributes become those of points, its uniform ones those of the whole.
    explicit RQ_PrimPolygonMesh(const RQ_PrimPolygon &polygon);

    /// The topology and state of `other` with other attributes.
    RQ_PrimPolygonMesh(const RQ_PrimPolygonMesh &other, const RQ_AttributeListHandle &shared,
                       const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                       const RQ_AttributeListHandle &detail);

    /// The faces of `other` over other points.
    RQ_PrimPolygonMesh(const RQ_PrimPolygonMesh &other, const RQ_DataArrayHandle &vertexList,
                       const RQ_AttributeListHandle &shared);

    RQ_PrimPolygonMesh(const RQ_PrimPolygonMesh &other);
    ~RQ_PrimPolygonMesh() override;

    /// Replace topology and attributes of a mesh that is not yet shared.
    void init(const RQ_DataArrayHandle &counts, const RQ_DataArrayHandle &vertexList, const RQ_AttributeListHandle &shared,
              const RQ_AttributeListHandle &vertex = {}, const RQ_AttributeListHandle &uniform = {},
              const RQ_AttributeListHandle &detail = {}, RQ_IndexingMode mode = RQ_INDEXING_AUTO, int64_t minCount = -1,
              int64_t maxCount = -1);
    void init(const RQ_CountArray &counts, const RQ_DataArrayHandle &vertexList, const RQ_AttributeListHandle &shared,
              const RQ_AttributeListHandle &vertex = {}, const RQ_AttributeListHandle &uniform = {},
              const RQ_AttributeListHandle &detail = {});

    /// Check that counts, vertex list and attribute lengths fit together and every point exists.  False with the reason.
    bool validate(std::string *why = nullptr) const;

    int64_t getFaceCount() const { return counts_.entries(); }
    int64_t getVertexCount() const { return counts_.sumCounts(); }
    int64_t getPointCount() const;
    int64_t getMinVertexCount() const { return counts_.getMinCount(); }
    int64_t getMaxVertexCount() const { return counts_.getMaxCount(); }
    const RQ_CountArray &getFaceCountArray() const { return counts_; }

    /// The corners of each face as an array of the width asked for.
    RQ_DataArrayHandle getFaceCounts(RQ_IndexingMode mode = RQ_INDEXING_AUTO) const;

    /// Vertex-list position of the first corner of `face`, or of corner `i`; the point of corner `i`.  Not checked.
    int64_t getVertexOffset(int64_t face) const { return counts_.getOffset(face); }
    int64_t getVertex(int64_t face, int64_t i) const { return counts_.getOffset(face) + i; }
    int64_t getPoint(int64_t face, int64_t i) const { return vertexList_->getI64(getVertex(face, i)); }

    /// The points at both ends of an edge; the last edge of a face leads back to its first corner.
    void getEdgePoints(int64_t face, int64_t edge, int64_t &p0, int64_t &p1) const;

    /// The rows of the points that some face uses, in increasing order.
    RQ_DataArrayHandle getUsedPointList(RQ_IndexingMode mode = RQ_INDEXING_AUTO) const;

    const RQ_AttributeListHandle &getShared() const { return shared_; }
    const RQ_AttributeListHandle &getVertex() const { return vertex_; }
    const RQ_AttributeListHandle &getUniform() const { return uniform_; }
    const RQ_AttributeListHandle &getDetail() const { return detail_; }

    const RQ_AttributeListHandle &getSharedAttributes() const { return shared_; }

    /// The named face sets, null when there are none.  Sets are put in by the maker of a mesh that is not yet shared.
    const RQ_FaceSetMapHandle &faceSetMap() const { return faceSets_; }
    void setFaceSetMap(const RQ_FaceSetMapHandle &sets) { faceSets_ = sets; }

    /// Store a set under a name, in a map that is made when there is none; one of that name is replaced.
    void addFaceSet(const BAS_StringHolder &name, const RQ_FaceSetHandle &set);

    /// True on meshes whose faces are known to be convex.
    bool isConvexed() const { return convexed_; }
    void setConvexed(bool convexed) { convexed_ = convexed; }

    /// A face as a polygon of its own, whose arrays are views of this mesh's: its corners have the vertex attributes and, of
    /// the points, those that the vertices lack; the whole has the uniform and the detail attributes.  Not checked.
    RQ_PolygonHandle getFace(int64_t face) const;

    /// Hand every face to the sink, in parallel and in no order where that allows threads.  False without faces.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;

    /// Cut the faces into convex pieces of at most `maxVertices` corners (at least 3; 3 makes triangles).
    ///
    /// A concave face is cut right, whatever its shape; a face of n corners gives n - 2 triangles, one of fewer than 3
    /// nothing.  With `triangulate` a face that must be cut leaves as triangles only.  Uniform and vertex attributes become
    /// views of this mesh's.  With `edgeFlags` the result has a vertex attribute "__edge", 1 where the edge that begins
    /// there is an edge of a face of this mesh, 0 where it is a cut.  Face sets name the pieces of their faces, unless
    /// `keepFaceSets` is off.  With `faceSubset` only its faces are cut and all others stay as they are.
    ///
    /// Returns this mesh, without "__edge" and with its face sets, when all faces are triangles and no subset is given: all
    /// edges are faces' own then.  Null when "P" is missing or the user interrupted.
    RQ_PolygonMeshHandle convex(int maxVertices = 4, bool triangulate = false, bool edgeFlags = false,
                                bool keepFaceSets = true, const RQ_FaceSet *faceSubset = nullptr) const;

    /// Only the cutting of `convex`, to keep and apply to meshes of the same topology.  False, with nothing in the arrays,
    /// as `convex` gives null.
    bool getConvexArrays(RQ_ConvexArrays &arrays, int maxVertices = 4, bool triangulate = false) const;

    /// The mesh that `convex` would give, from arrays made before by a mesh of the same topology.
    RQ_PolygonMeshHandle adoptConvexing(const RQ_ConvexArrays &arrays) const;

    /// The unit normal of each face, from its first three corners or, where these leave no direction, from all.
    ///
    /// Shape    3 components a face in the storage asked for (real16, real32, real64)
    /// Failure  a null handle when the positions are missing, not of 3 components, or the storage is no float
    RQ_DataArrayHandle faceNormals(int segment = 0, const char *positions = "P",
                                   RQ_Storage storage = RQ_STORAGE_REAL32) const;

    /// Normals into memory of the caller's: one for each face, point or face-vertex, as the operations that make arrays give
    /// them.  `Vector` is a 3-vector of `float`, `double` or `PLT_Half`.  False, with nothing written, where those fail.
    template <class Vector> bool faceNormals(Vector *normals, int segment = 0, const char *positions = "P") const
    {
        return writeFaceNormals(static_cast<void *>(normals), storageOf<Vector>, segment, positions);
    }
    template <class Vector>
    bool pointNormals(Vector *normals, int segment = 0, const char *positions = "P", bool normalize = true,
                      RQ_NormalWeights weights = RQ_NORMAL_WEIGHTS_ANGLE) const
    {
        return writePointNormals(static_cast<void *>(normals), storageOf<Vector>, segment, positions, normalize, weights,
                                 nullptr);
    }
    template <class Vector>
    bool vertexNormals(Vector *normals, int segment, const char *positions, double cuspAngle, bool normalize = true,
                       RQ_NormalWeights weights = RQ_NORMAL_WEIGHTS_ANGLE) const
    {
        return writeVertexNormals(static_cast<void *>(normals), storageOf<Vector>, segment, positions, cuspAngle, normalize,
                                  weights);
    }

    /// The mesh with point normals "N" in every motion segment, or this one when vertices or points have an "N" already or
    /// there are no positions.  A segment whose positions are those of the one before, or none, shares its normals.
    RQ_PolygonMeshHandle createPointNormalsIfMissing(const char *positions, bool normalize, bool &changed) const;

    /// The same with vertex normals by cusp angle (degrees).
    RQ_PolygonMeshHandle createVertexNormalsIfMissing(const char *positions, double cuspAngle, bool normalize,
                                                      bool &changed) const;

    /// Tangents of the texture coordinates "uv" (M. S. Mikkelsen, "Simulation of Wrinkled Surfaces Revisited", 2008): the
    /// unit way, in the plane of the normal "N", that u grows; and what is at right angles to both, on the side where v
    /// grows.
    ///
    /// Corners that agree in position, "N" and "uv" share a tangent unless the texture is mirrored between them or their
    /// faces do not hang together.  "uv" and "N" are taken from the vertices, else from the points; without "N" the point
    /// normals serve.  Where the texture has no direction u's tangent is (1, 0, 0) and counts as mirrored.  Faces of more
    /// than four corners are cut into triangles first.
    ///
    /// Shape    3 components a face-vertex
    /// Failure  false without "P" and "uv", and when the cutting of large faces is interrupted
    /// Threads  runs in parallel; the result does not depend on the number of threads
    bool createFastTangents(RQ_DataArrayHandle &tangentU, RQ_DataArrayHandle &tangentV) const;

    /// The mesh with these as vertex attributes "tangentu" and "tangentv" in every motion segment, or this one when it has
    /// one of them already or has no "P" or "uv".  Null when it is interrupted.
    RQ_PolygonMeshHandle createTangentsIfMissing(bool &changed) const;

    /// Cut into meshes of this one's class of at most `maxFaces` faces each, in order, without the points that a piece does
    /// not use.  Their attributes are views of this mesh's, or copies of their own with `harden`.  False, with `out`
    /// untouched, when there is nothing to cut.
    bool splitMesh(int64_t maxFaces, BAS_Array<RQ_PrimitiveHandle> &out, bool harden = false) const;

    /// Cut into one mesh for each distinct value of `materials`, an integer per face, in increasing order of value; all
    /// negative ones count as -1.  `ids`, if wanted, receives the values.  A single material gives this mesh itself, or
    /// its hardened copy; else pieces are as those of `splitMesh`.  False, with `out` untouched, when `materials` does not
    /// fit the faces.
    bool partitionByMaterial(const RQ_DataArrayHandle &materials, BAS_Array<RQ_PrimitiveHandle> &out,
                             BAS_Array<int64_t> *ids = nullptr, bool harden = false) const;

    /// Drop the points that no face uses, keeping the order of the others; shared attributes become views.
    ///
    /// `indexRemap`, if wanted, receives old row to new row, -1 where dropped.  Returns this mesh when nothing is dropped.
    RQ_PolygonMeshHandle removeUnusedPoints(RQ_DataArrayHandle *indexRemap = nullptr) const;

    /// Make every attribute an owning copy, in place, on a mesh that is not yet shared.
    void hardenAttributes();

    /// Average the face normals around each vertex, keeping edges sharper than `cuspAngle` hard.
    ///
    /// Shape    3 components per face-vertex, in vertex-list order
    /// Units    `cuspAngle` in degrees: 0 and below is faceted, 180 and above is fully smooth (a view of point normals)
    /// Failure  a null handle when the positions are missing or not 3-component; the mesh is untouched
    virtual RQ_DataArrayHandle createVertexNormals(int segment, const char *positions, double cuspAngle, bool normalize,
                                                   RQ_Storage storage) const;

    const char *className() const override;
    int getPrimitiveType() const override;
    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;
    int getMotionSegments() const override;
    int64_t getMemoryUsage() const override;

    /// Read the attributes from a newer snapshot of the detail that they came from, in place: no other thread may read.
    ///
    /// False when the mesh must be made anew: nothing of it is of a detail, positions, normals or tangents were computed,
    /// segments read several snapshots, the detail's faces have changed (in these cases the mesh is left alone), or some
    /// attribute's shape has.
    bool updateGeoPrim(const MOD_ConstDetailHandle &detail, const RQ_RefineParms &parms) override;
    const RQ_AttributeListHandle &getPointAttributes() const override { return shared_; }
    const RQ_AttributeListHandle &getVertexAttributes() const override { return vertex_; }
    const RQ_AttributeListHandle &getUniformAttributes() const override { return uniform_; }
    const RQ_AttributeListHandle &getDetailAttributes() const override { return detail_; }
    bool save(BAS_JSONWriter &writer) const override;
    const RQ_DataArrayHandle &getVertexList() const override { return vertexList_; }

    /// Sum the normals of the faces around each point, weighted by the corner's angle or by `weights` (one per face-vertex).
    RQ_DataArrayHandle createPointNormals(int segment, const char *positions, bool normalize, const float *weights,
                                          RQ_Storage storage) const override;
    double computePerimeter(int segment) const override;
    double computeSurfaceArea(int segment) const override;
    double computeVolume(const BAS_Vec3f &reference, int segment) const override;
    RQ_PrimitiveHandle doHarden() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

    /// Each pattern chooses attributes for the list of its name.
    RQ_PrimitiveHandle doAttributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *vertex,
                                        const BAS_StringMMPattern *point, const BAS_StringMMPattern *uniform,
                                        const BAS_StringMMPattern *detail) const override;

    using RQ_Primitive::clone;

protected:
    // Make an object of the caller's own class: subclasses override these so that every operation keeps their kind.
    virtual RQ_PolygonMeshHandle clone(const RQ_DataArrayHandle &vertexList, const RQ_AttributeListHandle &vertex) const;
    virtual RQ_PolygonMeshHandle clone(const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex,
                                       const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail) const;
    virtual RQ_PolygonMeshHandle clone(const RQ_CountArray &counts, const RQ_DataArrayHandle &vertexList,
                                       const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex,
                                       const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail) const;
    virtual RQ_PolygonMeshHandle clone(const RQ_DataArrayHandle &vertexList, const RQ_AttributeListHandle &shared,
                                       const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                                       const RQ_AttributeListHandle &detail) const;

    // For subclasses that keep more by face and point than attributes.  `followElements` tells a new mesh that is still
    // numbered as its source what became of it: its face i was face `faces[i]`, its point i point `points[i]` (null: as
    // before).
    virtual bool keepsMoreOfFaces() const { return false; }
    virtual void followElements(const RQ_DataArrayHandle & /*faces*/, const RQ_DataArrayHandle & /*points*/) {}

    void setVertexList(const RQ_DataArrayHandle &vertexList);

    // The parts of a saved mesh: counts and vertex list, attribute lists and face sets.
    bool saveFaces(BAS_JSONWriter &writer) const;
    bool saveListsAndSets(BAS_JSONWriter &writer) const;

private:
    // Write packed normals as values of a float storage.  False where the positions or the storage are none.
    template <class Vector> static constexpr RQ_Storage storageOf = RQstorageOf<typename Vector::BaseType>;
    bool writeFaceNormals(void *normals, RQ_Storage storage, int segment, const char *positions) const;
    bool writePointNormals(void *normals, RQ_Storage storage, int segment, const char *positions, bool normalize,
                           RQ_NormalWeights weights, const float *given) const;
    bool writeVertexNormals(void *normals, RQ_Storage storage, int segment, const char *positions, double cuspAngle,
                            bool normalize, RQ_NormalWeights weights) const;
    bool makeTangents(int segment, RQ_DataArrayHandle &tangentU, RQ_DataArrayHandle &tangentV) const;

    struct FaceMerges;
    const FaceMerges &faceMerges() const;
    RQ_PolygonHandle makeFace(const FaceMerges &merges, int64_t face) const;

    struct Piece;
    RQ_PolygonMeshHandle makePiece(const Piece &piece, bool harden) const;

    RQ_AttributeListHandle shared_;
    RQ_AttributeListHandle vertex_;
    RQ_AttributeListHandle uniform_;
    RQ_AttributeListHandle detail_;
    RQ_DataArrayHandle vertexList_;
    RQ_CountArray counts_;
    BAS_IntrusivePtr<rq::SharedTopology> topology_;  // of counts and vertex list
    RQ_FaceSetMapHandle faceSets_;
    host::Published<FaceMerges> merges_;
    bool convexed_ = false;
};
