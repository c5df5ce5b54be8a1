#include <rq/data/HostBound.h>

#include <rq/data/DAInherit.h>
#include <rq/data/DAList.h>

void rq::findHostBound(const RQ_DataArray &array, std::vector<const HostBound *> &found)
{
    if (const auto *bound = dynamic_cast<const HostBound *>(&array))
        found.push_back(bound);
    else if (const auto *view = dynamic_cast<const RQ_DAInherit *>(&array); view && view->source())
        findHostBound(*view->source(), found);
    else if (const auto *list = dynamic_cast<const RQ_DAList *>(&array))
        for (const RQ_DataArrayHandle &part : list->parts())
            findHostBound(*part, found);
}
