#pragma once

#include <utility>
#include <vector>

#include <rq/attrib/AttributeList.h>
#include <tests/rq/data/arrays.h>

// What the tests of attribute lists share.

inline RQ_AttributeMapHandle mapOf(const std::vector<const char *> &names)
{
    RQ_AttributeMapHandle map(new RQ_AttributeMap);
    for (const char *name : names)
        map->add(name, false);
    return map;
}

/// The same arrays in every segment.
inline RQ_AttributeListHandle listOf(const std::vector<std::pair<const char *, RQ_DataArrayHandle>> &attributes,
                                     int segments = 1)
{
    std::vector<const char *> names;
    for (const auto &[name, array] : attributes)
        names.push_back(name);
    const RQ_AttributeListHandle list(new RQ_AttributeList(mapOf(names), segments));
    for (int i = 0; i < list->entries(); ++i)
        list->setAllSegments(i, attributes[size_t(i)].second);
    return list;
}

/// "P" with 4 entries of 3 components, and "width".
inline RQ_AttributeListHandle sampleList()
{
    return listOf({{"P", countingArray<float>(4, 3)}, {"width", makeArray<float>({100, 101, 102, 103})}});
}
