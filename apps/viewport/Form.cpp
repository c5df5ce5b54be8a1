#include <apps/viewport/Form.h>

#include <cmath>

#include <host/bas/Parallel.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Positions.h>
#include <rq/data/Values.h>

namespace rq::viewport
{
namespace
{
// A point costs about 5 ns.
constexpr int64_t kPointsPerTask = 16384;

RQ_DataArrayHandle divided(const Positions &positions)
{
    const BAS_IntrusivePtr<RQ_DANumeric<float>> points(new RQ_DANumeric<float>(positions.entries(), 3, RQ_TYPE_POINT));
    host::parallelFor(positions.entries(), kPointsPerTask, [&](int64_t i) {
        const BAS_Vec3d point = positions[i];
        for (int c = 0; c < 3; ++c)
            points->data()[3 * i + c] = float(point[c]);
    });
    return points;
}
}  // namespace

RQ_DataArrayHandle drawablePositions(const RQ_Primitive &primitive, RQ_Owner owner)
{
    const RQ_AttributeListHandle &list = primitive.getAttributeList(owner);
    const RQ_DataArrayHandle array = list ? list->get("P") : RQ_DataArrayHandle();
    if (!array || !RQisNumeric(array->getStorage()) || array->hasArrayEntries() || array->getTupleSize() < 3)
        return nullptr;
    return array->getTypeInfo() == RQ_TYPE_HPOINT && array->getTupleSize() > 3 ? divided(Positions(array)) : array;
}

FormHandle makePointForm(const RQ_Primitive &points, uint64_t key, std::string &why)
{
    const auto form = std::make_shared<Form>();
    form->kind = FormKind::Points;
    form->key = key;
    form->positions = drawablePositions(points, RQ_OWNER_POINT);
    form->elements = form->positions ? form->positions->entries() : 0;
    if (form->elements > 0)
        return form;
    why = "points without positions";
    return nullptr;
}

FormHandle makeCurveForm(const RQ_PrimCurveMesh &curves, uint64_t key, std::string &why)
{
    const auto form = std::make_shared<Form>();
    form->kind = FormKind::Segments;
    form->key = key;
    form->positions = drawablePositions(curves, RQ_OWNER_VERTEX);
    if (!form->positions)
        why = "curves without positions";
    if (!form->positions || !curves.validate(&why))
        return nullptr;

    // Curves without a piece between two vertices draw nothing.
    std::vector<int32_t> ends, owners;
    for (int64_t curve = 0; curve < curves.getCurveCount(); ++curve)
    {
        const int64_t first = curves.getVertexOffset(curve), count = curves.getVertexCount(curve);
        const int64_t pieces = curves.getClosed() && count > 2 ? count : count - 1;
        for (int64_t i = 0; i < pieces; ++i)
        {
            ends.insert(ends.end(), {int32_t(first + i), int32_t(first + (i + 1) % count)});
            owners.push_back(int32_t(curve));
        }
    }
    form->elements = int64_t(owners.size());
    if (form->elements == 0)
    {
        why = "curves of single vertices";
        return nullptr;
    }
    form->corners = new RQ_DANumeric<int32_t>(ends.data(), int64_t(ends.size()));
    form->faceSources = new RQ_DANumeric<int32_t>(owners.data(), int64_t(owners.size()));
    return form;
}
}  // namespace rq::viewport
