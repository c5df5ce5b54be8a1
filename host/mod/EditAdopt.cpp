#include <host/mod/Edit.h>

#include <cstring>
#include <limits>

#include <fmt/format.h>

#include <host/bas/CopyCounter.h>
#include <host/bas/Diagnostics.h>
#include <host/mod/detail/AddedPrimitives.h>

/// Rows of memory that an application lends.
struct MOD_Edit::Lent
{
    host::PageSlabHandle memory;  // calls the release when the last page table lets go
    ELM_Storage storage;
    int64_t stride;
    int64_t rows;

    Lent(ELM_Storage kind, const void *pointer, int64_t bytesApart, int64_t count, Release release)
        : memory(new host::PageSlab(pointer, std::move(release))), storage(kind), stride(bytesApart), rows(count)
    {}

    bool isMissing() const { return rows < 0 || (rows > 0 && !memory->data()); }
};

namespace
{
// Reading and comparing a value costs a fraction of a nanosecond.
constexpr int64_t kValuesPerBlock = 65536;

// Why rows of values of T cannot be read where they are; empty when they can.
template <class T> std::string whyCopied(const void *rows, int64_t stride, int64_t packed)
{
    if (stride != packed)
        return fmt::format("its rows are {} bytes apart, not {}", stride, packed);
    return uintptr_t(rows) % alignof(T) != 0 ? fmt::format("it does not start at a multiple of {}", alignof(T)) : "";
}

// Let the column read the memory in place; copy it, and say why, when it cannot.
template <class T, class Lent> std::string take(ELM_PageArray<T> &pages, const Lent &lent)
{
    const int64_t packed = pages.tupleSize() * int64_t(sizeof(T));
    const std::string reason = whyCopied<T>(lent.memory->data(), lent.stride, packed);
    if (reason.empty())
    {
        pages.adopt(lent.memory, lent.rows);
        return reason;
    }
    pages.resize(lent.rows);
    const char *from = lent.memory->data();
    const int64_t apart = lent.stride, tupleSize = pages.tupleSize();
    pages.writeBlocks(0, lent.rows, [=](T *to, int64_t row, int64_t count) {
        for (int64_t i = 0; i < count; ++i)
            std::memcpy(static_cast<void *>(to + i * tupleSize), from + (row + i) * apart, size_t(packed));
    });
    BAS_CopyCounter::add(BAS_COPY_GATHER, lent.rows * packed);
    return reason;
}

std::string noteOf(std::string_view what, const std::string &reason)
{
    if (reason.empty())
        return reason;
    const std::string note = fmt::format("{} was copied: {}", what, reason);
    BAS_Diagnostics::warn(1, "{}", note);
    return note;
}

struct Extent
{
    int64_t smallest = std::numeric_limits<int64_t>::max();
    int64_t largest = std::numeric_limits<int64_t>::min();
    int64_t negative = 0;
};

template <class Index> Extent extentOf(const ELM_PageArray<Index> &column)
{
    const auto map = [&](int64_t begin, int64_t end) {
        Extent extent;
        column.forEachRun(begin, end - begin, [&](const Index *values, int64_t rows, bool) {
            for (int64_t i = 0; i < rows; ++i)
            {
                extent.smallest = std::min<int64_t>(extent.smallest, values[i]);
                extent.largest = std::max<int64_t>(extent.largest, values[i]);
                extent.negative += values[i] < 0;
            }
        });
        return extent;
    };
    return host::parallelReduce(column.size(), kValuesPerBlock, Extent(), map, [](Extent &into, const Extent &from) {
        into.smallest = std::min(into.smallest, from.smallest);
        into.largest = std::max(into.largest, from.largest);
        into.negative += from.negative;
    });
}
}  // namespace

ELM_Attribute *MOD_Edit::adopt(ELM_Owner owner, std::string_view name, ELM_Storage storage, int tupleSize,
                               ELM_TypeInfo typeInfo, const void *pointer, int64_t stride, int64_t rows, Release release)
{
    const Lent lent(storage, pointer, stride, rows, std::move(release));
    ELM_Attribute *result = nullptr;
    const auto make = [&] {
        const ELM_AttributeHandle made =
            ELM_Attribute::create(owner, ELM_SCOPE_PUBLIC, BAS_StringHolder(name), storage, tupleSize, typeInfo, 0);
        const std::string reason = made->numericTuple()->visit([&](auto &pages) { return take(pages, lent); });
        ELM_AttributeDict &dict = data_.attributes[owner];
        touched_.erase(dict.find(ELM_SCOPE_PUBLIC, name));
        result = touch(dict.insert(made));
        message_ = noteOf(fmt::format("attribute \"{}\"", name), reason);
        return true;
    };
    if (!isAttribute(owner, name, storage, tupleSize))
        return nullptr;
    if (!ELMisNumeric(storage))
        fail(fmt::format("attribute \"{}\" needs a numeric storage, not {}", name, int(storage)));
    else if (rows != capacity(owner) || lent.isMissing())
        fail(fmt::format("attribute \"{}\" needs memory of {} rows, not {}", name, capacity(owner), rows));
    else
        attempt(make);
    return result;
}

// Let the vertices refer to points from `low` on: as the column itself when there are none yet, else by adding rows to it.
template <class Index> bool MOD_Edit::adoptColumn(const Lent &list, int64_t low, bool adds)
{
    const Index none = -1;
    ELM_PageArray<Index> column(1, &none);
    std::string reason = take(column, list);
    const Extent extent = extentOf(column);
    const ELM_Offset first = adds ? capacity(ELM_OWNER_VERTEX) : 0, endPoint = capacity(ELM_OWNER_POINT);
    if (list.rows > 0 && (extent.smallest < low || extent.largest >= endPoint))
        return fail(fmt::format("a vertex refers to point {}, out of range [0, {})",
                                extent.smallest < low ? extent.smallest : extent.largest, endPoint));
    const std::span points(column.contiguous(), size_t(list.rows));
    if (!refersToLive(points))
        return false;
    if (first == 0)
    {
        data_.vertexPoint.assign(std::move(column));
        data_.looseVertices = extent.negative;
    }
    else
    {
        reason = "the detail has vertices already";
        data_.vertexPoint.resize(first + list.rows);
        data_.vertexPoint.write(first, points, low, endPoint);
    }
    message_ = noteOf("the vertex list", reason);
    changed_ = topologyChanged_ = true;
    return true;
}

bool MOD_Edit::adoptList(const Lent &list, int64_t low, bool adds)
{
    if (list.isMissing())
        return fail(fmt::format("there is no memory of {} points", list.rows));
    if (list.storage == ELM_STORAGE_INT32)
        return adoptColumn<int32_t>(list, low, adds);
    if (list.storage == ELM_STORAGE_INT64)
        return adoptColumn<int64_t>(list, low, adds);
    return fail("the points of vertices need 32-bit or 64-bit integers");
}

bool MOD_Edit::adoptPrimitives(Primitives &added, const Lent &list)
{
    return attempt([&] {
        if (!prepare(added, list.rows) || !adoptList(list, 0, true))
            return false;
        appendRows(added);
        return true;
    });
}

bool MOD_Edit::adoptPolygons(std::span<const int32_t> corners, bool closed, ELM_Storage storage, const void *pointer,
                             int64_t stride, int64_t rows, Release release)
{
    const Lent list(storage, pointer, stride, rows, std::move(release));
    Primitives added = Primitives::polygons(corners, closed);
    return adoptPrimitives(added, list);
}

bool MOD_Edit::adoptPolygons(int32_t corners, bool closed, ELM_Storage storage, const void *pointer, int64_t stride,
                             int64_t rows, Release release)
{
    const Lent list(storage, pointer, stride, rows, std::move(release));
    if (corners < 1 || rows % corners != 0)
        return fail(fmt::format("{} points do not make polygons of {} vertices", rows, corners));
    Primitives added = Primitives::polygons(corners, rows / corners, closed);
    return adoptPrimitives(added, list);
}

bool MOD_Edit::adoptVertexPoints(ELM_Storage storage, const void *pointer, int64_t stride, int64_t rows, Release release)
{
    const Lent list(storage, pointer, stride, rows, std::move(release));
    if (data_.live[ELM_OWNER_VERTEX])
        return fail("vertices were removed: the detail must be compacted first");
    if (rows != vertexCount())
        return fail(fmt::format("{} points are given for {} vertices", rows, vertexCount()));
    return attempt([&] { return adoptList(list, -1, false); });
}
