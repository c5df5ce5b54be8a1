#pragma once

#include <rq/surface/PrimPolygonMesh.h>
#include <rq/surface/Scheme.h>

class RQ_PrimSubdivisionMesh;
using RQ_SubdivisionMeshHandle = BAS_IntrusivePtr<RQ_PrimSubdivisionMesh>;

/// A polygon mesh that is the cage of a smooth surface: with a subdivision scheme, and tags that crease it.
///
/// Every operation of the polygon mesh gives a subdivision mesh of the same scheme, whose tags name the points and faces of
/// the result; what names nothing there any more is dropped.
///
/// Shape      the standard tags: "crease" holds pairs of points and a sharpness for each edge, "corner" points and a
///            sharpness for each, "hole" faces; "interpolateboundary", "facevaryinginterpolateboundary",
///            "osd_vtxboundaryinterpolation", "osd_fvarlinearinterpolation", "osd_creasingmethod" and "osd_trianglesubdiv"
///            one value each.  Other tags are kept as they are
/// Failure    tags are not checked here, but by whoever evaluates the surface
/// Threads    immutable once built, safe to read from any thread; setters belong to the maker
class RQ_API RQ_PrimSubdivisionMesh : public RQ_PrimPolygonMesh
{
public:
    /// A name with arrays of integers, of reals and of strings.
    class RQ_API Tag
    {
    public:
        using Arrays = BAS_Array<RQ_DataArrayHandle>;

        Tag() = default;
        explicit Tag(const BAS_StringHolder &name) : name_(name) {}

        const BAS_StringHolder &name() const { return name_; }
        bool match(const BAS_StringHolder &name) const { return name_ == name; }

        /// True for a tag with a name.
        bool valid() const { return !name_.isEmpty(); }

        // Null arrays are ignored.
        void appendInt(const RQ_DataArrayHandle &array) { append(ints_, array); }
        void appendReal(const RQ_DataArrayHandle &array) { append(reals_, array); }
        void appendString(const RQ_DataArrayHandle &array) { append(strings_, array); }

        int64_t intCount() const { return int64_t(ints_.size()); }
        int64_t realCount() const { return int64_t(reals_.size()); }
        int64_t stringCount() const { return int64_t(strings_.size()); }

        // Null out of range.
        RQ_DataArrayHandle intArray(int64_t i) const { return at(ints_, i); }
        RQ_DataArrayHandle realArray(int64_t i) const { return at(reals_, i); }
        RQ_DataArrayHandle stringArray(int64_t i) const { return at(strings_, i); }

        const Arrays &getAllInt() const { return ints_; }
        const Arrays &getAllReal() const { return reals_; }
        const Arrays &getAllString() const { return strings_; }

        /// Drop all arrays; the name stays.
        void clear();

        /// Make every array a flat copy that owns its values.
        void harden();

        int64_t getMemoryUsage() const;

        /// Write [integer arrays, real arrays, string arrays].  False when the writer failed.
        bool save(BAS_JSONWriter &writer) const;

    private:
        static void append(Arrays &arrays, const RQ_DataArrayHandle &array);
        static RQ_DataArrayHandle at(const Arrays &arrays, int64_t i);

        BAS_StringHolder name_;
        Arrays ints_, reals_, strings_;
    };

    /// Walks the tags in the order of their insertion, until these change.
    class tag_iterator
    {
    public:
        explicit tag_iterator(const BAS_Array<Tag> &tags, int64_t index = 0) : tags_(&tags), index_(index) {}

        void advance() { ++index_; }
        bool atEnd() const { return index_ >= int64_t(tags_->size()); }
        int64_t index() const { return index_; }
        const Tag &tag() const { return (*tags_)[size_t(index_)]; }
        void rewind() { index_ = 0; }

        // For loops over a range.
        const Tag &operator*() const { return tag(); }
        tag_iterator &operator++()
        {
            advance();
            return *this;
        }
        friend bool operator==(const tag_iterator &a, const tag_iterator &b) { return a.index_ == b.index_; }

    private:
        const BAS_Array<Tag> *tags_;
        int64_t index_;
    };

    RQ_PrimSubdivisionMesh();
    explicit RQ_PrimSubdivisionMesh(const RQ_PrimPolygonMesh &mesh, RQ_Scheme scheme = RQ_SCHEME_CATMULL_CLARK);
    RQ_PrimSubdivisionMesh(const RQ_DataArrayHandle &counts, const RQ_DataArrayHandle &vertexList,
                           const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex = {},
                           const RQ_AttributeListHandle &uniform = {}, const RQ_AttributeListHandle &detail = {},
                           RQ_Scheme scheme = RQ_SCHEME_CATMULL_CLARK, RQ_IndexingMode mode = RQ_INDEXING_AUTO,
                           int64_t minCount = -1, int64_t maxCount = -1);
    RQ_PrimSubdivisionMesh(const RQ_CountArray &counts, const RQ_DataArrayHandle &vertexList,
                           const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex = {},
                           const RQ_AttributeListHandle &uniform = {}, const RQ_AttributeListHandle &detail = {},
                           RQ_Scheme scheme = RQ_SCHEME_CATMULL_CLARK);
    RQ_PrimSubdivisionMesh(const RQ_PrimSubdivisionMesh &other);
    RQ_PrimSubdivisionMesh(const RQ_PrimSubdivisionMesh &other, const RQ_AttributeListHandle &shared,
                           const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                           const RQ_AttributeListHandle &detail);
    ~RQ_PrimSubdivisionMesh() override;

    /// The subdivision mesh that a polygon mesh's own attributes describe.
    ///
    /// The detail attribute "osd_scheme" names the scheme (`scheme` without it); "crease", a float of vertices, faces or the
    /// whole, is the sharpness of the edge that starts at a vertex (an edge with two keeps the larger); "corner" that of a
    /// point; faces with an integer "hole" other than zero are holes; the boundary and method tags come from the detail
    /// attributes of their names.
    static RQ_SubdivisionMeshHandle createWithStandardTags(const RQ_PrimPolygonMesh &mesh,
                                                           RQ_Scheme scheme = RQ_SCHEME_CATMULL_CLARK);

    /// The scheme that the first entry of an array names, or as an integer 0 or 1 is; `scheme` for anything else.
    static RQ_Scheme lookupScheme(const RQ_DataArrayHandle &array, RQ_Scheme scheme);

    RQ_Scheme scheme() const { return scheme_; }
    void setScheme(RQ_Scheme scheme) { scheme_ = scheme; }

    /// Take over scheme and tags of a mesh of the same points and faces.
    void copySubd(const RQ_PrimSubdivisionMesh &source);

    // Put an array into the tag of a name, which is made when there is none.  With `replace` a tag that is there loses what
    // it held.
    void appendIntTag(const BAS_StringHolder &name, const RQ_DataArrayHandle &array, bool replace = false);
    void appendRealTag(const BAS_StringHolder &name, const RQ_DataArrayHandle &array, bool replace = false);
    void appendStringTag(const BAS_StringHolder &name, const RQ_DataArrayHandle &array, bool replace = false);

    /// Add a tag behind the others, whatever its name.
    void appendTag(const Tag &tag) { tags_.push_back(tag); }

    /// The tag of a name, made at the end when there is none; `replace` empties one that is there.
    Tag &findOrCreateTag(const BAS_StringHolder &name, bool replace = false);

    /// The first tag of a name, null without.
    const Tag *findTag(const BAS_StringHolder &name) const;

    /// Remove the first tag of a name.  False without.
    bool delTag(const BAS_StringHolder &name);
    void clearTags() { tags_.clear(); }

    tag_iterator beginTags() const { return tag_iterator(tags_); }
    tag_iterator endTag() const { return tag_iterator(tags_, int64_t(tags_.size())); }

    /// Use other point and vertex attributes than the mesh's own in `refine` and when the surface is evaluated; a null list
    /// means none.  Copies keep them, meshes that are derived from this one do not.
    void overrideAttributes(const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex);
    void clearOverrideAttributes();

    /// The attributes that the surface has: the mesh's own unless they are overridden.
    const RQ_AttributeListHandle &surfaceShared() const { return overridden_ ? overrideShared_ : getShared(); }
    const RQ_AttributeListHandle &surfaceVertex() const { return overridden_ ? overrideVertex_ : getVertex(); }

    /// Hand the cage to the sink as a polygon mesh; nothing is subdivided here.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;

    /// The cage as a plain polygon mesh.
    RQ_PolygonMeshHandle refineToHull() const;

    /// The mesh with its faces cut to triangles: this one when they are triangles already, null as for `convex`.
    RQ_SubdivisionMeshHandle triangulate() const;

    /// The mesh with point normals "N", or this one when vertices or points have an "N" already.
    RQ_PolygonMeshHandle createPointNormalsIfMissing(const char *positions, bool normalize, bool *changed = nullptr) const;
    using RQ_PrimPolygonMesh::createPointNormalsIfMissing;

    const char *className() const override;
    int getPrimitiveType() const override;
    int64_t getMemoryUsage() const override;

    /// Write as a polygon mesh, with a map from tag names to tags before the attributes.
    bool save(BAS_JSONWriter &writer) const override;
    RQ_PrimitiveHandle doHarden() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

    using RQ_Primitive::clone;

protected:
    RQ_PolygonMeshHandle clone(const RQ_DataArrayHandle &vertexList, const RQ_AttributeListHandle &vertex) const override;
    RQ_PolygonMeshHandle clone(const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex,
                               const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail) const override;
    RQ_PolygonMeshHandle clone(const RQ_CountArray &counts, const RQ_DataArrayHandle &vertexList,
                               const RQ_AttributeListHandle &shared, const RQ_AttributeListHandle &vertex,
                               const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail) const override;
    RQ_PolygonMeshHandle clone(const RQ_DataArrayHandle &vertexList, const RQ_AttributeListHandle &shared,
                               const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                               const RQ_AttributeListHandle &detail) const override;
    bool keepsMoreOfFaces() const override { return !tags_.empty(); }
    void followElements(const RQ_DataArrayHandle &faces, const RQ_DataArrayHandle &points) override;

private:
    BAS_Array<Tag> tags_;
    RQ_AttributeListHandle overrideShared_;
    RQ_AttributeListHandle overrideVertex_;
    RQ_Scheme scheme_ = RQ_SCHEME_CATMULL_CLARK;
    bool overridden_ = false;
};
