#include <rq/prim/CompactTransformArray.h>

#include <algorithm>
#include <memory>

#include <host/bas/MemoryTracker.h>
#include <host/bas/Parallel.h>
#include <rq/prim/detail/transformInverse.h>

namespace
{
// Copying a matrix costs 25 ns, combining one 40, inverting one 60: a task is 25 to 60 us of work.
constexpr int64_t kMatricesPerTask = 1024;

bool isAffine(const RQ_Transform &transform)
{
    for (int s = 0; s < transform.getSegments(); ++s)
    {
        BAS_Mat4d matrix;
        transform.getMatrix(matrix, s);
        if (!rq::isAffine(matrix))
            return false;
    }
    return true;
}

// With the number of columns known, a row is one or two moves.
template <int kColumns> BAS_Mat4d readRows(const double *from)
{
    BAS_Mat4d matrix;
    for (int row = 0; row < 4; ++row)
        std::copy_n(from + row * kColumns, kColumns, matrix[row]);
    return matrix;
}

template <int kColumns> void writeRows(double *to, const BAS_Mat4d &matrix)
{
    for (int row = 0; row < 4; ++row)
        std::copy_n(matrix[row], kColumns, to + row * kColumns);
}
}  // namespace

RQ_CompactTransformArray::RQ_CompactTransformArray() = default;

RQ_CompactTransformArray::RQ_CompactTransformArray(const BAS_Mat4d *matrices, int64_t count, int segments)
{
    RQ_CompactTransformArray::setMatrices(matrices, count, segments);
}

RQ_CompactTransformArray::RQ_CompactTransformArray(const RQ_CompactTransformArray &other)
    : RQ_TransformArray(other), entries_(other.entries_), segments_(other.segments_), columns_(other.columns_),
      matrices_(other.matrices_)
{
    changed();
}

RQ_CompactTransformArray::~RQ_CompactTransformArray()
{
    dropInverses();
    BAS_MemoryTracker::add(BAS_MEMORY_TRANSFORM, -trackedBytes_);
}

int64_t RQ_CompactTransformArray::slot(int64_t index, int segment) const
{
    return index * segments_ + std::clamp(segment, 0, segments_ - 1);
}

BAS_Mat4d RQ_CompactTransformArray::read(const Block &block, int64_t slot) const
{
    const double *from = block.data() + slot * 4 * columns_;
    return columns_ == 3 ? readRows<3>(from) : readRows<4>(from);
}

void RQ_CompactTransformArray::write(Block &block, int64_t slot, const BAS_Mat4d &matrix) const
{
    double *to = block.data() + slot * 4 * columns_;
    return columns_ == 3 ? writeRows<3>(to, matrix) : writeRows<4>(to, matrix);
}

// Drop what was derived from the matrices, and account for their block.
void RQ_CompactTransformArray::changed()
{
    dropInverses();
    dataId_ = -1;
    const int64_t bytes = int64_t(matrices_.capacity() * sizeof(double));
    if (bytes != trackedBytes_)
        BAS_MemoryTracker::add(BAS_MEMORY_TRANSFORM, bytes - trackedBytes_);
    trackedBytes_ = bytes;
}

void RQ_CompactTransformArray::reset(int64_t count, int segments, int columns)
{
    entries_ = std::max<int64_t>(count, 0);
    segments_ = segments;
    columns_ = columns;
    matrices_.clear();
    matrices_.resize(size_t(entries_ * segments_ * 4 * columns_));
}

template <class MatrixAt> void RQ_CompactTransformArray::fill(int64_t count, int segments, int columns, MatrixAt &&matrixAt)
{
    reset(count, segments, columns);
    host::parallelFor(entries_ * segments_, kMatricesPerTask, [&](int64_t i) { write(matrices_, i, matrixAt(i)); });
    changed();
}

void RQ_CompactTransformArray::setMatrices(const BAS_Mat4d *matrices, int64_t count, int segments)
{
    // Transforms without a segment read as the identity.
    if (segments < 1)
        return fill(count, 1, 3, [](int64_t) { return BAS_Mat4d(); });

    // Not a bool: neighbouring ones share a byte, which tasks must not.
    const auto columnsOf = [=](int64_t begin, int64_t end) {
        return std::all_of(matrices + begin, matrices + end, rq::isAffine) ? 3 : 4;
    };
    const auto most = [](int &into, int from) { into = std::max(into, from); };
    const int64_t slots = std::max<int64_t>(count, 0) * segments;
    const int columns = host::parallelReduce(slots, kMatricesPerTask, 3, columnsOf, most);
    fill(count, segments, columns, [=](int64_t i) { return matrices[i]; });
}

void RQ_CompactTransformArray::setAffine(int64_t count, int segments,
                                         const std::function<void(int64_t, int64_t, int, BAS_Mat4d *)> &put)
{
    // Matrices and what they are made of stay in the first caches.
    constexpr int64_t kBlock = 128;
    reset(count, std::max(segments, 1), 3);
    host::parallelFor((entries_ + kBlock - 1) / kBlock, kMatricesPerTask / kBlock, [&](int64_t block) {
        const int64_t first = block * kBlock, length = std::min(kBlock, entries_ - first);
        for (int s = 0; s < segments_; ++s)
        {
            BAS_Mat4d matrices[kBlock];
            put(first, length, s, matrices);
            for (int64_t i = 0; i < length; ++i)
                write(matrices_, slot(first + i, s), matrices[i]);
        }
    });
    changed();
}

void RQ_CompactTransformArray::reshape(int segments, int columns)
{
    const RQ_CompactTransformArray old(*this);
    segments_ = segments;
    columns_ = columns;
    matrices_ = Block(size_t(entries_ * segments_ * 4 * columns_));
    host::parallelFor(entries_, kMatricesPerTask, [&](int64_t i) {
        for (int s = 0; s < segments_; ++s)
            write(matrices_, slot(i, s), old.read(old.matrices_, old.slot(i, s)));
    });
}

RQ_TransformHandle RQ_CompactTransformArray::get(int64_t index) const
{
    if (index < 0 || index >= entries_)
        return {};
    const RQ_TransformHandle transform(new RQ_Transform);
    transform->alloc(segments_);
    for (int s = 0; s < segments_; ++s)
        transform->setMatrix(read(matrices_, slot(index, s)), s);
    return transform;
}

void RQ_CompactTransformArray::set(int64_t index, const RQ_TransformHandle &transform)
{
    if (index < 0 || index >= entries_)
        return;
    const RQ_Transform &source = transform ? *transform : *RQ_Transform::identity();
    const int segments = std::max(segments_, source.getSegments());
    const int columns = ::isAffine(source) ? columns_ : 4;
    if (segments != segments_ || columns != columns_)
        reshape(segments, columns);
    for (int s = 0; s < segments_; ++s)
    {
        BAS_Mat4d matrix;
        source.getMatrix(matrix, s);
        write(matrices_, slot(index, s), matrix);
    }
    changed();
}

void RQ_CompactTransformArray::setEntries(int64_t count)
{
    const int64_t known = entries_;
    entries_ = std::max<int64_t>(count, 0);
    matrices_.resize(size_t(entries_ * segments_ * 4 * columns_));
    for (int64_t i = known * segments_; i < entries_ * segments_; ++i)
        write(matrices_, i, BAS_Mat4d());
    changed();
}

void RQ_CompactTransformArray::getMatrix(BAS_Mat4d &matrix, int64_t index, int segment) const
{
    const bool exists = index >= 0 && index < entries_;
    matrix = exists ? read(matrices_, slot(index, segment)) : BAS_Mat4d();
}

void RQ_CompactTransformArray::getInverse(BAS_Mat4d &matrix, int64_t index, int segment) const
{
    const bool exists = index >= 0 && index < entries_;
    matrix = exists ? read(inverses(), slot(index, segment)) : BAS_Mat4d();
}

// Computed without a lock: threads that ask at the same time all compute, and the first to finish publishes.
const RQ_CompactTransformArray::Block &RQ_CompactTransformArray::inverses() const
{
    if (const Block *cached = inverses_.load(std::memory_order_acquire))
        return *cached;

    auto made = std::make_unique<Block>(matrices_.size());
    host::parallelFor(entries_ * segments_, kMatricesPerTask, [&](int64_t i) {
        BAS_Mat4d inverse;
        rq::invert(read(matrices_, i), inverse);
        write(*made, i, inverse);
    });
    const Block *published = nullptr;
    if (!inverses_.compare_exchange_strong(published, made.get(), std::memory_order_acq_rel, std::memory_order_acquire))
        return *published;
    BAS_MemoryTracker::add(BAS_MEMORY_TRANSFORM, int64_t(made->size() * sizeof(double)));
    return *made.release();
}

void RQ_CompactTransformArray::dropInverses()
{
    const std::unique_ptr<const Block> dropped(inverses_.exchange(nullptr, std::memory_order_relaxed));
    if (dropped)
        BAS_MemoryTracker::add(BAS_MEMORY_TRANSFORM, -int64_t(dropped->size() * sizeof(double)));
}

int64_t RQ_CompactTransformArray::getMemoryUsage() const
{
    const Block *cached = inverses_.load(std::memory_order_acquire);
    return int64_t(sizeof(*this) + (matrices_.capacity() + (cached ? cached->capacity() : 0)) * sizeof(double));
}

RQ_TransformArrayHandle RQ_CompactTransformArray::combined(const RQ_TransformHandle &transform, bool transformFirst) const
{
    const BAS_IntrusivePtr<RQ_CompactTransformArray> result(new RQ_CompactTransformArray);
    const int segments = std::max(segments_, transform->getSegments());
    result->fill(entries_, segments, ::isAffine(*transform) ? columns_ : 4, [&, segments](int64_t i) {
        const int segment = int(i % segments);
        BAS_Mat4d other;
        transform->getMatrix(other, segment);
        const BAS_Mat4d own = read(matrices_, slot(i / segments, segment));
        return transformFirst ? other * own : own * other;
    });
    return result;
}
