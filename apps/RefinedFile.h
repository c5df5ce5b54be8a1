#pragma once

#include <string>
#include <vector>

#include <apps/CommonOptions.h>
#include <apps/ExitCode.h>
#include <host/mod/DetailHandle.h>
#include <rq/prim/Primitive.h>

namespace rq::app
{
/// A primitive that one refinement of a file gives.
struct RefinedPrimitive
{
    RQ_PrimitiveHandle primitive;
    int depth = 0;  ///< how many collections it lay in
};

/// A file as the library sees it: the host's detail, and what it refines to, collections opened.
struct RefinedFile
{
    std::string file;
    MOD_ConstDetailHandle detail;
    std::vector<RefinedPrimitive> primitives;
    double loadSeconds = 0;
    double refineSeconds = 0;
};

/// Load a file, without refining it.  What the reader has to say goes to standard error.
ExitCode loadFile(const std::string &file, RefinedFile &refined);

/// Refine a primitive once and cut faces as the options ask.
void refinePrimitive(const RQ_Primitive &primitive, const CommonOptions &options, const RQ_RefineParms &parms,
                     RefinedFile &refined);

/// Load a file, refine it once and cut its faces as the options ask.  What the reader has to say goes to standard error.
ExitCode refineFile(const std::string &file, const CommonOptions &options, const RQ_RefineParms &parms,
                    RefinedFile &refined);
}  // namespace rq::app
