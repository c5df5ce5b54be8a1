#pragma once

#include <host/bas/Array.h>
#include <rq/prim/Transform.h>

class RQ_TransformArray;
using RQ_TransformArrayHandle = BAS_IntrusivePtr<RQ_TransformArray>;

/// An ordered list of transforms, one per instance.
///
/// Shape      a null entry is kept and stands for the identity
/// Failure    `get` out of range gives null, `getMatrix` and `getInverse` the identity; `set` is ignored
/// Ownership  counted; shares the transforms.  Combining returns a new array, or this one when nothing changes
/// Threads    setters belong to the maker; once shared, everything else is safe from any thread
class RQ_API RQ_TransformArray : public BAS_IntrusiveRefCounter<RQ_TransformArray>
{
public:
    RQ_TransformArray();
    RQ_TransformArray(const RQ_TransformArray &other);
    RQ_TransformArray &operator=(const RQ_TransformArray &) = delete;
    virtual ~RQ_TransformArray();

    /// A number that changes with the transforms, -1 when there is none.
    virtual int64_t getDataId() const;

    virtual int64_t entries() const;
    virtual RQ_TransformHandle get(int64_t index) const;
    virtual void set(int64_t index, const RQ_TransformHandle &transform);

    /// Drop entries from the end, or add null ones.
    virtual void setEntries(int64_t count);

    /// Replace all entries: `segments` matrices for each of `count` transforms, one transform after the other.
    virtual void setMatrices(const BAS_Mat4d *matrices, int64_t count, int segments);

    /// The segments of the first transform, 0 without any.
    virtual int getMotionSegments() const;

    /// What the entry's transform answers, without a handle to it.
    virtual void getMatrix(BAS_Mat4d &matrix, int64_t index, int segment) const;
    virtual void getInverse(BAS_Mat4d &matrix, int64_t index, int segment) const;

    /// Invert all entries at once and keep the result for `getInverse`.
    virtual void computeInverse() const;

    virtual int64_t getMemoryUsage() const;

    void append(const RQ_TransformHandle &transform);

    /// Append all of `other`, sharing its transforms; null appends nothing.
    void append(const RQ_TransformArrayHandle &other);

    /// Every entry first, then `transform`.
    RQ_TransformArrayHandle multiply(const RQ_TransformHandle &transform) const { return combine(transform, false); }

    /// `transform` first, then every entry.
    RQ_TransformArrayHandle preMultiply(const RQ_TransformHandle &transform) const { return combine(transform, true); }

    // One matrix per entry, that of the first segment.
    void getTransforms(BAS_Array<BAS_Mat4f> &matrices) const;
    void getTransforms(BAS_Array<BAS_Mat4d> &matrices) const;
    void setTransforms(const BAS_Array<BAS_Mat4f> &matrices);
    void setTransforms(const BAS_Array<BAS_Mat4d> &matrices);

    /// Write an array of the transforms' saved forms.
    bool save(BAS_JSONWriter &writer) const;

    /// Print to standard output, with `label` (may be null) in front.
    void dump(const char *label = nullptr) const;

protected:
    /// An array of this kind that combines every entry with `transform`, which changes something.
    virtual RQ_TransformArrayHandle combined(const RQ_TransformHandle &transform, bool transformFirst) const;

private:
    RQ_TransformArrayHandle combine(const RQ_TransformHandle &transform, bool transformFirst) const;

    BAS_Array<RQ_TransformHandle> transforms_;
};
