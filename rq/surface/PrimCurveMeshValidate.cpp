#include <rq/surface/PrimCurveMesh.h>

#include <rq/surface/CurveEval.h>
#include <rq/surface/detail/lists.h>

namespace
{
std::string checkOrders(const RQ_PrimCurveMesh &mesh)
{
    int least, greatest;
    RQ_CurveEval::orderRange(mesh.getBasis(), least, greatest);
    if (greatest == 0)
        return fmt::format("basis {} is none", int(mesh.getBasis()));
    if (!mesh.isUniformOrder() && (!mesh.varyingOrders() || mesh.varyingOrders()->entries() != mesh.getCurveCount()))
        return "there is no order for every curve";
    for (int64_t curve = 0; curve < (mesh.isUniformOrder() ? 1 : mesh.getCurveCount()); ++curve)
        if (const int order = mesh.getOrder(curve); order < least || order > greatest)
            return fmt::format("curve {} has order {}, {} takes {} to {}", curve, order, RQbasis(mesh.getBasis()), least,
                               greatest);
    return {};
}
}  // namespace

bool RQ_PrimCurveMesh::validate(std::string *why) const
{
    std::string fault = checkOrders(*this);
    if (fault.empty() && !vertex_ && getVertexCount() > 0)
        fault = fmt::format("the curves have {} vertices, but no vertex attributes", getVertexCount());
    if (fault.empty())
        fault = rq::checkLengths("vertex", vertex_, getVertexCount());
    if (fault.empty())
        fault = rq::checkLengths("uniform", uniform_, getCurveCount());
    if (fault.empty())
        fault = rq::checkLengths("detail", detail_, 1);
    if (fault.empty() && knots_ && knots_->entries() != knotCount())
        fault = fmt::format("the curves have {} knots, expected {}", knots_->entries(), knotCount());
    if (why)
        *why = fault;
    return fault.empty();
}
