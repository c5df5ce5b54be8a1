#include <io/detail/PLYBody.h>

#include <algorithm>
#include <atomic>
#include <bit>

#include <host/bas/Parallel.h>
#include <io/detail/LineBlocks.h>
#include <io/detail/PLYCopy.h>
#include <io/detail/Tally.h>

namespace rq::io
{
namespace
{
// A record takes some nanoseconds; the bytes of a block stay in the cache while property after property is read.
constexpr int64_t kBlockRecords = 4096;

/// Where the records of one element lie.
struct Records
{
    const PLYElement *element = nullptr;
    const char *begin = nullptr;
    std::vector<int64_t> lengths;  ///< of the lists of every property, when all records have the same

    int64_t recordSize = 0;        ///< bytes, when all are of one size, else 0
    std::vector<int64_t> offsets;  ///< then: of the value or first item of every property

    std::vector<const char *> blocks;  ///< else: the first record of every block,
    std::vector<int64_t> items;        ///< and for every property the items before it; ends with the number of all
};

/// The records of a binary file, in either order of bytes.
class PLYBinary final : public PLYBody
{
public:
    PLYBinary(const Source &source, const PLYHeader &header)
        : source_(source), header_(header),
          swapped_((header.form == PLYForm::BigEndian) == (std::endian::native == std::endian::little))
    {}

    bool locate() override;
    bool readValues(size_t element, std::span<const PLYTarget> targets) override;
    const void *inPlace(size_t element, const PLYTarget &target) const override;
    bool readList(size_t element, int property, ELM_Storage storage, PLYList &list) override;
    const char *find(size_t element, int64_t record, int property, int64_t item) override;
    void warnOfSurplus() const override;

private:
    bool locate(const PLYElement &element, const char *&at);
    void assumeOneSize(Records &records) const;
    bool areOfOneSize(const Records &records) const;
    bool walk(Records &records, const char *&at) const;
    bool failRecord(const Records &records, const char *at, int64_t record) const;
    template <class OnProperty> const char *pass(const PLYElement &element, const char *at, OnProperty &&onProperty) const;
    void readBlock(const Records &records, int64_t block, std::span<const PLYTarget> targets) const;
    void readListBlock(const Records &records, int64_t block, int property, PLYList &list) const;

    int64_t lengthAt(const char *at, PLYType type) const
    {
        return visitPLYType(type, [&](auto value) { return int64_t(loadPLY<decltype(value)>(at, swapped_)); });
    }

    const Source &source_;
    const PLYHeader &header_;
    bool swapped_;
    std::vector<Records> records_;
    const char *end_ = nullptr;
};

// Step over a record: `onProperty(property, value, items)` tells where its value, or first item, lies.  Null when the file
// does not hold it, or a list has no length.
template <class OnProperty>
const char *PLYBinary::pass(const PLYElement &element, const char *at, OnProperty &&onProperty) const
{
    for (size_t p = 0; p < element.properties.size(); ++p)
    {
        const PLYProperty &property = element.properties[p];
        int64_t items = 1;
        if (property.isList())
        {
            const int size = sizeOf(property.countType);
            if (source_.end() - at < size)
                return nullptr;
            items = lengthAt(at, property.countType);
            at += size;
        }
        const int size = sizeOf(property.type);
        if (items < 0 || items > (source_.end() - at) / size || items > INT32_MAX)
            return nullptr;
        onProperty(p, at, items);
        at += items * size;
    }
    return at;
}

bool PLYBinary::failRecord(const Records &records, const char *at, int64_t record) const
{
    const PLYElement &element = *records.element;
    return source_.fail(at, fmt::format("expected {} records of \"{}\", found {} before the end of the file", element.count,
                                        element.name, record));
}

bool PLYBinary::locate()
{
    end_ = header_.end;
    return std::all_of(header_.elements.begin(), header_.elements.end(),
                       [&](const PLYElement &element) { return locate(element, end_); });
}

bool PLYBinary::locate(const PLYElement &element, const char *&at)
{
    Records &records = records_.emplace_back();
    records.element = &element;
    records.begin = at;
    if (element.count == 0 || element.properties.empty())
        return true;
    assumeOneSize(records);
    const int64_t fit = records.recordSize > 0 ? (source_.end() - at) / records.recordSize : 0;
    if (!element.hasLists() && fit < element.count)
        return failRecord(records, at + fit * records.recordSize, fit);
    if (fit < element.count || !areOfOneSize(records))
        return walk(records, at);
    at += element.count * records.recordSize;
    return true;
}

// Take the first record for the pattern of all.
void PLYBinary::assumeOneSize(Records &records) const
{
    const char *end = pass(*records.element, records.begin, [&](size_t, const char *value, int64_t items) {
        records.offsets.push_back(value - records.begin);
        records.lengths.push_back(items);
    });
    records.recordSize = end ? end - records.begin : 0;
}

// When every list has the length that it has in the first record, every record begins where it seems to.
bool PLYBinary::areOfOneSize(const Records &records) const
{
    std::atomic<bool> same{true};
    for (size_t p = 0; p < records.lengths.size(); ++p)
    {
        const PLYProperty &property = records.element->properties[p];
        if (!property.isList())
            continue;
        visitPLYType(property.countType, [&](auto value) {
            using Length = decltype(value);
            const char *first = records.begin + records.offsets[p] - sizeof(Length);
            const Length expected = loadPLY<Length>(first, false);
            host::parallelForRange(records.element->count, kBlockRecords, [&](int64_t begin, int64_t end) {
                bool good = same;
                for (int64_t i = begin; i < end && good; ++i)
                    good = loadPLY<Length>(first + i * records.recordSize, false) == expected;
                if (!good)
                    same = false;
            });
        });
    }
    return same;
}

// Go from record to record.
bool PLYBinary::walk(Records &records, const char *&at) const
{
    const PLYElement &element = *records.element;
    records.recordSize = 0;
    records.offsets.clear();
    std::vector<int64_t> items(element.properties.size(), 0);
    for (int64_t record = 0; record < element.count; ++record)
    {
        if (record % kBlockRecords == 0)
        {
            records.blocks.push_back(at);
            records.items.insert(records.items.end(), items.begin(), items.end());
        }
        const char *next = pass(element, at, [&](size_t p, const char *, int64_t count) { items[p] += count; });
        if (!next)
            return failRecord(records, at, record);
        at = next;
    }
    records.items.insert(records.items.end(), items.begin(), items.end());
    return true;
}

bool PLYBinary::readValues(size_t element, std::span<const PLYTarget> targets)
{
    const Records &records = records_[element];
    const int64_t blocks = (records.element->count + kBlockRecords - 1) / kBlockRecords;
    return forEachBlock(blocks, [&](int64_t block) { readBlock(records, block, targets); }) || source_.failInterrupted();
}

void PLYBinary::readBlock(const Records &records, int64_t block, std::span<const PLYTarget> targets) const
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
    const Records &records = records_[element];
    const PLYType type = records.element->properties[size_t(target.property)].type;
    const bool packed = records.recordSize == target.components * sizeOf(type) && target.stride == target.components;
    const bool aligned = reinterpret_cast<uintptr_t>(records.begin) % size_t(sizeOf(type)) == 0;
    return !swapped_ && packed && aligned && target.storage == storageOf(type) ? records.begin : nullptr;
}

bool PLYBinary::readList(size_t element, int property, ELM_Storage storage, PLYList &list)
{
    const Records &records = records_[element];
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

void PLYBinary::readListBlock(const Records &records, int64_t block, int property, PLYList &list) const
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

const char *PLYBinary::find(size_t element, int64_t record, int property, int64_t item)
{
    const Records &records = records_[element];
    const char *at = records.begin, *found = at;
    const auto onProperty = [&](size_t p, const char *value, int64_t) {
        if (p != size_t(property))
            return;
        const PLYProperty &sought = records.element->properties[p];
        found = item >= 0 ? value + item * sizeOf(sought.type) : value - (sought.isList() ? sizeOf(sought.countType) : 0);
    };
    for (int64_t i = 0; i <= record; ++i)
        at = pass(*records.element, at, onProperty);
    return found;
}

void PLYBinary::warnOfSurplus() const
{
    if (end_ != source_.end())
        source_.warn(end_, fmt::format("expected the end of the file, found {}; what is too much is passed over",
                                       counted(source_.end() - end_, "byte", "bytes")));
}
}  // namespace

std::unique_ptr<PLYBody> makePLYBinary(const Source &source, const PLYHeader &header)
{
    return std::make_unique<PLYBinary>(source, header);
}
}  // namespace rq::io
