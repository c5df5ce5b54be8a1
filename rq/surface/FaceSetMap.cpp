#include <rq/surface/FaceSetMap.h>

#include <algorithm>
#include <cstdio>

#include <host/bas/BitArray.h>
#include <host/bas/JSONWriter.h>
#include <rq/data/Values.h>

namespace
{
/// The places in `from`, whose values lie between `least` and `greatest`, of the faces that a set has.
RQ_FaceSetHandle membersAmong(const rq::Values<int64_t> &from, int64_t least, int64_t greatest, const RQ_FaceSet &set)
{
    const RQ_FaceSetHandle found(new RQ_FaceSet);
    // A mesh may be cut into many pieces: of a large set each looks at no more than it can have.
    const int64_t *const first = std::lower_bound(set.begin(), set.end(), least);
    const int64_t *const last = std::upper_bound(first, set.end(), greatest);
    if (first == last)
        return found;
    const int64_t begin = *first, end = last[-1] + 1;
    const auto addAll = [&](auto &&isMember) {
        for (int64_t face = 0; face < from.entries(); ++face)
            if (from[face] >= begin && from[face] < end && isMember(from[face]))
                found->addFace(face);
    };
    // To look up a face costs as much as to note some sixty, or to clear as many words of bits.
    constexpr int64_t kNotedPerLookup = 64, kWordBits = 64;
    if ((last - first + (end - begin) / kWordBits) / kNotedPerLookup > from.entries())
    {
        addAll([=](int64_t face) { return std::binary_search(first, last, face); });
        return found;
    }
    BAS_BitArray noted(end - begin);
    std::for_each(first, last, [&](int64_t face) { noted.set(face - begin); });
    addAll([&](int64_t face) { return noted.get(face - begin); });
    return found;
}
}  // namespace

RQ_FaceSetMap::RQ_FaceSetMap() : sets_(16) { sets_.max_load_factor(1.0f); }
RQ_FaceSetMap::RQ_FaceSetMap(const RQ_FaceSetMap &other) : BAS_IntrusiveRefCounter<RQ_FaceSetMap>(), sets_(other.sets_) {}
RQ_FaceSetMap::~RQ_FaceSetMap() = default;

RQ_FaceSetHandle RQ_FaceSetMap::add(const BAS_StringHolder &name, const RQ_FaceSetHandle &set, bool replace)
{
    const auto [at, isNew] = sets_.try_emplace(name, set);
    if (!isNew && replace)
        at->second = set;
    return at->second;
}

RQ_FaceSetHandle RQ_FaceSetMap::find(const BAS_StringHolder &name) const
{
    const auto at = sets_.find(name);
    return at == sets_.end() ? nullptr : at->second;
}

RQ_FaceSetMapHandle RQ_FaceSetMap::deleteFaces(const RQ_FaceSet &deleted, const RQ_DataArrayHandle &remap) const
{
    const RQ_FaceSetMapHandle result(new RQ_FaceSetMap);
    for (const auto &[name, set] : sets_)
        if (set)
            result->add(name, set->deleteFaces(deleted, remap));
    return result;
}

RQ_FaceSetMapHandle RQ_FaceSetMap::followFaces(const RQ_DataArrayHandle &sources) const
{
    const RQ_FaceSetMapHandle result(new RQ_FaceSetMap);
    const rq::Values<int64_t> from(sources);
    const auto [least, greatest] = std::minmax_element(from.begin(), from.end());
    const bool isEmpty = least == from.end();
    for (const auto &[name, set] : sets_)
        if (set)
            result->add(name, isEmpty ? RQ_FaceSetHandle(new RQ_FaceSet) : membersAmong(from, *least, *greatest, *set));
    return result;
}

BAS_Array<BAS_StringHolder> RQ_FaceSetMap::sortedNames() const
{
    BAS_Array<BAS_StringHolder> names;
    for (const auto &entry : sets_)
        names.push_back(entry.first);
    std::sort(names.begin(), names.end());
    return names;
}

bool RQ_FaceSetMap::save(BAS_JSONWriter &writer) const
{
    bool done = writer.beginMap();
    for (const BAS_StringHolder &name : sortedNames())
        if (const RQ_FaceSetHandle set = find(name))
            done = done && writer.key(name.view()) && set->save(writer);
    return done && writer.endMap();
}

void RQ_FaceSetMap::dump() const
{
    for (const BAS_StringHolder &name : sortedNames())
        if (const RQ_FaceSetHandle set = find(name))
            std::printf("%s: %lld faces\n", name.c_str(), static_cast<long long>(set->entries()));
}

int64_t RQ_FaceSetMap::getMemoryUsage() const
{
    int64_t bytes = int64_t(sizeof(*this) + sets_.bucket_count() * sizeof(void *) +
                            sets_.size() * sizeof(std::pair<BAS_StringHolder, RQ_FaceSetHandle>));
    for (const auto &entry : sets_)
        if (entry.second)
            bytes += entry.second->getMemoryUsage();
    return bytes;
}
