#pragma once

#include <array>

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

    /// Call `visit(corners, vertexOf)` for every face, where `vertexOf(i)` is the vertex at corner i.
    template <class Visit> void forEach(Visit &&visit) const
    {
        if (complete_)
            return forEachOfType(visit);
        forEachOfType([&](int64_t corners, const auto &vertexOf) {
            for (int64_t i = 0; i < corners; ++i)
                if (detail_.vertexPoint(vertexOf(i)) < 0)
                    return;
            visit(corners, vertexOf);
        });
    }

private:
    template <class Visit> void forEachOfType(Visit &&visit) const
    {
        switch (detail_.typeOf(primitive_))
        {
        case ELM_PRIMITIVE_TRIANGLE_FAN:
            return FanFaces(detail_, primitive_).forEach(visit);
        case ELM_PRIMITIVE_TRIANGLE_STRIP:
            return StripFaces(detail_, primitive_).forEach(visit);
        case ELM_PRIMITIVE_SOUP:
            return SoupFaces(detail_, primitive_).forEach(visit);
        default:
            return GridFaces(detail_, primitive_).forEach(visit);
        }
    }

    const MSH_Detail &detail_;
    ELM_Offset primitive_;
    bool complete_;
};
}  // namespace rq
