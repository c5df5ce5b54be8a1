#include <algorithm>
#include <cmath>

#include <apps/viewport/SceneMaker.h>
#include <host/bas/Parallel.h>
#include <host/bas/hashBytes.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Positions.h>

namespace rq::viewport
{
namespace
{
// A placed box costs about 50 ns, a position 5 ns.
constexpr int64_t kCopiesPerBlock = 2048;
constexpr int64_t kPointsPerBlock = 16384;

bool isFinite(const BAS_Vec3f &v) { return std::isfinite(v.x + v.y + v.z); }

// Where positions lie, those left out that lie nowhere.
BAS_BoundingBox boundsOf(const RQ_DataArrayHandle &array)
{
    BAS_BoundingBox whole;
    array->enlargeBounds(whole);
    if (whole.isEmpty() || (isFinite(whole.minimum()) && isFinite(whole.maximum())))
        return whole;
    const Positions positions(array);
    const auto merge = [](BAS_BoundingBox &into, const BAS_BoundingBox &from) { into.enlarge(from); };
    return host::parallelReduce(
        positions.entries(), kPointsPerBlock, BAS_BoundingBox(),
        [&](int64_t begin, int64_t end) {
            BAS_BoundingBox box;
            for (int64_t i = begin; i < end; ++i)
                if (const BAS_Vec3f point(positions[i]); isFinite(point))
                    box.enlarge(point);
            return box;
        },
        merge);
}

BAS_BoundingBox placed(const BAS_BoundingBox &box, const std::vector<BAS_Mat4d> &matrices)
{
    if (box.isEmpty())
        return box;
    const auto merge = [](BAS_BoundingBox &into, const BAS_BoundingBox &from) { into.enlarge(from); };
    return host::parallelReduce(
        int64_t(matrices.size()), kCopiesPerBlock, BAS_BoundingBox(),
        [&](int64_t begin, int64_t end) {
            BAS_BoundingBox all;
            for (int64_t i = begin; i < end; ++i)
                for (int corner = 0; corner < 8; ++corner)
                {
                    BAS_Vec3d point;
                    for (int axis = 0; axis < 3; ++axis)
                        point[axis] = (corner >> axis & 1 ? box.maximum() : box.minimum())[axis];
                    all.enlarge(BAS_Vec3f(host::transformPoint(point, matrices[size_t(i)])));
                }
            return all;
        },
        merge);
}

// The id follows from the values, so that the same placements are known again.
RQ_DataArrayHandle singles(const std::vector<BAS_Mat4d> &matrices, const BAS_Mat4d &toMiddle)
{
    const BAS_IntrusivePtr<RQ_DANumeric<float>> values(
        new RQ_DANumeric<float>(int64_t(matrices.size()), 16, RQ_TYPE_MATRIX));
    host::parallelFor(int64_t(matrices.size()), kCopiesPerBlock, [&](int64_t i) {
        const BAS_Mat4f single(matrices[size_t(i)] * toMiddle);
        std::copy_n(single.getValue(), 16, values->data() + 16 * i);
    });
    const std::string_view bytes(reinterpret_cast<const char *>(values->data()), 16 * sizeof(float) * matrices.size());
    values->setDataId(int64_t(host::hashBytes(bytes) >> 2 | uint64_t(1) << 62));
    return values;
}

Found inList(const RQ_AttributeListHandle &list, const BAS_StringHolder &name, Lookup lookup)
{
    const RQ_DataArrayHandle array = list ? list->get(name) : RQ_DataArrayHandle();
    return array && array->entries() > 0 ? Found{array, lookup} : Found();
}
}  // namespace

void SceneMaker::addItem(const FormHandle &form, const RQ_PrimitiveHandle &primitive, const RQ_TransformHandle &transform,
                         const Placements &outer)
{
    if (!form)
        return;
    Item item{form, form->primitive ? form->primitive : primitive, nullptr, outer, shown_, {}, {}};
    item.materials = materialsFor(item);
    if (transform && !transform->isIdentity())
    {
        BAS_Mat4d own;
        transform->getMatrix(own, 0);
        for (BAS_Mat4d &matrix : item.placements.matrices)
            matrix = own * matrix;
    }
    item.bounds = placed(boundsOf(form->positions), item.placements.matrices);
    scene_.bounds_.enlarge(item.bounds);
    scene_.items_.push_back(std::move(item));
}

void SceneMaker::finish()
{
    BAS_Mat4d toMiddle;
    toMiddle.setTranslation(-scene_.middle());
    for (Item &item : scene_.items_)
        item.matrices = singles(item.placements.matrices, toMiddle);
}

MaterialColoursHandle SceneMaker::materialsFor(const Item &item)
{
    const uint64_t key = materialKey(item);
    if (const auto known = colours_.find(key); known != colours_.end())
        return known->second;
    const MaterialColoursHandle made = makeMaterialColours(item, key);
    if (key != 0)
        colours_.emplace(key, made);
    return made;
}

Lookup lookupOf(const Form &form, RQ_Owner owner)
{
    // The vertices of segments are their points.
    constexpr Lookup kLookups[] = {Lookup::Corner, Lookup::Point, Lookup::Face, Lookup::Detail};
    return owner == RQ_OWNER_VERTEX && form.kind == FormKind::Segments ? Lookup::Point : kLookups[owner];
}

Found findAttribute(const Item &item, const BAS_StringHolder &name, RQ_Owner owner)
{
    const Form &form = *item.form;
    const RQ_Primitive &primitive = *item.primitive;
    const bool any = owner == RQ_OWNER_INVALID;
    Found found;
    if (any || owner == RQ_OWNER_VERTEX)
        found = inList(primitive.getVertexAttributes(), name, lookupOf(form, RQ_OWNER_VERTEX));
    if (!found && (any || owner == RQ_OWNER_POINT))
        found = inList(primitive.getPointAttributes(), name, Lookup::Point);
    if (!found && (any || owner == RQ_OWNER_UNIFORM))
        found = inList(primitive.getUniformAttributes(), name, Lookup::Face);
    if (!found && (any || owner == RQ_OWNER_UNIFORM))
        found = inList(item.placements.attributes, name, Lookup::Copy);
    if (!found && (any || owner == RQ_OWNER_DETAIL))
        found = inList(primitive.getDetailAttributes(), name, Lookup::Detail);
    return found;
}
}  // namespace rq::viewport
