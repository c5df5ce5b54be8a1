#pragma once

#include <array>
#include <type_traits>

#include <rq/bridge/detail/FanFaces.h>
#include <rq/bridge/detail/GridFaces.h>
#include <rq/bridge/detail/SoupFaces.h>
#include <rq/bridge/detail/StripFaces.h>

namespace rq
{
/// The host types that become faces, in the order in which their collector is registered.
inline constexpr std::array<ELM_PrimitiveTypeId, 5> kTypesOfFaces{
    ELM_PRIMITIVE_POLYGON, ELM_PRIMITIVE_TRIANGLE_STRIP, ELM_PRIMITIVE_TRIANGLE_FAN, ELM_PRIMITIVE_SOUP, ELM_PRIMITIVE_GRID};

/// A host primitive that consists of faces: a fan, a strip, a soup or a grid.
class ManyFaces
{
public:
    /// `complete` tells that every vertex of the detail has a point; else faces that have one without are passed over.
    ManyFaces(const MSH_Detail &detail, ELM_Offset primitive, bool complete)
        : detail_(detail), primitive_(primitive), complete_(complete)
    {}

    static bool isOfType(ELM_PrimitiveTypeId type)
    {
        return type == ELM_PRIMITIVE_TRIANGLE_FAN || type == ELM_PRIMITIVE_TRIANGLE_STRIP || type == ELM_PRIMITIVE_SOUP ||
               type == ELM_PRIMITIVE_GRID;
    }

    ELM_Offset primitive() const { return primitive_; }

    /// No corner is a vertex behind this one.
    ELM_Offset lastVertex() const
    {
        const MSH_Detail::VertexRun run = detail_.vertexRun(primitive_);
        return run.start + run.count - 1;
    }

    /// Its faces, with those that are passed over.
    int64_t count() const
    {
        return ofType([](const auto &faces) { return faces.count(); });
    }

    /// Call `visit(corners, vertexOf)` for the faces among [begin, end), where `vertexOf(i)` is the vertex at corner i.
    template <class Visit> void forEach(int64_t begin, int64_t end, Visit &&visit) const
    {
        ofType([&](const auto &faces) {
            if (complete_)
                return faces.forEach(begin, end, visit);
            faces.forEach(begin, end, [&](int64_t corners, const auto &vertexOf) {
                for (int64_t i = 0; i < corners; ++i)
                    if (detail_.vertexPoint(vertexOf(i)) < 0)
                        return;
                visit(corners, vertexOf);
            });
        });
    }

private:
    template <class Call> std::invoke_result_t<Call, FanFaces> ofType(Call &&call) const
    {
        switch (detail_.typeOf(primitive_))
        {
        case ELM_PRIMITIVE_TRIANGLE_FAN:
            return call(FanFaces(detail_, primitive_));
        case ELM_PRIMITIVE_TRIANGLE_STRIP:
            return call(StripFaces(detail_, primitive_));
        case ELM_PRIMITIVE_SOUP:
            return call(SoupFaces(detail_, primitive_));
        default:
            return call(GridFaces(detail_, primitive_));
        }
    }

    const MSH_Detail &detail_;
    ELM_Offset primitive_;
    bool complete_;
};
}  // namespace rq
