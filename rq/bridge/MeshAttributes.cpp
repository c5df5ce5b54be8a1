#include <rq/bridge/detail/MeshAttributes.h>

#include <algorithm>

#include <host/bas/Diagnostics.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DANumeric.h>
#include <rq/data/DASubArray.h>
#include <rq/data/mixId.h>

namespace
{
ELM_Offset largest(const RQ_MSHOffsetList &offsets)
{
    ELM_Offset most = -1;
    for (int64_t i = offsets.monotonic() ? std::max<int64_t>(0, offsets.entries() - 1) : 0; i < offsets.entries(); ++i)
        most = std::max(most, offsets[i]);
    return most;
}

/// The entries of an array that has one for each primitive of the detail; null when some primitive has none.
RQ_DataArrayHandle entriesAt(const RQ_DataArrayHandle &array, const RQ_MSHOffsetList &primitives)
{
    if (largest(primitives) >= array->entries())
        return nullptr;
    if (primitives.isTrivial())
        return RQ_DASubArray::createSubArray(array, primitives.offsetList().start(), primitives.entries());
    const RQ_DataArrayHandle view = RQ_DAIndirect::createIndirect(array, primitives.allocateArray());
    // Made again of the same entries it is the same.
    view->setDataId(rq::validId(RQmixId(uint64_t(array->getDataId())) + RQmixId(primitives.hash())));
    return view;
}

/// A table as the one entry of a detail attribute.
RQ_DataArrayHandle asOneEntry(const RQ_DataArrayHandle &table)
{
    const int64_t values = table->entries() * table->getTupleSize();
    if (table->entries() == 1 || values < 1 || !RQisNumeric(table->getStorage()) || table->hasArrayEntries())
        return table->entries() == 1 ? table : nullptr;
    RQ_DataArrayHandle entry;
    rq::dispatchStorage(table->getStorage(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        const BAS_IntrusivePtr<RQ_DANumeric<T>> copy(new RQ_DANumeric<T>(1, int(values), table->getTypeInfo()));
        table->fillArray(copy->data(), 0, table->entries());
        copy->setDataId(table->getDataId());
        entry = copy;
    });
    return entry;
}

RQ_AttributeListHandle with(const RQ_AttributeListHandle &list, const char *name, const RQ_DataArrayHandle &array)
{
    if (!array)
    {
        BAS_Diagnostics::warn("an array of materials does not fit the detail and is left out");
        return list;
    }
    const RQ_AttributeListHandle base = list ? list : RQ_AttributeListHandle(new RQ_AttributeList(new RQ_AttributeMap));
    return base->addAttribute(name, array, true);
}
}  // namespace

bool rq::MeshAttributes::Filter::isValid(const ELM_Attribute &attribute) const
{
    return RQ_MSHViewportAttributeFilter::isValid(attribute) && (!callers_ || callers_->isValid(attribute));
}

rq::MeshAttributes::MeshAttributes(const RQ_MSHDetailList &details, const RQ_RefineParms *parms)
    : details_(details), parms_(parms)
{
    if (!parms || !parms->getPackedViewportLOD())
        return;
    filter_.emplace(parms->getAttributeFilter());
    filter_->setHandledAttribs(std::initializer_list<BAS_StringHolder>{kMaterialName, kMaterialRemapName});
}

RQ_AttributeListHandle rq::MeshAttributes::ofPoints(const RQ_MSHOffsetList &points) const
{
    return details_.getPointAttributes(filter(), points, parms_);
}

RQ_AttributeListHandle rq::MeshAttributes::ofVertices(const RQ_MSHOffsetList &vertices, RQ_MSHIncludePoint point) const
{
    return details_.getVertexAttributes(filter(), vertices, parms_, point);
}

RQ_AttributeListHandle rq::MeshAttributes::ofPrimitives(const RQ_MSHOffsetList &primitives) const
{
    const RQ_AttributeListHandle list = details_.getPrimitiveAttributes(filter(), primitives, parms_);
    const RQ_DataArrayHandle material = parms_ ? parms_->getViewportMaterialAttrib() : nullptr;
    return material ? with(list, kMaterialName, entriesAt(material, primitives)) : list;
}

RQ_AttributeListHandle rq::MeshAttributes::ofDetail() const
{
    const RQ_AttributeListHandle list = details_.getDetailAttributes(filter(), parms_);
    const RQ_DataArrayHandle remap = parms_ ? parms_->getViewportMaterialRemapAttrib() : nullptr;
    return remap ? with(list, kMaterialRemapName, asOneEntry(remap)) : list;
}
