#pragma once

#include <vector>

#include <rq/prim/RefineParms.h>

namespace rq::viewport
{
/// The value of every option, in the order of `RQ_RefineParms::options`, each of the type of its default.
std::vector<BAS_Options::Value> optionValues(const RQ_RefineParms &parms);

/// Set an option by its key.
void setOption(RQ_RefineParms &parms, const RQ_RefineOption &option, const BAS_Options::Value &value);
}  // namespace rq::viewport
