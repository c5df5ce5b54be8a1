#include <host/bas/StringMMPattern.h>
#include <rq/prim/Primitive.h>

namespace
{
bool matches(const BAS_StringMMPattern *pattern, const BAS_StringHolder &name)
{
    return pattern && pattern->matches(name.view());
}

// The length of the first array that is there, -1 when there is none.
int64_t lengthOf(const RQ_AttributeListHandle &list)
{
    for (int i = 0; list && i < list->entries(); ++i)
        if (const RQ_DataArrayHandle &array = list->get(i, 0))
            return array->entries();
    return -1;
}
}  // namespace

RQ_AttributeListHandle RQ_Primitive::mergeAttributeLists(bool &changed, const RQ_AttributeListHandle &destination,
                                                         const RQ_AttributeListHandle &source,
                                                         const BAS_StringMMPattern *first, const BAS_StringMMPattern *second)
{
    RQ_AttributeListHandle result = destination;
    if (!source)
        return result;

    const int segments = source->getSegments();
    int64_t length = lengthOf(destination);
    BAS_Array<RQ_DataArrayHandle> arrays(static_cast<size_t>(segments));
    for (int i = 0; i < source->entries(); ++i)
    {
        const BAS_StringHolder &name = source->getName(i);
        const RQ_DataArrayHandle &array = source->get(i, 0);
        if (!array || (!matches(first, name) && !matches(second, name)))
            continue;
        if (length != -1 && array->entries() != length)
            continue;
        if (!result)
        {
            result = new RQ_AttributeList(new RQ_AttributeMap, segments);
            length = array->entries();
        }
        for (int s = 0; s < segments; ++s)
            arrays[size_t(s)] = source->get(i, s);
        result = result->addAttribute(name, arrays.data(), segments, true);
        changed = true;
    }
    return result;
}
