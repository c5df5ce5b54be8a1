#include <host/elm/StringTuple.h>

#include <unordered_map>

struct ELM_StringTuple::Table : BAS_IntrusiveRefCounter<Table>
{
    std::vector<BAS_StringHolder> strings;
    std::unordered_map<std::string_view, int32_t> places;  // the keys are the strings' own characters
};

namespace
{
ELM_PageArray<int32_t> indexColumn(int tupleSize, int64_t size)
{
    const std::vector<int32_t> none(size_t(tupleSize), -1);
    ELM_PageArray<int32_t> indices(tupleSize, none.data());
    indices.resize(size);
    return indices;
}
}  // namespace

ELM_StringTuple::ELM_StringTuple(int tupleSize, int64_t size) : table_(new Table), indices_(indexColumn(tupleSize, size)) {}
ELM_StringTuple::~ELM_StringTuple() = default;
ELM_StringTuple::ELM_StringTuple(const ELM_StringTuple &) = default;
ELM_StringTuple &ELM_StringTuple::operator=(const ELM_StringTuple &) = default;

const std::vector<BAS_StringHolder> &ELM_StringTuple::table() const { return table_->strings; }

const BAS_StringHolder &ELM_StringTuple::get(int64_t row, int component) const
{
    static const BAS_StringHolder empty;
    const int32_t place = index(row, component);
    return place < 0 ? empty : table_->strings[size_t(place)];
}

int32_t ELM_StringTuple::find(std::string_view text) const
{
    const auto found = table_->places.find(text);
    return found == table_->places.end() ? -1 : found->second;
}

int32_t ELM_StringTuple::add(std::string_view text)
{
    const int32_t known = find(text);
    if (known >= 0)
        return known;
    if (table_->use_count() > 1)
        table_ = new Table(*table_);
    const int32_t place = int32_t(table_->strings.size());
    table_->strings.emplace_back(text);
    table_->places.emplace(table_->strings.back().view(), place);
    return place;
}

void ELM_StringTuple::set(int64_t row, std::string_view text, int component)
{
    indices_.writableTuple(row)[component] = add(text);
}

void ELM_StringTuple::fill(int64_t first, int64_t count, int32_t index)
{
    const std::vector<int32_t> tuple(size_t(tupleSize()), index);
    indices_.fill(first, count, tuple.data());
}

bool ELM_StringTuple::writeIndices(int64_t first, int64_t count, const int32_t *indices)
{
    if (first < 0 || count < 0 || first > size() - count)
        return false;
    const int32_t known = int32_t(table_->strings.size());
    for (int64_t i = 0; i < count * tupleSize(); ++i)
        if (indices[i] < -1 || indices[i] >= known)
            return false;
    indices_.writeCompact(first, count, indices);
    return true;
}

int64_t ELM_StringTuple::memoryUsage() const
{
    int64_t bytes = indices_.memoryUsage() + int64_t(table_->strings.capacity() * sizeof(BAS_StringHolder));
    for (const BAS_StringHolder &text : table_->strings)
        bytes += text.getMemoryUsage();
    return bytes;
}
