#pragma once

#include <rq/data/DANumbers.h>
#include <rq/data/TypedArray.h>

/// Random values, computed from a seed and the place of the value: nothing is stored, and every read gives the same.
///
/// Shape    floats are uniform in [low, high), integers in [low, high], both ends included; without bounds floats lie in
///          [0, 1) and integers are 0 or 1.  The values depend on seed, storage, bounds and place alone, so an array is the
///          same on every machine and however it is cut
/// Failure  all values are `low` when `high` is not greater; bounds of floats must be finite
/// Threads  immutable after construction, safe to read from any thread
/// Cost     the same few bytes for any number of entries; 0.5 to 1.5 ns a value in blocks
template <RQ_NumericValue T> class RQ_API RQ_DARandom final : public RQ_TypedArray<RQ_DARandom<T>, RQ_DANumbers>
{
public:
    RQ_DARandom(int64_t size, uint64_t seed, T low = T(0), T high = T(1), int64_t tupleSize = 1,
                RQ_Type type = RQ_TYPE_NONE);

    const char *className() const override;
    RQ_Storage getStorage() const override { return RQstorageOf<T>; }
    int64_t entries() const override { return size_; }
    int64_t getTupleSize() const override { return tupleSize_; }
    int64_t getMemoryUsage() const override { return sizeof(*this); }
    RQ_Type getTypeInfo() const override { return type_; }

private:
    friend RQ_TypedArray<RQ_DARandom<T>, RQ_DANumbers>;

    // Half floats are drawn as floats, and rounded after that.
    using Drawn = std::conditional_t<std::same_as<T, PLT_Half>, float, T>;
    using Bits = std::conditional_t<sizeof(Drawn) <= 4, uint32_t, uint64_t>;

    /// From random bits to a value between the bounds.
    struct Mapping
    {
        Drawn operator()(Bits bits) const;

        Drawn low, high, last;  // `last` is the greatest value
        uint64_t span = 1;      // of integers: how many there are, 0 for all 2^64
    };

    template <RQ_NumericValue To> To valueAs(int64_t offset, int component) const;
    template <RQ_NumericValue To> void fillBlock(To *out, int64_t start, int64_t length, int components, int stride) const;

    uint64_t hashOf(uint64_t place) const;
    Bits bitsOf(uint64_t place) const;
    void drawBits(Bits *out, uint64_t first, int64_t count) const;
    void mapBits(const Bits *bits, Drawn *out, int64_t count) const;
    template <class To> void fillRun(To *out, uint64_t first, int64_t count) const;

    uint64_t state_;
    Mapping mapping_;
    int64_t size_;
    int64_t tupleSize_;
    RQ_Type type_;
};

extern template class RQ_TypedArray<RQ_DARandom<double>, RQ_DANumbers>;
extern template class RQ_DARandom<double>;
extern template class RQ_TypedArray<RQ_DARandom<float>, RQ_DANumbers>;
extern template class RQ_DARandom<float>;
extern template class RQ_TypedArray<RQ_DARandom<PLT_Half>, RQ_DANumbers>;
extern template class RQ_DARandom<PLT_Half>;
extern template class RQ_TypedArray<RQ_DARandom<int64_t>, RQ_DANumbers>;
extern template class RQ_DARandom<int64_t>;
extern template class RQ_TypedArray<RQ_DARandom<int32_t>, RQ_DANumbers>;
extern template class RQ_DARandom<int32_t>;
extern template class RQ_TypedArray<RQ_DARandom<int16_t>, RQ_DANumbers>;
extern template class RQ_DARandom<int16_t>;
extern template class RQ_TypedArray<RQ_DARandom<int8_t>, RQ_DANumbers>;
extern template class RQ_DARandom<int8_t>;
extern template class RQ_TypedArray<RQ_DARandom<uint8_t>, RQ_DANumbers>;
extern template class RQ_DARandom<uint8_t>;
