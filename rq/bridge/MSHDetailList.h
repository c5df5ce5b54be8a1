#pragma once

#include <memory>
#include <vector>

#include <rq/attrib/AttributeList.h>
#include <rq/bridge/MSHAttributeFilter.h>
#include <rq/bridge/MSHOffsetList.h>
#include <rq/prim/RefineParms.h>

class RQ_MSHDetailList;
using RQ_MSHDetailListHandle = std::shared_ptr<const RQ_MSHDetailList>;

/// The details of one refinement, one per motion segment, and the attribute lists made of them.
///
/// Shape      a segment whose element counts differ from the first's is replaced by the first, with a warning: samples of
///            another topology cannot be followed element by element
/// Ownership  keeps the details alive
/// Threads    immutable, shared by every collector of a refinement
class RQ_API RQ_MSHDetailList
{
public:
    explicit RQ_MSHDetailList(const MOD_ConstDetailHandle &detail);

    /// One detail per segment; null handles are left out.
    explicit RQ_MSHDetailList(std::vector<MOD_ConstDetailHandle> details);

    int getSegments() const { return int(details_.size()); }

    /// The detail of a segment, clamped to the last; a handle of nothing when the list is empty.
    const MOD_ConstDetailHandle &getHandle(int segment = 0) const;
    const MSH_Detail *getDetail(int segment = 0) const { return getHandle(segment).readLock(); }

    // Lists of element arrays, one per host attribute that the filter accepts (null: that of the parms, else every public
    // one), in the host's order and under the host's names.  Null when there is no such attribute.

    RQ_AttributeListHandle getDetailAttributes(const RQ_MSHAttributeFilter *filter,
                                               const RQ_RefineParms *parms = nullptr) const;
    RQ_AttributeListHandle getPointAttributes(const RQ_MSHAttributeFilter *filter, const RQ_MSHOffsetList &points,
                                              const RQ_RefineParms *parms = nullptr) const;
    RQ_AttributeListHandle getPrimitiveAttributes(const RQ_MSHAttributeFilter *filter, const RQ_MSHOffsetList &primitives,
                                                  const RQ_RefineParms *parms = nullptr) const;
    RQ_AttributeListHandle getVertexAttributes(const RQ_MSHAttributeFilter *filter, const RQ_MSHOffsetList &vertices,
                                               const RQ_RefineParms *parms = nullptr) const;

private:
    RQ_AttributeListHandle makeList(ELM_Owner owner, const RQ_MSHAttributeFilter *filter, const RQ_MSHOffsetList &offsets,
                                    const RQ_RefineParms *parms) const;

    std::vector<MOD_ConstDetailHandle> details_;
};
