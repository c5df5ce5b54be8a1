#include <unordered_map>

#include <host/bas/Options.h>
#include <rq/bridge/MSHPrimPacked.h>
#include <rq/bridge/detail/PlacedPrimitives.h>
#include <rq/bridge/detail/packedPlacements.h>
#include <rq/prim/CompactTransformArray.h>
#include <rq/prim/PrimInstance.h>

namespace
{
/// Packed primitives of one detail that share their geometry and are placed by the same transform after their own.
class Sharing
{
public:
    Sharing(const RQ_MSHPrimPacked &first, BAS_Options key) : first_(&first), key_(std::move(key)) {}

    bool takes(const RQ_MSHPrimPacked &packed, const BAS_Options &key) const { return isAlike(packed) && key_.isEqual(key); }
    bool startsWith(const RQ_MSHPrimPacked &packed) const { return &packed == first_; }

    /// The same without a look at the key, for one of the same implementation.
    bool continues(const RQ_MSHPrimPacked &packed) const
    {
        return isAlike(packed) && &packed.getImplementation() == &first_->getImplementation();
    }

    void append(const RQ_MSHPrimPacked &packed) { offsets_.append(packed.getPrim().offset()); }

    /// Null until they are made, and when the geometry cannot be had.
    const RQ_PrimitiveHandle &instances() const { return instances_; }

    void makeInstances()
    {
        const RQ_PrimitiveHandle geometry = first_->getInstanceGeometry();
        if (!geometry)
            return;
        const RQ_MSHDetailList &details = *first_->getDetails();
        instances_ = new RQ_PrimInstance(geometry, placements(), rq::attributesOfPlaced(details, offsets_, nullptr),
                                         details.getDetailAttributes(nullptr));
        instances_->setPrimitiveTransform(first_->getPrimitiveTransform());
    }

private:
    RQ_TransformArrayHandle placements() const
    {
        if (first_->transformed())
            return rq::packedPlacementsOf(*first_->getDetails(), offsets_);
        const RQ_TransformArrayHandle nowhere(new RQ_CompactTransformArray);
        nowhere->setEntries(offsets_.entries());
        return nowhere;
    }

    // Those that stand nowhere have no attributes of vertices that others have.
    bool isAlike(const RQ_MSHPrimPacked &packed) const
    {
        const auto stands = [](const RQ_MSHPrimPacked &one) { return one.getPrim().vertexOrNone() >= 0; };
        return packed.getDetails() == first_->getDetails() && packed.transformed() == first_->transformed() &&
               packed.getPrimitiveTransform() == first_->getPrimitiveTransform() && stands(packed) == stands(*first_);
    }

    const RQ_MSHPrimPacked *first_;
    BAS_Options key_;
    RQ_MSHOffsetList offsets_;
    RQ_PrimitiveHandle instances_;
};

/// The groups of some primitives, found by the hashes of their keys.
class Groups
{
public:
    /// The group that the primitive belongs to from now on.
    Sharing &append(const RQ_MSHPrimPacked &packed)
    {
        if (!last_ || !last_->continues(packed))
            last_ = &find(packed);
        last_->append(packed);
        return *last_;
    }

private:
    Sharing &find(const RQ_MSHPrimPacked &packed)
    {
        BAS_Options key;
        packed.getInstanceKey(key);
        const uint32_t hash = key.hash();
        const auto [begin, end] = groups_.equal_range(hash);
        for (auto found = begin; found != end; ++found)
            if (found->second.takes(packed, key))
                return found->second;
        return groups_.emplace(hash, Sharing(packed, std::move(key)))->second;
    }

    std::unordered_multimap<uint32_t, Sharing> groups_;  // which stay where they are
    Sharing *last_ = nullptr;
};

const RQ_MSHPrimPacked *sharable(const RQ_PrimitiveHandle &primitive)
{
    const auto *packed = dynamic_cast<const RQ_MSHPrimPacked *>(primitive.get());
    return packed && packed->canInstance() ? packed : nullptr;
}
}  // namespace

std::vector<RQ_PrimitiveHandle> RQgatherInstances(const std::vector<RQ_PrimitiveHandle> &primitives)
{
    Groups groups;
    std::vector<Sharing *> groupOf;  // null: alone
    for (const RQ_PrimitiveHandle &primitive : primitives)
    {
        const RQ_MSHPrimPacked *packed = sharable(primitive);
        groupOf.push_back(packed ? &groups.append(*packed) : nullptr);
    }
    std::vector<RQ_PrimitiveHandle> all;
    for (size_t i = 0; i < primitives.size(); ++i)
    {
        const bool isFirst = groupOf[i] && groupOf[i]->startsWith(*sharable(primitives[i]));
        if (isFirst)
            groupOf[i]->makeInstances();
        if (!groupOf[i] || !groupOf[i]->instances())
            all.push_back(primitives[i]);
        else if (isFirst)
            all.push_back(groupOf[i]->instances());
    }
    return all;
}
