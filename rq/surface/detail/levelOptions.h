#pragma once

#include <rq/prim/ViewportRefineOptions.h>

namespace rq
{
/// The options of everything that is divided as finely as the level of detail asks for.
inline const RQ_ViewportRefineOptions &levelRefineOptions()
{
    static const RQ_ViewportRefineOptions changing = [] {
        RQ_ViewportRefineOptions options;
        options.setChangesWithLOD(true);
        return options;
    }();
    return changing;
}
}  // namespace rq
