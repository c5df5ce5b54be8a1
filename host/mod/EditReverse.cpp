#include <host/mod/Edit.h>

#include <fmt/format.h>

namespace
{
void reverseBits(ELM_Group &group, ELM_Offset first, int64_t count)
{
    for (ELM_Offset low = first, high = first + count - 1; low < high; ++low, --high)
        if (const bool wasLow = group.contains(low), wasHigh = group.contains(high); wasLow != wasHigh)
        {
            group.set(low, wasHigh);
            group.set(high, wasLow);
        }
}
}  // namespace

bool MOD_Edit::reverse(const ELM_Range &polygons)
{
    if (!isRange(polygons))
        return false;
    if (polygons.owner() != ELM_OWNER_PRIMITIVE)
        return fail("only polygons can be reversed");
    std::vector<ELM_Range> runs;
    const auto collect = [&] {
        for (const auto [begin, end] : polygons.blocks())
            for (ELM_Offset primitive = begin; primitive < end; ++primitive)
            {
                const int type = data_.type.value(primitive);
                if (type == ELM_PRIMITIVE_NONE)
                    continue;
                if (type != ELM_PRIMITIVE_POLYGON)
                    return fail(fmt::format("primitive {} is no polygon", primitive));
                const ELM_Offset first = data_.vertexStart.value(primitive);
                runs.emplace_back(ELM_OWNER_VERTEX, first, first + data_.vertexCount.value(primitive));
            }
        return true;
    };
    const auto turn = [&] {
        const auto each = [&](auto &&reverseRun) {
            for (const ELM_Range &run : runs)
                reverseRun(run.begin(), run.end() - run.begin());
        };
        ELM_AttributeDict &dict = data_.attributes[ELM_OWNER_VERTEX];
        for (int64_t i = 0; i < dict.size(); ++i)
            each([attribute = touch(dict.writable(i))](ELM_Offset first, int64_t n) { attribute->reverse(first, n); });
        ELM_GroupDict &groups = data_.groups[ELM_OWNER_VERTEX];
        for (int64_t i = 0; i < groups.size(); ++i)
            each([group = groups.writable(i)](ELM_Offset first, int64_t n) { reverseBits(*group, first, n); });
        each([this](ELM_Offset first, int64_t n) { data_.vertexPoint.reverse(first, n); });
        changed_ = topologyChanged_ = true;
        return true;
    };
    if (!attempt(collect))
        return false;
    if (runs.empty() || attempt(turn))
        return true;
    abort();
    return false;
}
