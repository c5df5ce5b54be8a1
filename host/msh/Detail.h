#pragma once

#include <host/elm/PrimitiveFactory.h>
#include <host/elm/Range.h>
#include <host/msh/DetailData.h>
#include <host/bas/Published.h>

/// One state of a geometry: points, vertices, primitives, their attributes and groups.
///
/// Shape      a vertex refers to a point; a primitive has a run of vertices; each element has an offset of its owner.
///            Offsets run from 0 to `capacity(owner)`; those of removed elements are vacant until the detail is compacted.
/// Ownership  intrusively counted; hold it through `MOD_ConstDetailHandle`
/// Threads    immutable: every operation is safe from any thread.  What is built on first use is built outside of any lock,
///            in parallel, and published once.
class HOST_API MSH_Detail final : public BAS_IntrusiveRefCounter<MSH_Detail>
{
public:
    /// Make a snapshot of the columns.  Caches of `previous` that still hold (same topology) are shared.
    explicit MSH_Detail(const MSH_DetailData &data, const MSH_Detail *previous = nullptr);
    ~MSH_Detail();

    /// The columns themselves, for bulk algorithms.
    const MSH_DetailData &data() const { return data_; }

    // ---- Counts

    int64_t pointCount() const { return count(ELM_OWNER_POINT); }
    int64_t vertexCount() const { return count(ELM_OWNER_VERTEX); }
    int64_t primitiveCount() const { return count(ELM_OWNER_PRIMITIVE); }

    /// Number of primitives of a type.
    int64_t primitiveCount(ELM_PrimitiveTypeId type) const;

    /// Number of elements, 1 for the detail.
    int64_t count(ELM_Owner owner) const { return data_.count(owner); }

    /// One past the last offset; equal to the count while there are no vacant offsets.
    int64_t capacity(ELM_Owner owner) const { return data_.capacity[owner]; }

    /// Offsets whose elements were removed.  They can still be read: their values are defaults, their type is none.
    bool hasVacantOffsets(ELM_Owner owner) const { return data_.vacant[owner] > 0; }
    bool isLive(ELM_Owner owner, ELM_Offset offset) const { return data_.isLive(owner, offset); }

    /// All elements of an owner in offset order.  With vacant offsets the list is explicit, and built on first use.
    ELM_OffsetList offsets(ELM_Owner owner) const;
    ELM_Range range(ELM_Owner owner) const;

    // ---- Attributes and groups

    /// The attributes of an owner, in order of insertion.
    const ELM_AttributeDict &attributes(ELM_Owner owner) const { return data_.attributes[owner]; }

    /// Null when there is none.
    const ELM_Attribute *find(ELM_Owner owner, ELM_Scope scope, std::string_view name) const;
    const ELM_Attribute *find(ELM_Owner owner, std::string_view name) const { return find(owner, ELM_SCOPE_PUBLIC, name); }

    /// True when this very attribute is one of the detail's.  Snapshots share the attributes that did not change.
    bool owns(const ELM_Attribute &attribute) const;

    /// "P", which every detail has; 3 real32 unless it was made otherwise.
    const ELM_Attribute &positions() const { return *positions_; }

    /// The point string attribute that names instanced files; null when there is none.
    const ELM_Attribute *instanceFile() const;

    /// The groups of an owner (none for the detail), and one by name, null when there is none.
    const ELM_GroupDict &groups(ELM_Owner owner) const;
    const ELM_Group *group(ELM_Owner owner, std::string_view name) const { return groups(owner).find(name); }

    /// The group of primitives that are skipped unless asked for; null when there is none.
    const ELM_Group *hidden() const { return group(ELM_OWNER_PRIMITIVE, ELM_HIDDEN_GROUP_NAME); }

    // ---- Topology

    /// Vertex -> point, -1 without one.  `contiguous32` hands out the memory itself.
    const ELM_IndexColumn &vertexPoint() const { return data_.vertexPoint; }
    ELM_Offset vertexPoint(ELM_Offset vertex) const { return data_.vertexPoint.value(vertex); }

    /// Vertex -> primitive.  Built on first use.
    const ELM_IndexColumn &vertexPrimitive() const;

    ELM_PrimitiveTypeId typeOf(ELM_Offset primitive) const { return data_.type.value(primitive); }
    bool isClosed(ELM_Offset primitive) const { return data_.flags.value(primitive) & MSH_DetailData::kClosed; }

    /// A primitive's vertices.
    struct VertexRun
    {
        ELM_Offset start;
        int64_t count;
    };
    VertexRun vertexRun(ELM_Offset primitive) const
    {
        return {data_.vertexStart.value(primitive), data_.vertexCount.value(primitive)};
    }
    ELM_OffsetList vertices(ELM_Offset primitive) const;

    /// What a primitive holds beyond the columns; null without.  Its view knows what it is made of.
    const MSH_Payload *payload(ELM_Offset primitive) const
    {
        const int32_t number = data_.payload.value(primitive);
        return number < 0 ? nullptr : data_.payloads[number].payload.get();
    }

    /// True while the primitives' runs follow each other in offset order without gaps: then the vertices of any run of
    /// primitives are a run, and `vertexPoint` read from the first on is their vertex list.
    bool sequentialVertices() const { return data_.sequentialVertices; }

    /// A bit for every point that a primitive's vertex refers to.  Built on first use.
    const BAS_BitArray &usedPoints() const;
    bool hasUnusedPoints() const;

    /// False while some vertex has no point.
    bool topologyIsValid() const { return data_.looseVertices == 0; }

    // ---- Identity

    /// Of this snapshot; never the same for two.
    int64_t uniqueId() const { return uniqueId_; }

    /// Changes whenever points, vertices or primitives come, go, or are connected otherwise.
    int64_t topologyId() const { return data_.topologyId; }

    /// Changes whenever positions do.
    int64_t positionId() const { return positions_->dataId(); }

    /// Counts every change of anything.
    int64_t metaCacheCount() const { return data_.metaCacheCount; }

    /// Bytes of all columns, shared ones included, and of what was built on first use.
    int64_t memoryUsage() const;

private:
    struct PointUse;
    struct VertexOwners;
    struct LiveOffsets;

    const PointUse &pointUse() const;

    MSH_DetailData data_;
    const ELM_Attribute *positions_;
    int64_t uniqueId_;
    host::Published<PointUse> pointUse_;
    host::Published<VertexOwners> vertexOwners_;
    std::array<host::Published<LiveOffsets>, ELM_ELEMENT_OWNERS> liveOffsets_;
};
