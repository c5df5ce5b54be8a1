#include <host/mod/Edit.h>

#include <fmt/format.h>

/// What the values of an attribute are.
struct MOD_Edit::Shape
{
    ELM_Storage storage;
    int tupleSize;
    ELM_TypeInfo typeInfo;
    bool isArray;

    bool is(const ELM_Attribute &attribute) const
    {
        return attribute.storage() == storage && attribute.tupleSize() == tupleSize && attribute.typeInfo() == typeInfo &&
               attribute.hasArrays() == isArray;
    }
};

bool MOD_Edit::isAttribute(ELM_Owner owner, std::string_view name, ELM_Storage storage, int tupleSize)
{
    if (owner < ELM_OWNER_VERTEX || owner > ELM_OWNER_DETAIL)
        return fail(fmt::format("{} is no owner of attributes", int(owner)));
    if (name.empty() || tupleSize < 1)
        return fail(fmt::format("attribute \"{}\" needs a name and a tuple size of at least 1, not {}", name, tupleSize));
    if (owner == ELM_OWNER_POINT && name == ELM_POSITION_NAME &&
        (ELMstorageClass(storage) != ELM_STORAGE_CLASS_FLOAT || tupleSize != 3))
        return fail(fmt::format("\"{}\" needs floating-point values, 3 a point", name));
    return true;
}

ELM_Attribute *MOD_Edit::writable(ELM_Owner owner, ELM_Scope scope, std::string_view name, const Shape &shape)
{
    ELM_Attribute *result = nullptr;
    const auto make = [&] {
        ELM_AttributeDict &dict = data_.attributes[owner];
        const ELM_Attribute *known = dict.find(scope, name);
        if (known && shape.is(*known))
            result = touch(dict.writable(scope, name));
        else
        {
            touched_.erase(known);
            const auto create = shape.isArray ? ELM_Attribute::createArrays : ELM_Attribute::create;
            result = touch(dict.insert(create(owner, scope, BAS_StringHolder(name), shape.storage, shape.tupleSize,
                                              shape.typeInfo, capacity(owner))));
        }
        return true;
    };
    const bool isPosition = scope == ELM_SCOPE_PUBLIC && owner == ELM_OWNER_POINT && name == ELM_POSITION_NAME;
    if (isPosition && shape.isArray)
        fail(fmt::format("\"{}\" needs 3 numbers a point, not arrays", name));
    else if (isAttribute(owner, name, shape.storage, shape.tupleSize))
        attempt(make);
    return result;
}

ELM_Attribute *MOD_Edit::attribute(ELM_Owner owner, std::string_view name, ELM_Storage storage, int tupleSize,
                                   ELM_TypeInfo typeInfo, ELM_Scope scope)
{
    if (ELMisNumeric(storage))
        return writable(owner, scope, name, {storage, tupleSize, typeInfo, false});
    fail(fmt::format("attribute \"{}\" needs a numeric storage, not {}", name, int(storage)));
    return nullptr;
}

ELM_Attribute *MOD_Edit::stringAttribute(ELM_Owner owner, std::string_view name, int tupleSize, ELM_Scope scope)
{
    return writable(owner, scope, name, {ELM_STORAGE_STRING, tupleSize, ELM_TYPE_NONE, false});
}

ELM_Attribute *MOD_Edit::dictAttribute(ELM_Owner owner, std::string_view name, int tupleSize, ELM_Scope scope)
{
    return writable(owner, scope, name, {ELM_STORAGE_DICTIONARY, tupleSize, ELM_TYPE_NONE, false});
}

ELM_Attribute *MOD_Edit::arrayAttribute(ELM_Owner owner, std::string_view name, ELM_Storage storage, int tupleSize,
                                        ELM_TypeInfo typeInfo, ELM_Scope scope)
{
    if (ELMstorageClass(storage) != ELM_STORAGE_CLASS_INVALID)
        return writable(owner, scope, name, {storage, tupleSize, typeInfo, true});
    fail(fmt::format("attribute \"{}\" needs a storage, not {}", name, int(storage)));
    return nullptr;
}

ELM_Group *MOD_Edit::group(ELM_Owner owner, std::string_view name)
{
    ELM_Group *result = nullptr;
    if (owner < ELM_OWNER_VERTEX || owner >= ELM_ELEMENT_OWNERS || name.empty())
        fail(fmt::format("group \"{}\" of owner {} needs a name and elements", name, int(owner)));
    else
        attempt([&] {
            result = data_.groups[owner].writable(owner, BAS_StringHolder(name));
            changed_ = true;
            return true;
        });
    return result;
}

bool MOD_Edit::removeAttribute(ELM_Owner owner, std::string_view name, ELM_Scope scope)
{
    const ELM_Attribute *known =
        owner < ELM_OWNER_VERTEX || owner > ELM_OWNER_DETAIL ? nullptr : data_.attributes[owner].find(scope, name);
    if (!known)
        return fail(fmt::format("there is no attribute \"{}\"", name));
    if (owner == ELM_OWNER_POINT && scope == ELM_SCOPE_PUBLIC && name == ELM_POSITION_NAME)
        return fail(fmt::format("every detail has \"{}\"", name));
    return attempt([&] {
        touched_.erase(known);
        changed_ = true;
        return data_.attributes[owner].remove(scope, name);
    });
}

bool MOD_Edit::removeGroup(ELM_Owner owner, std::string_view name)
{
    if (owner < ELM_OWNER_VERTEX || owner >= ELM_ELEMENT_OWNERS || !data_.groups[owner].find(name))
        return fail(fmt::format("there is no group \"{}\"", name));
    return attempt([&] {
        changed_ = true;
        return data_.groups[owner].remove(name);
    });
}
