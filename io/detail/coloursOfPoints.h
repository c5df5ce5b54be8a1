#pragma once

#include <host/msh/Detail.h>
#include <rq/data/DataArray.h>

namespace rq::io
{
/// Colours of primitives as those of their points, which would hide them: where several meet, the last one counts.  White
/// where there is none.
RQ_DataArrayHandle coloursOfPoints(const MSH_Detail &detail, const ELM_Attribute &colours);
}  // namespace rq::io
