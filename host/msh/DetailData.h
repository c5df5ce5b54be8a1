#pragma once

#include <array>
#include <vector>

#include <host/elm/AttributeDict.h>
#include <host/elm/GroupDict.h>
#include <host/elm/IndexColumn.h>
#include <host/msh/PayloadTable.h>

/// The columns of a detail: everything that makes it up, as plain values.
///
/// Shape      vertices and primitives are columns too: a million polygons are not a million objects
/// Ownership  copies share every column until it is written
struct HOST_API MSH_DetailData
{
    /// Bits of `flags`.
    static constexpr uint8_t kClosed = 1;

    /// An empty detail with a point attribute "P": 3 x real32, type info point.
    MSH_DetailData();

    /// Bytes of all columns, shared ones included.
    int64_t memoryUsage() const;

    /// Number of elements, and whether an offset below the capacity has one.
    int64_t count(ELM_Owner owner) const { return capacity[owner] - vacant[owner]; }
    bool isLive(ELM_Owner owner, ELM_Offset offset) const { return !live[owner] || live[owner]->contains(offset); }

    std::array<ELM_AttributeDict, ELM_OWNERS> attributes;
    std::array<ELM_GroupDict, ELM_ELEMENT_OWNERS> groups;

    /// One past the last offset of each owner.  The detail has the one offset 0.
    std::array<int64_t, ELM_OWNERS> capacity{0, 0, 0, 1};

    /// Number of offsets that have no element any more, and a bit for each one that has; null while all have.  The rows of
    /// vacant offsets hold defaults.
    std::array<int64_t, ELM_OWNERS> vacant{};
    std::array<ELM_OffsetBitsHandle, ELM_OWNERS> live;

    ELM_IndexColumn vertexPoint;         ///< vertex -> its point, -1 without one
    ELM_IndexColumn vertexStart{0};      ///< primitive -> its first vertex; never falls, vacant offsets included
    ELM_PageArray<int32_t> vertexCount;  ///< primitive -> number of its vertices, which follow each other
    ELM_PageArray<int16_t> type;         ///< primitive -> type id
    ELM_PageArray<uint8_t> flags;        ///< primitive -> bits
    ELM_PageArray<int32_t> payload;      ///< primitive -> its payload's number, -1 without one
    MSH_PayloadTable payloads;

    /// Call `visit(column)` with every column that has a row for each primitive.
    template <class Visit> void eachPrimitiveColumn(Visit &&visit)
    {
        visit(vertexStart);
        visit(vertexCount);
        visit(type);
        visit(flags);
        visit(payload);
    }

    std::vector<int64_t> typeCounts;  ///< type id -> number of primitives
    int64_t looseVertices = 0;        ///< vertices without a point
    bool sequentialVertices = true;   ///< each primitive's vertices follow those of the one before

    int64_t topologyId = 0;
    int64_t metaCacheCount = 0;
};
