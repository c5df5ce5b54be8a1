#include <rq/bridge/MSHAttributeFilter.h>

RQ_MSHAttributeFilter::~RQ_MSHAttributeFilter() = default;

bool RQ_MSHAttributeFilter::isValid(const ELM_Attribute &attribute) const
{
    // Every kind of value has a reader.
    return attribute.scope() == ELM_SCOPE_PUBLIC;
}

bool RQ_MSHViewportAttributeFilter::isValid(const ELM_Attribute &attribute) const
{
    return !handled_.count(attribute.name()) && RQ_MSHAttributeFilter::isValid(attribute);
}

bool RQ_MSHStdKelAttributeFilter::isValid(const ELM_Attribute &attribute) const
{
    const int size = attribute.tupleSize();
    return attribute.scope() == ELM_SCOPE_PUBLIC && !attribute.hasArrays() &&
           attribute.storageClass() == ELM_STORAGE_CLASS_FLOAT &&
           (size == 1 || size == 3 || size == 4 || size == 9 || size == 16);
}

bool RQ_MSHQuadricAttributeFilter::isValid(const ELM_Attribute &attribute) const
{
    return &attribute != first_ && &attribute != second_ && RQ_MSHAttributeFilter::isValid(attribute);
}
