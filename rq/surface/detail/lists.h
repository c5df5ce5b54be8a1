#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>
#include <vector>

#include <fmt/format.h>

#include <rq/attrib/AttributeMerge.h>
#include <rq/prim/Primitive.h>

// What primitives do alike with the attribute lists that they hold.

namespace rq
{
using Lists = std::initializer_list<const RQ_AttributeListHandle *>;

/// The length of the first array that is there.
inline int64_t entriesOf(const RQ_AttributeListHandle &list)
{
    for (int i = 0; list && i < list->entries(); ++i)
        if (const RQ_DataArrayHandle &array = list->get(i, 0))
            return array->entries();
    return 0;
}

/// The most segments of the primitive's transform and its lists.
inline int motionSegments(const RQ_Primitive &primitive, Lists lists)
{
    const RQ_TransformHandle &transform = primitive.getPrimitiveTransform();
    int segments = transform ? std::max(1, transform->getSegments()) : 1;
    for (const RQ_AttributeListHandle *list : lists)
        if (*list)
            segments = std::max(segments, (*list)->getSegments());
    return segments;
}

inline int64_t memoryUsage(Lists lists)
{
    int64_t bytes = 0;
    for (const RQ_AttributeListHandle *list : lists)
        if (*list)
            bytes += (*list)->getMemoryUsage();
    return bytes;
}

/// Make every list own its values; other primitives may share the lists that were there.
inline void hardenLists(std::initializer_list<RQ_AttributeListHandle *> lists)
{
    for (RQ_AttributeListHandle *list : lists)
        if (*list)
        {
            const RQ_AttributeListHandle copy(new RQ_AttributeList(**list));
            copy->harden();
            *list = copy;
        }
}

/// The first array of a list that does not have the length that its owner asks for, as a message; empty when there is none.
inline std::string checkLengths(const char *owner, const RQ_AttributeListHandle &list, int64_t expected)
{
    if (list)
        for (int segment = 0; segment < list->getSegments(); ++segment)
            for (int i = 0; i < list->entries(); ++i)
                if (const RQ_DataArrayHandle &array = list->get(i, segment); array && array->entries() != expected)
                    return fmt::format("{} attribute {} has {} entries, expected {}", owner, list->getName(i).view(),
                                       array->entries(), expected);
    return {};
}

/// The lists of something that control vertices shape, merged with those of another primitive: the pattern for points
/// chooses vertex attributes too.
struct MergedLists
{
    MergedLists(const RQ_Primitive &own, const RQ_Primitive &source, const BAS_StringMMPattern *vertexPattern,
                const BAS_StringMMPattern *pointPattern, const BAS_StringMMPattern *uniformPattern,
                const BAS_StringMMPattern *detailPattern)
    {
        vertex = RQ_Primitive::mergeAttributeLists(changed, own.getVertexAttributes(), source.getVertexAttributes(),
                                                   vertexPattern, pointPattern);
        uniform = RQ_Primitive::mergeAttributeLists(changed, own.getUniformAttributes(), source.getUniformAttributes(),
                                                    uniformPattern, nullptr);
        detail = RQ_Primitive::mergeAttributeLists(changed, own.getDetailAttributes(), source.getDetailAttributes(),
                                                   detailPattern, nullptr);
    }

    bool changed = false;
    RQ_AttributeListHandle vertex, uniform, detail;
};

/// Enlarge boxes by what `enlarge(boxes)` puts into empty ones, its sides moved out by the largest width.
template <class Enlarge>
void enlargeWithWidths(const RQ_Primitive &primitive, BAS_BoundingBox *boxes, int segments, Enlarge &&enlarge)
{
    // Widths move the sides of this primitive's box, not of what the caller's boxes hold already.
    std::vector<BAS_BoundingBox> own(size_t(std::max(segments, 0)));
    enlarge(own.data());
    const std::vector<BAS_BoundingBox> positions = own;
    primitive.enlargeWidth(own.data(), segments, 0.0f);
    for (int segment = 0; segment < segments; ++segment)
        if (!positions[size_t(segment)].isEmpty())
            boxes[segment].enlarge(own[size_t(segment)]);
}

/// The attributes that `merge` pairs, each from the first list where that has it and else from the second.
template <class FromFirst, class FromSecond>
RQ_AttributeListHandle mergedList(const RQ_AttributeMerge &merge, const RQ_AttributeListHandle &first,
                                  const RQ_AttributeListHandle &second, FromFirst &&fromFirst, FromSecond &&fromSecond)
{
    const int segments = std::max(first ? first->getSegments() : 1, second ? second->getSegments() : 1);
    RQ_AttributeListHandle list(new RQ_AttributeList(merge.map, segments));
    for (int segment = 0; segment < segments; ++segment)
        for (int i = 0; i < list->entries(); ++i)
        {
            if (const int own = merge.first[size_t(i)]; own >= 0 && first->get(own, segment))
                list->set(i, fromFirst(first->get(own, segment)), segment);
            else if (const int other = merge.second[size_t(i)]; other >= 0 && second->get(other, segment))
                list->set(i, fromSecond(second->get(other, segment)), segment);
        }
    return list;
}
}  // namespace rq
