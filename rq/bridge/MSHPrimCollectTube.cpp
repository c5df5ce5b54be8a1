#include <rq/bridge/MSHPrimCollectTube.h>

#include <algorithm>

#include <rq/bridge/detail/PlacedPrimitives.h>
#include <rq/prim/PrimCollect.h>
#include <rq/surface/PrimTubeMesh.h>

RQ_MSHPrimCollectTubeData::~RQ_MSHPrimCollectTubeData() = default;

RQ_MSHPrimCollectTubeData::Group &RQ_MSHPrimCollectTubeData::groupOf(double taper, bool caps)
{
    // Tubes of a kind mostly follow each other.
    const auto same = [=](const Group &group) { return group.taper == taper && group.caps == caps; };
    const auto found = std::find_if(groups_.rbegin(), groups_.rend(), same);
    return found != groups_.rend() ? *found : groups_.emplace_back(Group{taper, caps, {}});
}

void RQ_MSHPrimCollectTubeData::append(const RQ_MSHPrimCollectTubeData &following)
{
    for (const Group &group : following.groups_)
        groupOf(group.taper, group.caps).tubes.concat(group.tubes);
}

RQ_MSHPrimCollectData *RQ_MSHPrimCollectTube::beginCollecting(const RQ_MSHDetailListHandle &,
                                                              const RQ_RefineParms *parms) const
{
    return new RQ_MSHPrimCollectTubeData(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectTube::collect(const RQ_MSHDetailListHandle &, const MSH_Primitive *const *primitives,
                                                  int, RQ_MSHPrimCollectData *data) const
{
    static_cast<RQ_MSHPrimCollectTubeData *>(data)->append(MSH_Quadric(*primitives[0]));
    return nullptr;
}

void RQ_MSHPrimCollectTube::mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const
{
    static_cast<RQ_MSHPrimCollectTubeData *>(into)->append(*static_cast<const RQ_MSHPrimCollectTubeData *>(from));
}

RQ_PrimitiveHandle RQ_MSHPrimCollectTube::endCollecting(const RQ_MSHDetailListHandle &details,
                                                        RQ_MSHPrimCollectData *data) const
{
    const auto &gathered = static_cast<const RQ_MSHPrimCollectTubeData &>(*data);
    const RQ_AttributeListHandle whole = details->getDetailAttributes(nullptr, gathered.getParms());
    BAS_IntrusivePtr<RQ_PrimCollect> all(new RQ_PrimCollect);
    for (const RQ_MSHPrimCollectTubeData::Group &group : gathered.getGroups())
    {
        const BAS_IntrusivePtr<RQ_PrimTubeMesh> mesh(new RQ_PrimTubeMesh);
        if (mesh->init(group.taper, group.caps, rq::attributesOfPlaced(*details, group.tubes, gathered.getParms()), whole,
                       rq::placementsOf(*details, group.tubes)))
            all->appendPrimitive(mesh);
    }
    return all->entries() > 1 ? RQ_PrimitiveHandle(all) : all->getPrim(0);
}
