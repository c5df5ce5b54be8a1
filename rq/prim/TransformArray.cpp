#include <rq/prim/TransformArray.h>

#include <algorithm>

#include <host/bas/Parallel.h>
#include <rq/prim/detail/dumpSaved.h>

namespace
{
// Reading a matrix costs 25 ns, combining one 75, making one 170: a task is 25 to 170 us of work.
constexpr int64_t kTransformsPerTask = 1024;

const RQ_Transform &orIdentity(const RQ_TransformHandle &transform)
{
    return transform ? *transform : *RQ_Transform::identity();
}

template <class Matrix> void readMatrices(BAS_Array<Matrix> &matrices, const RQ_TransformArray &from)
{
    matrices.resize(size_t(from.entries()));
    host::parallelFor(from.entries(), kTransformsPerTask, [&](int64_t i) {
        BAS_Mat4d matrix;
        from.getMatrix(matrix, i, 0);
        matrices[size_t(i)] = Matrix(matrix);
    });
}
}  // namespace

RQ_TransformArray::RQ_TransformArray() = default;

RQ_TransformArray::RQ_TransformArray(const RQ_TransformArray &) = default;

RQ_TransformArray::~RQ_TransformArray() = default;

int64_t RQ_TransformArray::getDataId() const { return -1; }

int64_t RQ_TransformArray::entries() const { return int64_t(transforms_.size()); }

RQ_TransformHandle RQ_TransformArray::get(int64_t index) const
{
    return index >= 0 && index < int64_t(transforms_.size()) ? transforms_[size_t(index)] : RQ_TransformHandle();
}

void RQ_TransformArray::set(int64_t index, const RQ_TransformHandle &transform)
{
    if (index >= 0 && index < int64_t(transforms_.size()))
        transforms_[size_t(index)] = transform;
}

void RQ_TransformArray::setEntries(int64_t count) { transforms_.resize(size_t(std::max<int64_t>(count, 0))); }

void RQ_TransformArray::setMatrices(const BAS_Mat4d *matrices, int64_t count, int segments)
{
    transforms_.assign(size_t(std::max<int64_t>(count, 0)), RQ_TransformHandle());
    host::parallelFor(int64_t(transforms_.size()), kTransformsPerTask,
                      [&](int64_t i) { transforms_[size_t(i)] = new RQ_Transform(matrices + i * segments, segments); });
}

int RQ_TransformArray::getMotionSegments() const
{
    return transforms_.empty() ? 0 : orIdentity(transforms_.front()).getSegments();
}

void RQ_TransformArray::getMatrix(BAS_Mat4d &matrix, int64_t index, int segment) const
{
    orIdentity(get(index)).getMatrix(matrix, segment);
}

void RQ_TransformArray::getInverse(BAS_Mat4d &matrix, int64_t index, int segment) const
{
    orIdentity(get(index)).getInverse(matrix, segment);
}

void RQ_TransformArray::computeInverse() const
{
    for (const RQ_TransformHandle &transform : transforms_)
        orIdentity(transform).computeInverse();
}

int64_t RQ_TransformArray::getMemoryUsage() const
{
    int64_t bytes = int64_t(sizeof(*this) + transforms_.capacity() * sizeof(RQ_TransformHandle));
    for (const RQ_TransformHandle &transform : transforms_)
        bytes += transform ? transform->getMemoryUsage() : 0;
    return bytes;
}

void RQ_TransformArray::append(const RQ_TransformHandle &transform)
{
    const int64_t index = entries();
    setEntries(index + 1);
    set(index, transform);
}

void RQ_TransformArray::append(const RQ_TransformArrayHandle &other)
{
    if (!other)
        return;
    const int64_t begin = entries(), count = other->entries();
    setEntries(begin + count);
    for (int64_t i = 0; i < count; ++i)
        set(begin + i, other->get(i));
}

RQ_TransformArrayHandle RQ_TransformArray::combine(const RQ_TransformHandle &transform, bool transformFirst) const
{
    // Never edited once shared, so a handle to this very array is as good as a copy.
    if (!transform || transform->isIdentity() || entries() == 0)
        return RQ_TransformArrayHandle(const_cast<RQ_TransformArray *>(this));
    return combined(transform, transformFirst);
}

RQ_TransformArrayHandle RQ_TransformArray::combined(const RQ_TransformHandle &transform, bool transformFirst) const
{
    const RQ_TransformArrayHandle result(new RQ_TransformArray(*this));
    host::parallelFor(entries(), kTransformsPerTask, [&](int64_t i) {
        RQ_TransformHandle &entry = result->transforms_[size_t(i)];
        const RQ_Transform &own = orIdentity(entry);
        entry = transformFirst ? own.preMultiply(transform) : own.multiply(transform);
    });
    return result;
}

void RQ_TransformArray::getTransforms(BAS_Array<BAS_Mat4f> &matrices) const { readMatrices(matrices, *this); }

void RQ_TransformArray::getTransforms(BAS_Array<BAS_Mat4d> &matrices) const { readMatrices(matrices, *this); }

void RQ_TransformArray::setTransforms(const BAS_Array<BAS_Mat4f> &matrices)
{
    setTransforms(BAS_Array<BAS_Mat4d>(matrices.begin(), matrices.end()));
}

void RQ_TransformArray::setTransforms(const BAS_Array<BAS_Mat4d> &matrices)
{
    setMatrices(matrices.data(), int64_t(matrices.size()), 1);
}

bool RQ_TransformArray::save(BAS_JSONWriter &writer) const
{
    bool good = writer.beginArray();
    for (int64_t i = 0; good && i < entries(); ++i)
        good = orIdentity(get(i)).save(writer);
    return good && writer.endArray();
}

void RQ_TransformArray::dump(const char *label) const { rq::dumpSaved(*this, label); }
