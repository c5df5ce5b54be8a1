#pragma once

#include <rq/surface/Basis.h>
#include <rq/surface/detail/levelOptions.h>

namespace rq
{
/// The straight pieces of a span where nobody asks for another number, before the option "lod".
constexpr double kSegmentsPerSpan = 20.0;

/// Linear curves are drawn as they are, all others as finely as the level of detail asks for.
inline const RQ_ViewportRefineOptions &curveRefineOptions(RQ_Basis basis)
{
    static const RQ_ViewportRefineOptions linear;
    return basis == RQ_BASIS_LINEAR ? linear : levelRefineOptions();
}
}  // namespace rq
