#include <algorithm>
#include <cmath>
#include <mutex>
#include <vector>

#include <host/bas/MemoryTracker.h>
#include <rq/prim/detail/transformInverse.h>

namespace
{
// One lock for all transforms: the cache of each is filled once, so that nobody waits twice.
std::mutex inverseMutex;
}  // namespace

bool rq::invert(const BAS_Mat4d &matrix, BAS_Mat4d &inverse)
{
    const auto isFinite = [](double value) { return std::isfinite(value); };

    const double determinant = matrix.determinant();
    if (determinant != 0.0 && std::isfinite(determinant))
    {
        inverse = matrix.inverse();
        if (std::all_of(inverse.getValue(), inverse.getValue() + 16, isFinite))
            return true;
    }
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
