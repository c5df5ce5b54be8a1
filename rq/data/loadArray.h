#pragma once

#include <string>

#include <rq/data/DataArray.h>

class BAS_JSONValue;

namespace rq
{
/// Make the array that `RQ_DataArray::save` described.
///
/// Shape    of the class named there, with equal values: floats have the same bits (not-a-number the usual ones), and saving
///          it again writes the same text.  Dictionaries do not tell whole floats from integers, so those load as integers
/// Failure  a null handle with "values[3][0]: expected ..." or the like in `error`; a number that does not fit its
///          storage is an error
/// Threads  safe from any thread
RQ_API RQ_DataArrayHandle loadArray(const BAS_JSONValue &value, std::string &error);
}  // namespace rq
