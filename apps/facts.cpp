#include <apps/facts.h>

#include <host/msh/Detail.h>
#include <rq/attrib/AttributeList.h>
#include <rq/bridge/typeFromHost.h>
#include <rq/prim/PrimInstance.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/surface/PrimCellMesh.h>
#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/PrimPolygonMesh.h>
#include <rq/surface/PrimQuadricMesh.h>

namespace rq::app
{
namespace
{
// The host's word for each of its owners, which have the numbers of the library's.
const char *hostOwner(ELM_Owner owner) { return owner == ELM_OWNER_PRIMITIVE ? "primitive" : RQowner(int(owner)); }

HostFacts hostFacts(const MSH_Detail &detail)
{
    HostFacts facts;
    facts.points = detail.pointCount();
    facts.vertices = detail.vertexCount();
    facts.primitives = detail.primitiveCount();
    for (int64_t i = 0; i < ELM_PrimitiveFactory::count(); ++i)
    {
        const ELM_PrimitiveTypeId id = ELM_PrimitiveFactory::at(i)->id;
        if (const int64_t count = detail.primitiveCount(id); count > 0)
            facts.types[id] = count;
    }
    for (const ELM_Owner owner : {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE, ELM_OWNER_DETAIL})
    {
        for (const ELM_Attribute &attribute : detail.attributes(owner))
        {
            if (attribute.scope() != ELM_SCOPE_PUBLIC)
                continue;
            facts.attributes.push_back({.owner = hostOwner(owner),
                                        .name = attribute.name().c_str(),
                                        .storage = RQstorage(int(attribute.storage())),
                                        .type = RQtype(RQtypeFromHost(attribute.typeInfo(), attribute.tupleSize())),
                                        .className = {},
                                        .size = attribute.tupleSize(),
                                        .entries = attribute.size()});
        }
        const ELM_GroupDict &groups = detail.groups(owner);
        for (int64_t i = 0; i < groups.size(); ++i)
            facts.groups.push_back({hostOwner(owner), groups[i].name().c_str(), groups[i].count()});
    }
    return facts;
}

std::vector<AttributeFacts> attributeFacts(const RQ_Primitive &primitive)
{
    std::vector<AttributeFacts> facts;
    for (const RQ_Owner owner : {RQ_OWNER_VERTEX, RQ_OWNER_POINT, RQ_OWNER_UNIFORM, RQ_OWNER_DETAIL})
    {
        const RQ_AttributeListHandle &list = primitive.getAttributeList(owner);
        for (int i = 0; list && i < list->entries(); ++i)
        {
            const RQ_DataArrayHandle &array = list->get(i);
            if (!array)
                continue;
            const char *storage = RQstorage(array->getStorage());
            facts.push_back({.owner = RQowner(owner),
                             .name = list->getName(i).c_str(),
                             .storage = storage ? storage : "invalid",
                             .type = RQtype(array->getTypeInfo()),
                             .className = array->className(),
                             .size = array->getTupleSize(),
                             .entries = array->entries()});
        }
    }
    return facts;
}

void addMeasures(const RQ_PrimPolygonMesh &mesh, PrimitiveFacts &facts)
{
    facts.area = mesh.computeSurfaceArea(0);
    facts.volume = mesh.computeVolume(BAS_Vec3f(0.0f), 0);
    facts.perimeter = mesh.computePerimeter(0);
}

void addMeshFacts(const RQ_PrimPolygonMesh &mesh, PrimitiveFacts &facts)
{
    facts.faces = mesh.getFaceCount();
    facts.vertices = mesh.getVertexCount();
    facts.points = mesh.getPointCount();
    if (mesh.getFaceCount() > 0)
    {
        facts.minCount = mesh.getMinVertexCount();
        facts.maxCount = mesh.getMaxVertexCount();
    }
    addMeasures(mesh, facts);
}

void addCellFacts(const RQ_PrimCellMesh &cells, PrimitiveFacts &facts)
{
    facts.cells = cells.getCellCount();
    facts.vertices = cells.getVertexCount();
    facts.points = cells.getPointCount();
    if (const RQ_PolygonMeshHandle outside = cells.getOuterFaces())
        addMeasures(*outside, facts);
}

PrimitiveFacts primitiveFacts(const RefinedPrimitive &entry)
{
    const RQ_Primitive &primitive = *entry.primitive;
    PrimitiveFacts facts;
    facts.className = primitive.className();
    facts.typeId = primitive.getPrimitiveType();
    facts.type = RQprimitiveType(facts.typeId);
    facts.depth = entry.depth;
    if (const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(&primitive))
        addMeshFacts(*mesh, facts);
    else if (const auto *cells = dynamic_cast<const RQ_PrimCellMesh *>(&primitive))
        addCellFacts(*cells, facts);
    else if (const auto *curves = dynamic_cast<const RQ_PrimCurveMesh *>(&primitive))
    {
        facts.curves = curves->getCurveCount();
        facts.vertices = curves->getVertexCount();
    }
    else if (const auto *quadrics = dynamic_cast<const RQ_PrimQuadricMesh *>(&primitive))
        facts.quadrics = quadrics->getQuadricCount();
    else if (const auto *instances = dynamic_cast<const RQ_PrimInstance *>(&primitive))
        facts.instances = instances->entries();
    else if (const RQ_AttributeListHandle &points = primitive.getPointAttributes();
             points && points->entries() > 0 && points->get(0))
        facts.points = points->get(0)->entries();
    primitive.enlargeBounds(&facts.bounds, 1);
    facts.segments = primitive.getMotionSegments();
    facts.memory = primitive.getMemoryUsage();
    facts.attributes = attributeFacts(primitive);
    return facts;
}
}  // namespace

FileFacts gatherFacts(const RefinedFile &refined, const BAS_CopyCounter::Totals &before)
{
    FileFacts facts;
    facts.file = refined.file;
    facts.host = hostFacts(*refined.detail.readLock());
    for (const RefinedPrimitive &primitive : refined.primitives)
        facts.primitives.push_back(primitiveFacts(primitive));
    facts.copied = BAS_CopyCounter::totals();
    for (size_t cause = 0; cause < facts.copied.size(); ++cause)
        facts.copied[cause] -= before[cause];
    facts.loadSeconds = refined.loadSeconds;
    facts.refineSeconds = refined.refineSeconds;
    for (size_t category = 0; category < facts.held.size(); ++category)
        facts.held[category] = BAS_MemoryTracker::current(BAS_MemoryCategory(category));
    return facts;
}
}  // namespace rq::app
