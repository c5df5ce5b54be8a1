#include <apps/offline/ElementValues.h>

#include <algorithm>

namespace rq::offline
{
ElementValues::ElementValues(const RQ_Primitive &primitive, std::initializer_list<const char *> names, int components,
                             int segment)
{
    for (const char *name : names)
        if (const RQ_DataArrayHandle &array = primitive.findAttribute(name, owner_, segment);
            array && array->getTupleSize() >= components && array->getStorage() < RQ_STORAGE_STRING)
        {
            values_ = Values<float>(array);
            return;
        }
}

BAS_Vec3f ElementValues::tripleAt(const Element &element) const
{
    const int64_t at = element.entry(owner_);
    BAS_Vec3f triple(0.0f);
    for (int i = 0; i < std::min(3, components()); ++i)
        triple[i] = values_(at, i);
    return triple;
}

BAS_Vec3f ElementValues::tripleAt(const Place &place) const
{
    BAS_Vec3f sum(0.0f);
    for (int i = 0; i < place.count; ++i)
        sum += tripleAt(place.elements[i]) * place.weights[i];
    return sum;
}
}  // namespace rq::offline
