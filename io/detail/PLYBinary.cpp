#include <io/detail/PLYBinary.h>

#include <algorithm>
#include <atomic>

#include <host/bas/Parallel.h>
#include <io/detail/Tally.h>

namespace rq::io
{
bool PLYBinary::failRecord(const PLYRecords &records, const char *at, int64_t record) const
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
    PLYRecords &records = records_.emplace_back();
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
void PLYBinary::assumeOneSize(PLYRecords &records) const
{
    const char *end = pass(*records.element, records.begin, [&](size_t, const char *value, int64_t items) {
        records.offsets.push_back(value - records.begin);
        records.lengths.push_back(items);
    });
    records.recordSize = end ? end - records.begin : 0;
}

// When every list has the length that it has in the first record, every record begins where it seems to.
bool PLYBinary::areOfOneSize(const PLYRecords &records) const
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
bool PLYBinary::walk(PLYRecords &records, const char *&at) const
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

const char *PLYBinary::find(size_t element, int64_t record, int property, int64_t item)
{
    const PLYRecords &records = records_[element];
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
std::unique_ptr<PLYBody> makePLYBinary(const Source &source, const PLYHeader &header)
{
    return std::make_unique<PLYBinary>(source, header);
}
}  // namespace rq::io
