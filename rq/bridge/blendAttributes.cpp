#include <rq/bridge/detail/blendAttributes.h>

#include <rq/bridge/detail/blobShares.h>
#include <rq/data/DANumeric.h>

namespace
{
/// One attribute, of the blobs and of the points.
struct Blend
{
    rq::Values<float> from;
    BAS_IntrusivePtr<RQ_DANumeric<float>> to;

    void clear(int64_t point) const
    {
        const int64_t size = to->getTupleSize();
        std::fill_n(to->data() + size * point, size, 0.0f);
    }
    void add(int64_t point, int64_t blob, double share) const
    {
        const int64_t size = to->getTupleSize();
        for (int64_t c = 0; c < size; ++c)
            to->data()[size * point + c] += float(share * double(from[size * blob + c]));
    }
};

bool isReal(const RQ_DataArray &array)
{
    const RQ_Storage storage = array.getStorage();
    return !array.hasArrayEntries() && array.getTupleSize() > 0 &&
           (storage == RQ_STORAGE_REAL16 || storage == RQ_STORAGE_REAL32 || storage == RQ_STORAGE_REAL64);
}
}  // namespace

RQ_AttributeListHandle rq::blendAttributes(const BlobField &field, const IsoSurface &surface,
                                           const RQ_AttributeListHandle &blobs)
{
    const RQ_AttributeMapHandle map(new RQ_AttributeMap);
    std::vector<Blend> blends;
    for (int i = 0; blobs && i < blobs->entries(); ++i)
        if (const RQ_DataArrayHandle &array = blobs->get(i); array && isReal(*array))
        {
            map->add(blobs->getName(i), true);
            blends.push_back({Values<float>(array), new RQ_DANumeric<float>(surface.pointEnds.back(), array->getTupleSize(),
                                                                            array->getTypeInfo())});
        }
    if (blends.empty())
        return nullptr;

    visitShares(field, surface, [&](int64_t point, const BAS_Vec3d &, const BlobShares &shares) {
        for (const Blend &blend : blends)
        {
            blend.clear(point);
            for (const auto &[blob, share] : shares)
                blend.add(point, blob, share);
        }
    });
    const RQ_AttributeListHandle list(new RQ_AttributeList(map, 1));
    for (size_t i = 0; i < blends.size(); ++i)
        list->set(int(i), blends[i].to, 0);
    return list;
}
