#pragma once

#include <initializer_list>

#include <rq/data/DataArray.h>
#include <rq/data/mixId.h>

namespace rq
{
/// The operations of lists that make arrays from arrays.
enum class View : uint64_t
{
    INDIRECT = 1,
    WINDOW,
    CONSTANT,
    LIST,
    PARAMETRIC,
    ZEROS,
    CONVERTED,
    TRANSFORMED
};

/// Chain the arguments of an operation; their order counts.
inline uint64_t viewKey(View view, std::initializer_list<uint64_t> arguments)
{
    uint64_t key = uint64_t(view);
    for (const uint64_t argument : arguments)
        key = RQmixId(key) + argument;
    return RQmixId(key);
}

/// True for an array that was made just now: nobody else holds it yet.
inline bool isFresh(const RQ_DataArrayHandle &array) { return array && array->use_count() == 1; }

/// Give a fresh array the id that stands for "this operation on this source": caches then recognise it when it is made again
/// from the same inputs.  Without an id in the source there is none here either.  An array that others hold, such as the
/// source itself, keeps its own.
inline void setViewId(const RQ_DataArrayHandle &result, const RQ_DataArrayHandle &source, uint64_t key)
{
    if (isFresh(result))
        result->setDataId(source->getDataId() == -1 ? -1 : validId(RQmixId(uint64_t(source->getDataId())) + key));
}
}  // namespace rq
