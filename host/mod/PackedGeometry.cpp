#include <host/mod/PackedGeometry.h>

#include <fmt/format.h>

#include <host/mod/Edit.h>
#include <host/mod/services.h>

namespace
{
const BAS_StringHolder kType = BAS_StringHolder::literal("type");
const BAS_StringHolder kDetail = BAS_StringHolder::literal("detail");

bool isOneDetail(const MSH_DetailList &details, const char *what, std::string &why)
{
    if (details.size() == 1 && details[0])
        return true;
    why = fmt::format("{} needs one detail", what);
    return false;
}
}  // namespace

bool MOD_PackedGeometryData::check(std::string &why) const { return isOneDetail(detail, "packed geometry", why); }

bool MOD_PackedGeometryData::instanceKey(BAS_Options &key) const
{
    key.set(kType, BAS_StringHolder::literal("PackedGeometry"));
    key.set(kDetail, detail[0]->uniqueId());
    return true;
}

MOD_PackedContent MOD_PackedGeometryData::load(std::string &) const { return {MOD_ConstDetailHandle(detail[0].get())}; }

bool MOD_PackedFragmentData::check(std::string &why) const { return isOneDetail(detail, "a packed fragment", why); }

bool MOD_PackedFragmentData::instanceKey(BAS_Options &key) const
{
    key.set(kType, BAS_StringHolder::literal("PackedFragment"));
    key.set(kDetail, detail[0]->uniqueId());
    key.set(BAS_StringHolder::literal("attribute"), attribute);
    key.set(BAS_StringHolder::literal("value"), value);
    return true;
}

const ELM_Range &MOD_PackedFragmentData::range() const
{
    return range_
        .getOrBuild([this] {
            ELM_Group members(ELM_OWNER_PRIMITIVE, BAS_StringHolder());
            const ELM_Attribute *names = detail[0]->find(ELM_OWNER_PRIMITIVE, attribute.view());
            const ELM_StringTuple *strings = names ? names->strings() : nullptr;
            const int32_t wanted = strings ? strings->find(value.view()) : -1;
            for (int64_t primitive = 0; wanted >= 0 && primitive < strings->size(); ++primitive)
                if (strings->index(primitive) == wanted)
                    members.set(primitive);
            BAS_IntrusivePtr<CachedRange> built(new CachedRange);
            built->range = members.range();
            return BAS_IntrusivePtr<const CachedRange>(built);
        })
        .range;
}

MOD_PackedContent MOD_PackedFragmentData::load(std::string &why) const
{
    const auto without = [&why](const MOD_ConstDetailHandle &whole, const ELM_Range &gone) {
        MOD_DetailHandle part(whole);
        MOD_Edit edit(part);
        if (!edit.remove(gone) || !edit.compact())
            return why = edit.message(), MOD_ConstDetailHandle();
        return edit.commit();
    };
    ELM_Group others(ELM_OWNER_PRIMITIVE, BAS_StringHolder());
    others.unite(detail[0]->range(ELM_OWNER_PRIMITIVE));
    others.subtract(range());
    const MOD_ConstDetailHandle primitives = without(MOD_ConstDetailHandle(detail[0].get()), others.range());
    if (!primitives)
        return {};
    ELM_Group unused(ELM_OWNER_POINT, BAS_StringHolder());
    const ELM_OffsetList points = MODunusedPoints(*primitives.readLock());
    for (int64_t i = 0; i < points.size(); ++i)
        unused.set(points[i]);
    return {without(primitives, unused.range())};
}
