#pragma once

#include <opensubdiv/far/patchMap.h>
#include <opensubdiv/far/patchTable.h>
#include <opensubdiv/far/stencilTable.h>

#include <rq/subd/detail/osd.h>
#include <rq/subd/detail/patchTables.h>

/// Patches as OpenSubdiv makes them, and beside them what the regular ones need at hand.
struct rq::PatchTables::Osd
{
    /// A bicubic B-spline patch of 16 control points.
    struct Regular
    {
        int32_t controls;    // its first entry in the table of control points; -1 when the patch is of another kind
        uint16_t u, v;       // where it begins, in steps of its own size
        uint8_t depth;       // its size is 1 / 2^depth
        uint8_t boundaries;  // bits for v = 0, u = 1, v = 1, u = 0: its outer control points are mirrored
    };

    std::unique_ptr<const Far::PatchTable> table;
    std::unique_ptr<const Far::PatchMap> map;
    std::unique_ptr<const Far::StencilTable> stencils;  // of all control points behind the cage's; null without any
    std::vector<Regular> regular;                       // of each patch
    std::vector<int32_t> whole;                         // of each face the one regular patch that covers it, or -1
    int32_t cagePoints = 0;
    bool varying = false;  // of face-varying values: nothing is known of the regular ones
};
