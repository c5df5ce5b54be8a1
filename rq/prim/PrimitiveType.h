#pragma once

#include <cstdint>

#include <rq/api.h>

/// The kinds of primitive that the library knows.  The numbers are part of the interface; kinds that are defined outside
/// the library take theirs from `RQ_Primitive::createPrimitiveTypeId`.
enum RQ_PrimitiveType : int32_t
{
    RQ_PRIM_UNDEFINED = -1,
    RQ_PRIM_COLLECT = 0,
    RQ_PRIM_MSH_DETAIL,
    RQ_PRIM_MSH_PRIMITIVE,
    RQ_PRIM_MSH_TPSURF,
    RQ_PRIM_MSH_PACKED,
    RQ_PRIM_MSH_LIST,
    RQ_PRIM_MSH_TPSURF_MESH,
    RQ_PRIM_CURVE,
    RQ_PRIM_POLYGON,
    RQ_PRIM_PATCH,
    RQ_PRIM_NU_PATCH,
    RQ_PRIM_CURVE_MESH,
    RQ_PRIM_POLYGON_MESH,
    RQ_PRIM_PATCH_MESH,
    RQ_PRIM_SUBDIVISION_MESH,
    RQ_PRIM_SUBDIVISION_CURVES,
    RQ_PRIM_TRIANGLE_STRIP,
    RQ_PRIM_TRIANGLE_FAN,
    RQ_PRIM_NURBS_CURVE,
    RQ_PRIM_NURBS_SURFACE,
    RQ_PRIM_NURBS_CURVE_MESH,
    RQ_PRIM_CIRCLE,
    RQ_PRIM_SPHERE,
    RQ_PRIM_TUBE,
    RQ_PRIM_HYPERBOLOID,
    RQ_PRIM_POINT_MESH,
    RQ_PRIM_PARTICLE_SYSTEM,
    RQ_PRIM_META_BALL,
    RQ_PRIM_VOLUME,
    RQ_PRIM_VDB,
    RQ_PRIM_TET_MESH,
    RQ_PRIM_HEX_MESH,
    RQ_PRIM_BEZIER_PATCH,
    RQ_PRIM_CIRCLE_MESH,
    RQ_PRIM_SPHERE_MESH,
    RQ_PRIM_TUBE_MESH,
    RQ_PRIM_HYPERBOLOID_MESH,
    RQ_PRIM_CAPTURE_REGIONS,
    RQ_PRIM_INSTANCE,
    RQ_PRIM_FRAGMENTS,
    RQ_PRIM_PACKED_AGENT,
    RQ_PRIM_AGENT_SHAPE,
    RQ_PRIM_ALEMBIC_ARCHIVE,
    RQ_PRIM_ALEMBIC,
    RQ_PRIM_ALEMBIC_MESH,
    RQ_PRIM_ALEMBIC_INSTANCE,
    RQ_PRIM_PACKED_DISK,
    RQ_PRIM_CHANNEL,
    RQ_PRIM_CHARACTER_SCENE
};

/// The registered name, "<unknown>" for ids outside the table and for the two kinds without one (hex meshes and character
/// scenes).
RQ_API const char *RQprimitiveType(int id);
