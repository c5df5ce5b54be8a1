#include <cstring>

#include <rq/fwd.h>

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

/// The place of a virtual operation in the table: pointers to virtual members hold 1 plus the byte offset.
template <class Member> int64_t slotOf(Member member)
{
    uintptr_t words[2];
    static_assert(sizeof(words) == sizeof(member));
    std::memcpy(words, &member, sizeof(words));
    return int64_t(words[0] - 1) / int64_t(sizeof(void *));
}

using A = RQ_DataArray;

template <class T> using Get = const T *(A::*)(int64_t, T *, int) const;
template <class T> using Repeat = void (A::*)(T *, int64_t, int64_t, int, int, int) const;
template <class T> using Import = void (A::*)(int64_t, T *, int) const;
template <class T> using ImportArray = void (A::*)(int64_t, BAS_ValArray<T> &) const;
template <class T> using Fill = void (A::*)(T *, int64_t, int64_t, int, int) const;
template <class T> using FillAttr = void (A::*)(BAS_Array<T> &, BAS_Array<int> &, int64_t, int64_t) const;
template <class T> using FillBox = void (A::*)(T *, int64_t, int64_t, BAS_BoundingBox &, int, int) const;
template <class T> using Range = void (A::*)(T &, T &, int) const;

// The two entries of the destructor come first, so the number of every later operation is its place.
TEST(DataArray, KeepsTheOrderOfItsOperations)
{
    const std::vector<int64_t> slots = {slotOf(&A::className),
                                        slotOf(&A::harden),
                                        slotOf(&A::getStorage),
                                        slotOf(&A::entries),
                                        slotOf(&A::itemSize),
                                        slotOf(&A::getTotalArrayEntries),
                                        slotOf(&A::getTupleSize),
                                        slotOf(&A::getMemoryUsage),
                                        slotOf(&A::getTypeInfo),
                                        slotOf(&A::hasArrayEntries),
                                        slotOf(&A::getPointerAliasing),
                                        slotOf(&A::isValid),
                                        slotOf(&A::getBackingData),
                                        slotOf(&A::getDataId),
                                        slotOf(&A::getU8),
                                        slotOf(&A::getI8),
                                        slotOf(&A::getI16),
                                        slotOf(&A::getI32),
                                        slotOf(&A::getI64),
                                        slotOf(&A::getF16),
                                        slotOf(&A::getF32),
                                        slotOf(&A::getF64),
                                        slotOf(&A::getS),
                                        slotOf(&A::getSA),
                                        slotOf(&A::getDict),
                                        slotOf(&A::getDictA),
                                        slotOf(&A::getFA16),
                                        slotOf(&A::getFA32),
                                        slotOf(&A::getFA64),
                                        slotOf(&A::getUA8),
                                        slotOf(&A::getIA8),
                                        slotOf(&A::getIA16),
                                        slotOf(&A::getIA32),
                                        slotOf(&A::getIA64),
                                        slotOf(&A::getU8Array),
                                        slotOf(&A::getI8Array),
                                        slotOf(&A::getI16Array),
                                        slotOf(&A::getI32Array),
                                        slotOf(&A::getI64Array),
                                        slotOf(&A::getF16Array),
                                        slotOf(&A::getF32Array),
                                        slotOf(&A::getF64Array),
                                        slotOf(&A::getStringIndexCount),
                                        slotOf(&A::getStringIndex),
                                        slotOf(&A::getIndexedStrings),
                                        slotOf(&A::getStrings),
                                        slotOf(&A::fillStringArray),
                                        slotOf(&A::getDictIndexCount),
                                        slotOf(&A::getDictIndex),
                                        slotOf(&A::getIndexedDicts),
                                        slotOf(&A::getDictionaries),
                                        slotOf(&A::fillDictionaryArray),
                                        slotOf(&A::extendedFillArray),
                                        slotOf(Repeat<double>(&A::extendedFill)),
                                        slotOf(Repeat<float>(&A::extendedFill)),
                                        slotOf(Repeat<PLT_Half>(&A::extendedFill)),
                                        slotOf(Repeat<int64_t>(&A::extendedFill)),
                                        slotOf(Repeat<int32_t>(&A::extendedFill)),
                                        slotOf(Repeat<int16_t>(&A::extendedFill)),
                                        slotOf(Repeat<int8_t>(&A::extendedFill)),
                                        slotOf(Repeat<uint8_t>(&A::extendedFill)),
                                        slotOf(Get<double>(&A::get)),
                                        slotOf(Get<float>(&A::get)),
                                        slotOf(Get<PLT_Half>(&A::get)),
                                        slotOf(Get<int64_t>(&A::get)),
                                        slotOf(Get<int32_t>(&A::get)),
                                        slotOf(Get<int16_t>(&A::get)),
                                        slotOf(Get<int8_t>(&A::get)),
                                        slotOf(Get<uint8_t>(&A::get)),
                                        slotOf(Range<double>(&A::getRange)),
                                        slotOf(Range<int64_t>(&A::getRange)),
                                        slotOf(&A::isEqual),
                                        slotOf(&A::hashRange),
                                        slotOf(&A::updateGeoDetail),
                                        slotOf(&Probe::computeMinMax),
                                        slotOf(Import<double>(&Probe::doImport)),
                                        slotOf(Import<float>(&Probe::doImport)),
                                        slotOf(Import<PLT_Half>(&Probe::doImport)),
                                        slotOf(Import<int64_t>(&Probe::doImport)),
                                        slotOf(Import<int32_t>(&Probe::doImport)),
                                        slotOf(Import<int16_t>(&Probe::doImport)),
                                        slotOf(Import<int8_t>(&Probe::doImport)),
                                        slotOf(Import<uint8_t>(&Probe::doImport)),
                                        slotOf(ImportArray<double>(&Probe::doImportArray)),
                                        slotOf(ImportArray<float>(&Probe::doImportArray)),
                                        slotOf(ImportArray<PLT_Half>(&Probe::doImportArray)),
                                        slotOf(ImportArray<int64_t>(&Probe::doImportArray)),
                                        slotOf(ImportArray<int32_t>(&Probe::doImportArray)),
                                        slotOf(ImportArray<int16_t>(&Probe::doImportArray)),
                                        slotOf(ImportArray<int8_t>(&Probe::doImportArray)),
                                        slotOf(ImportArray<uint8_t>(&Probe::doImportArray)),
                                        slotOf(&Probe::doImportQuantized),
                                        slotOf(Fill<double>(&Probe::doFillArray)),
                                        slotOf(Fill<float>(&Probe::doFillArray)),
                                        slotOf(Fill<PLT_Half>(&Probe::doFillArray)),
                                        slotOf(Fill<int64_t>(&Probe::doFillArray)),
                                        slotOf(Fill<int32_t>(&Probe::doFillArray)),
                                        slotOf(Fill<int16_t>(&Probe::doFillArray)),
                                        slotOf(Fill<int8_t>(&Probe::doFillArray)),
                                        slotOf(Fill<uint8_t>(&Probe::doFillArray)),
                                        slotOf(FillAttr<double>(&Probe::doFillArrayAttr)),
                                        slotOf(FillAttr<float>(&Probe::doFillArrayAttr)),
                                        slotOf(FillAttr<PLT_Half>(&Probe::doFillArrayAttr)),
                                        slotOf(FillAttr<int64_t>(&Probe::doFillArrayAttr)),
                                        slotOf(FillAttr<int32_t>(&Probe::doFillArrayAttr)),
                                        slotOf(FillAttr<int16_t>(&Probe::doFillArrayAttr)),
                                        slotOf(FillAttr<int8_t>(&Probe::doFillArrayAttr)),
                                        slotOf(FillAttr<uint8_t>(&Probe::doFillArrayAttr)),
                                        slotOf(&Probe::doFillQuantizedArray),
                                        slotOf(&Probe::doExtendedQuantizedFill),
                                        slotOf(FillBox<double>(&Probe::doFillVec3BBox)),
                                        slotOf(FillBox<float>(&Probe::doFillVec3BBox))};
    ASSERT_EQ(slots.size(), 112u);
    for (size_t i = 0; i < slots.size(); ++i)
        EXPECT_EQ(slots[i], int64_t(i) + 2) << "operation " << i + 2;
}
}  // namespace
