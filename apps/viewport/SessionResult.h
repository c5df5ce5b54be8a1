#pragma once

#include <memory>
#include <string>
#include <vector>

#include <apps/viewport/Scene.h>
#include <host/mod/DetailHandle.h>
#include <rq/bridge/RefineCache.h>
#include <rq/prim/RefineParms.h>

namespace rq::viewport
{
/// A primitive that the bridge emitted.
struct Emitted
{
    RQ_PrimitiveHandle primitive;
    RQ_PrimitiveHandle shown;  ///< what is drawn of it: mostly itself
    int file = 0;              ///< which of the result's files it comes from
    int depth = 0;             ///< how many collections it lay in
};

/// One state of a session, complete: what is there to draw, where it comes from and what it cost.
///
/// Threads  immutable once handed over
struct SessionResult
{
    std::vector<std::string> files;
    std::vector<MOD_ConstDetailHandle> details;  ///< one a file
    int frame = 0;
    std::vector<Emitted> emitted;
    SceneHandle scene;  ///< shows the emitted primitives, in their order
    RQ_RefineParms parms;
    Preparation preparation;
    std::string warnings;  ///< what readers had to say, a line each

    double loadSeconds = 0.0;
    double refineSeconds = 0.0;      ///< until the scene is ready to draw
    int64_t primitivesRefined = 0;   ///< of those emitted, how many were made or refined for this result
    RQ_RefineCache::Work cacheWork;  ///< what the cache had to make since the session began
    int64_t cacheBytes = 0;
};

using ResultHandle = std::shared_ptr<const SessionResult>;
}  // namespace rq::viewport
