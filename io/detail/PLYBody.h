#pragma once

#include <memory>
#include <span>

#include <host/bas/LargeBlocks.h>
#include <io/detail/PLYHeader.h>

namespace rq::io
{
/// Where the values of consecutive properties of one type go: side by side into the rows of a column.
struct PLYTarget
{
    int property = 0;  ///< the first one, none of them a list
    int components = 1;
    ELM_Storage storage = ELM_STORAGE_INVALID;  ///< the type's own, real32 or real64
    void *values = nullptr;                     ///< the first component of row 0
    int64_t stride = 1;                         ///< values from row to row
    double divisor = 1.0;                       ///< applies when the storage is not the type's own
};

/// The lists of one property.
struct PLYList
{
    template <class T> using Values = std::vector<T, BAS_BlockAllocator<T>>;

    int32_t sameCount = -1;  ///< the length of every list, -1 when lengths differ
    Values<int32_t> counts;  ///< else the length of each
    Values<char> bytes;      ///< the items of all lists, one after the other
    ELM_Storage storage = ELM_STORAGE_INVALID;

    int32_t countOf(int64_t record) const { return sameCount >= 0 ? sameCount : counts[size_t(record)]; }
    template <class T> std::span<const T> items() const
    {
        return {reinterpret_cast<const T *>(bytes.data()), bytes.size() / sizeof(T)};
    }
};

/// The records of a PLY file behind its header.
class PLYBody
{
public:
    virtual ~PLYBody() = default;

    /// Find the records of all elements and check that the file holds them, before anybody makes room for them.  False
    /// after an error.
    virtual bool locate() = 0;

    /// Read single values of all records of an element.  False after an error.
    virtual bool readValues(size_t element, std::span<const PLYTarget> targets) = 0;

    /// Row 0 of a target's values where they already lie as it wants them, packed and aligned; null when they do not.
    virtual const void *inPlace(size_t, const PLYTarget &) const { return nullptr; }

    /// Read the lists of a property.  As `ELM_STORAGE_INT32` numbers of 32 bits wrap around: -1 may be written without a
    /// sign.  Otherwise items keep the storage of their type.  False after an error.
    virtual bool readList(size_t element, int property, ELM_Storage storage, PLYList &list) = 0;

    /// Where a record begins, or an item of its list.
    virtual const char *find(size_t element, int64_t record, int property = 0, int64_t item = -1) = 0;

    /// Warn of what was passed over.
    virtual void warnOfSurplus() const = 0;
};

std::unique_ptr<PLYBody> makePLYText(const Source &source, const PLYHeader &header);
std::unique_ptr<PLYBody> makePLYBinary(const Source &source, const PLYHeader &header);
}  // namespace rq::io
