#pragma once

#include <memory>

#include <host/msh/Detail.h>

namespace host
{
class NormalTables;
}

/// The faces of a detail as normals are computed of them: closed polygons, and the faces of fans, strips, soups and grids,
/// if every corner has a point.  Good for every snapshot of the same topology, whatever its positions.
///
/// Failure  null when memory is exhausted
/// Threads  safe from any thread
/// Cost     the list of the corners around each point, made when it is first needed; and a table of all corners, unless the
///          detail consists of nothing but closed polygons of one size, whose vertices follow each other
class HOST_API MOD_NormalFaces
{
public:
    using Handle = std::shared_ptr<const MOD_NormalFaces>;

    static Handle create(const MSH_Detail &detail);
    ~MOD_NormalFaces();

    int64_t topologyId() const { return topologyId_; }
    const host::NormalTables &tables() const { return *tables_; }
    int64_t memoryUsage() const;

private:
    explicit MOD_NormalFaces(const MSH_Detail &detail);

    int64_t topologyId_;
    std::unique_ptr<const host::NormalTables> tables_;
};
