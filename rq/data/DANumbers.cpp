#include <rq/data/DANumbers.h>

BAS_StringHolder RQ_DANumbers::getS(int64_t, int) const { return {}; }
int64_t RQ_DANumbers::getStringIndexCount() const { return -1; }
int64_t RQ_DANumbers::getStringIndex(int64_t, int) const { return -1; }
int64_t RQ_DANumbers::getDictIndexCount() const { return -1; }
int64_t RQ_DANumbers::getDictIndex(int64_t, int) const { return -1; }

void RQ_DANumbers::getIndexedStrings(BAS_Array<BAS_StringHolder> &strings, BAS_Array<int64_t> &indices) const
{
    strings.clear();
    indices.clear();
}

void RQ_DANumbers::getIndexedDicts(BAS_Array<BAS_OptionsHolder> &dicts, BAS_Array<int64_t> &indices) const
{
    dicts.clear();
    indices.clear();
}
