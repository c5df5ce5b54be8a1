#pragma once

#include <rq/data/DataArray.h>

namespace rq
{
/// The class that a description of the array names: its own when that can be loaded, else, for views and computed values,
/// the class that would own such values.
const char *savedClass(const RQ_DataArray &array);
}  // namespace rq
