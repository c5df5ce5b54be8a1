#include <host/mod/Edit.h>

#include <bit>

namespace
{
/// Where the elements of a row of bits come to lie when the others go.
class Ranks
{
public:
    explicit Ranks(const ELM_OffsetBits &live) : live_(live), before_(size_t(live.bits.wordCount()) + 1)
    {
        for (size_t i = 0; i + 1 < before_.size(); ++i)
            before_[i + 1] = before_[i] + std::popcount(live.bits.words()[i]);
    }

    /// The number of elements before an offset.
    int64_t operator()(ELM_Offset offset) const
    {
        const uint64_t below = (uint64_t(1) << (offset & 63)) - 1;
        return before_[size_t(offset >> 6)] + std::popcount(live_.word(offset & ~ELM_Offset(63)) & below);
    }

private:
    const ELM_OffsetBits &live_;
    std::vector<int64_t> before_;
};

// Replace the indices of a column, but for -1.
void renumber(ELM_IndexColumn &column, const Ranks &ranks)
{
    const ELM_IndexColumn before = column;
    before.visit([&](const auto &pages) {
        const auto reader = pages.reader();
        column.writeBlocks(0, before.size(), 0, [&](auto *to, int64_t row, int64_t rows) {
            for (int64_t i = 0; i < rows; ++i)
            {
                const int64_t index = reader.value(row + i);
                to[i] = std::remove_pointer_t<decltype(to)>(index < 0 ? index : ranks(index));
            }
        });
    });
}

bool areSequential(const MSH_DetailData &data)
{
    int64_t next = 0;
    for (int64_t primitive = 0; primitive < data.capacity[ELM_OWNER_PRIMITIVE]; ++primitive)
    {
        if (data.vertexStart.value(primitive) != next)
            return false;
        next += data.vertexCount.value(primitive);
    }
    return next == data.capacity[ELM_OWNER_VERTEX];
}
}  // namespace

bool MOD_Edit::compact()
{
    const auto change = [&] {
        // Columns are made anew, so a copy costs nothing more, and a failure leaves all as it was.
        MSH_DetailData data = data_;
        for (const ELM_Owner owner : {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE})
            if (data.vacant[owner] > 0)
                compact(owner, data);
        data.sequentialVertices = areSequential(data);
        data_ = std::move(data);
        return true;
    };
    return attempt(change);
}

void MOD_Edit::compact(ELM_Owner owner, MSH_DetailData &data)
{
    const ELM_OffsetBitsHandle live = data_.live[owner];
    const ELM_OffsetList rows(ELM_Range(owner, live));
    const Ranks ranks(*live);

    ELM_AttributeDict &dict = data.attributes[owner];
    for (int64_t i = 0; i < dict.size(); ++i)
    {
        touched_.erase(&dict[i]);
        touch(dict.writable(i))->rearrange(rows);
    }
    for (int64_t i = 0; i < data.groups[owner].size(); ++i)
        data.groups[owner].writable(i)->rearrange(rows);
    if (owner == ELM_OWNER_POINT)
        renumber(data.vertexPoint, ranks);
    else if (owner == ELM_OWNER_VERTEX)
    {
        data.vertexPoint.rearrange(rows);
        renumber(data.vertexStart, ranks);
    }
    else
    {
        data.eachPrimitiveColumn([&rows](auto &column) { column.rearrange(rows); });
        data.payloads.keepUsed(data.payload);
    }
    data.payloads.renumber(owner, [&ranks](ELM_Offset was) { return ranks(was); });
    data.capacity[owner] = rows.size();
    data.vacant[owner] = 0;
    data.live[owner] = nullptr;
    changed_ = topologyChanged_ = true;
}
