#include <host/elm/IndexedRows.h>

ELM_IndexedRows::ELM_IndexedRows(int components, int32_t none, int64_t size)
    : indices_(components, std::vector<int32_t>(size_t(components), none).data())
{
    indices_.resize(size);
}

void ELM_IndexedRows::fillIndices(int64_t first, int64_t count, int32_t index)
{
    const std::vector<int32_t> tuple(size_t(indices_.tupleSize()), index);
    indices_.fill(first, count, tuple.data());
}

bool ELM_IndexedRows::writeChecked(int64_t first, int64_t count, const int32_t *indices, int32_t low, int64_t high)
{
    if (first < 0 || count < 0 || first > size() - count)
        return false;
    for (int64_t i = 0; i < count * indices_.tupleSize(); ++i)
        if (indices[i] < low || indices[i] >= high)
            return false;
    indices_.writeCompact(first, count, indices);
    return true;
}
