#pragma once

#include <host/mod/Edit.h>

/// Primitives of one type, flags, and numbers of vertices, to be added.
struct MOD_Edit::Primitives
{
    ELM_PrimitiveTypeId type;
    uint8_t flags;
    int64_t count;
    const int32_t *corners;  // null: each has `sameCorners` vertices
    int32_t sameCorners;

    std::span<const MSH_PayloadHandle> payloads{};  // none, one for all, or one each
    MOD_Matrices transforms{};                      // the same
    bool isPlaced = false;

    int64_t vertices = 0;                // of all primitives
    std::vector<int64_t> startOfPage{};  // with `corners`: vertices before the primitives of each page of offsets

    static Primitives polygons(std::span<const int32_t> corners, bool closed)
    {
        return {ELM_PRIMITIVE_POLYGON, flagsOf(closed), int64_t(corners.size()), corners.data(), 0};
    }
    static Primitives polygons(int32_t corners, int64_t count, bool closed)
    {
        return {ELM_PRIMITIVE_POLYGON, flagsOf(closed), count, nullptr, corners};
    }
    static uint8_t flagsOf(bool closed) { return closed ? MSH_DetailData::kClosed : 0; }

    /// Add up the vertices, page by page of the offsets that the primitives will have.  False when a count is negative.
    bool addUp(ELM_Offset first);

    void writeStarts(ELM_IndexColumn &starts, ELM_Offset first, int64_t firstVertex) const;
};
