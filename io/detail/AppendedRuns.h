#pragma once

#include <vector>

#include <host/mod/Edit.h>

namespace rq::io
{
/// Appends the primitives of details, those of one type that follow each other at once.
class AppendedRuns
{
public:
    explicit AppendedRuns(MOD_Edit &edit) : edit_(edit), vertex_(edit.vertexCount()) {}

    /// Take all of a detail, with their points numbered from `firstPoint` on.  False when the edit fails.
    bool add(const MSH_Detail &detail, int64_t firstPoint)
    {
        for (ELM_Offset primitive = 0; primitive < detail.primitiveCount(); ++primitive)
        {
            const bool isClosed = detail.isClosed(primitive);
            if ((detail.typeOf(primitive) != run_.type || isClosed != run_.isClosed) && !finish())
                return false;
            run_.type = detail.typeOf(primitive);
            run_.isClosed = isClosed;
            const auto [start, count] = detail.vertexRun(primitive);
            run_.corners.push_back(int32_t(count));
            for (ELM_Offset vertex = start; vertex < start + count; ++vertex, ++vertex_)
            {
                const ELM_Offset point = detail.vertexPoint(vertex);
                if (point < 0)
                    loose_.push_back(vertex_);
                run_.points.push_back(point < 0 ? 0 : int32_t(firstPoint + point));
            }
        }
        return true;
    }

    /// Append what was taken.
    bool finish()
    {
        const std::span<const int32_t> corners = run_.corners;
        if (!corners.empty() && !edit_.append({.type = run_.type,
                                               .count = std::ssize(corners),
                                               .corners = corners,
                                               .points = run_.points,
                                               .isClosed = run_.isClosed}))
            return false;
        run_ = {};
        for (const ELM_Offset vertex : loose_)
            if (!edit_.setVertexPoint(vertex, -1))
                return false;
        loose_.clear();
        return true;
    }

private:
    struct Run
    {
        ELM_PrimitiveTypeId type = ELM_PRIMITIVE_NONE;
        bool isClosed = false;
        std::vector<int32_t> corners{}, points{};
    };

    MOD_Edit &edit_;
    int64_t vertex_;  // the next one
    Run run_;
    std::vector<ELM_Offset> loose_;
};
}  // namespace rq::io
