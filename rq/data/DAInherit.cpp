#include <rq/data/DAInherit.h>

#include <host/elm/Attribute.h>
#include <rq/data/detail/blocks.h>
#include <rq/data/detail/copyEntries.h>
#include <rq/data/detail/numericTypes.h>

void RQ_DAInherit::setSource(const RQ_DataArrayHandle &source)
{
    source_ = source;
    sourceId_ = source ? source->getDataId() : -1;
}

RQ_DataArrayHandle RQ_DAInherit::harden() const
{
    return hasArrayEntries() ? rq::copyEntries(*this) : RQ_DataArray::harden();
}

RQ_Storage RQ_DAInherit::getStorage() const { return source_ ? source_->getStorage() : RQ_STORAGE_INVALID; }
int64_t RQ_DAInherit::itemSize(int64_t offset) const { return source_->itemSize(getIndirect(offset)); }
int64_t RQ_DAInherit::getTupleSize() const { return source_ ? source_->getTupleSize() : 0; }
RQ_Type RQ_DAInherit::getTypeInfo() const { return source_ ? source_->getTypeInfo() : RQ_TYPE_NONE; }
bool RQ_DAInherit::hasArrayEntries() const { return source_ && source_->hasArrayEntries(); }
bool RQ_DAInherit::getPointerAliasing(const void *data) const { return source_ && source_->getPointerAliasing(data); }
bool RQ_DAInherit::isValid() const { return source_ && source_->isValid(); }

int64_t RQ_DAInherit::getTotalArrayEntries() const
{
    int64_t total = 0;
    if (hasArrayEntries())
        for (int64_t i = 0; i < entries(); ++i)
            total += itemSize(i);
    return total;
}

BAS_StringHolder RQ_DAInherit::getS(int64_t offset, int idx) const { return source_->getS(getIndirect(offset), idx); }
BAS_OptionsHolder RQ_DAInherit::getDict(int64_t offset, int idx) const { return source_->getDict(getIndirect(offset), idx); }

bool RQ_DAInherit::getSA(BAS_Array<BAS_StringHolder> &strings, int64_t offset) const
{
    return source_->getSA(strings, getIndirect(offset));
}

bool RQ_DAInherit::getDictA(BAS_Array<BAS_OptionsHolder> &dicts, int64_t offset) const
{
    return source_->getDictA(dicts, getIndirect(offset));
}

#define RQ_DEFINE(T, NAME, ARRAY)                                                                                           \
    bool RQ_DAInherit::get##ARRAY(BAS_ValArray<T> &values, int64_t offset) const                                            \
    {                                                                                                                       \
        return source_->get##ARRAY(values, getIndirect(offset));                                                            \
    }
RQ_NUMERIC_TYPES(RQ_DEFINE)
#undef RQ_DEFINE

int64_t RQ_DAInherit::getStringIndexCount() const { return source_ ? source_->getStringIndexCount() : -1; }
int64_t RQ_DAInherit::getStringIndex(int64_t offset, int idx) const
{
    return source_->getStringIndex(getIndirect(offset), idx);
}
int64_t RQ_DAInherit::getDictIndexCount() const { return source_ ? source_->getDictIndexCount() : -1; }
int64_t RQ_DAInherit::getDictIndex(int64_t offset, int idx) const { return source_->getDictIndex(getIndirect(offset), idx); }

void RQ_DAInherit::getIndexedStrings(BAS_Array<BAS_StringHolder> &strings, BAS_Array<int64_t> &indices) const
{
    strings.clear();
    indices.clear();
    if (source_)
        source_->getIndexedStrings(strings, indices);
}

void RQ_DAInherit::getIndexedDicts(BAS_Array<BAS_OptionsHolder> &dicts, BAS_Array<int64_t> &indices) const
{
    dicts.clear();
    indices.clear();
    if (source_)
        source_->getIndexedDicts(dicts, indices);
}

void RQ_DAInherit::getStrings(BAS_Array<BAS_StringHolder> &strings) const
{
    strings.clear();
    if (source_)
        source_->getStrings(strings);
}

void RQ_DAInherit::getDictionaries(BAS_Array<BAS_OptionsHolder> &dicts) const
{
    dicts.clear();
    if (source_)
        source_->getDictionaries(dicts);
}

void RQ_DAInherit::fillStringArray(BAS_StringHolder *data, int64_t start, int64_t length, int tsize, int stride) const
{
    rq::fillTexts(*this, data, start, length, tsize, stride);
}

void RQ_DAInherit::fillDictionaryArray(BAS_OptionsHolder *data, int64_t start, int64_t length, int tsize, int stride) const
{
    rq::fillTexts(*this, data, start, length, tsize, stride);
}

void RQ_DAInherit::updateGeoDetail(const MOD_ConstDetailHandle &detail, const char *name, RQ_Owner owner, int segment)
{
    if (!source_)
        return;
    source_->updateGeoDetail(detail, name, owner, segment);
    if (source_->getDataId() == sourceId_)
        return;
    sourceId_ = source_->getDataId();
    setDataId(ELM_Attribute::nextDataId());
}
