#include <host/mod/detail/AddedPrimitives.h>

#include <atomic>

#include <fmt/format.h>

#include <host/bas/stream.h>

namespace
{
// A page of corner counts is added up in some 0.1 us.
constexpr int64_t kPagesPerTask = 128;

std::string badCount(const int32_t *corners, int64_t count)
{
    const int64_t bad = std::find_if(corners, corners + count, [](int32_t n) { return n < 0; }) - corners;
    return fmt::format("polygon {} has {} vertices", bad, corners[bad]);
}

template <class Index> std::string badPoint(std::span<const Index> points, int64_t pointCount)
{
    const auto bad = std::find_if(points.begin(), points.end(), [=](Index p) { return p < 0 || p >= pointCount; });
    return fmt::format("vertex {} refers to point {}, out of range [0, {})", bad - points.begin(), *bad, pointCount);
}
}  // namespace

bool MOD_Edit::Primitives::addUp(ELM_Offset first)
{
    if (!corners)
    {
        vertices = count * sameCorners;
        return true;
    }
    const int64_t firstPage = first >> ELM_PAGE_BITS;
    const int64_t pages = count > 0 ? ((first + count - 1) >> ELM_PAGE_BITS) - firstPage + 1 : 0;
    startOfPage.resize(size_t(pages));
    std::atomic<bool> good{true};
    host::parallelFor(pages, kPagesPerTask, [&](int64_t page) {
        const int64_t begin = std::max<int64_t>(0, ((firstPage + page) << ELM_PAGE_BITS) - first);
        const int64_t end = std::min(count, ((firstPage + page + 1) << ELM_PAGE_BITS) - first);
        int64_t sum = 0;
        int32_t smallest = 0;
        for (int64_t i = begin; i < end; ++i)
        {
            sum += corners[i];
            smallest = std::min(smallest, corners[i]);
        }
        startOfPage[size_t(page)] = sum;
        if (smallest < 0)
            good.store(false, std::memory_order_relaxed);
    });
    for (int64_t &start : startOfPage)
    {
        const int64_t sum = start;
        start = vertices;
        vertices += sum;
    }
    return good;
}

void MOD_Edit::Primitives::writeStarts(ELM_IndexColumn &starts, ELM_Offset first, int64_t firstVertex) const
{
    const bool streamed = count * int64_t(sizeof(int32_t)) >= host::kStreamedBytes;
    starts.writeBlocks(first, count, firstVertex + vertices, [&](auto *to, int64_t row, int64_t rows) {
        using Index = std::remove_pointer_t<decltype(to)>;
        int64_t start = firstVertex + (corners ? startOfPage[size_t((row >> ELM_PAGE_BITS) - (first >> ELM_PAGE_BITS))]
                                               : (row - first) * sameCorners);
        host::writeBlocks(to, rows, streamed, [&](Index *out, int64_t done, int64_t length) {
            for (int64_t i = 0; i < length; ++i)
            {
                out[i] = Index(start);
                start += corners ? corners[row - first + done + i] : sameCorners;
            }
        });
    });
}

bool MOD_Edit::prepare(Primitives &added, int64_t points)
{
    if (!added.addUp(capacity(ELM_OWNER_PRIMITIVE)))
        return fail(badCount(added.corners, added.count));
    return added.vertices == points ||
           fail(fmt::format("the polygons have {} vertices, but {} points are given", added.vertices, points));
}

bool MOD_Edit::appendPrimitives(Primitives &added, const MOD_Indices &points)
{
    if (!prepare(added, points.size()) || !checkPayloads(added))
        return false;
    const ELM_Offset firstVertex = capacity(ELM_OWNER_VERTEX), endPoint = capacity(ELM_OWNER_POINT);
    data_.vertexPoint.resize(firstVertex + added.vertices);
    const bool good = points.visit([&](auto list) {
        return (data_.vertexPoint.write(firstVertex, list, 0, endPoint) || fail(badPoint(list, endPoint))) &&
               refersToLive(list);
    });
    if (good)
        appendRows(added);
    return good;
}

// All columns but vertex -> point, which is written before.
void MOD_Edit::appendRows(const Primitives &added)
{
    if (added.count == 0)
        return;
    const ELM_Offset first = capacity(ELM_OWNER_PRIMITIVE), firstVertex = capacity(ELM_OWNER_VERTEX);
    const int64_t vertices = firstVertex + added.vertices, primitives = first + added.count;
    data_.eachPrimitiveColumn([primitives](auto &column) { column.resize(primitives); });
    added.writeStarts(data_.vertexStart, first, firstVertex);
    if (added.corners)
        data_.vertexCount.writeCompact(first, added.count, added.corners);
    else
        data_.vertexCount.fill(first, added.count, &added.sameCorners);
    const int16_t type = int16_t(added.type);
    data_.type.fill(first, added.count, &type);
    data_.flags.fill(first, added.count, &added.flags);

    data_.typeCounts.resize(std::max(data_.typeCounts.size(), size_t(added.type) + 1));
    resizeAttributes(ELM_OWNER_VERTEX, vertices);
    resizeAttributes(ELM_OWNER_PRIMITIVE, primitives);
    writePayloads(added);
    if (added.isPlaced)
        writeTransforms(added);
    setCapacity(ELM_OWNER_VERTEX, vertices);
    setCapacity(ELM_OWNER_PRIMITIVE, primitives);
    data_.typeCounts[size_t(added.type)] += added.count;
    changed_ = topologyChanged_ = true;
}

bool MOD_Edit::appendPolygons(std::span<const int32_t> corners, const MOD_Indices &points, bool closed)
{
    Primitives added = Primitives::polygons(corners, closed);
    return attempt([&] { return appendPrimitives(added, points); });
}

bool MOD_Edit::appendPolygons(int32_t corners, const MOD_Indices &points, bool closed)
{
    const int64_t given = points.size();
    if (corners < 1 || given % corners != 0)
        return fail(fmt::format("{} points do not make polygons of {} vertices", given, corners));
    Primitives added = Primitives::polygons(corners, given / corners, closed);
    return attempt([&] { return appendPrimitives(added, points); });
}
