#include <host/mod/Edit.h>

#include <fmt/format.h>

namespace
{
// Looking up the points of a page's vertices takes some microseconds.
constexpr int64_t kPagesPerTask = 16;

// The elements of a range that are there.
ELM_Range liveOf(const MSH_DetailData &data, const ELM_Range &range)
{
    const ELM_Owner owner = range.owner();
    const ELM_OffsetBitsHandle bits(new ELM_OffsetBits(data.capacity[owner]));
    for (int64_t i = range.begin() >> 6; i < bits->bits.wordCount(); ++i)
    {
        const uint64_t there = data.live[owner] ? data.live[owner]->word(i << 6) : ~uint64_t(0);
        bits->bits.words()[i] = range.word(i << 6) & there;
    }
    return ELM_Range(owner, bits);
}

// The first of the points that was removed; -1 without one.
template <class Index> int64_t findVacant(const MSH_DetailData &data, std::span<const Index> points)
{
    if (data.vacant[ELM_OWNER_POINT] > 0)
        for (const Index point : points)
            if (point >= 0 && !data.isLive(ELM_OWNER_POINT, point))
                return point;
    return -1;
}
}  // namespace

bool MOD_Edit::refersToLive(std::span<const int32_t> points)
{
    const int64_t vacant = findVacant(data_, points);
    return vacant < 0 || fail(fmt::format("point {} was removed", vacant));
}

bool MOD_Edit::refersToLive(std::span<const int64_t> points)
{
    const int64_t vacant = findVacant(data_, points);
    return vacant < 0 || fail(fmt::format("point {} was removed", vacant));
}

bool MOD_Edit::isRange(const ELM_Range &range)
{
    const ELM_Owner owner = range.owner();
    if (owner < ELM_OWNER_VERTEX || owner >= ELM_ELEMENT_OWNERS)
        return fail(fmt::format("owner {} has no elements", int(owner)));
    return (range.begin() >= 0 && range.end() <= capacity(owner)) ||
           fail(fmt::format("elements [{}, {}) are out of range [0, {})", range.begin(), range.end(), capacity(owner)));
}

// The bits of an owner to write, one for each offset below `capacity`.
BAS_BitArray &MOD_Edit::liveBits(ELM_Owner owner, int64_t capacity)
{
    ELM_OffsetBitsHandle &live = data_.live[owner];
    if (!live)
        live = new ELM_OffsetBits;
    else if (live->use_count() > 1)
        live = new ELM_OffsetBits(*live);
    live->bits.resize(capacity, true);
    return live->bits;
}

bool MOD_Edit::remove(const ELM_Range &elements)
{
    if (!isRange(elements))
        return false;
    if (elements.owner() == ELM_OWNER_VERTEX)
        return fail("vertices are removed with their primitives");
    const auto change = [&] {
        const ELM_Range gone = liveOf(data_, elements);
        if (!gone.isEmpty())
            elements.owner() == ELM_OWNER_POINT ? removePoints(gone) : removePrimitives(gone);
        return true;
    };
    if (attempt(change))
        return true;
    abort();
    return false;
}

bool MOD_Edit::remove(ELM_Owner owner, const ELM_OffsetList &offsets)
{
    const bool hasElements = owner >= ELM_OWNER_VERTEX && owner < ELM_ELEMENT_OWNERS;
    const ELM_OffsetBitsHandle bits(new ELM_OffsetBits(hasElements ? capacity(owner) : 0));
    for (int64_t i = 0; i < offsets.size(); ++i)
    {
        if (offsets[i] < 0 || offsets[i] >= bits->end())
            return fail(fmt::format("element {} is out of range [0, {})", offsets[i], bits->end()));
        bits->bits.set(offsets[i]);
    }
    return remove(ELM_Range(owner, bits));
}

// Let the offsets of elements, which are all there, be vacant.
void MOD_Edit::vacate(ELM_Owner owner, const ELM_Range &gone)
{
    ELM_AttributeDict &dict = data_.attributes[owner];
    for (int64_t i = 0; i < dict.size(); ++i)
    {
        ELM_Attribute *attribute = touch(dict.writable(i));
        for (const auto [begin, end] : gone.blocks())
            attribute->reset(begin, end - begin);
    }
    data_.groups[owner].subtract(gone);

    BAS_BitArray &live = liveBits(owner, capacity(owner));
    for (int64_t i = 0; i < live.wordCount(); ++i)
        live.words()[i] &= ~gone.word(i << 6);
    data_.vacant[owner] += gone.size();
    changed_ = topologyChanged_ = true;
}

// Leave the vertices of points that go without one.
void MOD_Edit::disconnect(const ELM_Range &gonePoints)
{
    std::vector<uint8_t> isHit(size_t((capacity(ELM_OWNER_VERTEX) + ELM_PAGE_SIZE - 1) >> ELM_PAGE_BITS));
    const auto find = [&](const auto &pages, int64_t page, auto &&visit) {
        const ELM_Offset first = page << ELM_PAGE_BITS;
        const auto reader = pages.reader();
        for (ELM_Offset vertex = first; vertex < std::min(pages.size(), first + ELM_PAGE_SIZE); ++vertex)
            if (gonePoints.contains(reader.value(vertex)))
                visit(vertex);
    };
    data_.vertexPoint.visit([&](const auto &pages) {
        host::parallelFor(int64_t(isHit.size()), kPagesPerTask,
                          [&](int64_t page) { find(pages, page, [&](ELM_Offset) { isHit[size_t(page)] = 1; }); });
    });
    for (int64_t page = 0; page < int64_t(isHit.size()); ++page)
    {
        std::vector<ELM_Offset> hit;
        if (isHit[size_t(page)])
            data_.vertexPoint.visit(
                [&](const auto &pages) { find(pages, page, [&](ELM_Offset vertex) { hit.push_back(vertex); }); });
        for (const ELM_Offset vertex : hit)
            data_.vertexPoint.set(vertex, ELM_INVALID_OFFSET);
        data_.looseVertices += int64_t(hit.size());
    }
}

void MOD_Edit::removePoints(const ELM_Range &gone)
{
    disconnect(gone);
    vacate(ELM_OWNER_POINT, gone);
}

void MOD_Edit::removePrimitives(const ELM_Range &gone)
{
    const ELM_OffsetBitsHandle vertices(new ELM_OffsetBits(capacity(ELM_OWNER_VERTEX)));
    for (const auto [begin, end] : gone.blocks())
    {
        for (ELM_Offset primitive = begin; primitive < end; ++primitive)
        {
            --data_.typeCounts[size_t(data_.type.value(primitive))];
            const ELM_Offset first = data_.vertexStart.value(primitive);
            for (ELM_Offset vertex = first; vertex < first + data_.vertexCount.value(primitive); ++vertex)
            {
                vertices->bits.set(vertex);
                data_.looseVertices -= data_.vertexPoint.value(vertex) < 0;
            }
        }
        data_.vertexCount.reset(begin, end - begin);
        data_.type.reset(begin, end - begin);
        data_.flags.reset(begin, end - begin);
        data_.payload.reset(begin, end - begin);
    }
    data_.payloads.renumber(ELM_OWNER_PRIMITIVE, [&gone](ELM_Offset was) { return gone.contains(was) ? -1 : was; });
    vacate(ELM_OWNER_PRIMITIVE, gone);

    const ELM_Range goneVertices(ELM_OWNER_VERTEX, vertices);
    if (goneVertices.isEmpty())
        return;
    for (const auto [begin, end] : goneVertices.blocks())
        data_.vertexPoint.reset(begin, end - begin);
    vacate(ELM_OWNER_VERTEX, goneVertices);
    data_.sequentialVertices = false;
}
