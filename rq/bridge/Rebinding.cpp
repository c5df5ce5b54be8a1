#include <rq/bridge/detail/Rebinding.h>

#include <algorithm>
#include <typeinfo>

#include <host/msh/Detail.h>
#include <rq/attrib/detail/viewId.h>
#include <rq/bridge/MSHAutoNormalArray.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DASubArray.h>
#include <rq/prim/PrimCollect.h>
#include <rq/surface/PrimCellMesh.h>
#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/PrimPointMesh.h>
#include <rq/surface/PrimSubdivisionMesh.h>

namespace
{
/// The primitive as an object of exactly this class, null when it is of another one, a derived one too.
template <class T> const T *exactly(const RQ_Primitive &primitive)
{
    return typeid(primitive) == typeid(T) ? static_cast<const T *>(&primitive) : nullptr;
}

bool readsDetail(const RQ_DataArray &array)
{
    rq::HostBoundArrays found;
    rq::findHostBound(array, found);
    return !found.empty();
}

bool hasSameValues(const RQ_AttributeListHandle &a, const RQ_AttributeListHandle &b, const char *name)
{
    for (int segment = 0; a && segment < a->getSegments(); ++segment)
    {
        const RQ_DataArrayHandle &left = a->get(name, segment), &right = b->get(name, segment);
        if (left != right && (left->getDataId() == -1 || left->getDataId() != right->getDataId()))
            return false;
    }
    return true;
}

constexpr const char *kTangents[] = {"tangentu", "tangentv"};

/// False for those of a piece too, which are views of those of the whole mesh.
bool hasOwnTangents(const RQ_PrimPolygonMesh &mesh)
{
    const RQ_DataArrayHandle tangents = mesh.getVertex() ? mesh.getVertex()->get(kTangents[0]) : nullptr;
    return tangents && !dynamic_cast<const RQ_DAInherit *>(tangents.get()) && !readsDetail(*tangents);
}

/// Whether tangents of one mesh are those of another with the same faces and the same attributes.
bool hasSameTangents(const RQ_PrimPolygonMesh &a, const RQ_PrimPolygonMesh &b)
{
    const char *const kSources[] = {"P", "N", "uv"};
    return std::all_of(std::begin(kSources), std::end(kSources), [&](const char *name) {
        return hasSameValues(a.getShared(), b.getShared(), name) && hasSameValues(a.getVertex(), b.getVertex(), name);
    });
}
}  // namespace

int64_t rq::countTangents(const RQ_Primitive &primitive)
{
    int64_t most = 0;
    if (const auto *several = exactly<RQ_PrimCollect>(primitive))
        for (int64_t i = 0; i < several->entries(); ++i)
            if (const RQ_PrimitiveHandle child = several->getPrim(i))
                most = std::max(most, countTangents(*child));
    const RQ_AttributeListHandle &vertex = primitive.getVertexAttributes();
    const RQ_DataArrayHandle &tangents = vertex ? vertex->get(kTangents[0]) : RQ_DataArrayHandle();
    return tangents && !readsDetail(*tangents) ? vertex->getSegments() : most;
}

RQ_DataArrayHandle rq::Rebinding::makeArray(const RQ_DataArrayHandle &old)
{
    if (const auto *element = dynamic_cast<const RQ_MSHElementArray *>(old.get()))
    {
        int segment = 0;
        while (segment < from_.getSegments() && !element->isBoundTo(from_.getHandle(segment)))
            ++segment;
        if (segment == from_.getSegments())
            return nullptr;
        const MSH_Detail &before = *from_.getDetail(segment), &after = *to_.getDetail(segment);
        if (dynamic_cast<const RQ_MSHAutoNormalArray *>(element) && before.positionId() != after.positionId())
            ++normals_;
        return element->boundTo(to_.getHandle(segment));
    }
    const auto *view = dynamic_cast<const RQ_DAInherit *>(old.get());
    const bool hasSource = view && view->source();
    const RQ_DataArrayHandle source = hasSource ? array(view->source()) : nullptr;
    if (hasSource ? source == view->source() : !readsDetail(*old))
        return old;
    if (!source)
        return nullptr;
    RQ_DataArrayHandle made;
    if (const auto *indirect = dynamic_cast<const RQ_DAIndirect *>(view))
    {
        made = RQ_DAIndirect::createIndirect(source, indirect->indices());
        setViewId(made, source, viewKey(View::INDIRECT, {uint64_t(indirect->indices()->getDataId())}));
    }
    else if (dynamic_cast<const RQ_DASubArray *>(view) && view->entries() > 0)
    {
        const int64_t first = view->getIndirect(0), count = view->entries();
        made = RQ_DASubArray::createSubArray(source, first, count);
        setViewId(made, source, viewKey(View::WINDOW, {uint64_t(first), uint64_t(count)}));
    }
    return made;
}

const RQ_DataArrayHandle &rq::Rebinding::array(const RQ_DataArrayHandle &old)
{
    if (const auto found = made_.find(old.get()); found != made_.end())
        return found->second;
    RQ_DataArrayHandle made = makeArray(old);
    return made_.emplace(old.get(), std::move(made)).first->second;
}

bool rq::Rebinding::attributes(const RQ_AttributeListHandle &old, RQ_AttributeListHandle &made)
{
    if (!old)
        return true;
    made = new RQ_AttributeList(old->getMap(), old->getSegments());
    for (int segment = 0; segment < old->getSegments(); ++segment)
        for (int i = 0; i < old->entries(); ++i)
            if (const RQ_DataArrayHandle &given = old->get(i, segment))
            {
                const RQ_DataArrayHandle &bound = array(given);
                if (!bound)
                    return false;
                made->set(i, bound, segment);
            }
    return true;
}

template <class Mesh> RQ_PrimitiveHandle rq::Rebinding::mesh(const Mesh &old)
{
    RQ_AttributeListHandle point, vertex, uniform, detail;
    if (!attributes(old.getShared(), point) || !attributes(old.getVertex(), vertex) ||
        !attributes(old.getUniform(), uniform) || !attributes(old.getDetail(), detail))
        return nullptr;
    const RQ_PolygonMeshHandle made(new Mesh(old, point, vertex, uniform, detail));
    if (!hasOwnTangents(old) || hasSameTangents(old, *made))
        return made;
    const RQ_AttributeListHandle others = vertex->removeAttributes({kTangents[0], kTangents[1]});
    return withTangents(new Mesh(old, point, others, uniform, detail), *old.getVertex());
}

RQ_PrimitiveHandle rq::Rebinding::withTangents(const RQ_PolygonMeshHandle &bare, const RQ_AttributeList &old)
{
    bool changed = false;
    const RQ_PolygonMeshHandle made = bare->createTangentsIfMissing(changed);
    interrupted_ = interrupted_ || !made;
    if (!changed)
        return nullptr;
    for (int segment = 0; segment < old.getSegments(); ++segment)
        for (const char *name : kTangents)
            made_[old.get(name, segment).get()] = made->getVertex()->get(name, segment);
    tangents_ += old.getSegments();
    return made;
}

RQ_PrimitiveHandle rq::Rebinding::primitive(const RQ_PrimitiveHandle &old)
{
    if (const auto *several = exactly<RQ_PrimCollect>(*old))
    {
        const BAS_IntrusivePtr<RQ_PrimCollect> made(new RQ_PrimCollect);
        for (int64_t i = 0; i < several->entries(); ++i)
        {
            const RQ_PrimitiveHandle &was = several->getPrim(i);
            const RQ_PrimitiveHandle child = was ? primitive(was) : was;
            if (was && !child)
                return nullptr;
            made->appendPrimitive(child);
        }
        return made;
    }
    if (const auto *faces = exactly<RQ_PrimPolygonMesh>(*old))
        return mesh(*faces);
    if (const auto *surface = exactly<RQ_PrimSubdivisionMesh>(*old))
        return mesh(*surface);
    RQ_AttributeListHandle point, vertex, uniform, detail;
    if (!attributes(old->getPointAttributes(), point) || !attributes(old->getVertexAttributes(), vertex) ||
        !attributes(old->getUniformAttributes(), uniform) || !attributes(old->getDetailAttributes(), detail))
        return nullptr;
    if (const auto *curves = exactly<RQ_PrimCurveMesh>(*old))
        return new RQ_PrimCurveMesh(*curves, vertex, uniform, detail);
    if (const auto *cells = dynamic_cast<const RQ_PrimCellMesh *>(old.get()))
        return cells->withAttributes(point, vertex, uniform, detail);
    if (exactly<RQ_PrimPointMesh>(*old))
        return new RQ_PrimPointMesh(point, detail);
    return nullptr;
}
