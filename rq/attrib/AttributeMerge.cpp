#include <rq/attrib/AttributeMerge.h>

RQ_AttributeMerge::RQ_AttributeMerge(const RQ_AttributeMapHandle &a, const RQ_AttributeMapHandle &b)
    : map(a ? new RQ_AttributeMap(*a) : new RQ_AttributeMap)
{
    for (int i = 0; i < map->entries(); ++i)
    {
        first.push_back(i);
        second.push_back(b ? b->get(map->getName(i)) : -1);
    }
    for (int i = 0; b && i < b->entries(); ++i)
    {
        const int index = map->add(b->getName(i), false);
        if (index < 0)
            continue;
        map->setOriginalOwner(index, b->getOriginalOwner(i));
        map->addExportName(index, b->getExportName(i));
        first.push_back(-1);
        second.push_back(i);
    }
}
