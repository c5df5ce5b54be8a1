#pragma once

#include <string>
#include <vector>

#include <rq/prim/RefineParms.h>

namespace rq::app
{
/// What every subcommand that refines a file is told the same way.
struct CommonOptions
{
    std::vector<std::string> parms;  ///< refinement options, each KEY=VALUE
    int subdivide = -1;              ///< how often meshes are subdivided, -1 to leave them as they are
    std::string scheme;              ///< how: a name that `RQscheme` knows, empty for what each mesh says
    int convex = 0;                  ///< the most vertices of a face, 0 to leave faces as they are
    int threads = 0;                 ///< the most workers, 0 for as many as there are processors
};

/// Set the refinement options.  False with the reason in `error` when a key is not known or its value does not fit.
bool readParms(const CommonOptions &options, RQ_RefineParms &parms, std::string &error);
}  // namespace rq::app
