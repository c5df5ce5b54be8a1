#pragma once

#include <cstdint>

#include <host/plt/types.h>

// Numbers and names of the geometry database.  The numbers are part of the interface: they are stored, and upper layers
// use the same ones.

/// Where an element lies in its detail; stable while the element lives.
using ELM_Offset = int64_t;

/// The id of a primitive type, see `ELM_PrimitiveFactory`.
using ELM_PrimitiveTypeId = int32_t;

/// No element.
constexpr ELM_Offset ELM_INVALID_OFFSET = -1;

/// Rows of one page of an attribute, and the unit of every parallel loop over elements.
constexpr int ELM_PAGE_BITS = 10;
constexpr int64_t ELM_PAGE_SIZE = int64_t(1) << ELM_PAGE_BITS;

/// Offsets from here on need 64 bits.  Half of what fits, because consumers calculate with signed 32-bit indices.
constexpr ELM_Offset ELM_INDEX32_LIMIT = ELM_Offset(1) << 30;

/// The class of element that an attribute or group belongs to.
enum ELM_Owner : int32_t
{
    ELM_OWNER_INVALID = -1,
    ELM_OWNER_VERTEX = 0,
    ELM_OWNER_POINT,
    ELM_OWNER_PRIMITIVE,
    ELM_OWNER_DETAIL,
    ELM_OWNERS,
    ELM_ELEMENT_OWNERS = ELM_OWNER_DETAIL  ///< the owners that have elements of their own: all but the detail
};

/// Who an attribute is for.  Names are distinct within a scope.
enum ELM_Scope : int32_t
{
    ELM_SCOPE_PUBLIC = 0,
    ELM_SCOPE_PRIVATE,
    ELM_SCOPE_GROUP
};

/// How one component of a value is stored.
enum ELM_Storage : int32_t
{
    ELM_STORAGE_INVALID = -1,
    ELM_STORAGE_UINT8 = 0,
    ELM_STORAGE_INT8,
    ELM_STORAGE_INT16,
    ELM_STORAGE_INT32,
    ELM_STORAGE_INT64,
    ELM_STORAGE_REAL16,
    ELM_STORAGE_REAL32,
    ELM_STORAGE_REAL64,
    ELM_STORAGE_STRING,
    ELM_STORAGE_DICTIONARY
};

/// The kind of value, without its width.
enum ELM_StorageClass : int32_t
{
    ELM_STORAGE_CLASS_INVALID = -1,
    ELM_STORAGE_CLASS_INTEGER = 0,
    ELM_STORAGE_CLASS_FLOAT,
    ELM_STORAGE_CLASS_STRING,
    ELM_STORAGE_CLASS_DICTIONARY
};

constexpr ELM_StorageClass ELMstorageClass(ELM_Storage storage)
{
    return storage < ELM_STORAGE_UINT8 || storage > ELM_STORAGE_DICTIONARY ? ELM_STORAGE_CLASS_INVALID
           : storage <= ELM_STORAGE_INT64                                  ? ELM_STORAGE_CLASS_INTEGER
           : storage <= ELM_STORAGE_REAL64                                 ? ELM_STORAGE_CLASS_FLOAT
           : storage == ELM_STORAGE_STRING                                 ? ELM_STORAGE_CLASS_STRING
                                                                           : ELM_STORAGE_CLASS_DICTIONARY;
}

/// True for the storages that hold numbers.
constexpr bool ELMisNumeric(ELM_Storage storage) { return storage >= ELM_STORAGE_UINT8 && storage <= ELM_STORAGE_REAL64; }

/// What a tuple means geometrically.
enum ELM_TypeInfo : int32_t
{
    ELM_TYPE_NONE = -1,
    ELM_TYPE_POINT = 0,
    ELM_TYPE_HPOINT,
    ELM_TYPE_VECTOR,
    ELM_TYPE_NORMAL,
    ELM_TYPE_COLOR,
    ELM_TYPE_MATRIX,
    ELM_TYPE_QUATERNION,
    ELM_TYPE_TEXTURE,
    ELM_TYPE_BOX2,
    ELM_TYPE_BOX
};

/// The point attribute that every detail has.
inline constexpr const char *ELM_POSITION_NAME = "P";

/// The private primitive attribute of 3x3 matrices that place spheres, volumes, packed geometry and their like.
inline constexpr const char *ELM_TRANSFORM_NAME = "transform";

/// Primitives of this group are skipped unless hidden ones are asked for.
inline constexpr const char *ELM_HIDDEN_GROUP_NAME = "__hidden";

/// The point string attribute that names the file to put at the point.
inline constexpr const char *ELM_INSTANCE_FILE_NAME = "instance_file";

/// The detail attribute that stamps the topology.
inline constexpr const char *ELM_TOPOLOGY_NAME = "__topology";
