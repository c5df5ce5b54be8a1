#include <host/msh/PayloadTable.h>

#include <host/bas/hashBytes.h>
#include <host/msh/Detail.h>

namespace
{
// Hashing a payload of this size costs no more than the handle that it saves.
constexpr int64_t kSmallBytes = 512;

bool refersToElements(const MSH_Payload &payload)
{
    const std::vector<MSH_ConstField> fields = payload.fields();
    return std::any_of(fields.begin(), fields.end(), [](const MSH_ConstField &field) {
        return std::holds_alternative<const MSH_ElementRefs *>(field.value);
    });
}
}  // namespace

MSH_PayloadTable::Table &MSH_PayloadTable::writable()
{
    if (!table_)
        table_ = std::make_shared<Table>();
    else if (table_.use_count() > 1)
        table_ = std::make_shared<Table>(*table_);
    return *table_;
}

int32_t MSH_PayloadTable::add(ELM_PrimitiveTypeId type, const MSH_PayloadHandle &payload)
{
    // One that is shared by hand needs no look inside.
    if (size() > 0 && table_->entries.back().payload == payload && table_->entries.back().type == type)
        return int32_t(size() - 1);
    const bool isSmall = payload->memoryUsage() <= kSmallBytes;
    const uint64_t hash = isSmall ? host::hashWord(uint64_t(type), payload->hash()) : 0;
    if (isSmall && table_)
    {
        const auto [first, last] = table_->small.equal_range(hash);
        for (auto at = first; at != last; ++at)
            if (const Entry &entry = (*this)[at->second]; entry.type == type && entry.payload->isEqual(*payload))
                return at->second;
    }
    Table &table = writable();
    const int32_t number = int32_t(table.entries.size());
    table.entries.push_back({type, payload});
    if (isSmall)
        table.small.emplace(hash, number);
    if (refersToElements(*payload))
        table.referring.push_back(number);
    return number;
}

void MSH_PayloadTable::keepUsed(ELM_PageArray<int32_t> &column)
{
    std::vector<int32_t> numbers(size_t(size()), -1);
    const auto forEachNumber = [&column](auto &&visit) {
        column.forEachRun(0, column.size(), [&](const int32_t *row, int64_t rows, bool repeated) {
            for (int64_t i = 0; i < (repeated ? 1 : rows); ++i)
                if (row[i] >= 0)
                    visit(row[i]);
        });
    };
    MSH_PayloadTable kept;
    forEachNumber([&](int32_t number) {
        if (numbers[size_t(number)] < 0)
            numbers[size_t(number)] = kept.add((*this)[number].type, (*this)[number].payload);
    });
    if (kept.size() == size())
        return;
    ELM_PageArray<int32_t> renumbered = column;
    for (int64_t page = 0; page < column.pageCount(); ++page)
    {
        const int64_t first = page << ELM_PAGE_BITS, rows = std::min(ELM_PAGE_SIZE, column.size() - first);
        if (column.isConstantPage(page))
        {
            const int32_t number = column.value(first);
            if (number >= 0)
                renumbered.fill(first, rows, &numbers[size_t(number)]);
            continue;
        }
        for (int64_t row = first; row < first + rows; ++row)
            if (const int32_t number = column.value(row); number >= 0)
                *renumbered.writableTuple(row) = numbers[size_t(number)];
    }
    column = std::move(renumbered);
    *this = std::move(kept);
}

void MSH_PayloadTable::renumber(ELM_Owner owner, const std::function<ELM_Offset(ELM_Offset)> &newOffset)
{
    for (size_t r = 0; table_ && r < table_->referring.size(); ++r)
    {
        const int32_t number = table_->referring[r];
        const MSH_PayloadHandle payload = (*this)[number].payload;
        BAS_IntrusivePtr<MSH_Payload> changed;
        const std::vector<MSH_ConstField> fields = payload->fields();
        for (size_t f = 0; f < fields.size(); ++f)
        {
            const auto *refs = std::get_if<const MSH_ElementRefs *>(&fields[f].value);
            if (!refs || (*refs)->owner != owner)
                continue;
            MSH_ElementRefs moved{owner, {}};
            for (const ELM_Offset offset : (*refs)->offsets)
                if (const ELM_Offset now = newOffset(offset); now >= 0)
                    moved.offsets.push_back(now);
            if (moved == **refs)
                continue;
            if (!changed)
                changed = payload->clone();
            *std::get<MSH_ElementRefs *>(changed->writableFields()[f].value) = std::move(moved);
        }
        if (changed)
            writable().entries[size_t(number)].payload = changed;
    }
}

int64_t MSH_PayloadTable::memoryUsage() const
{
    int64_t bytes = 0;
    for (int64_t i = 0; i < size(); ++i)
        bytes += int64_t(sizeof(Entry)) + (*this)[i].payload->memoryUsage();
    return bytes;
}
