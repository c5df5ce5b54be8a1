#pragma once

#include <rq/data/DataArray.h>

/// The layer that answers all typed reads of an array from one function.
///
/// Shape    `Derived` defines `template <RQ_NumericValue T> T valueAs(int64_t offset, int component) const`, exact in
///          every T, and may define `fillBlock` to serve whole blocks faster than value by value.  It befriends the layer
///          when these are private.  `Base` is the array class that the layer is put upon.
/// Cost     the bodies lie in detail/TypedArrayImpl.h: the source file of `Derived` includes it and instantiates the layer
///          and the class; the header of `Derived` declares both `extern template`, so clients compile none of it
template <class Derived, class Base = RQ_DataArray> class RQ_API RQ_TypedArray : public Base
{
public:
    using Base::Base;
    using Base::get;

    double getF64(int64_t offset, int idx = 0) const override;
    float getF32(int64_t offset, int idx = 0) const override;
    PLT_Half getF16(int64_t offset, int idx = 0) const override;
    int64_t getI64(int64_t offset, int idx = 0) const override;
    int32_t getI32(int64_t offset, int idx = 0) const override;
    int16_t getI16(int64_t offset, int idx = 0) const override;
    int8_t getI8(int64_t offset, int idx = 0) const override;
    uint8_t getU8(int64_t offset, int idx = 0) const override;

    const double *get(int64_t offset, double *out, int size) const override;
    const float *get(int64_t offset, float *out, int size) const override;
    const PLT_Half *get(int64_t offset, PLT_Half *out, int size) const override;
    const int64_t *get(int64_t offset, int64_t *out, int size) const override;
    const int32_t *get(int64_t offset, int32_t *out, int size) const override;
    const int16_t *get(int64_t offset, int16_t *out, int size) const override;
    const int8_t *get(int64_t offset, int8_t *out, int size) const override;
    const uint8_t *get(int64_t offset, uint8_t *out, int size) const override;

    /// Whether components past the tuple repeat the value, instead of reading as 0.
    static constexpr bool kRepeatsPastTuple = false;

protected:
    using Base::doFillArray;
    using Base::doImport;

    void doImport(int64_t offset, double *data, int size) const override;
    void doImport(int64_t offset, float *data, int size) const override;
    void doImport(int64_t offset, PLT_Half *data, int size) const override;
    void doImport(int64_t offset, int64_t *data, int size) const override;
    void doImport(int64_t offset, int32_t *data, int size) const override;
    void doImport(int64_t offset, int16_t *data, int size) const override;
    void doImport(int64_t offset, int8_t *data, int size) const override;
    void doImport(int64_t offset, uint8_t *data, int size) const override;

    void doFillArray(double *data, int64_t start, int64_t length, int tsize, int stride) const override;
    void doFillArray(float *data, int64_t start, int64_t length, int tsize, int stride) const override;
    void doFillArray(PLT_Half *data, int64_t start, int64_t length, int tsize, int stride) const override;
    void doFillArray(int64_t *data, int64_t start, int64_t length, int tsize, int stride) const override;
    void doFillArray(int32_t *data, int64_t start, int64_t length, int tsize, int stride) const override;
    void doFillArray(int16_t *data, int64_t start, int64_t length, int tsize, int stride) const override;
    void doFillArray(int8_t *data, int64_t start, int64_t length, int tsize, int stride) const override;
    void doFillArray(uint8_t *data, int64_t start, int64_t length, int tsize, int stride) const override;

    /// Write the first `components` values of entries [start, start + length) in rows `stride` values apart; the counts are
    /// valid.  This one reads value by value; `Derived` hides it with a faster one.
    template <RQ_NumericValue T> void fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const;

private:
    const Derived &derived() const { return static_cast<const Derived &>(*this); }

    template <class T> const T *getRow(int64_t offset, T *out, int size) const;
    template <class T> void importRow(int64_t offset, T *data, int size) const;
    template <class T> void fillRows(T *data, int64_t start, int64_t length, int tsize, int stride) const;
};
