#pragma once

#include <utility>

#include <host/msh/Detail.h>

namespace rq
{
/// Consecutive closed polygons whose vertices follow each other.
struct FaceRun
{
    ELM_Offset primitive;
    int64_t faces;
    ELM_Offset vertex;
    int64_t corners;        ///< of all together
    const int32_t *counts;  ///< of each, or one for all
    bool isUniform;
};

/// Finds the polygons of a detail, in runs.
class PolygonReader
{
public:
    explicit PolygonReader(const MSH_Detail &detail)
        : detail_(detail), columns_(detail.data()), types_(columns_.type.reader()), flags_(columns_.flags.reader()),
          counts_(columns_.vertexCount.reader()), complete_(detail.topologyIsValid())
    {
        columns_.vertexStart.visit(
            [this](const auto &column) { std::get<decltype(column.reader())>(starts_) = column.reader(); });
    }

    bool reads(const MSH_Detail &detail) const { return &detail_ == &detail; }

    /// Call `face(primitive, vertex, corners)` or `open(primitive)` for one polygon that has all points.
    template <class OnFace, class OnOpen> void visitOne(ELM_Offset polygon, OnFace &&face, OnOpen &&open) const
    {
        const auto &[narrow, wide] = starts_;
        const int64_t start = narrow.pages ? int64_t(narrow.value(polygon)) : wide.value(polygon);
        const int64_t corners = counts_.value(polygon);
        if (!hasAllPoints(start, corners))
            return;
        if (isClosed(polygon))
            face(polygon, start, corners);
        else
            open(polygon);
    }

    /// Call `faces(FaceRun)` for the closed polygons of a range in order, and `open(primitive)` for the open ones.
    template <class OnFaces, class OnOpen> void visit(const ELM_Range &range, OnFaces &&faces, OnOpen &&open) const
    {
        columns_.vertexStart.visit([&](const auto &column) {
            const auto starts = column.reader();
            for (const auto [begin, end] : range.blocks())
                if (isRun(begin))
                    visitRun(starts, begin, end, faces);
                else
                    visitBlock(starts, begin, end, faces, open);
        });
    }

private:
    // True when a page holds nothing but other types, or nothing but closed polygons whose vertices follow each other.
    bool isRun(ELM_Offset primitive) const
    {
        const int64_t page = primitive >> ELM_PAGE_BITS;
        return complete_ && columns_.type.isConstantPage(page) &&
               (!isPolygon(primitive) ||
                (columns_.flags.isConstantPage(page) && isClosed(primitive) && detail_.sequentialVertices()));
    }

    template <class Starts, class OnFaces>
    void visitRun(const Starts &starts, ELM_Offset begin, ELM_Offset end, OnFaces &faces) const
    {
        if (!isPolygon(begin))
            return;
        const int64_t start = int64_t(starts.value(begin)), last = end - 1;
        faces(FaceRun{begin, end - begin, start, int64_t(starts.value(last)) + counts_.value(last) - start,
                      counts_.tuple(begin), columns_.vertexCount.isConstantPage(begin >> ELM_PAGE_BITS)});
    }

    template <class Starts, class OnFaces, class OnOpen>
    void visitBlock(const Starts &starts, ELM_Offset begin, ELM_Offset end, OnFaces &faces, OnOpen &open) const
    {
        for (ELM_Offset primitive = begin; primitive < end;)
        {
            const ELM_Offset first = primitive++;
            const int64_t start = int64_t(starts.value(first)), corners = int64_t(counts_.value(first));
            if (!isPolygon(first) || !hasAllPoints(start, corners))
                continue;
            if (!isClosed(first))
            {
                open(first);
                continue;
            }
            const auto continues = [&](ELM_Offset next) {
                const int64_t expected = start + (next - first) * corners;
                return counts_.value(next) == corners && int64_t(starts.value(next)) == expected && isClosed(next) &&
                       isPolygon(next) && hasAllPoints(expected, corners);
            };
            while (primitive < end && continues(primitive))
                ++primitive;
            faces(FaceRun{first, primitive - first, start, (primitive - first) * corners, counts_.tuple(first), true});
        }
    }

    bool isPolygon(ELM_Offset primitive) const { return types_.value(primitive) == ELM_PRIMITIVE_POLYGON; }
    bool isClosed(ELM_Offset primitive) const { return flags_.value(primitive) & MSH_DetailData::kClosed; }
    bool hasAllPoints(ELM_Offset start, int64_t corners) const
    {
        for (int64_t i = 0; !complete_ && i < corners; ++i)
            if (detail_.vertexPoint(start + i) < 0)
                return false;
        return true;
    }

    const MSH_Detail &detail_;
    const MSH_DetailData &columns_;
    ELM_ReadHandle<int16_t> types_;
    ELM_ReadHandle<uint8_t> flags_;
    ELM_ReadHandle<int32_t> counts_;
    std::pair<ELM_ReadHandle<int32_t>, ELM_ReadHandle<int64_t>> starts_;  // one of them
    bool complete_;
};
}  // namespace rq
