#include <host/elm/PrimitiveFactory.h>
#include <host/msh/Detail.h>
#include <rq/bridge/MSHAutoNormalArray.h>
#include <rq/bridge/MSHPrimCollectPoly.h>
#include <rq/bridge/detail/curveMeshes.h>
#include <rq/bridge/detail/pieces.h>
#include <rq/surface/PrimSubdivisionMesh.h>

namespace
{
bool has(const RQ_AttributeListHandle &list, const char *name) { return list && list->get(name); }
}  // namespace

RQ_MSHPrimCollectPolyData::RQ_MSHPrimCollectPolyData(const RQ_RefineParms *parms)
    : parms_(parms), asSubdivision_(parms && parms->getPolysAsSubdivision()),
      faceSetMode_(RQ_RefineParms::getFaceSetMode(parms)), fastCompacting_(RQ_RefineParms::getFastPolyCompacting(parms)),
      addVertexNormals_(RQ_RefineParms::getAddVertexNormals(parms)), addTangents_(RQ_RefineParms::getAddMikkT(parms)),
      cuspAngle_(addVertexNormals_ ? RQ_RefineParms::getCuspAngle(parms) : 180.0f),
      mostCurveVertices_(RQ_RefineParms::getMaxPolyCurveSize(parms))
{}

RQ_MSHPrimCollectPolyData::~RQ_MSHPrimCollectPolyData() = default;

void RQ_MSHPrimCollectPolyData::readPending()
{
    pending_.take([this](const MSH_Detail &detail, const ELM_Range &range) {
        // Whoever gives primitives one by one is asked by the refinement whether it is to stop.
        BAS_Progress unheard(nullptr);
        rq::gatherFaces(detail, range, gathered_, unheard);
    });
}

void RQ_MSHPrimCollectPolyData::append(const MSH_Detail &detail, const ELM_Range &range, BAS_Progress &progress)
{
    readPending();
    rq::gatherFaces(detail, range, gathered_, progress);
}

void RQ_MSHPrimCollectPolyData::append(RQ_MSHPrimCollectPolyData &following)
{
    if (following.gathered_.isEmpty() && pending_.add(following.pending_))
        return;
    readPending();
    following.readPending();
    gathered_.append(following.gathered_);
}

bool RQ_MSHPrimCollectPolyData::coversDetail(const MSH_Detail &detail) const
{
    return !gathered_.hasParts && gathered_.closed.faces() == detail.primitiveCount() &&
           gathered_.closed.vertices().entries() == detail.vertexCount() && !detail.hasVacantOffsets(ELM_OWNER_POINT);
}

RQ_AttributeListHandle RQ_MSHPrimCollectPolyData::addNormals(const RQ_MSHDetailList &details,
                                                             const RQ_AttributeListHandle &vertex) const
{
    const BAS_IntrusivePtr<RQ_MSHAutoNormalArray> first(new RQ_MSHAutoNormalArray(
        details.getHandle(), ELM_OWNER_VERTEX, gathered_.closed.vertices(), ELM_OWNER_VERTEX, cuspAngle_));
    std::vector<RQ_DataArrayHandle> normals{first};
    for (int segment = 1; segment < details.getSegments(); ++segment)
        // What the first one found out about the faces serves the others.
        normals.push_back(first->isBoundTo(details.getHandle(segment)) ? normals[0]
                                                                       : first->boundTo(details.getHandle(segment)));
    const RQ_AttributeListHandle base = vertex ? vertex : RQ_AttributeListHandle(new RQ_AttributeList(new RQ_AttributeMap));
    return base->addAttribute("N", normals.data(), details.getSegments(), true);
}

RQ_PolygonMeshHandle RQ_MSHPrimCollectPolyData::makeMesh(const RQ_MSHDetailListHandle &details)
{
    readPending();
    rq::FaceLists &faces = gathered_.closed;
    faces.finish();
    if (faces.faces() == 0)
        return nullptr;
    const MSH_Detail &detail = *details->getDetail();
    const rq::MeshAttributes attributes(*details, parms_);
    // Every offset, vacant ones too: vertex lists hold offsets of points, and use them as rows.
    const RQ_AttributeListHandle points =
        attributes.ofPoints(RQ_MSHOffsetList(ELM_OffsetList(0, detail.capacity(ELM_OWNER_POINT))));
    RQ_AttributeListHandle vertices = attributes.ofVertices(faces.vertices());
    const bool wantsNormals = addVertexNormals_ && !has(vertices, "N") && !has(points, "N");
    if (wantsNormals && !details->movesPoints())
        vertices = addNormals(*details, vertices);
    RQ_PolygonMeshHandle mesh(
        new RQ_PrimPolygonMesh(faces.counts(), faces.vertices().createVertexPointArray(details->getHandle()), points,
                               vertices, attributes.ofPrimitives(faces.primitives()), attributes.ofDetail()));
    mesh->setFaceSetMap(details->buildFaceSets(faces.primitives(), faceSetMode_));

    // A mesh that uses the whole detail keeps its points as they are: compacting would give up the host's memory for copies.
    if (!coversDetail(detail) || (!fastCompacting_ && detail.hasUnusedPoints()))
        mesh = mesh->removeUnusedPoints();
    bool changed = false;
    if (wantsNormals && details->movesPoints())
        mesh = mesh->createVertexNormalsIfMissing("P", cuspAngle_, true, changed);
    if (addTangents_)
        mesh = mesh->createTangentsIfMissing(changed);
    if (!mesh)
        setInterrupted();
    return mesh;
}

RQ_PrimitiveHandle RQ_MSHPrimCollectPolyData::makeFaces(const RQ_MSHDetailListHandle &details)
{
    const RQ_PolygonMeshHandle mesh = makeMesh(details);
    if (!mesh)
        return nullptr;
    // A surface is not cut in pieces: each would get a boundary of its own.
    if (asSubdivision_)
        return RQ_PrimSubdivisionMesh::createWithStandardTags(*mesh);
    if (RQ_RefineParms::getGeoPolygonMesh(parms_))
        return rq::inPieces(mesh, RQ_RefineParms::getMaxPolyMeshSize(parms_));
    BAS_Array<RQ_PrimitiveHandle> polygons;
    for (int64_t face = 0; face < mesh->getFaceCount(); ++face)
        polygons.push_back(mesh->getFace(face));
    return rq::collected(polygons);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectPolyData::makeCurves(const RQ_MSHDetailListHandle &details)
{
    readPending();
    gathered_.open.finish();
    const rq::MeshAttributes attributes(*details, parms_);
    BAS_Array<RQ_PrimitiveHandle> meshes;
    for (const rq::FaceLists &curves : rq::limitVertices(gathered_.open, mostCurveVertices_))
        meshes.push_back(rq::makeCurveMesh(*details, attributes, curves, faceSetMode_));
    return rq::collected(meshes);
}
