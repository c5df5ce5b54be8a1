#include <algorithm>
#include <compare>
#include <deque>
#include <map>

#include <host/elm/Group.h>
#include <host/mod/PackedGeometry.h>
#include <rq/bridge/MSHCollectPacked.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/bridge/MSHPrimPacked.h>
#include <rq/bridge/detail/packedPlacements.h>
#include <rq/prim/PrimCollect.h>

namespace
{
using Matrices = std::vector<BAS_Mat4d>;  // one a segment

/// An order that has a place for what is not a number, too: a place that is lost takes no other along.
struct Less
{
    bool operator()(const Matrices &a, const Matrices &b) const
    {
        return std::is_lt(std::lexicographical_compare_three_way(
            a.begin(), a.end(), b.begin(), b.end(), [](const BAS_Mat4d &m, const BAS_Mat4d &n) {
                return std::lexicographical_compare_three_way(m.getValue(), m.getValue() + 16, n.getValue(),
                                                              n.getValue() + 16, std::weak_order);
            }));
    }
};

/// The parts of one detail that are placed alike.
struct Together
{
    Together(const MOD_ConstDetailHandle &detail, const Matrices &matrices) : source(detail), placement(matrices) {}

    MOD_ConstDetailHandle source;
    Matrices placement;
    ELM_Group primitives{ELM_OWNER_PRIMITIVE, BAS_StringHolder()};
};

/// Fragments by what they are parts of, and by where that is; in the order of the first of each.
class Gathered final : public RQ_MSHPrimCollectPackedData
{
public:
    explicit Gathered(const RQ_RefineParms *parms)
        : RQ_MSHPrimCollectPackedData(parms), coalesces_(!parms || parms->getCoalesceFragments())
    {}

    bool coalesces() const { return coalesces_; }

    void add(const MOD_ConstDetailHandle &source, const Matrices &placement, const ELM_Range &primitives)
    {
        const auto [place, isNew] = places_[source.readLock()].try_emplace(placement, all_.size());
        if (isNew)
            all_.emplace_back(source, placement);
        all_[place->second].primitives.unite(primitives);
    }

    void concat(const Gathered &following)
    {
        append(following);
        for (const Together &together : following.all_)
            add(together.source, together.placement, together.primitives.range());
    }

    void emit(RQ_PrimCollect &into) const
    {
        for (const Together &together : all_)
        {
            const RQ_PrimitiveHandle whole =
                RQ_MSHDetail::makeDetail(together.source, std::make_shared<ELM_Range>(together.primitives.range()));
            whole->setPrimitiveTransform(
                RQ_TransformHandle(new RQ_Transform(together.placement.data(), int(together.placement.size()))));
            into.appendPrimitive(whole);
        }
    }

private:
    bool coalesces_;
    std::deque<Together> all_;
    std::map<const MSH_Detail *, std::map<Matrices, size_t, Less>> places_;
};
}  // namespace

RQ_MSHPrimCollectData *RQ_MSHCollectPackedFragment::beginCollecting(const RQ_MSHDetailListHandle &,
                                                                    const RQ_RefineParms *parms) const
{
    return new Gathered(parms);
}

RQ_PrimitiveHandle RQ_MSHCollectPackedFragment::makePrimitive(const RQ_MSHDetailListHandle &details,
                                                              const MOD_PrimPacked &packed,
                                                              RQ_MSHPrimCollectData *data) const
{
    auto &gathered = static_cast<Gathered &>(*data);
    const auto *fragment = dynamic_cast<const MOD_PackedFragment *>(&packed.implementation());
    if (!fragment || !gathered.coalesces())
    {
        const BAS_IntrusivePtr<RQ_MSHPrimPacked> own(new RQ_MSHPrimPacked(details, packed.offset()));
        own->createPointPrimIDs();
        return own;
    }
    Matrices placement(size_t(std::max(1, details->getSegments())));
    for (size_t segment = 0; segment < placement.size(); ++segment)
        placement[segment] = rq::packedPlacement(*details, packed.offset(), int(segment));
    gathered.add(MOD_ConstDetailHandle(fragment->data.detail[0].get()), placement, fragment->data.range());
    return nullptr;
}

RQ_PrimitiveHandle RQ_MSHCollectPackedFragment::endCollecting(const RQ_MSHDetailListHandle &,
                                                              RQ_MSHPrimCollectData *data) const
{
    const auto &gathered = static_cast<const Gathered &>(*data);
    const BAS_IntrusivePtr<RQ_PrimCollect> all(new RQ_PrimCollect);
    gathered.emit(*all);
    if (const RQ_PrimitiveHandle boxes = gathered.getBoxes().getPrimitive())
        all->appendPrimitive(boxes);
    return all->entries() > 1 ? RQ_PrimitiveHandle(all) : all->getPrim(0);
}

void RQ_MSHCollectPackedFragment::mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const
{
    static_cast<Gathered *>(into)->concat(*static_cast<const Gathered *>(from));
}
