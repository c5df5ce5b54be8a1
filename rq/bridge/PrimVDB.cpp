#include <rq/bridge/PrimVDB.h>

#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/PrimitiveType.h>

RQ_PrimVDB::RQ_PrimVDB(const RQ_MSHDetailList &details, ELM_Offset volume, const RQ_RefineParms *parms)
    : RQ_PrimPlacedVolume(details, volume, parms)
{}

RQ_PrimVDB::RQ_PrimVDB(const RQ_PrimVDB &other) = default;
RQ_PrimVDB::~RQ_PrimVDB() = default;

const char *RQ_PrimVDB::className() const { return "RQ_PrimVDB"; }
int RQ_PrimVDB::getPrimitiveType() const { return RQ_PRIM_VDB; }

bool RQ_PrimVDB::save(BAS_JSONWriter &writer) const
{
    const jsonWriter record(writer, RQprimitiveType(RQ_PRIM_VDB));
    return record->writeString(getName().view()) && record->writeString(getKind()) && saveAttributeLists(*record);
}

RQ_PrimitiveHandle RQ_PrimVDB::doSoftCopy() const { return new RQ_PrimVDB(*this); }
