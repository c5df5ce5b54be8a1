#include <rq/data/HostBound.h>

#include <typeinfo>

#include <rq/data/DAInherit.h>
#include <rq/data/DAList.h>

rq::HostBound::~HostBound() = default;

namespace
{
/// The array as one that reads a host, null when it is another.  Those are nearly always of one class: recognising it takes
/// a comparison, casting anew some 50 ns, which is much of re-binding a primitive.
const rq::HostBound *asHostBound(const RQ_DataArray &array)
{
    static thread_local const std::type_info *known = nullptr;
    if (&typeid(array) == known)
        return static_cast<const rq::HostBound *>(&array);
    const auto *bound = dynamic_cast<const rq::HostBound *>(&array);
    if (bound)
        known = &typeid(array);
    return bound;
}
}  // namespace

void rq::findHostBound(const RQ_DataArray &array, HostBoundArrays &found)
{
    if (const HostBound *bound = asHostBound(array))
        found.push_back(bound);
    else if (const auto *view = dynamic_cast<const RQ_DAInherit *>(&array); view && view->source())
        findHostBound(*view->source(), found);
    else if (const auto *list = dynamic_cast<const RQ_DAList *>(&array))
        for (const RQ_DataArrayHandle &part : list->parts())
            findHostBound(*part, found);
}
