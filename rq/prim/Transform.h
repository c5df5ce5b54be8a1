#pragma once

#include <atomic>
#include <memory>

#include <host/bas/Vector.h>
#include <rq/data/DataArray.h>

class BAS_JSONValue;
class BAS_JSONWriter;

/// Share a transform; null stands for the identity wherever a handle is taken.
using RQ_TransformHandle = BAS_IntrusivePtr<RQ_Transform>;

/// Place a primitive in space: one matrix per motion segment.
///
/// Shape      rows are vectors: a point is transformed as v * M and the translation is the fourth row.  A segment past the
///            end reads as the last one, a negative one as the first
/// Failure    a matrix whose determinant is 0 or not finite has the identity for its inverse; normals still follow its
///            cofactors, so that flattening keeps them
/// Ownership  counted; combining returns a new transform or one of the inputs
/// Threads    `setMatrix` and `alloc` belong to the maker; once shared, everything else is safe from any thread
class RQ_API RQ_Transform : public BAS_IntrusiveRefCounter<RQ_Transform>
{
public:
    /// No segment.  Reads as the identity, though `isIdentity` is false.
    RQ_Transform();
    RQ_Transform(const BAS_Mat4f *matrices, int count);
    RQ_Transform(const BAS_Mat4d *matrices, int count);
    RQ_Transform(const RQ_Transform &other);
    RQ_Transform &operator=(const RQ_Transform &) = delete;
    ~RQ_Transform();

    /// The one shared identity: a single segment.
    static const RQ_TransformHandle &identity();

    /// Drop all matrices and make room for `count`, each the identity until set; `isIdentity` is false.
    void alloc(int count);

    /// Set the matrix of one segment; ignored without segments.
    void setMatrix(const BAS_Mat4f &matrix, int segment);
    void setMatrix(const BAS_Mat4d &matrix, int segment);

    void getMatrix(BAS_Mat4f &matrix, int segment) const;
    void getMatrix(BAS_Mat4d &matrix, int segment) const { matrix = matrixAt(segment); }

    /// The inverse of one segment's matrix; the first call inverts all and keeps the result.
    void getInverse(BAS_Mat4f &matrix, int segment) const;
    void getInverse(BAS_Mat4d &matrix, int segment) const;
    void computeInverse() const;

    int getSegments() const { return segments_; }
    bool isIdentity() const { return identity_; }

    /// The opposite transform, this one itself when it is the identity.
    RQ_TransformHandle invert() const;

    /// This transform first, then `other`: the other itself when this is the identity, this itself when the other is.
    /// The result has as many segments as the longer of the two.
    RQ_TransformHandle multiply(const RQ_TransformHandle &other) const;

    /// `other` first, then this transform.
    RQ_TransformHandle preMultiply(const RQ_TransformHandle &other) const;

    /// Combine every segment with one matrix; a transform without segments counts as one identity.  The caller owns the
    /// result: put it into a handle at once.
    RQ_Transform *multiply(const BAS_Mat3f &matrix) const;
    RQ_Transform *multiply(const BAS_Mat3d &matrix) const;
    RQ_Transform *multiply(const BAS_Mat4f &matrix) const;
    RQ_Transform *multiply(const BAS_Mat4d &matrix) const;
    RQ_Transform *preMultiply(const BAS_Mat3f &matrix) const;
    RQ_Transform *preMultiply(const BAS_Mat3d &matrix) const;
    RQ_Transform *preMultiply(const BAS_Mat4f &matrix) const;
    RQ_Transform *preMultiply(const BAS_Mat4d &matrix) const;

    /// Apply to attribute values, as their type asks: points and homogeneous points by the matrix, vectors without the
    /// translation, normals by the transposed inverse (not normalised), quaternions by the rotation.
    ///
    /// Shape    as the input; the fourth component of a homogeneous point is kept, and so are components past the fourth
    /// Failure  the input itself for other types, for storages that are no floats, for tuples too short, for null, and when
    ///          nothing would change
    /// Threads  runs in parallel; the result does not depend on the number of threads
    RQ_DataArrayHandle transform(const RQ_DataArrayHandle &array, int segment) const;

    int64_t getMemoryUsage() const;

    /// Write an array of the segments' matrices, each an array of 16 numbers row by row.
    bool save(BAS_JSONWriter &writer) const;

    /// Read what `save` wrote.  False, and the handle as it was, when the value is anything else.
    static bool load(RQ_TransformHandle &transform, const BAS_JSONValue &value);

    /// Print to standard output, with `label` (may be null) in front.
    void dump(const char *label = nullptr) const;

    /// Same segments with exactly equal matrices.
    bool operator==(const RQ_Transform &other) const;

    // The identity is not counted: nearly every primitive holds it, and its counter would be the one place that all threads
    // write to that make primitives.
    friend void intrusive_ptr_add_ref(const RQ_Transform *transform) noexcept
    {
        if (!transform->eternal_)
            intrusive_ptr_add_ref(static_cast<const Counter *>(transform));
    }
    friend void intrusive_ptr_release(const RQ_Transform *transform) noexcept
    {
        if (!transform->eternal_)
            intrusive_ptr_release(static_cast<const Counter *>(transform));
    }

private:
    using Counter = BAS_IntrusiveRefCounter<RQ_Transform>;
    struct Inverse;

    BAS_Mat4d *data() { return allocated_ ? allocated_.get() : &single_; }
    const BAS_Mat4d *data() const { return allocated_ ? allocated_.get() : &single_; }
    const BAS_Mat4d &matrixAt(int segment) const;
    const Inverse &inverseAt(int segment) const;
    const Inverse *inverses() const;
    RQ_TransformHandle self() const { return RQ_TransformHandle(const_cast<RQ_Transform *>(this)); }
    void release();
    void dropInverses();
    void updateIdentity();

    int segments_ = 0;
    std::unique_ptr<BAS_Mat4d[]> allocated_;  // only with two segments and more
    mutable std::atomic<Inverse *> inverses_{nullptr};
    BAS_Mat4d single_;
    bool identity_ = false;
    bool eternal_ = false;  // the shared identity
};
