#pragma once

#include <rq/data/DataArray.h>

/// The layer that answers all reads of entries that are arrays of numbers from one function.
///
/// Shape    `Derived` defines `template <class Values> bool copyEntries(int64_t start, int64_t length, Values &values,
///          BAS_Array<int> *sizes) const`, with `Values` a `BAS_Array` or `BAS_ValArray` of a numeric type: replace `values`
///          by those of the entries, end to end, and `sizes` (may be null; has `length` places) by how many each has. False,
///          and nothing is touched, when entries are no such arrays.  It befriends the layer when this is private.  `Base`
///          is the array class that the layer is put upon.
/// Cost     as `RQ_TypedArray`: the bodies lie in detail/TypedEntriesImpl.h, for the source file of `Derived` to instantiate
template <class Derived, class Base = RQ_DataArray> class RQ_API RQ_TypedEntries : public Base
{
public:
    using Base::Base;

    bool getFA16(BAS_ValArray<PLT_Half> &values, int64_t offset) const override;
    bool getFA32(BAS_ValArray<float> &values, int64_t offset) const override;
    bool getFA64(BAS_ValArray<double> &values, int64_t offset) const override;
    bool getUA8(BAS_ValArray<uint8_t> &values, int64_t offset) const override;
    bool getIA8(BAS_ValArray<int8_t> &values, int64_t offset) const override;
    bool getIA16(BAS_ValArray<int16_t> &values, int64_t offset) const override;
    bool getIA32(BAS_ValArray<int32_t> &values, int64_t offset) const override;
    bool getIA64(BAS_ValArray<int64_t> &values, int64_t offset) const override;

protected:
    void doImportArray(int64_t offset, BAS_ValArray<double> &values) const override;
    void doImportArray(int64_t offset, BAS_ValArray<float> &values) const override;
    void doImportArray(int64_t offset, BAS_ValArray<PLT_Half> &values) const override;
    void doImportArray(int64_t offset, BAS_ValArray<int64_t> &values) const override;
    void doImportArray(int64_t offset, BAS_ValArray<int32_t> &values) const override;
    void doImportArray(int64_t offset, BAS_ValArray<int16_t> &values) const override;
    void doImportArray(int64_t offset, BAS_ValArray<int8_t> &values) const override;
    void doImportArray(int64_t offset, BAS_ValArray<uint8_t> &values) const override;

    void doFillArrayAttr(BAS_Array<double> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const override;
    void doFillArrayAttr(BAS_Array<float> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const override;
    void doFillArrayAttr(BAS_Array<PLT_Half> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const override;
    void doFillArrayAttr(BAS_Array<int64_t> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const override;
    void doFillArrayAttr(BAS_Array<int32_t> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const override;
    void doFillArrayAttr(BAS_Array<int16_t> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const override;
    void doFillArrayAttr(BAS_Array<int8_t> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const override;
    void doFillArrayAttr(BAS_Array<uint8_t> &data, BAS_Array<int> &sizes, int64_t start, int64_t length) const override;

private:
    const Derived &derived() const { return static_cast<const Derived &>(*this); }
};
