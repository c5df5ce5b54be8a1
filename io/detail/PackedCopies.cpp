#include <io/detail/PackedCopies.h>

namespace rq::io
{
PackedCopies::PackedCopies(const PackedParts &parts) : parts_(parts)
{
    all.reserve(size_t(parts.copies()));
    add(parts.all().size() - 1, BAS_Mat4d(), -1, -1);
}

void PackedCopies::add(size_t part, const BAS_Mat4d &matrix, int64_t outer, ELM_Offset placing)
{
    const int64_t number = std::ssize(all);
    all.push_back({part, matrix, outer, placing, {}});
    for (const PackedParts::Placement &placement : parts_.all()[part].placements)
        add(placement.part, placement.matrix * matrix, number, placement.primitive);
}

const ELM_Attribute *PackedCopies::inherited(const PackedCopy &copy, std::string_view name, int64_t &row) const
{
    for (const PackedCopy *inner = &copy; inner->outer >= 0; inner = &all[size_t(inner->outer)])
        if (const ELM_Attribute *found = findOfPlacing(placing(*inner), name, row))
            return found;
    return nullptr;
}
}  // namespace rq::io
