#include <rq/attrib/AttributeBuilder.h>

#include <algorithm>
#include <cinttypes>

#include <rq/data/DAIndexedText.h>
#include <rq/data/DANumeric.h>
#include <rq/data/convert.h>

RQ_AttributeBuilder::RQ_AttributeBuilder(RQ_BuilderStatus &status) : status_(status) {}

bool RQ_AttributeBuilder::parse(const char *declaration, Declared &declared)
{
    if (!guessTypeInformation(status_, declaration, declared.name, declared.owner, declared.storage, declared.type,
                              declared.tupleSize))
        return false;
    if (declared.owner == RQ_OWNER_INVALID)
        status_.addError("Unknown binding when parsing '%s'", declaration);
    return declared.owner != RQ_OWNER_INVALID;
}

bool RQ_AttributeBuilder::checkCount(const char *declaration, const Declared &declared, const void *values, int64_t count)
{
    const bool good = count >= 0 && count % declared.tupleSize == 0 && (values || count == 0);
    if (!good)
        status_.addError("'%s' needs values in groups of %d, not %" PRId64, declaration, declared.tupleSize,
                         values ? count : 0);
    return good;
}

bool RQ_AttributeBuilder::addNumbers(const char *declaration, const void *values, RQ_Storage storage, int64_t count,
                                     int segment)
{
    Declared declared;
    if (!parse(declaration, declared) || !checkCount(declaration, declared, values, count))
        return false;
    RQ_DataArrayHandle array;
    rq::dispatchStorage(declared.storage, [&](auto tag) {
        using T = typename decltype(tag)::type;
        const BAS_IntrusivePtr<RQ_DANumeric<T>> numbers(
            new RQ_DANumeric<T>(count / declared.tupleSize, declared.tupleSize, declared.type));
        rq::convertValues(values, storage, numbers->data(), declared.storage, count);
        array = numbers;
    });
    if (!array)
        status_.addError("'%s' cannot hold numbers", declaration);
    return array && addArray(declaration, declared, array, segment);
}

bool RQ_AttributeBuilder::add(const char *declaration, const BAS_StringHolder *values, int64_t count, int segment)
{
    Declared declared;
    if (!parse(declaration, declared) || !checkCount(declaration, declared, values, count))
        return false;
    if (declared.storage != RQ_STORAGE_STRING)
    {
        status_.addError("'%s' cannot hold text", declaration);
        return false;
    }
    return addArray(declaration, declared,
                    RQ_DAIndexedString::createIndexed(values, count / declared.tupleSize, declared.tupleSize, declared.type),
                    segment);
}

bool RQ_AttributeBuilder::add(const char *declaration, const RQ_DataArrayHandle &array, int segment)
{
    Declared declared;
    if (!parse(declaration, declared))
        return false;
    if (!array || array->getStorage() != declared.storage || array->getTupleSize() != declared.tupleSize ||
        array->getTypeInfo() != declared.type)
    {
        status_.addError("'%s' does not describe its array", declaration);
        return false;
    }
    return addArray(declaration, declared, array, segment);
}

bool RQ_AttributeBuilder::addArray(const char *declaration, const Declared &declared, const RQ_DataArrayHandle &array,
                                   int segment)
{
    BAS_Array<Attribute> &attributes = attributes_[declared.owner];
    const int64_t expected = declared.owner == RQ_OWNER_DETAIL ? 1
                             : attributes.empty()              ? array->entries()
                                                               : attributes.front().segments.front()->entries();
    if (array->entries() != expected)
    {
        status_.addError("'%s' needs %" PRId64 " entries, not %" PRId64, declaration, expected, array->entries());
        return false;
    }
    auto attribute = std::find_if(attributes.begin(), attributes.end(),
                                  [&](const Attribute &other) { return other.name == declared.name; });
    const bool isNew = attribute == attributes.end();
    if (segment != (isNew ? 0 : int(attribute->segments.size())))
    {
        status_.addError("'%s' is out of order or added twice: segment %d", declaration, segment);
        return false;
    }
    if (isNew)
        attribute = attributes.insert(attribute, Attribute{declared.name, {}});
    const RQ_DataArrayHandle &first = isNew ? array : attribute->segments.front();
    if (first->getStorage() != array->getStorage() || first->getTupleSize() != array->getTupleSize() ||
        first->getTypeInfo() != array->getTypeInfo())
    {
        status_.addError("'%s' differs from its first segment", declaration);
        return false;
    }
    attribute->segments.push_back(array);
    return true;
}

RQ_AttributeListHandle RQ_AttributeBuilder::build(RQ_Owner owner) const
{
    if (owner < RQ_OWNER_VERTEX || owner > RQ_OWNER_DETAIL || attributes_[owner].empty())
        return {};
    const RQ_AttributeMapHandle map(new RQ_AttributeMap);
    int segments = 1;
    for (const Attribute &attribute : attributes_[owner])
    {
        map->setOriginalOwner(map->add(attribute.name, false), owner);
        segments = std::max(segments, int(attribute.segments.size()));
    }
    const RQ_AttributeListHandle list(new RQ_AttributeList(map, segments));
    for (int i = 0; i < list->entries(); ++i)
    {
        const BAS_Array<RQ_DataArrayHandle> &arrays = attributes_[owner][size_t(i)].segments;
        for (int segment = 0; segment < segments; ++segment)
            list->set(i, arrays[std::min(size_t(segment), arrays.size() - 1)], segment);
    }
    return list;
}
