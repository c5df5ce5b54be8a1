#include <apps/viewport/levelOfDetail.h>

#include <rq/prim/ViewportRefineOptions.h>

namespace rq::viewport
{
namespace
{
RQ_RefineParms withoutLevel(const RQ_RefineParms &parms)
{
    RQ_RefineParms same(parms);
    same.setLOD(1.0);
    same.setULOD(1.0);
    same.setVLOD(1.0);
    same.setQuadricDivs(1.0);
    same.setMetaDensity(1.0);
    same.setMetaMaxDivs(1);
    return same;
}
}  // namespace

bool differInLevelOnly(const RQ_RefineParms &a, const RQ_RefineParms &b)
{
    return a.getFlags() == b.getFlags() && a.getAttributeFilter() == b.getAttributeFilter() &&
           a.getViewportMaterialAttrib() == b.getViewportMaterialAttrib() &&
           a.getViewportMaterialRemapAttrib() == b.getViewportMaterialRemapAttrib() &&
           withoutLevel(a).isEqual(withoutLevel(b));
}

bool changesWithLevel(const RQ_Primitive &primitive) { return primitive.viewportRefineOptions().changesWithLOD(); }
}  // namespace rq::viewport
