#include <io/detail/PLYBinary.h>

#include <algorithm>

#include <io/detail/LineBlocks.h>

namespace rq::io
{
bool PLYBinary::readValues(size_t element, std::span<const PLYTarget> targets)
{
    const PLYRecords &records = records_[element];
    const int64_t blocks = (records.element->count + kBlockRecords - 1) / kBlockRecords;
    return forEachBlock(blocks, [&](int64_t block) { readBlock(records, block, targets); }) || source_.failInterrupted();
}

void PLYBinary::readBlock(const PLYRecords &records, int64_t block, std::span<const PLYTarget> targets) const
{
    const PLYElement &element = *records.element;
    const int64_t first = block * kBlockRecords, rows = std::min(kBlockRecords, element.count - first);
    const auto copyRows = [&](const PLYTarget &target, const char *from, int64_t row, int64_t count) {
        const PLYType type = element.properties[size_t(target.property)].type;
        char *to = visitPLYConversion(type, target.storage, [&](auto, auto value) {
            return static_cast<char *>(target.values) + row * target.stride * int64_t(sizeof(value));
        });
        findPLYCopy(type, target.storage, swapped_)({.from = from,
                                                     .recordSize = records.recordSize,
                                                     .to = to,
                                                     .stride = target.stride,
                                                     .components = target.components,
                                                     .rows = count,
                                                     .divisor = target.divisor});
    };
    if (records.recordSize > 0)
    {
        const char *from = records.begin + first * records.recordSize;
        for (const PLYTarget &target : targets)
            copyRows(target, from + records.offsets[size_t(target.property)], first, rows);
        return;
    }
    const char *at = records.blocks[size_t(block)];
    for (int64_t row = first; row < first + rows; ++row)
    {
        at = pass(element, at, [&](size_t p, const char *value, int64_t) {
            for (const PLYTarget &target : targets)
            {
                if (size_t(target.property) == p)
                    copyRows(target, value, row, 1);
            }
        });
    }
}

const void *PLYBinary::inPlace(size_t element, const PLYTarget &target) const
{
    const PLYRecords &records = records_[element];
    const PLYType type = records.element->properties[size_t(target.property)].type;
    const bool packed = records.recordSize == target.components * sizeOf(type) && target.stride == target.components;
    const bool aligned = reinterpret_cast<uintptr_t>(records.begin) % size_t(sizeOf(type)) == 0;
    return !swapped_ && packed && aligned && target.storage == storageOf(type) ? records.begin : nullptr;
}

bool PLYBinary::readList(size_t element, int property, ELM_Storage storage, PLYList &list)
{
    const PLYRecords &records = records_[element];
    const int64_t count = records.element->count, blocks = (count + kBlockRecords - 1) / kBlockRecords;
    const PLYType type = records.element->properties[size_t(property)].type;
    const size_t itemSize = visitPLYConversion(type, storage, [](auto, auto to) { return sizeof(to); });
    list.storage = storage;
    int64_t items = 0;
    if (records.recordSize > 0)
    {
        list.sameCount = int32_t(records.lengths[size_t(property)]);
        items = count * list.sameCount;
    }
    else if (count > 0)
    {
        list.counts.resize(size_t(count));
        items = records.items[size_t(blocks) * records.element->properties.size() + size_t(property)];
    }
    list.bytes.resize(size_t(items) * itemSize);
    return forEachBlock(blocks, [&](int64_t block) { readListBlock(records, block, property, list); }) ||
           source_.failInterrupted();
}

void PLYBinary::readListBlock(const PLYRecords &records, int64_t block, int property, PLYList &list) const
{
    const PLYElement &element = *records.element;
    const PLYType type = element.properties[size_t(property)].type;
    const int64_t itemSize = visitPLYConversion(type, list.storage, [](auto, auto to) { return int64_t(sizeof(to)); });
    const PLYCopyFunction copy = findPLYCopy(type, list.storage, swapped_);
    const int64_t first = block * kBlockRecords, rows = std::min(kBlockRecords, element.count - first);
    if (records.recordSize > 0)
    {
        const char *from = records.begin + first * records.recordSize + records.offsets[size_t(property)];
        char *to = list.bytes.data() + first * list.sameCount * itemSize;
        return copy({from, records.recordSize, to, list.sameCount, list.sameCount, rows});
    }
    char *to = list.bytes.data() + records.items[size_t(block) * element.properties.size() + size_t(property)] * itemSize;
    const char *at = records.blocks[size_t(block)];
    for (int64_t row = first; row < first + rows; ++row)
    {
        at = pass(element, at, [&](size_t p, const char *value, int64_t items) {
            if (p != size_t(property))
                return;
            list.counts[size_t(row)] = int32_t(items);
            copy({value, 0, to, items, items, 1});
            to += items * itemSize;
        });
    }
}
}  // namespace rq::io
