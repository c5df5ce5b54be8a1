#include <host/elm/detail/builtInTypes.h>

#include <host/mod/PackedAgent.h>
#include <host/mod/PackedDisk.h>
#include <host/mod/PackedGeometry.h>
#include <host/msh/Channel.h>
#include <host/msh/Curve.h>
#include <host/msh/Faces.h>
#include <host/msh/Meta.h>
#include <host/msh/Patch3.h>
#include <host/msh/Quadric.h>
#include <host/msh/SparseVolume.h>
#include <host/msh/Surface.h>
#include <host/msh/Volume.h>

namespace
{
using Definition = ELM_PrimitiveDefinition;

Definition columnsOnly(ELM_PrimitiveType id, const char *name, const char *label, int32_t fewest = 0,
                       int32_t most = INT32_MAX)
{
    Definition definition;
    definition.id = id;
    definition.name = BAS_StringHolder::literal(name);
    definition.label = BAS_StringHolder::literal(label);
    definition.fewestVertices = fewest;
    definition.mostVertices = most;
    return definition;
}

template <class Data> Definition withPayload(ELM_PrimitiveType id, const char *name, const char *label)
{
    Definition definition = columnsOnly(id, name, label);
    definition.makePayload = &MSH_PayloadOf<Data>::make;
    return definition;
}

Definition placed(Definition definition, int32_t vertices = 1)
{
    definition.isPlaced = true;
    definition.fewestVertices = definition.mostVertices = vertices;
    return definition;
}

template <class Data> Definition packed(ELM_PrimitiveType id, const char *name, const char *label)
{
    Definition definition = columnsOnly(id, name, label, 0, 1);
    definition.isPacked = definition.isPlaced = true;
    definition.makePayload = &MOD_PackedPayload::make<Data>;
    return definition;
}
}  // namespace

std::vector<ELM_PrimitiveDefinition> host::builtInTypes()
{
    const auto blob = [](ELM_PrimitiveType id, const char *name, const char *label) {
        return placed(withPayload<MSH_BlobData>(id, name, label));
    };
    return {
        columnsOnly(ELM_PRIMITIVE_POLYGON, "polygon", "Polygon"),
        withPayload<MSH_CurveData>(ELM_PRIMITIVE_NURBS_CURVE, "nurbs_curve", "NURBS Curve"),
        withPayload<MSH_CurveData>(ELM_PRIMITIVE_BEZIER_CURVE, "bezier_curve", "Bezier Curve"),
        withPayload<MSH_GridData>(ELM_PRIMITIVE_GRID, "grid", "Grid"),
        withPayload<MSH_SurfaceData>(ELM_PRIMITIVE_NURBS_SURFACE, "nurbs_surface", "NURBS Surface"),
        withPayload<MSH_SurfaceData>(ELM_PRIMITIVE_BEZIER_SURFACE, "bezier_surface", "Bezier Surface"),
        placed(columnsOnly(ELM_PRIMITIVE_CIRCLE, "circle", "Circle")),
        placed(columnsOnly(ELM_PRIMITIVE_SPHERE, "sphere", "Sphere")),
        placed(withPayload<MSH_TubeData>(ELM_PRIMITIVE_TUBE, "tube", "Tube")),
        columnsOnly(ELM_PRIMITIVE_PARTICLES, "particles", "Particle System"),
        blob(ELM_PRIMITIVE_BLOB_ELLIPSOID, "blob_ellipsoid", "Ellipsoid Blob"),
        blob(ELM_PRIMITIVE_BLOB_QUADRIC, "blob_quadric", "Super-quadric Blob"),
        blob(ELM_PRIMITIVE_BLOB_CAPSULE, "blob_capsule", "Capsule Blob"),
        blob(ELM_PRIMITIVE_BLOB_BOX, "blob_box", "Rounded Box Blob"),
        placed(withPayload<MSH_BlobExpressionData>(ELM_PRIMITIVE_BLOB_EXPRESSION, "blob_expression", "Blob Expression"), 0),
        columnsOnly(ELM_PRIMITIVE_TRIANGLE_FAN, "triangle_fan", "Triangle Fan"),
        columnsOnly(ELM_PRIMITIVE_TRIANGLE_STRIP, "triangle_strip", "Triangle Strip"),
        withPayload<MSH_Patch3Data>(ELM_PRIMITIVE_TRIANGULAR_PATCH, "triangular_patch", "Triangular Bezier Patch"),
        placed(withPayload<MSH_VolumeData>(ELM_PRIMITIVE_VOLUME, "volume", "Volume")),
        columnsOnly(ELM_PRIMITIVE_TETRAHEDRON, "tetrahedron", "Tetrahedron", 4, 4),
        withPayload<MSH_SoupData>(ELM_PRIMITIVE_SOUP, "polygon_soup", "Polygon Soup"),
        placed(withPayload<MSH_SparseVolumeData>(ELM_PRIMITIVE_SPARSE_VOLUME, "sparse_volume", "Sparse Volume")),
        columnsOnly(ELM_PRIMITIVE_HEXAHEDRON, "hexahedron", "Hexahedron", 8, 8),
        withPayload<MSH_ChannelData>(ELM_PRIMITIVE_CHANNEL, "channel", "Channel"),
        packed<MOD_PackedGeometryData>(ELM_PRIMITIVE_PACKED_GEOMETRY, "PackedGeometry", "Packed Geometry"),
        packed<MOD_PackedFragmentData>(ELM_PRIMITIVE_PACKED_FRAGMENT, "PackedFragment", "Packed Fragment"),
        packed<MOD_PackedDiskData>(ELM_PRIMITIVE_PACKED_DISK, "PackedDisk", "Packed Disk Geometry"),
        packed<MOD_PackedDiskSequenceData>(ELM_PRIMITIVE_PACKED_DISK_SEQUENCE, "PackedDiskSequence", "Packed Disk Sequence"),
        packed<MOD_PackedAgentData>(ELM_PRIMITIVE_PACKED_AGENT, "PackedAgent", "Packed Agent"),
    };
}
