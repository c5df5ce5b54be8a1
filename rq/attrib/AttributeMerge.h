#pragma once

#include <rq/attrib/AttributeMap.h>

/// Pairs the attributes of two maps by name.
///
/// Shape    the names of the first map, then the new ones of the second; owners and export names come along, those of the
///          first where both have the name
/// Failure  a null map counts as an empty one
/// Threads  read-only once made, safe to read from any thread
struct RQ_API RQ_AttributeMerge
{
    RQ_AttributeMerge(const RQ_AttributeMapHandle &a, const RQ_AttributeMapHandle &b);

    RQ_AttributeMapHandle map;
    BAS_Array<int> first;   ///< for each merged name its number in the first map, -1 when absent
    BAS_Array<int> second;  ///< and in the second
};
