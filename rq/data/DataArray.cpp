#include <rq/data/DataArray.h>

#include <host/elm/Attribute.h>

// A new array never shares an id, copies included.
RQ_DataArray::RQ_DataArray() : dataId_(ELM_Attribute::nextDataId()) {}
RQ_DataArray::RQ_DataArray(const RQ_DataArray &other)
    : BAS_IntrusiveRefCounter<RQ_DataArray>(other), dataId_(ELM_Attribute::nextDataId())
{}
RQ_DataArray::~RQ_DataArray() = default;

int64_t RQ_DataArray::itemSize(int64_t) const { return 0; }
int64_t RQ_DataArray::getTotalArrayEntries() const { return 0; }
RQ_Type RQ_DataArray::getTypeInfo() const { return RQ_TYPE_NONE; }
bool RQ_DataArray::hasArrayEntries() const { return false; }
bool RQ_DataArray::getPointerAliasing(const void *) const { return false; }
bool RQ_DataArray::isValid() const { return true; }
const void *RQ_DataArray::getBackingData() const { return nullptr; }
int64_t RQ_DataArray::getDataId() const { return dataId_; }

void RQ_DataArray::updateGeoDetail(const MOD_ConstDetailHandle &, const char *, RQ_Owner, int) {}

bool RQ_DataArray::checkIndexing(RQ_IndexingMode mode) const
{
    const RQ_Storage storage = getStorage();
    if (!RQisInteger(storage) || getTupleSize() != 1)
        return false;
    return mode == RQ_INDEXING_AUTO || storage == (mode == RQ_INDEXING_32 ? RQ_STORAGE_INT32 : RQ_STORAGE_INT64);
}
