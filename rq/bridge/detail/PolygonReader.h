#pragma once

#include <host/msh/Detail.h>
#include <rq/bridge/detail/ManyFaces.h>

namespace rq
{
/// Consecutive polygons, all closed or all open, whose vertices follow each other.
struct FaceRun
{
    ELM_Offset primitive;
    int64_t faces;
    ELM_Offset vertex;
    int64_t corners;        ///< of all together
    const int32_t *counts;  ///< of each, or one for all
    bool isUniform;
    bool isClosed;
};

/// Finds the polygons of a detail, in runs, and the primitives that consist of faces.
class PolygonReader
{
public:
    explicit PolygonReader(const MSH_Detail &detail)
        : detail_(detail), columns_(detail.data()), types_(columns_.type.reader()), flags_(columns_.flags.reader()),
          counts_(columns_.vertexCount.reader()), complete_(detail.topologyIsValid())
    {}

    /// Call `visitor(FaceRun)` for the polygons of a range that have all points, and `visitor(ManyFaces)` for primitives
    /// that consist of faces, in order.
    template <class Visitor> void visit(const ELM_Range &range, Visitor &&visitor) const
    {
        columns_.vertexStart.visit([&](const auto &column) {
            const auto starts = column.reader();
            for (const auto [begin, end] : range.blocks())
                if (isRun(begin))
                    visitRun(starts, begin, end, visitor);
                else
                    visitBlock(starts, begin, end, visitor);
        });
    }

private:
    // True when a page holds nothing but other types, or nothing but polygons of one kind whose vertices follow each other.
    bool isRun(ELM_Offset primitive) const
    {
        const int64_t page = primitive >> ELM_PAGE_BITS;
        if (!complete_ || !columns_.type.isConstantPage(page))
            return false;
        if (isPolygon(primitive))
            return columns_.flags.isConstantPage(page) && detail_.sequentialVertices();
        return !ManyFaces::isOfType(types_.value(primitive));
    }

    template <class Starts, class Visitor>
    void visitRun(const Starts &starts, ELM_Offset begin, ELM_Offset end, Visitor &visitor) const
    {
        if (!isPolygon(begin))
            return;
        const int64_t start = int64_t(starts.value(begin)), last = end - 1;
        visitor(FaceRun{begin, end - begin, start, int64_t(starts.value(last)) + counts_.value(last) - start,
                        counts_.tuple(begin), columns_.vertexCount.isConstantPage(begin >> ELM_PAGE_BITS), isClosed(begin)});
    }

    template <class Starts, class Visitor>
    void visitBlock(const Starts &starts, ELM_Offset begin, ELM_Offset end, Visitor &visitor) const
    {
        for (ELM_Offset primitive = begin; primitive < end;)
        {
            const ELM_Offset first = primitive++;
            if (!isPolygon(first))
            {
                if (ManyFaces::isOfType(types_.value(first)))
                    visitor(ManyFaces(detail_, first, complete_));
                continue;
            }
            const int64_t start = int64_t(starts.value(first)), corners = int64_t(counts_.value(first));
            if (!hasAllPoints(start, corners))
                continue;
            const bool closed = isClosed(first);
            const auto continues = [&](ELM_Offset next) {
                const int64_t expected = start + (next - first) * corners;
                return counts_.value(next) == corners && int64_t(starts.value(next)) == expected &&
                       isClosed(next) == closed && isPolygon(next) && hasAllPoints(expected, corners);
            };
            while (primitive < end && continues(primitive))
                ++primitive;
            visitor(
                FaceRun{first, primitive - first, start, (primitive - first) * corners, counts_.tuple(first), true, closed});
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
    bool complete_;
};
}  // namespace rq
