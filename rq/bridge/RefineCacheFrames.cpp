#include <rq/bridge/RefineCache.h>

#include <algorithm>

#include <host/msh/Detail.h>
#include <rq/bridge/detail/DetailWalk.h>
#include <rq/bridge/detail/Rebinding.h>
#include <rq/bridge/detail/RecentEntries.h>
#include <rq/bridge/detail/pieces.h>
#include <rq/bridge/detail/refineKey.h>

namespace
{
using Primitives = std::vector<RQ_PrimitiveHandle>;

bool addsNormals(const MSH_Detail &detail, const RQ_RefineParms *parms)
{
    return RQ_RefineParms::getAddVertexNormals(parms) && detail.primitiveCount() > 0 &&
           !detail.find(ELM_OWNER_VERTEX, "N") && !detail.find(ELM_OWNER_POINT, "N");
}

Primitives walk(const RQ_MSHDetail &detail, const RQ_RefineParms *parms)
{
    Primitives primitives = rq::DetailWalk(detail.getDetails(), detail.getRange().get(), parms).run();
    std::erase(primitives, nullptr);
    return primitives;
}

/// False when one cannot be made anew.
bool rebind(rq::Rebinding &rebinding, const Primitives &old, Primitives &made)
{
    return std::all_of(old.begin(), old.end(), [&](const RQ_PrimitiveHandle &primitive) {
        made.push_back(rebinding.primitive(primitive));
        return made.back() != nullptr;
    });
}
}  // namespace

/// What a detail refined to, before it is placed.
struct RQ_RefineCache::Frame final : rq::RecentEntries::Entry
{
    RQ_MSHDetailListHandle details;
    RQ_MSHDetail::RangeHandle range;
    std::string values;  // that became something else than attributes
    Primitives wholes;   // what the primitives show pieces of, where tangents of pieces follow from those of the whole
    Primitives primitives;

    Frame(const RQ_MSHDetail &detail, const RQ_RefineParms *parms)
        : details(detail.getDetails()), range(detail.getRange()), values(rq::usedUpValues(*details, parms))
    {}

    int64_t getMemoryUsage() const override
    {
        int64_t bytes = int64_t(sizeof(*this));
        for (const Primitives *list : {&wholes, &primitives})
            for (const RQ_PrimitiveHandle &made : *list)
                bytes += made->getMemoryUsage();
        for (int segment = 0; segment < details->getSegments(); ++segment)
            if (segment == 0 || !(details->getHandle(segment) == details->getHandle(segment - 1)))
                bytes += details->getDetail(segment)->memoryUsage();
        return bytes;
    }

    bool follow(rq::Rebinding &rebinding, const Frame &before)
    {
        return rebind(rebinding, before.wholes, wholes) && rebind(rebinding, before.primitives, primitives);
    }

    void gather(const RQ_MSHDetail &detail, const RQ_RefineParms *parms)
    {
        const int64_t mostFaces = RQ_RefineParms::getMaxPolyMeshSize(parms);
        wholes.clear();
        primitives.clear();
        if (mostFaces < 1 || !RQ_RefineParms::getAddMikkT(parms))
        {
            primitives = walk(detail, parms);
            return;
        }
        RQ_RefineParms uncut(*parms);
        uncut.setMaxPolyMeshSize(-1);
        for (const RQ_PrimitiveHandle &whole : walk(detail, &uncut))
        {
            primitives.push_back(rq::inPieces(whole, mostFaces));
            if (primitives.back() != whole)
                wholes.push_back(whole);
        }
    }
};

std::vector<RQ_PrimitiveHandle> RQ_RefineCache::refine(const RQ_MSHDetail &detail, const RQ_RefineParms *parms)
{
    Primitives primitives = makeFrame(detail, parms);
    for (RQ_PrimitiveHandle &primitive : primitives)
        primitive = primitive->copyTransformed(detail.getPrimitiveTransform());
    return primitives;
}

void RQ_RefineCache::countWalk(const Primitives &made, const RQ_RefineParms *parms)
{
    ++walks_;
    if (RQ_RefineParms::getAddMikkT(parms))
        for (const RQ_PrimitiveHandle &primitive : made)
            tangents_ += rq::countTangents(*primitive);
}

std::vector<RQ_PrimitiveHandle> RQ_RefineCache::makeFrame(const RQ_MSHDetail &detail, const RQ_RefineParms *parms)
{
    const RQ_MSHDetailListHandle &details = detail.getDetails();
    if (!details->getDetail())
        return {};
    if (!rq::isRepeatable(*details))
    {
        const Primitives primitives = walk(detail, parms);
        countWalk(primitives, parms);
        return primitives;
    }
    const std::string key = rq::refineKey(*details, detail.getRange().get(), parms);
    const auto before = std::static_pointer_cast<const Frame>(entries_->find(key));
    const auto made = std::make_shared<Frame>(detail, parms);
    bool follows = false;
    if (before && before->values == made->values)
    {
        rq::Rebinding rebinding(*before->details, *details);
        follows = made->follow(rebinding, *before);
        normals_ += rebinding.normals();
        tangents_ += rebinding.tangents();
        if (rebinding.isInterrupted())
            return {};
    }
    if (!follows)
    {
        made->gather(detail, parms);
        countWalk(made->primitives, parms);
        if (addsNormals(*details->getDetail(), parms))
            normals_ += details->getSegments();
    }
    // Of an interrupted walk there is nothing.
    if (!made->primitives.empty())
        entries_->store(key, made);
    return made->primitives;
}
