#include <rq/prim/Transform.h>

#include <algorithm>

#include <host/bas/MemoryTracker.h>
#include <rq/prim/detail/transformInverse.h>

RQ_Transform::RQ_Transform() = default;

RQ_Transform::RQ_Transform(const BAS_Mat4f *matrices, int count)
{
    alloc(matrices ? count : 0);
    for (int i = 0; i < segments_; ++i)
        data()[i] = BAS_Mat4d(matrices[i]);
    updateIdentity();
}

RQ_Transform::RQ_Transform(const BAS_Mat4d *matrices, int count)
{
    alloc(matrices ? count : 0);
    std::copy_n(matrices, segments_, data());
    updateIdentity();
}

RQ_Transform::RQ_Transform(const RQ_Transform &other) : BAS_IntrusiveRefCounter<RQ_Transform>(other)
{
    alloc(other.segments_);
    std::copy_n(other.data(), segments_, data());
    identity_ = other.identity_;
}

RQ_Transform::~RQ_Transform() { release(); }

const RQ_TransformHandle &RQ_Transform::identity()
{
    // Never destroyed: primitives that outlive the library's own statics may still ask for it.
    static const RQ_TransformHandle &handle = *[] {
        const BAS_Mat4d matrix;
        auto *identity = new RQ_Transform(&matrix, 1);
        identity->eternal_ = true;
        return new RQ_TransformHandle(identity);
    }();
    return handle;
}

void RQ_Transform::release()
{
    dropInverses();
    if (allocated_)
        BAS_MemoryTracker::add(BAS_MEMORY_TRANSFORM, -int64_t(sizeof(BAS_Mat4d)) * segments_);
    allocated_.reset();
}

void RQ_Transform::alloc(int count)
{
    release();
    segments_ = std::max(count, 0);
    single_ = BAS_Mat4d();
    if (segments_ > 1)
    {
        allocated_ = std::make_unique<BAS_Mat4d[]>(size_t(segments_));
        BAS_MemoryTracker::add(BAS_MEMORY_TRANSFORM, int64_t(sizeof(BAS_Mat4d)) * segments_);
    }
    identity_ = false;
}

void RQ_Transform::updateIdentity()
{
    const auto isIdentity = [](const BAS_Mat4d &matrix) { return matrix == BAS_Mat4d(); };
    identity_ = segments_ > 0 && std::all_of(data(), data() + segments_, isIdentity);
}

void RQ_Transform::setMatrix(const BAS_Mat4f &matrix, int segment) { setMatrix(BAS_Mat4d(matrix), segment); }

void RQ_Transform::setMatrix(const BAS_Mat4d &matrix, int segment)
{
    if (segments_ < 1)
        return;
    dropInverses();
    data()[std::clamp(segment, 0, segments_ - 1)] = matrix;
    updateIdentity();
}

const BAS_Mat4d &RQ_Transform::matrixAt(int segment) const
{
    // Without segments the inline slot holds the identity.
    return data()[segments_ > 0 ? std::clamp(segment, 0, segments_ - 1) : 0];
}

void RQ_Transform::getMatrix(BAS_Mat4f &matrix, int segment) const { matrix = BAS_Mat4f(matrixAt(segment)); }

int64_t RQ_Transform::getMemoryUsage() const
{
    const int64_t perSegment = int64_t(sizeof(BAS_Mat4d)) * (inverses_.load(std::memory_order_relaxed) ? 2 : 1);
    return int64_t(sizeof(*this)) + segments_ * perSegment;
}

bool RQ_Transform::operator==(const RQ_Transform &other) const
{
    return this == &other || (segments_ == other.segments_ && identity_ == other.identity_ &&
                              std::equal(data(), data() + segments_, other.data()));
}
