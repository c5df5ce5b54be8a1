#include <host/elm/AttributeDict.h>

#include <algorithm>

int64_t ELM_AttributeDict::place(ELM_Scope scope, std::string_view name) const
{
    const auto found = std::find_if(attributes_.begin(), attributes_.end(), [&](const ELM_AttributeHandle &attribute) {
        return attribute->scope() == scope && attribute->name().view() == name;
    });
    return found == attributes_.end() ? -1 : found - attributes_.begin();
}

const ELM_Attribute *ELM_AttributeDict::find(ELM_Scope scope, std::string_view name) const
{
    const int64_t at = place(scope, name);
    return at < 0 ? nullptr : attributes_[size_t(at)].get();
}

bool ELM_AttributeDict::holds(const ELM_Attribute &attribute) const
{
    return find(attribute.scope(), attribute.name().view()) == &attribute;
}

ELM_Attribute *ELM_AttributeDict::insert(ELM_AttributeHandle attribute)
{
    const int64_t at = place(attribute->scope(), attribute->name().view());
    ELM_AttributeHandle &slot = at < 0 ? attributes_.emplace_back() : attributes_[size_t(at)];
    slot = std::move(attribute);
    return slot.get();
}

bool ELM_AttributeDict::remove(ELM_Scope scope, std::string_view name)
{
    const int64_t at = place(scope, name);
    if (at >= 0)
        attributes_.erase(attributes_.begin() + at);
    return at >= 0;
}

ELM_Attribute *ELM_AttributeDict::writable(ELM_Scope scope, std::string_view name)
{
    const int64_t at = place(scope, name);
    return at < 0 ? nullptr : writable(at);
}

ELM_Attribute *ELM_AttributeDict::writable(int64_t i)
{
    ELM_AttributeHandle &attribute = attributes_[size_t(i)];
    if (attribute->use_count() > 1)
        attribute = attribute->clone();
    return attribute.get();
}
