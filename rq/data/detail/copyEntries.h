#pragma once

#include <rq/data/DataArray.h>

namespace rq
{
/// Make an owning array of arrays, with the data id of `array`, whose entries are arrays.
RQ_DataArrayHandle copyEntries(const RQ_DataArray &array);
}  // namespace rq
