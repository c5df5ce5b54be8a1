#include <rq/bridge/MSHCollectPacked.h>

#include <host/elm/PrimitiveFactory.h>
#include <rq/bridge/MSHPrimPacked.h>

namespace
{
template <class Collector> void installCollector()
{
    if (const ELM_PrimitiveDefinition *type = ELM_PrimitiveFactory::find(Collector::kTypeName))
        RQ_MSHPrimCollect::bind(std::make_shared<const Collector>(), type->id);
}
}  // namespace

void RQ_MSHCollectPackedGeometry::install() { installCollector<RQ_MSHCollectPackedGeometry>(); }
void RQ_MSHCollectPackedDisk::install() { installCollector<RQ_MSHCollectPackedDisk>(); }
void RQ_MSHCollectPackedSequence::install() { installCollector<RQ_MSHCollectPackedSequence>(); }
void RQ_MSHCollectPackedAgent::install() { installCollector<RQ_MSHCollectPackedAgent>(); }
void RQ_MSHCollectPackedFragment::install() { installCollector<RQ_MSHCollectPackedFragment>(); }

RQ_PrimitiveHandle RQ_MSHCollectPackedGeometry::makePrimitive(const RQ_MSHDetailListHandle &details,
                                                              const MOD_PrimPacked &packed, RQ_MSHPrimCollectData *) const
{
    return new RQ_MSHPrimPackedShared(details, packed.offset());
}
