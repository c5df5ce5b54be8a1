#pragma once

#include <host/elm/Attribute.h>

namespace rq::io
{
/// Call `visit` with the values of an attribute in their own type: an `ELM_PageArray` of numbers, an `ELM_IndexedTuple`, or
/// an `ELM_ArrayTuple`.
template <class Attribute, class Visit> auto visitValues(Attribute &attribute, Visit &&visit)
{
    if (auto *numbers = attribute.numericTuple())
        return numbers->visit(visit);
    if (auto *arrays = attribute.numericArrays())
        return arrays->visit(visit);
    if (auto *strings = attribute.strings())
        return visit(*strings);
    if (auto *dicts = attribute.dicts())
        return visit(*dicts);
    if (auto *arrays = attribute.stringArrays())
        return visit(*arrays);
    return visit(*attribute.dictArrays());
}
}  // namespace rq::io
