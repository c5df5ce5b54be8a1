#include <rq/prim/PrimitiveType.h>

#include <atomic>
#include <iterator>

#include <rq/prim/Primitive.h>

namespace
{
// By id.  Null for the two kinds that never got a name.
constexpr const char *kNames[] = {
    "Collection",
    "MSH_Detail",
    "MSH_Primitive",
    "MSH_TPSurf",
    "PackedDetail",
    "Primitive List",
    "MSH_TPSurfMesh",
    "Curve",
    "Polygon",
    "Patch",
    "NuPatch",
    "CurveMesh",
    "PolygonMesh",
    "PatchMesh",
    "SubdivisionMesh",
    "SubdivisionCurves",
    "TriangleStrip",
    "TriangleFan",
    "NURBSCurve",
    "NURBSSurface",
    "NURBSCurveMesh",
    "Circle",
    "Sphere",
    "Tube",
    "Hyperboloid",
    "PointMesh",
    "ParticleSystem",
    "MetaballExpression",
    "VoxelVolume",
    "VDBVolume",
    "TetMesh",
    nullptr,
    "BezierPatch",
    "CircleMesh",
    "SphereMesh",
    "TubeMesh",
    "HyperboloidMesh",
    "CaptureRegionPill",
    "PackedInstance",
    "PackedFragments",
    "PackedAgents",
    "PackedAgentShape",
    "AlembicArchive",
    "AlembicShape",
    "AlembicShapeMesh",
    "AlembicInstance",
    "PackedDisk",
    "Channel",
    nullptr,
};
static_assert(std::size(kNames) == RQ_PRIM_CHARACTER_SCENE + 1, "one name, or null, for every kind");

// The id before the first that is handed out, which is 50.
std::atomic<int> lastTypeId{49};
static_assert(RQ_PRIM_CHARACTER_SCENE < 49, "ids of others would meet those of the library");
}  // namespace

const char *RQprimitiveType(int id)
{
    const bool known = id >= 0 && id < int(std::size(kNames)) && kNames[id];
    return known ? kNames[id] : "<unknown>";
}

int RQ_Primitive::createPrimitiveTypeId() { return ++lastTypeId; }
