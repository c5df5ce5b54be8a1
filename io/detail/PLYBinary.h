#pragma once

#include <bit>

#include <io/detail/PLYBody.h>
#include <io/detail/PLYCopy.h>

namespace rq::io
{
/// Where the records of one element lie.
struct PLYRecords
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
    // A record takes some nanoseconds; the bytes of a block stay in the cache while property after property is read.
    static constexpr int64_t kBlockRecords = 4096;

    bool locate(const PLYElement &element, const char *&at);
    void assumeOneSize(PLYRecords &records) const;
    bool areOfOneSize(const PLYRecords &records) const;
    bool walk(PLYRecords &records, const char *&at) const;
    bool failRecord(const PLYRecords &records, const char *at, int64_t record) const;
    template <class OnProperty> const char *pass(const PLYElement &element, const char *at, OnProperty &&onProperty) const;
    void readBlock(const PLYRecords &records, int64_t block, std::span<const PLYTarget> targets) const;
    void readListBlock(const PLYRecords &records, int64_t block, int property, PLYList &list) const;

    int64_t lengthAt(const char *at, PLYType type) const
    {
        return visitPLYType(type, [&](auto value) { return int64_t(loadPLY<decltype(value)>(at, swapped_)); });
    }

    const Source &source_;
    const PLYHeader &header_;
    bool swapped_;
    std::vector<PLYRecords> records_;
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
}  // namespace rq::io
