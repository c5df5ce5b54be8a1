#pragma once

#include <host/bas/StringHolder.h>
#include <host/elm/types.h>
#include <host/fwd.h>

/// The fixed primitive types, and those of packed geometry; applications' own follow from `ELM_PRIMITIVE_FIRST_FREE` on.
enum ELM_PrimitiveType : ELM_PrimitiveTypeId
{
    ELM_PRIMITIVE_NONE = 0,
    ELM_PRIMITIVE_POLYGON,
    ELM_PRIMITIVE_NURBS_CURVE,
    ELM_PRIMITIVE_BEZIER_CURVE,
    ELM_PRIMITIVE_GRID,
    ELM_PRIMITIVE_NURBS_SURFACE,
    ELM_PRIMITIVE_BEZIER_SURFACE,
    ELM_PRIMITIVE_RESERVED,  ///< never registered
    ELM_PRIMITIVE_CIRCLE,
    ELM_PRIMITIVE_SPHERE,
    ELM_PRIMITIVE_TUBE,
    ELM_PRIMITIVE_PARTICLES,
    ELM_PRIMITIVE_BLOB_ELLIPSOID,
    ELM_PRIMITIVE_BLOB_QUADRIC,
    ELM_PRIMITIVE_BLOB_CAPSULE,
    ELM_PRIMITIVE_BLOB_BOX,
    ELM_PRIMITIVE_BLOB_EXPRESSION,
    ELM_PRIMITIVE_TRIANGLE_FAN,
    ELM_PRIMITIVE_TRIANGLE_STRIP,
    ELM_PRIMITIVE_TRIANGULAR_PATCH,
    ELM_PRIMITIVE_VOLUME,
    ELM_PRIMITIVE_TETRAHEDRON,
    ELM_PRIMITIVE_SOUP,
    ELM_PRIMITIVE_SPARSE_VOLUME,
    ELM_PRIMITIVE_HEXAHEDRON,
    ELM_PRIMITIVE_CHANNEL,
    ELM_PRIMITIVE_PACKED_GEOMETRY,
    ELM_PRIMITIVE_PACKED_FRAGMENT,
    ELM_PRIMITIVE_PACKED_DISK,
    ELM_PRIMITIVE_PACKED_DISK_SEQUENCE,
    ELM_PRIMITIVE_PACKED_AGENT,
    ELM_PRIMITIVE_FIRST_FREE
};

/// What is known about a primitive type.
struct ELM_PrimitiveDefinition
{
    ELM_PrimitiveTypeId id = ELM_PRIMITIVE_NONE;
    BAS_StringHolder name;   ///< unique, for files and lookups
    BAS_StringHolder label;  ///< for people
    bool isPacked = false;   ///< stands for geometry that lies elsewhere
    bool isPlaced = false;   ///< has a 3x3 matrix, and the position of its one point
    int32_t fewestVertices = 0;
    int32_t mostVertices = INT32_MAX;

    /// Make an empty payload for a file to fill, whose class is the one of all payloads of the type; null: there are none.
    MSH_Payload *(*makePayload)() = nullptr;
};

/// The primitive types of the process.  Types are added, never removed.
///
/// Ownership  definitions live as long as the process
/// Threads    every operation is safe from any thread; lookups take no lock
class HOST_API ELM_PrimitiveFactory
{
public:
    /// Number of registered types; a change tells that one was added.
    static int64_t count();

    /// The definition of a type, null when the id is not registered.
    static const ELM_PrimitiveDefinition *find(ELM_PrimitiveTypeId id);
    static const ELM_PrimitiveDefinition *find(std::string_view name);

    /// The i-th registered type, in order of registration; null out of range.
    static const ELM_PrimitiveDefinition *at(int64_t i);

    /// Add a type and return its id; `ELM_PRIMITIVE_NONE` when the name is empty or taken.  A packed type is placed.
    static ELM_PrimitiveTypeId add(std::string_view name, std::string_view label, bool isPacked);

    /// The same for everything that a definition says; its id is not read.
    static ELM_PrimitiveTypeId add(ELM_PrimitiveDefinition definition);
};
