#include <rq/bridge/MSHOffsetList.h>

#include <algorithm>
#include <bit>
#include <cinttypes>
#include <cstdio>
#include <limits>

#include <host/bas/Parallel.h>
#include <host/elm/Group.h>
#include <host/msh/Detail.h>
#include <rq/bridge/detail/HostIndices.h>
#include <rq/data/DANumeric.h>
#include <rq/data/convert.h>
#include <rq/data/mixId.h>

namespace
{
/// Call `visit(first, count)` for blocks of a page, in parallel.
template <class Visit> void forEachBlock(int64_t count, Visit &&visit)
{
    const int64_t blocks = (count + ELM_PAGE_SIZE - 1) / ELM_PAGE_SIZE;
    // A block is some microseconds of work; eight of them outweigh a task.
    host::parallelFor(blocks, 8, [&](int64_t block) {
        const int64_t first = block * ELM_PAGE_SIZE;
        visit(first, std::min(ELM_PAGE_SIZE, count - first));
    });
}

/// Make an array of `count` integers in blocks: `fill(values, first, count)`.
template <class T, class Fill> RQ_DataArrayHandle makeIndices(int64_t count, Fill &&fill)
{
    auto *array = new RQ_DANumeric<T>(count, 1, RQ_TYPE_NONE);
    const RQ_DataArrayHandle handle(array);
    forEachBlock(count, [&](int64_t first, int64_t length) { fill(array->data() + first, first, length); });
    return handle;
}

/// The elements of a range that the detail has.
ELM_OffsetList elementsIn(const MSH_Detail &detail, const ELM_Range &range)
{
    const ELM_Owner owner = range.owner();
    if (owner < ELM_OWNER_VERTEX || owner >= ELM_ELEMENT_OWNERS)
        return {};
    const ELM_Range known = range.slice(0, detail.capacity(owner));
    if (!detail.hasVacantOffsets(owner))
        return ELM_OffsetList(known);
    ELM_Group members(owner, BAS_StringHolder());
    members.unite(known);
    members.intersect(detail.range(owner));
    return ELM_OffsetList(members.range());
}
}  // namespace

RQ_MSHOffsetList::RQ_MSHOffsetList(const ELM_OffsetList &offsets) : list_(offsets) { checkMonotonic(); }

RQ_MSHOffsetList::RQ_MSHOffsetList(const ELM_Offset *offsets, int64_t count)
    : RQ_MSHOffsetList(ELM_OffsetList(std::span<const int64_t>(offsets, size_t(std::max<int64_t>(0, count)))))
{}

RQ_MSHOffsetList::RQ_MSHOffsetList(const MSH_Detail &detail, ELM_Owner owner) : RQ_MSHOffsetList(detail.offsets(owner)) {}
RQ_MSHOffsetList::RQ_MSHOffsetList(const MSH_Detail &detail, const ELM_Range &range)
    : RQ_MSHOffsetList(elementsIn(detail, range))
{}

RQ_MSHOffsetList::RQ_MSHOffsetList(const RQ_MSHOffsetList &source, int64_t start, int64_t count)
    : RQ_MSHOffsetList(source.list_.subList(start, count))
{}

RQ_MSHOffsetList RQ_MSHOffsetList::pointFromVertex(const MOD_ConstDetailHandle &detail, const RQ_MSHOffsetList &vertices)
{
    if (!detail)
        return {};
    const ELM_IndexColumn &points = detail.readLock()->vertexPoint();
    const auto copy = [&](auto values) {
        values.resize(size_t(vertices.entries()));
        forEachBlock(vertices.entries(), [&](int64_t first, int64_t count) {
            points.copyOut(values.data() + first, vertices.list_, first, count);
        });
        return RQ_MSHOffsetList(ELM_OffsetList(std::move(values)));
    };
    if (detail.readLock()->capacity(ELM_OWNER_POINT) <= ELM_INDEX32_LIMIT && !points.isWide())
        return copy(ELM_OffsetList::Values<int32_t>());
    return copy(ELM_OffsetList::Values<int64_t>());
}

void RQ_MSHOffsetList::note(ELM_Offset offset, ELM_Offset before)
{
    monotonic_ = monotonic_ && offset >= before;
    is32Bit_ = is32Bit_ && offset < ELM_INDEX32_LIMIT;
}

void RQ_MSHOffsetList::append(ELM_Offset offset)
{
    forgetHash();
    note(offset, entries() > 0 ? get(entries() - 1) : offset);
    list_.append(offset);
}

void RQ_MSHOffsetList::concat(const RQ_MSHOffsetList &other)
{
    if (other.entries() == 0)
        return;
    forgetHash();
    note(other[0], entries() > 0 ? get(entries() - 1) : other[0]);
    monotonic_ = monotonic_ && other.monotonic_;
    is32Bit_ = is32Bit_ && other.is32Bit_;
    list_.append(other.list_);
}

void RQ_MSHOffsetList::set(int64_t index, ELM_Offset offset)
{
    forgetHash();
    list_.set(index, offset);
    note(offset, index > 0 ? get(index - 1) : offset);
    if (index + 1 < entries())
        monotonic_ = monotonic_ && get(index + 1) >= offset;
}

void RQ_MSHOffsetList::checkMonotonic()
{
    is32Bit_ = monotonic_ = true;
    if (entries() == 0)
        return;
    if (isTrivial())
    {
        is32Bit_ = get(entries() - 1) < ELM_INDEX32_LIMIT;
        return;
    }
    list_.visit([this](auto offsets) {
        // Without a way out within a block, so that it vectorises.
        for (int64_t begin = 0; begin < entries() && (is32Bit_ || monotonic_); begin += ELM_PAGE_SIZE)
        {
            const int64_t end = std::min(entries(), begin + ELM_PAGE_SIZE);
            auto largest = offsets[begin];
            decltype(largest) falls = 0;
            for (int64_t i = std::max<int64_t>(1, begin); i < end; ++i)
            {
                largest = std::max(largest, offsets[i]);
                falls += offsets[i] < offsets[i - 1];
            }
            is32Bit_ = is32Bit_ && largest < ELM_INDEX32_LIMIT;
            monotonic_ = monotonic_ && falls == 0;
        }
    });
}

uint64_t RQ_MSHOffsetList::hash() const
{
    if (const uint64_t known = hash_.value.load(std::memory_order_relaxed))
        return known;
    uint64_t hash = RQmixId(uint64_t(entries()));
    if (isTrivial())
        return hash + RQmixId(uint64_t(entries() > 0 ? get(0) : 0));
    // Every two entries are mixed for themselves, so that nothing waits for what was mixed before: half a nanosecond each.
    constexpr int64_t kEntriesPerBlock = 16384;
    constexpr uint64_t kPlace = 0x9E3779B97F4A7C15u;
    hash += list_.visit([this](auto offsets) {
        return host::parallelReduce(
            entries(), kEntriesPerBlock, uint64_t(0),
            [&](int64_t begin, int64_t end) {
                uint64_t sum = 0;
                int64_t i = begin;
                for (; i + 1 < end; i += 2)
                    sum += RQmixId(uint64_t(offsets[i]) + std::rotl(uint64_t(offsets[i + 1]), 32) + uint64_t(i) * kPlace);
                if (i < end)
                    sum += RQmixId(uint64_t(offsets[i]) + uint64_t(i) * kPlace);
                return sum;
            },
            [](uint64_t &into, uint64_t from) { into += from; });
    });
    hash_.value.store(hash, std::memory_order_relaxed);
    return hash;
}

RQ_DataArrayHandle RQ_MSHOffsetList::allocateArray() const
{
    const auto fill = [this](auto *values, int64_t first, int64_t count) {
        list_.visit([&](auto offsets) {
            for (int64_t i = 0; i < count; ++i)
                values[i] = std::remove_pointer_t<decltype(values)>(offsets[first + i]);
        });
    };
    return is32Bit_ ? makeIndices<int32_t>(entries(), fill) : makeIndices<int64_t>(entries(), fill);
}

RQ_DataArrayHandle RQ_MSHOffsetList::createVertexPointArray(const MSH_Detail &detail) const
{
    return createVertexPointArray(MOD_ConstDetailHandle(&detail));
}

RQ_DataArrayHandle RQ_MSHOffsetList::createVertexPointArray(const MOD_ConstDetailHandle &handle) const
{
    if (!handle)
        return makeIndices<int32_t>(0, [](int32_t *, int64_t, int64_t) {});
    const MSH_Detail &detail = *handle.readLock();
    const ELM_IndexColumn &points = detail.vertexPoint();
    const bool narrow =
        is32Bit_ && !points.isWide() && detail.capacity(ELM_OWNER_POINT) <= std::numeric_limits<int32_t>::max();
    const int32_t *block = narrow && isTrivial() ? points.contiguous32() : nullptr;
    // The same vertices of the same topology have the same id, whenever they are asked for.
    const int64_t id = rq::validId(RQmixId(uint64_t(detail.topologyId())) + RQmixId(hash()));
    if (block && entries() > 0)
        return new rq::HostIndices(points, block + get(0), entries(), id);
    const auto fill = [&](auto *values, int64_t first, int64_t count) {
        const int32_t *flat = narrow ? points.contiguous32() : nullptr;
        if (const int32_t *vertices = list_.data32(); flat && vertices)
            rq::gatherRows(flat, RQ_STORAGE_INT32, 1, vertices + first, values,
                           RQstorageOf<std::remove_pointer_t<decltype(values)>>, 1, 1, count);
        else
            points.copyOut(values, list_, first, count);
    };
    const RQ_DataArrayHandle array = narrow ? makeIndices<int32_t>(entries(), fill) : makeIndices<int64_t>(entries(), fill);
    array->setDataId(id);
    return array;
}

void RQ_MSHOffsetList::dump(const char *label, bool closeLine) const
{
    const auto text = [](bool flag) { return flag ? "true" : "false"; };
    std::fprintf(stderr, "%s: ", label);
    std::fprintf(stderr, "{ \"32\":%s, \"mono\":%s, \"data\":", text(is32Bit_), text(monotonic_));
    for (int64_t i = 0; i < entries(); ++i)
        std::fprintf(stderr, i > 0 ? ", %" PRId64 : "%" PRId64, get(i));
    std::fprintf(stderr, "]%s\n", closeLine ? "" : ",");
}
