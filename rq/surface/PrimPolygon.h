#pragma once

#include <host/bas/SmallBlocks.h>
#include <rq/prim/Primitive.h>

class RQ_PrimPolygon;
using RQ_PolygonHandle = BAS_IntrusivePtr<RQ_PrimPolygon>;

/// A single closed face: what a polygon mesh refines into.
///
/// Shape      vertex attributes have an entry per corner, in winding order (positions under "P"); uniform attributes hold
///            for the whole face
/// Ownership  shares its lists
/// Threads    immutable once shared, safe to read from any thread
class RQ_API RQ_PrimPolygon final : public RQ_Primitive, public BAS_SmallObject
{
public:
    RQ_PrimPolygon();
    RQ_PrimPolygon(RQ_AttributeListHandle vertex, RQ_AttributeListHandle uniform);
    RQ_PrimPolygon(const RQ_PrimPolygon &other);
    ~RQ_PrimPolygon() override;

    /// Replace both lists of a polygon that is not yet shared.
    void init(const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform);

    const RQ_AttributeListHandle &getVertex() const { return vertex_; }
    const RQ_AttributeListHandle &getUniform() const { return uniform_; }

    /// Number of corners: the entries of the vertex attributes.
    int64_t getVertexCount() const;

    /// Cut into convex pieces of at most `maxVertices` corners (at least 3).
    ///
    /// Returns this polygon when it may stay as it is, a polygon of re-ordered corners, a polygon mesh whose points are the
    /// corners, or null when nothing is left (fewer than three corners).
    RQ_PrimitiveHandle convex(int maxVertices = 4) const;

    /// \name The geometry of one face
    ///
    /// Of all entries of `positions` in order, or, as a face lies in a mesh, of the `count` corners whose points are named
    /// from entry `first` of `vertexList` on (-1, and more than there are: all that are left; none for a negative `first`).
    /// Indices are not checked; an array that holds no positions has no corners.
    ///@{

    /// The sum of the corners' cross products (Newell): at right angles to the face and twice its area long.
    static void computeNormal(BAS_Vec3f &normal, const RQ_DataArrayHandle &positions,
                              const RQ_DataArrayHandle &vertexList = {}, int64_t count = -1, int64_t first = 0);
    static void computeNormal(BAS_Vec3d &normal, const RQ_DataArrayHandle &positions,
                              const RQ_DataArrayHandle &vertexList = {}, int64_t count = -1, int64_t first = 0);

    /// The unit normal from the first three corners, or from all where these are degenerate; (0, 0, 1) for fewer than three
    /// corners or positions, the zero vector for a face without area.
    static void computeFastNormal(BAS_Vec3f &normal, const RQ_DataArrayHandle &positions,
                                  const RQ_DataArrayHandle &vertexList = {}, int64_t count = -1, int64_t first = 0);
    static void computeFastNormal(BAS_Vec3d &normal, const RQ_DataArrayHandle &positions,
                                  const RQ_DataArrayHandle &vertexList = {}, int64_t count = -1, int64_t first = 0);

    /// Two unit axes in the plane of the face; (1, 0, 0) and (0, 0, 1) for a face without area.
    static void computeFrameOfReference(BAS_Vec3d &axisX, BAS_Vec3d &axisY, const RQ_DataArrayHandle &positions,
                                        const RQ_DataArrayHandle &vertexList = {}, int64_t count = -1, int64_t first = 0);

    /// Measures of the face after `transform` (null: as it is), in 64-bit floats.
    static double facePerimeter(const RQ_DataArrayHandle &positions, const BAS_Mat4d *transform = nullptr);
    static double facePerimeter(const RQ_DataArrayHandle &positions, const RQ_DataArrayHandle &vertexList, int64_t count,
                                int64_t first, const BAS_Mat4d *transform = nullptr);
    static double faceSurfaceArea(const RQ_DataArrayHandle &positions, const BAS_Mat4d *transform = nullptr);
    static double faceSurfaceArea(const RQ_DataArrayHandle &positions, const RQ_DataArrayHandle &vertexList, int64_t count,
                                  int64_t first, const BAS_Mat4d *transform = nullptr);
    static double faceVolume(const BAS_Vec3f &reference, const RQ_DataArrayHandle &positions,
                             const BAS_Mat4d *transform = nullptr);
    static double faceVolume(const BAS_Vec3f &reference, const RQ_DataArrayHandle &positions,
                             const RQ_DataArrayHandle &vertexList, int64_t count, int64_t first,
                             const BAS_Mat4d *transform = nullptr);
    ///@}

    const char *className() const override;
    int getPrimitiveType() const override;
    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;
    int getMotionSegments() const override;
    int64_t getMemoryUsage() const override;
    const RQ_AttributeListHandle &getVertexAttributes() const override { return vertex_; }
    const RQ_AttributeListHandle &getUniformAttributes() const override { return uniform_; }
    bool save(BAS_JSONWriter &writer) const override;
    double computePerimeter(int segment) const override;
    double computeSurfaceArea(int segment) const override;
    double computeVolume(const BAS_Vec3f &reference, int segment) const override;
    RQ_PrimitiveHandle doHarden() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

    /// The pattern for vertices and the one for points both choose corner attributes, those for uniform and detail
    /// attributes the polygon's own.
    RQ_PrimitiveHandle doAttributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *vertex,
                                        const BAS_StringMMPattern *point, const BAS_StringMMPattern *uniform,
                                        const BAS_StringMMPattern *detail) const override;

private:
    RQ_DataArrayHandle positions(int segment) const;

    RQ_AttributeListHandle vertex_;
    RQ_AttributeListHandle uniform_;
};
