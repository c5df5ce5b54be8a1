#include <apps/offline/PackedInstances.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include <host/mod/PrimPacked.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/bridge/MSHPrimCollect.h>
#include <rq/prim/CompactTransformArray.h>
#include <rq/prim/PrimCollect.h>
#include <rq/prim/PrimInstance.h>

namespace rq::app
{
namespace
{
/// All primitives that place one detail.
struct Placements
{
    MOD_ConstDetailHandle detail;
    RQ_MSHOffsetList primitives;
    std::vector<BAS_Mat4d> matrices;  // of all segments of the first, then of the next
};

/// By the detail, in the order in which they are met.
struct Gathered final : RQ_MSHPrimCollectData
{
    std::vector<Placements> all;
    std::map<const MSH_Detail *, size_t> places;
    int segments = 1;
    int64_t lost = 0;
    std::string why;  // of the last that is lost
};

class Collector final : public RQ_MSHPrimCollect
{
public:
    RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &, const RQ_RefineParms *) const override
    {
        return new Gathered;
    }

    RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &, const MSH_Primitive *const *primitives, int segments,
                               RQ_MSHPrimCollectData *data) const override
    {
        auto &gathered = static_cast<Gathered &>(*data);
        const MOD_PrimPacked packed(*primitives[0]);
        const MOD_ConstDetailHandle detail = packed.isValid() ? packed.unpack(gathered.why) : MOD_ConstDetailHandle();
        if (!detail)
        {
            ++gathered.lost;
            return nullptr;
        }
        const auto [place, isNew] = gathered.places.try_emplace(detail.readLock(), gathered.all.size());
        if (isNew)
            gathered.all.push_back({detail, {}, {}});
        Placements &placements = gathered.all[place->second];
        placements.primitives.append(packed.offset());
        gathered.segments = segments;
        for (int segment = 0; segment < segments; ++segment)
            placements.matrices.push_back(MOD_PrimPacked(*primitives[segment]).fullTransform());
        return nullptr;
    }

    RQ_PrimitiveHandle endCollecting(const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data) const override
    {
        const auto &gathered = static_cast<const Gathered &>(*data);
        if (gathered.lost > 0)
            std::fprintf(stderr, "rq: warning: %lld packed primitives are not drawn: %s\n",
                         static_cast<long long>(gathered.lost), gathered.why.c_str());
        const BAS_IntrusivePtr<RQ_PrimCollect> collection(new RQ_PrimCollect);
        for (const Placements &placements : gathered.all)
        {
            const RQ_TransformArrayHandle transforms(new RQ_CompactTransformArray(
                placements.matrices.data(), placements.primitives.entries(), gathered.segments));
            collection->appendPrimitive(RQ_PrimitiveHandle(new RQ_PrimInstance(
                RQ_MSHDetail::makeDetail(placements.detail), transforms,
                details->getPrimitiveAttributes(nullptr, placements.primitives), details->getDetailAttributes(nullptr))));
        }
        return gathered.all.empty() ? RQ_PrimitiveHandle() : RQ_PrimitiveHandle(collection);
    }
};
}  // namespace

void bindPackedInstances()
{
    const auto collector = std::make_shared<const Collector>();
    for (const ELM_PrimitiveTypeId type : {ELM_PRIMITIVE_PACKED_GEOMETRY, ELM_PRIMITIVE_PACKED_FRAGMENT,
                                           ELM_PRIMITIVE_PACKED_DISK, ELM_PRIMITIVE_PACKED_DISK_SEQUENCE})
        RQ_MSHPrimCollect::bind(collector, type);
}
}  // namespace rq::app
