#include <io/detail/unpacked.h>

#include <algorithm>
#include <cstdint>

#include <fmt/format.h>

#include <io/detail/AppendedRuns.h>
#include <io/detail/Materials.h>
#include <io/detail/Tally.h>
#include <io/detail/UnpackedColumns.h>
#include <io/detail/sayOnce.h>

namespace rq::io
{
namespace
{
constexpr double kMostCopies = 1 << 24;
constexpr ELM_Owner kOwners[] = {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE};

bool isCopied(const MSH_Detail &detail, ELM_Offset primitive)
{
    return detail.typeOf(primitive) == ELM_PRIMITIVE_POLYGON || detail.typeOf(primitive) == ELM_PRIMITIVE_PARTICLES;
}

/// Puts copies of all parts into one detail.
class Unpacking
{
public:
    Unpacking(const PackedParts &parts, const std::string &name, Messages &messages)
        : parts_(parts), name_(name), messages_(messages)
    {}

    MOD_ConstDetailHandle build();

private:
    const MSH_Detail &plain(size_t part) const { return *plain_[part].readLock(); }
    bool fits();
    void makePlain();
    bool appendElements(MOD_Edit &edit, PackedCopies &copies) const;
    void joinGroups(MOD_Edit &edit, const PackedCopies &copies) const;
    bool turnMirrored(MOD_Edit &edit, const PackedCopies &copies) const;
    void mergeMaterials(MOD_Edit &edit) const;
    MOD_ConstDetailHandle fail(const std::string &why) const
    {
        return messages_.fail(name_, {}, why), MOD_ConstDetailHandle();
    }

    const PackedParts &parts_;
    const std::string &name_;
    Messages &messages_;
    std::vector<MOD_ConstDetailHandle> plain_;  // parts without what copies cannot have
};

MOD_ConstDetailHandle Unpacking::build()
{
    if (!fits())
        return fail(fmt::format("expected packed geometry of at most {:.0f} copies and {} points, found more", kMostCopies,
                                INT32_MAX));
    MOD_DetailHandle result(plain_.back());
    MOD_Edit edit(result);
    PackedCopies copies(parts_);
    if (!appendElements(edit, copies) || !UnpackedColumns(copies, plain_, name_, messages_).write(edit))
        return fail(edit.message());
    joinGroups(edit, copies);
    mergeMaterials(edit);
    if (!turnMirrored(edit, copies))
        return fail(edit.message());
    return edit.commit();
}

bool Unpacking::fits()
{
    if (parts_.copies() > kMostCopies)
        return false;
    makePlain();
    return std::ranges::all_of(kOwners, [this](ELM_Owner owner) {
        double sum = 0.0;
        for (size_t part = 0; part < plain_.size(); ++part)
            sum += parts_.all()[part].copies * double(plain(part).count(owner));
        return sum <= double(INT32_MAX);
    });
}

void Unpacking::makePlain()
{
    std::map<ELM_PrimitiveTypeId, double> leftOut;
    for (const PackedParts::Part &part : parts_.all())
    {
        plain_.push_back(part.own);
        if (&part == &parts_.root())
            break;
        const MSH_Detail &own = *part.own.readLock();
        ELM_Group others(ELM_OWNER_PRIMITIVE, BAS_StringHolder());
        for (ELM_Offset primitive = 0; primitive < own.primitiveCount(); ++primitive)
            if (!isCopied(own, primitive))
            {
                leftOut[own.typeOf(primitive)] += part.copies;
                others.set(primitive);
            }
        if (others.count() > 0)
            plain_.back() = without(part.own, others.range());
    }
    for (const auto &[type, count] : leftOut)
    {
        const ELM_PrimitiveDefinition *known = ELM_PrimitiveFactory::find(type);
        const std::string what =
            counted(int64_t(count), "primitive of packed geometry is", "primitives of packed geometry are");
        messages_.warn(name_, {}, fmt::format("{} left out: {}", what, known ? known->label.c_str() : "of no type"));
    }
}

bool Unpacking::appendElements(MOD_Edit &edit, PackedCopies &copies) const
{
    std::array<int64_t, 3> next{};
    for (PackedCopy &copy : copies.all)
    {
        copy.first = next;
        for (const ELM_Owner owner : kOwners)
            next[size_t(owner)] += plain(copy.part).count(owner);
    }
    if (!edit.appendPoints(next[ELM_OWNER_POINT] - edit.pointCount()))
        return false;
    AppendedRuns appending(edit);
    for (size_t i = 1; i < copies.all.size(); ++i)
        if (!appending.add(plain(copies.all[i].part), copies.all[i].first[ELM_OWNER_POINT]))
            return false;
    return appending.finish();
}

void Unpacking::joinGroups(MOD_Edit &edit, const PackedCopies &copies) const
{
    for (size_t i = 1; i < copies.all.size(); ++i)
    {
        const PackedCopy &copy = copies.all[i];
        for (const ELM_Owner owner : kOwners)
            for (int64_t g = 0; g < plain(copy.part).groups(owner).size(); ++g)
            {
                const ELM_Group &members = plain(copy.part).groups(owner)[g];
                ELM_Group *group = edit.group(owner, members.name().view());
                for (const auto [begin, end] : members.range().blocks())
                    group->setRange(copy.first[size_t(owner)] + begin, end - begin);
            }
        for (const PackedCopy *inner = &copy; inner->outer >= 0; inner = &copies.all[size_t(inner->outer)])
        {
            const MSH_Detail &outer = *parts_.all()[copies.all[size_t(inner->outer)].part].whole.readLock();
            for (int64_t g = 0; g < outer.groups(ELM_OWNER_PRIMITIVE).size(); ++g)
                if (const ELM_Group &members = outer.groups(ELM_OWNER_PRIMITIVE)[g]; members.contains(inner->placing))
                    edit.group(ELM_OWNER_PRIMITIVE, members.name().view())
                        ->setRange(copy.first[ELM_OWNER_PRIMITIVE], plain(copy.part).primitiveCount());
        }
    }
}

bool Unpacking::turnMirrored(MOD_Edit &edit, const PackedCopies &copies) const
{
    ELM_Group turned(ELM_OWNER_PRIMITIVE, BAS_StringHolder());
    for (const PackedCopy &copy : copies.all)
        for (ELM_Offset i = 0; copy.isMirrored() && i < plain(copy.part).primitiveCount(); ++i)
            if (plain(copy.part).typeOf(i) == ELM_PRIMITIVE_POLYGON && plain(copy.part).isClosed(i))
                turned.set(copy.first[ELM_OWNER_PRIMITIVE] + i);
    return edit.reverse(turned.range());
}

void Unpacking::mergeMaterials(MOD_Edit &edit) const
{
    BAS_Options all;
    const auto add = [&](const BAS_StringHolder &name, const BAS_Options::Value &value) {
        const BAS_Options::Value *known = all.find(name);
        if (!known)
            all.set(name, value);
        else if (*known != value)
            messages_.warn(
                name_, {},
                fmt::format("material \"{}\" has another meaning in packed geometry, which is left out", name.c_str()));
    };
    for (auto part = plain_.rbegin(); part != plain_.rend(); ++part)
        if (const ELM_Attribute *told = findMaterials(*part->readLock()))
            for (const auto &[name, value] : told->dicts()->get(0).options())
                add(name, value);
    writeMaterials(edit, std::move(all));
}
}  // namespace

MOD_ConstDetailHandle unpacked(const MOD_ConstDetailHandle &detail, const std::string &name, Messages &messages)
{
    if (!hasPacked(*detail.readLock()))
        return detail;
    PackedParts parts(name, messages);
    if (!parts.collect(detail))
        return {};
    Messages said;
    const MOD_ConstDetailHandle all = Unpacking(parts, name, said).build();
    sayOnce(said, messages);
    return all;
}
}  // namespace rq::io
