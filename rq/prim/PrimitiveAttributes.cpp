#include <initializer_list>

#include <rq/prim/Primitive.h>

namespace
{
// Where a primitive looks for an attribute when no owner is given.
constexpr RQ_Owner kSearchOrder[] = {RQ_OWNER_VERTEX, RQ_OWNER_POINT, RQ_OWNER_UNIFORM, RQ_OWNER_DETAIL};

const RQ_DataArrayHandle &lookUp(const RQ_AttributeListHandle &list, const BAS_StringHolder &name, int segment)
{
    static const RQ_DataArrayHandle none;
    return list ? list->get(name, segment) : none;
}
}  // namespace

const RQ_AttributeListHandle &RQ_Primitive::getAttributeList(int owner) const
{
    static const RQ_AttributeListHandle none;
    switch (owner)
    {
    case RQ_OWNER_VERTEX:
        return getVertexAttributes();
    case RQ_OWNER_POINT:
        return getPointAttributes();
    case RQ_OWNER_UNIFORM:
        return getUniformAttributes();
    case RQ_OWNER_DETAIL:
        return getDetailAttributes();
    default:
        return none;
    }
}

const RQ_DataArrayHandle &RQ_Primitive::findAttribute(const BAS_StringHolder &name, RQ_Owner &owner, int segment) const
{
    for (const RQ_Owner candidate : kSearchOrder)
    {
        owner = candidate;
        const RQ_DataArrayHandle &array = lookUp(getAttributeList(candidate), name, segment);
        if (array)
            return array;
    }
    return lookUp({}, name, segment);
}

bool RQ_Primitive::hasDataArray(const BAS_StringHolder &name, const RQ_Owner *owners, int count, RQ_Storage *storage,
                                int64_t *tupleSize) const
{
    for (int i = 0; i < count; ++i)
    {
        const RQ_DataArrayHandle &array = lookUp(getAttributeList(owners[i]), name, 0);
        if (!array)
            continue;
        if (storage)
            *storage = array->getStorage();
        if (tupleSize)
            *tupleSize = array->getTupleSize();
        return true;
    }
    return false;
}

void RQ_Primitive::getVelocityRange(BAS_Vec3f &minimum, BAS_Vec3f &maximum, const BAS_StringHolder &name) const
{
    RQ_Owner owner;
    const RQ_DataArrayHandle &velocity = findAttribute(name, owner, 0);
    // One velocity for the whole primitive is motion of the primitive, which its transform describes.
    const bool counts = velocity && owner != RQ_OWNER_DETAIL;
    computeVelocityRange(minimum, maximum, counts ? velocity : RQ_DataArrayHandle());
}

bool RQ_Primitive::computeVelocityRange(BAS_Vec3f &minimum, BAS_Vec3f &maximum, const RQ_DataArrayHandle &velocity)
{
    minimum = maximum = BAS_Vec3f(0.0f);
    if (!velocity || !RQisFloat(velocity->getStorage()))
        return false;
    for (int c = 0; c < 3 && c < velocity->getTupleSize(); ++c)
    {
        double low, high;
        velocity->getRange(low, high, c);
        minimum[c] = float(low);
        maximum[c] = float(high);
    }
    return true;
}

bool RQ_Primitive::getTopologyVersion(int64_t &version) const
{
    static const BAS_StringHolder kName = BAS_StringHolder::literal("__topology");
    const RQ_AttributeListHandle &detail = getDetailAttributes();
    if (!detail)
        return false;
    const RQ_DataArrayHandle &array = detail->get(kName, 0);
    if (!array || array->entries() < 1 || array->getI64(0, 0) == -1)
        return false;
    version = array->getI64(0, 0);
    return true;
}

bool RQ_Primitive::updateGeoPrim(const MOD_ConstDetailHandle &detail, const RQ_RefineParms &)
{
    for (const RQ_Owner owner : {RQ_OWNER_DETAIL, RQ_OWNER_UNIFORM, RQ_OWNER_POINT, RQ_OWNER_VERTEX})
        if (const RQ_AttributeListHandle &list = getAttributeList(owner))
            list->updateGeoDetail(detail, owner);
    return false;
}
