#pragma once

#include <rq/prim/TransformArray.h>
#include <rq/surface/PrimQuadric.h>

/// Many quadrics of one kind.
///
/// Shape      quadric i is the unit shape, placed by transform i and then by the transform of this primitive.  Vertex
///            attributes have one entry per quadric, detail attributes one
/// Ownership  shares the transforms and the attributes
/// Identity   `getDataIdHash` covers the attributes: combine it with the data id of the transforms
/// Threads    immutable once shared, safe to read from any thread; bounds and refining run in parallel
/// Cost       a million quadrics cost their transforms (see `RQ_CompactTransformArray`) and attributes
class RQ_API RQ_PrimQuadricMesh : public RQ_Primitive
{
public:
    ~RQ_PrimQuadricMesh() override;

    /// Replace the quadrics of a mesh that is not yet shared.  False, with nothing changed, without an array of transforms.
    bool init(const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &detail,
              const RQ_TransformArrayHandle &transforms);

    int64_t getQuadricCount() const { return transforms_ ? transforms_->entries() : 0; }

    /// The own transform of a quadric, null out of range; those of all, null before `init`.
    RQ_TransformHandle getTransform(int64_t quadric) const;
    const RQ_TransformArrayHandle &getTransforms() const { return transforms_; }

    /// What all quadrics are placed by after their own transform.
    const RQ_TransformHandle &getBaseTransform() const { return getPrimitiveTransform(); }

    /// Enlarge by every quadric, exactly.
    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;

    /// Hand over the quadrics, one primitive each, in parallel and in no order where the sink allows threads.  False when
    /// there are none.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;
    const RQ_ViewportRefineOptions &viewportRefineOptions() const override;

    int getMotionSegments() const override;
    int64_t getMemoryUsage() const override;
    const RQ_AttributeListHandle &getVertexAttributes() const override { return vertex_; }
    const RQ_AttributeListHandle &getDetailAttributes() const override { return detail_; }

    /// Write [name of the type, members of the shape..., transforms, lists].
    bool save(BAS_JSONWriter &writer) const override;
    RQ_PrimitiveHandle doHarden() const override;

    /// A quadric by itself: its vertex attributes are its detail attributes, with those of the whole behind them.  Null out
    /// of range.
    virtual RQ_QuadricHandle makeQuadric(int64_t quadric) const = 0;

protected:
    /// Enlarge by the shape that is common to all, placed by `matrix`.
    virtual void enlargeByShape(BAS_BoundingBox &box, const BAS_Mat4d &matrix) const = 0;

    /// Write the members of the shape into its record.
    virtual bool saveShape(BAS_JSONWriter &writer) const;

    /// What `save` writes, under a name of the subclass's own.
    bool saveQuadricMesh(BAS_JSONWriter &writer, const char *typeName) const;

    /// A quadric of a class, initialised with its attributes, its placement and `members`.
    template <class Quadric, class... Members> RQ_QuadricHandle make(int64_t quadric, const Members &...members) const
    {
        if (quadric < 0 || quadric >= getQuadricCount())
            return nullptr;
        const BAS_IntrusivePtr<Quadric> made(new Quadric);
        made->init(attributesOf(quadric), placementOf(quadric), members...);
        return made;
    }

private:
    RQ_TransformHandle placementOf(int64_t quadric) const;
    RQ_AttributeListHandle attributesOf(int64_t quadric) const;

    RQ_AttributeListHandle vertex_;
    RQ_AttributeListHandle detail_;
    RQ_TransformArrayHandle transforms_;
};
