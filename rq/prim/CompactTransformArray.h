#pragma once

#include <atomic>
#include <functional>
#include <vector>

#include <host/bas/LargeBlocks.h>
#include <rq/prim/TransformArray.h>

/// Many transforms for the price of their matrices.
///
/// The matrices lie one after the other in one block; a transform is made only when `get` asks for its handle.
///
/// Shape    every entry has the same number of segments, one before the first matrix; setting one of more widens all.
///          Matrices are kept as 4 rows of 3, 96 bytes, while the fourth column of all is 0, 0, 0, 1, else as 4 rows of 4
/// Failure  null entries are kept as the identity; a matrix without inverse has the identity for it
/// Threads  inverses are computed for all entries in parallel; the result does not depend on the number of threads
/// Cost     `getMatrix` copies one matrix, `get` makes a new object each time
class RQ_API RQ_CompactTransformArray final : public RQ_TransformArray
{
public:
    RQ_CompactTransformArray();

    /// See `setMatrices`.
    RQ_CompactTransformArray(const BAS_Mat4d *matrices, int64_t count, int segments = 1);
    RQ_CompactTransformArray(const RQ_CompactTransformArray &other);
    ~RQ_CompactTransformArray() override;

    /// What `setDataId` said, until something changes.
    int64_t getDataId() const override { return dataId_; }
    void setDataId(int64_t id) { dataId_ = id; }

    int64_t entries() const override { return entries_; }
    RQ_TransformHandle get(int64_t index) const override;
    void set(int64_t index, const RQ_TransformHandle &transform) override;
    void setEntries(int64_t count) override;
    void setMatrices(const BAS_Mat4d *matrices, int64_t count, int segments) override;

    /// Replace all entries by what `put(first, count, segment, matrices)` puts into matrices that are the identity: for
    /// some of the entries at a time, and from several threads.  Fourth columns count as 0, 0, 0, 1.
    void setAffine(int64_t count, int segments, const std::function<void(int64_t, int64_t, int, BAS_Mat4d *)> &put);

    int getMotionSegments() const override { return entries_ > 0 ? segments_ : 0; }
    void getMatrix(BAS_Mat4d &matrix, int64_t index, int segment) const override;
    void getInverse(BAS_Mat4d &matrix, int64_t index, int segment) const override;
    void computeInverse() const override { inverses(); }
    int64_t getMemoryUsage() const override;

    /// True while matrices are kept without their fourth column.
    bool isAffine() const { return columns_ == 3; }

protected:
    RQ_TransformArrayHandle combined(const RQ_TransformHandle &transform, bool transformFirst) const override;

private:
    using Block = std::vector<double, BAS_BlockAllocator<double>>;

    int64_t slot(int64_t index, int segment) const;
    BAS_Mat4d read(const Block &block, int64_t slot) const;
    void write(Block &block, int64_t slot, const BAS_Mat4d &matrix) const;
    void reshape(int segments, int columns);
    void reset(int64_t count, int segments, int columns);
    template <class MatrixAt> void fill(int64_t count, int segments, int columns, MatrixAt &&matrixAt);
    const Block &inverses() const;
    void dropInverses();
    void changed();

    int64_t dataId_ = -1;
    int64_t entries_ = 0;
    int segments_ = 1;
    int columns_ = 3;
    int64_t trackedBytes_ = 0;
    Block matrices_;
    mutable std::atomic<const Block *> inverses_{nullptr};
};
