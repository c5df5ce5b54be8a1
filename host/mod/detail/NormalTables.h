#pragma once

#include <variant>

#include <host/bas/CornerAdjacency.h>
#include <host/bas/Published.h>
#include <host/mod/detail/FaceTable.h>

namespace host
{
/// The faces of a detail of nothing but closed polygons of one size, read where they lie: corner i is vertex i.
class EvenFaces
{
public:
    /// Corners of each face; 0 when the detail is not of this kind.
    static int64_t cornersOfEach(const MSH_Detail &detail);

    explicit EvenFaces(const MSH_Detail &detail)
        : vertexPoint_(detail.vertexPoint()), topology_{vertexPoint_.contiguous32(), detail.primitiveCount(),
                                                        cornersOfEach(detail)}
    {}

    struct Topology
    {
        using Index = int32_t;

        const int32_t *points;
        int64_t count, size;

        int64_t faces() const { return count; }
        int64_t begin(int64_t face) const { return face * size; }
        int64_t end(int64_t face) const { return (face + 1) * size; }
        int64_t point(int64_t corner) const { return points[corner]; }
        int64_t cornersOfEach(int64_t, int64_t) const { return size; }
    };
    Topology topology() const { return topology_; }

    int64_t corners() const { return topology_.count * topology_.size; }
    int64_t vertex(int64_t corner) const { return corner; }
    int64_t memoryUsage() const { return 0; }

private:
    ELM_IndexColumn vertexPoint_;  // shares its rows with the detail, without keeping the rest of it
    Topology topology_;
};

/// Faces, and the corners around each of their points once somebody wants them.
template <class FacesType> class NormalTable
{
public:
    using Faces = FacesType;
    using Topology = typename Faces::Topology;
    using Adjacency = CornerAdjacency<typename Topology::Index>;

    template <class... Arguments>
    explicit NormalTable(const MSH_Detail &detail, const Arguments &...arguments)
        : faces_(detail, arguments...), points_(detail.capacity(ELM_OWNER_POINT))
    {}

    const Faces &faces() const { return faces_; }
    int64_t points() const { return points_; }

    const Adjacency &adjacency() const
    {
        return adjacency_.getOrBuild(
            [this] { return BAS_IntrusivePtr<const Counted>(new Counted(points_, faces_.topology())); });
    }

    int64_t memoryUsage() const { return faces_.memoryUsage() + (adjacency_.get() ? adjacency_.get()->memoryUsage() : 0); }

private:
    struct Counted : Adjacency, BAS_IntrusiveRefCounter<Counted>
    {
        using Adjacency::Adjacency;
    };

    Faces faces_;
    int64_t points_;
    Published<Counted> adjacency_;
};

/// The table that suits a detail.
class NormalTables
{
public:
    explicit NormalTables(const MSH_Detail &detail);

    /// Call `visit(table)` with the table in its kind.
    template <class Visit> void visit(Visit &&visit) const
    {
        const auto unlessNone = [&]<class Table>(const Table &table) {
            if constexpr (!std::is_same_v<Table, std::monostate>)
                visit(table);
        };
        std::visit(unlessNone, table_);
    }

private:
    std::variant<std::monostate, NormalTable<EvenFaces>, NormalTable<FaceTable<int32_t>>, NormalTable<FaceTable<int64_t>>>
        table_;
};
}  // namespace host
