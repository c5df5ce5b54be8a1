#include <rq/data/Positions.h>

namespace rq
{
Positions::Positions(const RQ_DataArray &array)
{
    const RQ_Storage storage = array.getStorage();
    if (!RQisNumeric(storage) || array.getTupleSize() < 3)
        return;
    // 32- and 64-bit integers need the precision.
    if (storage == RQ_STORAGE_REAL64 || storage == RQ_STORAGE_INT32 || storage == RQ_STORAGE_INT64)
        doubles_ = array.getF64Array(buffer_);
    else
        singles_ = array.getF32Array(buffer_);
    entries_ = array.entries();
    tupleSize_ = array.getTupleSize();
    homogeneous_ = array.getTypeInfo() == RQ_TYPE_HPOINT && tupleSize_ > 3;
}

Positions::Positions(const RQ_DataArrayHandle &array)
{
    if (array)
        *this = Positions(*array);
}
}  // namespace rq
