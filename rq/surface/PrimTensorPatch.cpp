#include <rq/surface/PrimTensorPatch.h>

#include <limits>

#include <host/bas/Diagnostics.h>
#include <rq/surface/detail/lists.h>

RQ_PrimTensorPatch::RQ_PrimTensorPatch() = default;
RQ_PrimTensorPatch::RQ_PrimTensorPatch(const RQ_PrimTensorPatch &other) = default;
RQ_PrimTensorPatch::~RQ_PrimTensorPatch() = default;

bool RQ_PrimTensorPatch::init(const RQ_NetDirection &u, const RQ_NetDirection &v, const RQ_AttributeListHandle &vertex,
                              const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail)
{
    std::string why;
    if (!vertex)
        why = "there are no vertex attributes";
    else if (u.check(why) && v.check(why))
    {
        if (u.vertices > std::numeric_limits<int64_t>::max() / v.vertices ||
            rq::entriesOf(vertex) != u.vertices * v.vertices)
            why = "the vertex attributes are not as many as rows times columns";
        if (why.empty())
            why = rq::checkLengths("uniform", uniform, 1);
    }
    if (!why.empty())
    {
        BAS_Diagnostics::warn(1, "{} cannot be: {}", className(), why);
        return false;
    }
    u_ = u;
    v_ = v;
    setLists(vertex, uniform, detail);
    return true;
}

bool RQ_PrimTensorPatch::refine(RQ_Refine &sink, const RQ_RefineParms *parms) const
{
    return handOver(refineToPolygonMesh(parms), sink);
}

int64_t RQ_PrimTensorPatch::getMemoryUsage() const
{
    return RQ_PrimNet::getMemoryUsage() + int64_t(sizeof(*this) - sizeof(RQ_PrimNet)) +
           int64_t((u_.knots.capacity() + v_.knots.capacity()) * sizeof(double));
}

bool RQ_PrimTensorPatch::saveShape(BAS_JSONWriter &writer) const { return u_.save(writer) && v_.save(writer); }

RQ_PrimTensorPatch::Loops RQ_PrimTensorPatch::trimLoops(int) const { return {}; }
