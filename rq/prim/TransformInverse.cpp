#include <algorithm>
#include <mutex>
#include <vector>

#include <host/bas/MemoryTracker.h>
#include <rq/prim/detail/transformInverse.h>

namespace
{
// One lock for all transforms: the cache of each is filled once, so that nobody waits twice.
std::mutex inverseMutex;

// Invert by cofactors and answer the determinant.  Where that is 0 the result holds no numbers.
double invertAffine(const BAS_Mat4d &matrix, BAS_Mat4d &inverse)
{
    const BAS_Mat3d adjoint = rq::cofactors(matrix);
    const double determinant =
        matrix[0][0] * adjoint[0][0] + matrix[0][1] * adjoint[0][1] + matrix[0][2] * adjoint[0][2];
    inverse = BAS_Mat4d();
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            inverse[row][column] = adjoint[column][row] / determinant;
    for (int column = 0; column < 3; ++column)
        inverse[3][column] = -(matrix[3][0] * inverse[0][column] + matrix[3][1] * inverse[1][column] +
                               matrix[3][2] * inverse[2][column]);
    return determinant;
}
}  // namespace

bool rq::invert(const BAS_Mat4d &matrix, BAS_Mat4d &inverse)
{
    const double determinant = isAffine(matrix) ? invertAffine(matrix, inverse) : matrix.determinant();
    if (!isAffine(matrix) && determinant != 0.0)
        inverse = matrix.inverse();

    // Zero unless some number is infinite or none.
    double sum = determinant - determinant;
    for (int i = 0; i < 16; ++i)
        sum += inverse[i / 4][i % 4] - inverse[i / 4][i % 4];
    if (determinant != 0.0 && sum == 0.0)
        return true;
    inverse = BAS_Mat4d();
    return false;
}

const RQ_Transform::Inverse *RQ_Transform::inverses() const
{
    if (const Inverse *cached = inverses_.load(std::memory_order_acquire))
        return cached;

    const std::lock_guard lock(inverseMutex);
    if (const Inverse *cached = inverses_.load(std::memory_order_relaxed))
        return cached;

    auto made = std::make_unique<Inverse[]>(size_t(std::max(segments_, 1)));
    for (int i = 0; i < segments_; ++i)
        made[size_t(i)].singular = !rq::invert(data()[i], made[size_t(i)].matrix);
    BAS_MemoryTracker::add(BAS_MEMORY_TRANSFORM, int64_t(sizeof(Inverse)) * std::max(segments_, 1));
    const Inverse *result = made.get();
    inverses_.store(made.release(), std::memory_order_release);
    return result;
}

void RQ_Transform::dropInverses()
{
    const std::unique_ptr<Inverse[]> dropped(inverses_.exchange(nullptr, std::memory_order_relaxed));
    if (dropped)
        BAS_MemoryTracker::add(BAS_MEMORY_TRANSFORM, -int64_t(sizeof(Inverse)) * std::max(segments_, 1));
}

const RQ_Transform::Inverse &RQ_Transform::inverseAt(int segment) const
{
    return inverses()[segments_ > 0 ? std::clamp(segment, 0, segments_ - 1) : 0];
}

void RQ_Transform::computeInverse() const { inverses(); }

void RQ_Transform::getInverse(BAS_Mat4f &matrix, int segment) const { matrix = BAS_Mat4f(inverseAt(segment).matrix); }

void RQ_Transform::getInverse(BAS_Mat4d &matrix, int segment) const { matrix = inverseAt(segment).matrix; }

RQ_TransformHandle RQ_Transform::invert() const
{
    if (identity_)
        return self();

    const Inverse *cached = inverses_.load(std::memory_order_acquire);
    std::vector<BAS_Mat4d> opposite(static_cast<size_t>(segments_));
    for (int i = 0; i < segments_; ++i)
    {
        if (cached)
            opposite[size_t(i)] = cached[i].matrix;
        else
            rq::invert(data()[i], opposite[size_t(i)]);
    }
    return RQ_TransformHandle(new RQ_Transform(opposite.data(), segments_));
}
