#pragma once

#include <memory>

#include <rq/bridge/MSHDetailList.h>
#include <rq/prim/TransformArray.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace rq
{
struct BlobTree;
}

/// All metaballs of a refinement: the surface where the sum of their fields is one half.
///
/// A blob's field is its weight in the middle and falls to 0 at the surface of its shape, so that a single one of weight 1
/// shows about half as large as its shape.  Expressions combine the fields of the metaballs that they list, and stand in the
/// sum in place of these.  Blobs whose matrix is flat or not finite have no field.
///
/// Shape      vertex attributes have one entry for each blob (expressions have none), detail attributes one
/// Ownership  keeps what it needs of the detail; attributes are read in place
/// Threads    immutable once shared; refining runs in parallel and gives the same bits for any number of threads
class RQ_API RQ_MSHPrimMetaBall final : public RQ_Primitive
{
public:
    /// Of the metaballs of a detail, whose offsets increase.
    RQ_MSHPrimMetaBall(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &metaballs, const RQ_RefineParms *parms);
    RQ_MSHPrimMetaBall(const RQ_MSHPrimMetaBall &other);
    ~RQ_MSHPrimMetaBall() override;

    /// How many have a shape, and where these are.
    int64_t getBlobCount() const { return transforms_->entries(); }
    const RQ_TransformArrayHandle &getTransforms() const { return transforms_; }

    /// The surface as a closed mesh that is not placed by this primitive's transform; null when there is none, or when it is
    /// interrupted.  Its points have "P", "N" and the attributes of the blobs that hold numbers with a fraction, such as
    /// colours: the mean of those of the blobs there, weighted by their fields.
    ///
    /// The options "metadensity" times "lod" ask for so many cells across a blob as thick as the blobs are in the geometric
    /// mean, at least 2, and "metamaxdivs" for no more along any side of the whole.  A surface that would not fit some
    /// gigabytes is made of larger cells.  Of moving blobs it is that of the first segment, and in the others its points go
    /// along with the blobs around them, with each as much as its field is of all there; normals stay.
    RQ_PolygonMeshHandle refineToPolygonMesh(const RQ_RefineParms *parms) const;

    const char *className() const override;
    int getPrimitiveType() const override;

    /// Enlarge by the boxes of the shapes that can have a surface: the surface lies within.
    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;

    /// Hand over the mesh of `refineToPolygonMesh`, if there is one.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;
    const RQ_ViewportRefineOptions &viewportRefineOptions() const override;
    int getMotionSegments() const override;
    int64_t getMemoryUsage() const override;
    const RQ_AttributeListHandle &getVertexAttributes() const override { return vertex_; }
    const RQ_AttributeListHandle &getDetailAttributes() const override { return detail_; }

    /// Write [name of the type, metaballs, transforms, lists].
    bool save(BAS_JSONWriter &writer) const override;
    RQ_PrimitiveHandle doHarden() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

private:
    std::shared_ptr<const rq::BlobTree> tree_;
    RQ_TransformArrayHandle transforms_;
    RQ_AttributeListHandle vertex_;
    RQ_AttributeListHandle detail_;
};
