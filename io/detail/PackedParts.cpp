#include <io/detail/PackedParts.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include <fmt/format.h>

#include <host/mod/Edit.h>
#include <host/mod/services.h>
#include <io/detail/RQGDetail.h>
#include <io/detail/Tally.h>
#include <io/detail/compacted.h>

namespace rq::io
{
namespace
{
// The number of a part whose placements are still looked at.
constexpr size_t kOpen = SIZE_MAX;

bool isFinite(const BAS_Mat4d &matrix)
{
    return std::all_of(matrix.getValue(), matrix.getValue() + 16, [](double number) { return std::isfinite(number); });
}

void drop(MOD_DetailHandle &detail, const ELM_Range &elements)
{
    MOD_Edit edit(detail);
    if (!edit.remove(elements) || !edit.compact())
        throw std::bad_alloc();
    edit.commit();
}
}  // namespace

MOD_ConstDetailHandle without(const MOD_ConstDetailHandle &whole, const ELM_Range &primitives)
{
    MOD_DetailHandle rest(whole);
    drop(rest, primitives);
    ELM_Group points(ELM_OWNER_POINT, BAS_StringHolder());
    const ELM_OffsetList unused = MODunusedPoints(*rest.read().readLock());
    for (int64_t i = 0; i < unused.size(); ++i)
        if (whole.readLock()->usedPoints().get(unused[i]))
            points.set(unused[i]);
    drop(rest, points.range());
    return rest.read();
}

bool hasPacked(const MSH_Detail &detail)
{
    for (int64_t i = 0; i < ELM_PrimitiveFactory::count(); ++i)
        if (const ELM_PrimitiveDefinition *type = ELM_PrimitiveFactory::at(i);
            type->isPacked && detail.primitiveCount(type->id) > 0)
            return true;
    return false;
}

bool PackedParts::collect(const MOD_ConstDetailHandle &root)
{
    size_t number;
    if (!add(root, 1, number))
        return false;
    parts_.back().copies = 1.0;
    for (auto outer = parts_.rbegin(); outer != parts_.rend(); ++outer)
        for (const Placement &placement : outer->placements)
            parts_[placement.part].copies += outer->copies;
    for (const auto &[why, count] : missing_)
        messages_.warn(name_, {},
                       fmt::format("{} left out: {}",
                                   counted(count, "primitive of packed geometry is", "primitives of packed geometry are"),
                                   why));
    return true;
}

double PackedParts::copies() const
{
    return std::accumulate(parts_.begin(), parts_.end(), 0.0,
                           [](double sum, const Part &part) { return sum + part.copies; });
}

bool PackedParts::add(const MOD_ConstDetailHandle &detail, int level, size_t &number)
{
    const auto [known, isNew] = numbers_.try_emplace(detail.readLock(), kOpen);
    number = known->second;
    if (!isNew)
        return number != kOpen || messages_.fail(name_, {}, "packed geometry places itself");
    Part part{.source = detail};
    part.whole = part.own = compacted(detail);
    if (!readPlacements(part, level))
        return false;
    number = numbers_[detail.readLock()] = parts_.size();
    parts_.push_back(std::move(part));
    return true;
}

bool PackedParts::readPlacements(Part &part, int level)
{
    const MSH_Detail &whole = *part.whole.readLock();
    if (!hasPacked(whole))
        return true;
    ELM_Group placed(ELM_OWNER_PRIMITIVE, BAS_StringHolder());
    for (ELM_Offset primitive = 0; primitive < whole.primitiveCount(); ++primitive)
    {
        const MOD_PrimPacked packed(whole, primitive);
        if (!packed.isValid())
            continue;
        Placement placement{.part = 0, .primitive = primitive, .matrix = packed.fullTransform()};
        std::string why = "its place is not finite";
        const MOD_ConstDetailHandle detail = isFinite(placement.matrix) ? packed.unpack(why) : MOD_ConstDetailHandle();
        if (!detail)
        {
            ++missing_[why];
            continue;
        }
        if (level < kRQGDeepest && !add(detail, level + 1, placement.part))
            return false;
        part.levels = std::max(part.levels, level < kRQGDeepest ? parts_[placement.part].levels + 1 : kRQGDeepest + 1);
        if (part.levels > kRQGDeepest)
            return messages_.fail(name_, {}, fmt::format("packed geometry lies more than {} levels deep", kRQGDeepest));
        part.placements.push_back(placement);
        placed.set(primitive);
    }
    part.own = without(part.whole, placed.range());
    return true;
}

bool isOfPlaced(const ELM_Attribute &attribute)
{
    switch (attribute.typeInfo())
    {
    case ELM_TYPE_POINT:
    case ELM_TYPE_HPOINT:
    case ELM_TYPE_VECTOR:
    case ELM_TYPE_NORMAL:
    case ELM_TYPE_MATRIX:
    case ELM_TYPE_QUATERNION:
        return false;
    default:
        return attribute.scope() == ELM_SCOPE_PUBLIC && (attribute.numericTuple() || attribute.strings()) &&
               attribute.name().view() != ELM_POSITION_NAME && attribute.name().view() != "N";
    }
}

const ELM_Attribute *findOfPlacing(const MOD_PrimPacked &placing, std::string_view name, int64_t &row)
{
    const std::pair<ELM_Owner, ELM_Offset> places[] = {{ELM_OWNER_VERTEX, placing.vertexOrNone()},
                                                       {ELM_OWNER_POINT, placing.pointOrNone()},
                                                       {ELM_OWNER_PRIMITIVE, placing.offset()}};
    for (const auto &[owner, offset] : places)
        if (const ELM_Attribute *found = offset >= 0 ? placing.detail().find(owner, name) : nullptr;
            found && isOfPlaced(*found))
            return row = offset, found;
    return nullptr;
}
}  // namespace rq::io
