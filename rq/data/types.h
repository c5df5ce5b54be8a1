#pragma once

#include <cstdint>

#include <rq/api.h>

/// How one component of a value is stored.  The numbers are part of the interface: they are stored and used as indices.
enum RQ_Storage : int32_t
{
    RQ_STORAGE_INVALID = -1,
    RQ_STORAGE_UINT8 = 0,
    RQ_STORAGE_INT8,
    RQ_STORAGE_INT16,
    RQ_STORAGE_INT32,
    RQ_STORAGE_INT64,
    RQ_STORAGE_REAL16,
    RQ_STORAGE_REAL32,
    RQ_STORAGE_REAL64,
    RQ_STORAGE_STRING,
    RQ_STORAGE_DICTIONARY
};

/// What a tuple means geometrically.
enum RQ_Type : int32_t
{
    RQ_TYPE_NONE = -1,
    RQ_TYPE_POINT = 0,
    RQ_TYPE_HPOINT,
    RQ_TYPE_VECTOR,
    RQ_TYPE_NORMAL,
    RQ_TYPE_COLOR,
    RQ_TYPE_QUATERNION,
    RQ_TYPE_MATRIX3,
    RQ_TYPE_MATRIX,
    RQ_TYPE_RESERVED8,
    RQ_TYPE_RESERVED9,
    RQ_TYPE_BOX2,
    RQ_TYPE_BOX
};

/// The class of element that an attribute is bound to.
enum RQ_Owner : int32_t
{
    RQ_OWNER_INVALID = -1,
    RQ_OWNER_VERTEX = 0,  ///< one value per vertex of a face
    RQ_OWNER_POINT,       ///< one per point, shared by the vertices that use it
    RQ_OWNER_UNIFORM,     ///< one per primitive or face
    RQ_OWNER_DETAIL       ///< one for the whole primitive
};

/// Which integer width an index array may have.
enum RQ_IndexingMode : int32_t
{
    RQ_INDEXING_AUTO = 0,  ///< 32 bits whenever the values allow
    RQ_INDEXING_32,
    RQ_INDEXING_64
};

// Names to values: exact and case-sensitive, -1 for null and for unknown names.  Safe from any thread.
RQ_API RQ_Storage RQstorage(const char *name);
RQ_API RQ_Type RQtype(const char *name);
RQ_API RQ_Owner RQowner(const char *name);

/// The canonical name, null for a value outside 0 to 9.
RQ_API const char *RQstorage(RQ_Storage storage);

/// The canonical name, the empty string (never null) for a value out of range or without a name.
RQ_API const char *RQtype(RQ_Type type);

/// The canonical name, null out of range.
RQ_API const char *RQowner(RQ_Owner owner);

/// Bytes of one component: 16 for a string handle, 32 for a dictionary handle, 0 for anything that is no storage.
RQ_API int RQsizeof(RQ_Storage storage);

// The literal 0 would otherwise be taken for a null name.
inline const char *RQstorage(int storage) { return RQstorage(RQ_Storage(storage)); }
inline const char *RQtype(int type) { return RQtype(RQ_Type(type)); }
inline const char *RQowner(int owner) { return RQowner(RQ_Owner(owner)); }
inline int RQsizeof(int storage) { return RQsizeof(RQ_Storage(storage)); }

/// True for the integer storages.
constexpr bool RQisInteger(RQ_Storage storage) { return storage >= RQ_STORAGE_UINT8 && storage <= RQ_STORAGE_INT64; }

/// True for the floating-point storages.
constexpr bool RQisFloat(RQ_Storage storage) { return storage >= RQ_STORAGE_REAL16 && storage <= RQ_STORAGE_REAL64; }

/// True for the integer and the floating-point storages.
constexpr bool RQisNumeric(RQ_Storage storage) { return storage >= RQ_STORAGE_UINT8 && storage <= RQ_STORAGE_REAL64; }
