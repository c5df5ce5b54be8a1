#include <rq/surface/FaceSet.h>

#include <algorithm>
#include <limits>

#include <rq/data/DANumeric.h>

namespace
{
// Above this, members are handed out as 64-bit integers.
constexpr int64_t kLargestNarrow = 0x40000000;
}  // namespace

RQ_FaceSet::RQ_FaceSet() = default;
RQ_FaceSet::~RQ_FaceSet() = default;

RQ_FaceSet::RQ_FaceSet(const RQ_FaceSet &other)
    : BAS_IntrusiveRefCounter<RQ_FaceSet>(), members_(other.members()), largeIndices_(other.largeIndices_)
{}

void RQ_FaceSet::addFace(int64_t face)
{
    if (face < 0 || (!members_.empty() && face == members_.back()))
        return;
    if (!members_.empty() && face < members_.back())
        needsSorting_.store(true, std::memory_order_relaxed);
    largeIndices_ = largeIndices_ || face > std::numeric_limits<int32_t>::max();
    members_.push_back(face);
}

template <class Index> void RQ_FaceSet::append(const Index *faces, int64_t count)
{
    if (count == 1)
        return addFace(faces[0]);
    members_.reserve(members_.size() + size_t(std::max<int64_t>(count, 0)));
    std::copy_if(faces, faces + std::max<int64_t>(count, 0), std::back_inserter(members_),
                 [](Index face) { return face >= 0; });
    needsSorting_.store(true, std::memory_order_relaxed);
}

void RQ_FaceSet::addFaces(const int32_t *faces, int64_t count) { append(faces, count); }

void RQ_FaceSet::addFaces(const int64_t *faces, int64_t count)
{
    largeIndices_ = largeIndices_ || std::any_of(faces, faces + std::max<int64_t>(count, 0),
                                                 [](int64_t face) { return face > kLargestNarrow; });
    append(faces, count);
}

const BAS_Array<int64_t> &RQ_FaceSet::members() const
{
    if (!needsSorting_.load(std::memory_order_acquire))
        return members_;
    const std::lock_guard lock(sorting_);
    if (needsSorting_.load(std::memory_order_relaxed))
    {
        std::sort(members_.begin(), members_.end());
        members_.erase(std::unique(members_.begin(), members_.end()), members_.end());
        needsSorting_.store(false, std::memory_order_release);
    }
    return members_;
}

void RQ_FaceSet::removeFace(int64_t face)
{
    members();
    const auto at = std::lower_bound(members_.begin(), members_.end(), face);
    if (at != members_.end() && *at == face)
        members_.erase(at);
}

bool RQ_FaceSet::contains(int64_t face) const { return std::binary_search(members().begin(), members().end(), face); }

bool RQ_FaceSet::anyIntersect(const std::set<int> &faces) const
{
    return std::any_of(faces.begin(), faces.end(), [this](int face) { return contains(face); });
}

RQ_FaceSetHandle RQ_FaceSet::deleteFaces(const RQ_FaceSet &deleted, const RQ_DataArrayHandle &remap) const
{
    const RQ_FaceSetHandle result(new RQ_FaceSet);
    const int64_t known = remap ? remap->entries() : 0;
    BAS_Array<int64_t> kept;
    for (const int64_t face : members())
        if (face < known && !deleted.contains(face))
            kept.push_back(remap->getI64(face));
    result->addFaces(kept.data(), int64_t(kept.size()));
    return result;
}

RQ_DataArrayHandle RQ_FaceSet::extractMembers() const
{
    const auto extract = [this]<class Index>(Index) -> RQ_DataArrayHandle {
        const BAS_IntrusivePtr<RQ_DANumeric<Index>> array(new RQ_DANumeric<Index>(entries(), 1, RQ_TYPE_NONE));
        std::copy(begin(), end(), array->data());
        return array;
    };
    return largeIndices_ ? extract(int64_t()) : extract(int32_t());
}

bool RQ_FaceSet::save(BAS_JSONWriter &writer) const { return extractMembers()->save(writer, false); }
