#include <rq/fwd.h>
#include <tests/slots.h>

#include "arrays.h"

namespace
{
/// Makes the protected operations nameable.
struct Probe : RQ_DataArray
{
    using RQ_DataArray::computeMinMax;
    using RQ_DataArray::doExtendedQuantizedFill;
    using RQ_DataArray::doFillArray;
    using RQ_DataArray::doFillArrayAttr;
    using RQ_DataArray::doFillQuantizedArray;
    using RQ_DataArray::doFillVec3BBox;
    using RQ_DataArray::doImport;
    using RQ_DataArray::doImportArray;
    using RQ_DataArray::doImportQuantized;
};

using A = RQ_DataArray;

template <class T> using Get = const T *(A::*)(int64_t, T *, int) const;
template <class T> using Repeat = void (A::*)(T *, int64_t, int64_t, int, int, int) const;
template <class T> using Import = void (A::*)(int64_t, T *, int) const;
template <class T> using ImportArray = void (A::*)(int64_t, BAS_ValArray<T> &) const;
template <class T> using Fill = void (A::*)(T *, int64_t, int64_t, int, int) const;
template <class T> using FillAttr = void (A::*)(BAS_Array<T> &, BAS_Array<int> &, int64_t, int64_t) const;
template <class T> using FillBox = void (A::*)(T *, int64_t, int64_t, BAS_BoundingBox &, int, int) const;
template <class T> using Range = void (A::*)(T &, T &, int) const;

/// An operation that comes once for each value type.
template <class Member> std::vector<int64_t> family(Member member)
{
    return slotsOf(member(double()), member(float()), member(PLT_Half()), member(int64_t()), member(int32_t()),
                   member(int16_t()), member(int8_t()), member(uint8_t()));
}

TEST(DataArray, KeepsTheOrderOfItsOperations)
{
    expectSlotsInOrder({slotsOf(&A::className, &A::harden, &A::getStorage, &A::entries, &A::itemSize,
                                &A::getTotalArrayEntries, &A::getTupleSize, &A::getMemoryUsage, &A::getTypeInfo,
                                &A::hasArrayEntries, &A::getPointerAliasing, &A::isValid, &A::getBackingData, &A::getDataId),
                        slotsOf(&A::getU8, &A::getI8, &A::getI16, &A::getI32, &A::getI64, &A::getF16, &A::getF32, &A::getF64,
                                &A::getS, &A::getSA, &A::getDict, &A::getDictA, &A::getFA16, &A::getFA32, &A::getFA64,
                                &A::getUA8, &A::getIA8, &A::getIA16, &A::getIA32, &A::getIA64),
                        slotsOf(&A::getU8Array, &A::getI8Array, &A::getI16Array, &A::getI32Array, &A::getI64Array,
                                &A::getF16Array, &A::getF32Array, &A::getF64Array),
                        slotsOf(&A::getStringIndexCount, &A::getStringIndex, &A::getIndexedStrings, &A::getStrings,
                                &A::fillStringArray, &A::getDictIndexCount, &A::getDictIndex, &A::getIndexedDicts,
                                &A::getDictionaries, &A::fillDictionaryArray, &A::extendedFillArray),
                        family([]<class T>(T) { return Repeat<T>(&A::extendedFill); }),
                        family([]<class T>(T) { return Get<T>(&A::get); }),
                        slotsOf(Range<double>(&A::getRange), Range<int64_t>(&A::getRange), &A::isEqual, &A::hashRange,
                                &A::updateGeoDetail, &Probe::computeMinMax),
                        family([]<class T>(T) { return Import<T>(&Probe::doImport); }),
                        family([]<class T>(T) { return ImportArray<T>(&Probe::doImportArray); }),
                        slotsOf(&Probe::doImportQuantized), family([]<class T>(T) { return Fill<T>(&Probe::doFillArray); }),
                        family([]<class T>(T) { return FillAttr<T>(&Probe::doFillArrayAttr); }),
                        slotsOf(&Probe::doFillQuantizedArray, &Probe::doExtendedQuantizedFill,
                                FillBox<double>(&Probe::doFillVec3BBox), FillBox<float>(&Probe::doFillVec3BBox))},
                       112);
}
}  // namespace
