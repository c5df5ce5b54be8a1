#pragma once

#include <map>
#include <unordered_map>
#include <vector>

#include <host/mod/DetailHandle.h>
#include <host/mod/PrimPacked.h>
#include <io/Message.h>

namespace rq::io
{
/// True when a detail has packed geometry.
bool hasPacked(const MSH_Detail &detail);

/// A detail without vacant offsets that loses some primitives, and the points that only they used.
MOD_ConstDetailHandle without(const MOD_ConstDetailHandle &whole, const ELM_Range &primitives);

/// The details that packed geometry places, each once, and where it places them.
class PackedParts
{
public:
    /// A packed primitive: which part lies where.
    struct Placement
    {
        size_t part;
        ELM_Offset primitive;
        BAS_Mat4d matrix;  ///< for row vectors
    };

    struct Part
    {
        MOD_ConstDetailHandle source;
        MOD_ConstDetailHandle whole{};  ///< the same without vacant offsets
        MOD_ConstDetailHandle own{};    ///< without packed geometry, and without the points that nothing else uses
        std::vector<Placement> placements{};
        int levels = 1;
        double copies = 0.0;  ///< how often it is there when nothing is packed
    };

    PackedParts(const std::string &name, Messages &messages) : name_(name), messages_(messages) {}

    /// Take a detail and all that lies in it.  False after an error.  Warned of: packed geometry that cannot be had, or
    /// whose place is no finite one.
    bool collect(const MOD_ConstDetailHandle &root);

    /// Each behind those that it places; the last one is what was collected.
    const std::vector<Part> &all() const { return parts_; }
    const Part &root() const { return parts_.back(); }

    /// How many there are of all together, the root among them.
    double copies() const;

private:
    bool add(const MOD_ConstDetailHandle &detail, int level, size_t &number);
    bool readPlacements(Part &part, int level);

    const std::string &name_;
    Messages &messages_;
    std::vector<Part> parts_;
    std::unordered_map<const MSH_Detail *, size_t> numbers_;
    std::map<std::string, int64_t> missing_;  // how many for each reason
};

/// An attribute of a packed primitive, of its vertex or of its point that says something about what it places, rather than
/// where: no place, no direction.  `row` is its row.  Null when there is none.
const ELM_Attribute *findOfPlacing(const MOD_PrimPacked &placing, std::string_view name, int64_t &row);

/// Whether an attribute is of that sort.
bool isOfPlaced(const ELM_Attribute &attribute);
}  // namespace rq::io
